#include "builder/classify.h"

#include <string_view>

#include "builder/landmarks.h"
#include "builder/region.h"
#include "files/file_reader.h"
#include "files/io_utils.h"
#include "runtime/hl_string.h"
#include "runtime/oops.h"
#include "runtime/product.h"

namespace {

enum where { anywhere, at_end };

struct refused_name {
    std::string_view text;
    where place;
};

constexpr refused_name refused_names[] = {
    {"Thumbs.db", anywhere},  // system litter
    {"work.", anywhere},      // work files
    {"._", anywhere},         // shadows that carry resource forks
    {".DS_Store", anywhere},  // system litter
    {".sandboxinfo", anywhere},
    {".xSYM", anywhere},  // debug symbols
    {".ovw", at_end},
    {".ac", at_end},
    {"serverlist.txt", anywhere},     // made by hand, and never part of a release
    {"Velaris Pilot.txt", anywhere},  // the user's own
    {".prf", at_end},                 // preferences
    {".fms", at_end},                 // the user's own
    {".sit", at_end},                 // archives
    {".mov", at_end},                 // movies
    {".bak", at_end},                 // backups
    {".dsf.txt", anywhere},
};

// Boxes of whole degrees, made for the capacity of discs; they follow the names of the regions only loosely.
struct box {
    int lon_from, lon_to;
    int lat_from, lat_to;
    int region;
};

constexpr box boxes[] = {
    {-180, -20, -90, 20, 1}, {-180, -20, 21, 48, 2}, {-180, -20, 49, 90, 3}, {-19, 58, -90, 24, 4},
    {-19, 58, 25, 90, 5},    {59, 102, -90, 90, 6},  {103, 154, -90, 48, 7}, {155, 180, -90, 20, 1},
    {155, 180, 21, 48, 2},   {103, 139, 49, 90, 7},  {140, 180, 49, 90, 3},
};

struct top_folder {
    std::string_view name;
    int platform;
    const char* word;  // of a key
};

constexpr top_folder top_folders[] = {
    {ALL_str, 0, "ALL_os"}, {APL_str, 1, "APL_os"}, {WIN_str, 2, "IBM_os"}, {LIN_str, 3, "LIN_os"}};

struct plugin_file {
    std::string_view text;
    int platform;
};

// Libraries that have to lie among the common files and yet are for one system. A later row overrides an earlier one.
constexpr std::string_view plugin_folder = "All/Resources/plugins/";
constexpr plugin_file plugin_files[] = {
    {"All/Resources/plugins/QRNK.shlb", 1},
    {"All/Resources/plugins/Panelkit.shlb", 1},
    {"All/Resources/plugins/QRNK.framework/QRNK", 1},
    {"All/Resources/plugins/Panelkit.framework/Panelkit", 1},
    {"All/Resources/plugins/QRNK.dll", 2},
    {"All/Resources/plugins/Panelkit.dll", 2},
    {"All/Resources/plugins/QRNK.so", 6},
    {"All/Resources/plugins/Panelkit.so", 6},
    {"All/Resources/plugins/PluginAdminMac.vlx", 1},
    {"All/Resources/plugins/PluginAdminWin.vlx", 2},
    {"All/Resources/plugins/PluginAdminLin.vlx", 6},
};

bool holds(const std::string& path, std::string_view text) {
    return path.find(text) != std::string::npos;
}
bool holds(const std::string& path, landmark_id id) {
    return holds(path, landmark_path(id));
}

// Refused in every set and every region.
bool name_is_refused(const std::string& path) {
    for (const refused_name& name : refused_names)
        if (name.place == at_end ? path.ends_with(name.text) : holds(path, name.text)) return true;
    return holds(path, str_pfc_fold);
}

// A link is shipped as its text, and never opened.
bool can_be_opened(const std::string& path) {
    if (is_sim_link(path, nullptr)) return true;
    return file_reader(path).error() == 0;
}

}  // namespace

std::string text_that_decides(const std::string& path) {
    for (const std::string_view text : {std::string_view("copy"), std::string_view(".cpp"), std::string_view(".CPP"),
                                        std::string_view(".exe"), plugin_folder})
        if (holds(path, text)) return std::string(text);
    for (const refused_name& name : refused_names)
        if (name.place == anywhere && holds(path, name.text)) return std::string(name.text);
    return {};
}

bool is_good_file(const std::string& path, int list_mode, int must_open) {
    if (list_mode == 0 && must_open && !can_be_opened(path)) return false;
    if (name_is_refused(path)) return false;

    const bool earth = holds(path, str_erth1) || holds(path, str_erth2);
    const bool mars = holds(path, str_mars);
    const bool moon = holds(path, str_moon);
    const bool disc_only = holds(path, str_redt) || holds(path, str_orbt);
    switch (is_dvd) {
        case 0:
            return !earth && !mars && !moon && !disc_only;
        case 1:
            return !earth && !mars && !moon;
        case 2:
            return earth && want_reg(build.reg, path);
        case 3:
            return mars && want_reg(build.reg, path);
        case 4:
            return moon && want_reg(build.reg, path);
        default:
            build_fatal("I can not tell what type of install this is!", "", "", "", 240);
            return false;
    }
}

bool want_reg(int region, const std::string& path) {
    std::string folder;
    get_path_with_path(folder, path);
    const std::string name = get_path_with_path_file;
    const int lat = str_to_int(name.substr(0, 3));
    const int lon = str_to_int(name.substr(3, 4));
    // A badly named tile would silently land on the wrong disc.
    if (lat < -90 || lat > 90)
        __MACIBM_alert(0, "Out of range lat!", name, path, "", t_exit, "HLutils/GenH/hl_types", 1017);
    if (lon < -180 || lon > 180)
        __MACIBM_alert(0, "Out of range lon!", name, path, "", t_exit, "HLutils/GenH/hl_types", 1018);

    if (region == 0) return false;
    for (const box& b : boxes)
        if (lon >= b.lon_from && lon <= b.lon_to && lat >= b.lat_from && lat <= b.lat_to) return b.region == region;
    return false;
}

int file_platform(const std::string& path, const std::string& rel) {
    std::string dir;
    get_path_with_path(dir, rel);
    const std::string_view top = std::string_view(dir).substr(0, dir.find('/'));
    int platform = -1;
    for (const top_folder& folder : top_folders)
        if (folder.name == top) platform = folder.platform;
    if (platform < 0)
        build_fatal("I can not tell what type of file this is: it is in none of the four top folders!", dir, rel, "",
                    319);
    if (platform == 0 && holds(path, plugin_folder))
        for (const plugin_file& file : plugin_files)
            if (holds(path, file.text)) platform = file.platform;
    return platform;
}

void chop_platform(std::string& path, int platform) {
    const std::size_t slash = path.find('/');
    if (slash == std::string::npos) build_fatal("Could not find the dir char!", path, "", "", 180);
    path.erase(0, slash);
    for (const top_folder& folder : top_folders)
        if (folder.platform == platform) path.insert(0, folder.word);
}
