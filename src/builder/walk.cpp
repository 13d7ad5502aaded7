#include "builder/walk.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "builder/classify.h"
#include "builder/landmarks.h"
#include "builder/region.h"
#include "builder/report.h"
#include "engine/stg.h"
#include "files/opensave.h"
#include "files/xmap.h"
#include "runtime/oops.h"

namespace {

constexpr const char* insult = "YOU IDIOT!";

constexpr std::string_view all_folders[] = {"Aircraft/",  "Airfoils/",      "Instructions/",
                                            "Output/",    "Weapons/",       "install_pfc Aircraft/",
                                            "Resources/", "Custom Scenery/"};

struct item {
    const std::string& dir;
    const std::string& name;
    std::string path;  // full, a folder's with its "/"
};

void check_name(const item& it) {
    if (it.name.back() == ' ')
        build_fatal(insult, "You tried to include a file or directory with a space at the end!",
                    "Windows cannot have that: it drops the space, and then the name is another one.", it.path, 389);
    if (it.path.find(':') != std::string::npos) build_fatal(insult, "found a  : in the path!", it.path, "", 391);
    if (it.path.find('\\') != std::string::npos) build_fatal(insult, "found a \\ in the path!", it.path, "", 392);
    // The catalogue is lines of fields: a line end would break the row, and leading blanks are skipped by its reader.
    if (it.path.find_first_of("\r\n") != std::string::npos)
        __MACIBM_alert(0, insult, "found a line end in the path!", it.path, "", t_exit, OOPS_PLACE);
    if (is_blank(static_cast<unsigned char>(it.name.front())))
        __MACIBM_alert(0, insult, "found a name that begins with a blank!", it.path, "", t_exit, OOPS_PLACE);
}

void check_file(const item& it) {
    const auto holds = [&](const char* text) { return it.path.find(text) != std::string::npos; };
    if (holds("copy")) build_fatal(insult, "found a copy file!", it.path, "", 438);
    if (holds(".cpp")) build_fatal(insult, "found a .cpp file!", it.path, "", 439);
    if (holds(".CPP")) build_fatal(insult, "found a .CPP file!", it.path, "", 440);
    if (it.dir == landmark_path(str_all_fold))
        build_fatal(insult, "I FOUND A FILE INSIDE THE 'ALL' FOLDER! WE SHOULD ONLY HAVE FOLDERS THERE!", it.path, "",
                    447);
}

void choose(const std::string& path) {
    ++num_files_use;
    comp_files.push_back(path);
    // Every folder on the way, up to the root of the output, which is there.
    std::string folder = output_folder() + path.substr(src_fold.size());
    for (;;) {
        folder.resize(folder.rfind('/'));
        if (folder.size() < dst_fold_base.size()) break;
        if (!comp_paths.insert(folder).second) break;  // then its parents are known too
    }
}

void walk_file(const item& it) {
    check_file(it);
    ++num_files_rec;
    if (is_good_file(it.path, 0, 1))
        choose(it.path);
    else if (is_good_file(it.path, 0, 0))
        builder_front.left_out(it.path);
    report_walk(it.path);
}

void walk_folder(const item& it) {
    if (it.dir == landmark_path(str_all_fold) &&
        std::find(std::begin(all_folders), std::end(all_folders), it.name + "/") == std::end(all_folders))
        build_fatal("What the hell is THIS doing in here!?!?!?", it.name + "/", it.path, it.name, 426);
    pref_level(it.path);
}

}  // namespace

void pref_level(const std::string& dir) {
    std::vector<std::string> names;
    std::vector<int> kinds;
    opensave_getitems(dir, kind_any, names, kinds);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool is_folder = kinds[i] == kind_folder;
        const item it{dir, names[i], dir + names[i] + (is_folder ? "/" : "")};
        crnt_file_path = it.path;
        check_name(it);
        meet_landmark(it.path);
        if (is_folder)
            walk_folder(it);
        else
            walk_file(it);
    }
}
