#include "files/opensave.h"

#include <dirent.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "runtime/cmnd.h"
#include "runtime/oops.h"
#include "runtime/product.h"

static const struct {
    const char* extension;
    int kind;
} kinds_by_extension[] = {
    {".BMP", 2},  {".PNG", 2},  {".ACF", 3},  {".AFL", 4},  {".WPN", 5},  {".WAV", 6},
    {".OBJ", 7},  {".FDR", 8},  {".SIT", 9},  {".SMO", 10}, {".FMS", 11}, {".TRA", 13},
    {".CAR", 14}, {".SPA", 15}, {".REG", 16}, {".DSF", 17}, {".HGT", 18}, {".TXT", 19},
};

// Parts of a panel that the panel draws itself, and the further states of one image ("name-2.png").
static bool is_part_of_panel(const std::string& path) {
    static const std::string panels = "Resources/bitmaps/cockpit/-panel";
    if (strncasecmp(path.c_str(), panels.c_str(), panels.size()) == 0) return true;
    if (path.size() < 6) return false;
    const std::string state = path.substr(path.size() - 6, 3);
    return state == "-1." || state == "-2." || state == "-3." || state == "-4.";
}

// The kind goes by the last four characters, of a folder's name too: "plane.acf/" is an item and no folder.
bool opensave_takeit(const std::string& dir, const std::string& name, int kind, int& item_kind) {
    if (name.size() >= 4) {
        const char* tail = name.c_str() + name.size() - 4;
        for (const auto& row : kinds_by_extension)
            if (strcasecmp(tail, row.extension) == 0) item_kind = row.kind;
    }
    if (kind == kind_panel && is_part_of_panel(dir + name)) return false;
    if (name.empty() || name[0] == '.') return false;
    return item_kind == kind_folder || item_kind == kind || kind == kind_any ||
           (kind == kind_panel && item_kind == kind_image);
}

static int names_as_given(std::vector<std::string>& names, std::vector<int>& kinds) {
    for (std::string& name : names) {
        const bool folder = !name.empty() && name.back() == '/';
        if (folder) name.pop_back();
        kinds.push_back(folder ? kind_folder : kind_any);
    }
    return static_cast<int>(names.size());
}

// A link to a folder is no folder, so that nothing that walks a tree follows it.
static bool is_folder(DIR* folder, const dirent* entry) {
    if (entry->d_type != DT_UNKNOWN) return entry->d_type == DT_DIR;
    struct stat st;
    return fstatat(dirfd(folder), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
}

int opensave_getitems(const std::string& dir, int kind, std::vector<std::string>& names, std::vector<int>& kinds) {
    kinds.clear();
    if (kind != kind_as_given) names.clear();
    if (kind == kind_commands) cmnd.get_cmds_in_path(dir, names);
    if (kind == kind_commands || kind == kind_as_given) return names_as_given(names, kinds);

    const std::string full = app_path + dir;
    if (full.size() > 1 && full.back() != '/')
        __MACIBM_alert(
            0, "Working path does not appear to be a directory!", "This is not consistent with my labelling practices!",
            "I need to end all paths with the directory indicator!", full, t_exit, "HLutils/Files/io_utils", 907);
    DIR* folder = opendir(full.c_str());
    if (!folder) return 0;
    std::vector<std::pair<std::string, int>> items;
    while (const dirent* entry = readdir(folder)) {
        int item_kind = is_folder(folder, entry) ? kind_folder : kind_any;
        if (opensave_takeit(dir, entry->d_name, kind, item_kind)) items.emplace_back(entry->d_name, item_kind);
    }
    closedir(folder);
    std::sort(items.begin(), items.end());
    for (auto& item : items) {
        names.push_back(std::move(item.first));
        kinds.push_back(item.second);
    }
    return static_cast<int>(names.size());
}
