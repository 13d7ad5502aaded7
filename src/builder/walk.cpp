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

}  // namespace

static void check_name(const std::string& name, const std::string& path) {
    if (name.back() == ' ')
        build_fatal(insult, "You tried to include a file or directory with a space at the end!",
                    "Windows cannot have that: it drops the space, and then the name is another one.", path, 389);
    if (path.find(':') != std::string::npos) build_fatal(insult, "found a  : in the path!", path, "", 391);
    if (path.find('\\') != std::string::npos) build_fatal(insult, "found a \\ in the path!", path, "", 392);
    // The catalogue is lines of fields: a line end would break the row, and leading blanks are skipped by its reader.
    if (path.find_first_of("\r\n") != std::string::npos)
        __MACIBM_alert(0, insult, "found a line end in the path!", path, "", t_exit, OOPS_PLACE);
    if (is_blank(static_cast<unsigned char>(name.front())))
        __MACIBM_alert(0, insult, "found a name that begins with a blank!", path, "", t_exit, OOPS_PLACE);
}

static void walk_file(const std::string& dir, const std::string& path) {
    // Signs of a dirty copy count even in a file that would be left out.
    const auto holds = [&](const char* text) { return path.find(text) != std::string::npos; };
    if (holds("copy")) build_fatal(insult, "found a copy file!", path, "", 438);
    if (holds(".cpp")) build_fatal(insult, "found a .cpp file!", path, "", 439);
    if (holds(".CPP")) build_fatal(insult, "found a .CPP file!", path, "", 440);
    if (dir == landmark_path(str_all_fold))
        build_fatal(insult, "I FOUND A FILE INSIDE THE 'ALL' FOLDER! WE SHOULD ONLY HAVE FOLDERS THERE!", path, "",
                    447);

    ++build.num_files_rec;
    if (is_good_file(path, 0, 1)) {
        ++build.num_files_use;
        build.comp_files.push_back(path);
        // Every folder on the way, up to the root of the output, which is there.
        std::string folder = output_folder() + path.substr(build.src_fold.size());
        for (;;) {
            folder.resize(folder.rfind('/'));
            if (folder.size() < build.dst_fold_base.size()) break;
            if (!build.comp_paths.insert(folder).second) break;  // then its parents are known too
        }
    } else if (is_good_file(path, 0, 0)) {
        builder_front.left_out(path);
    }
    report_walk(path);
}

void pref_level(const std::string& dir) {
    std::vector<std::string> names;
    std::vector<int> kinds;
    opensave_getitems(dir, kind_any, names, kinds);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string& name = names[i];
        const bool is_folder = kinds[i] == kind_folder;
        const std::string path = dir + name + (is_folder ? "/" : "");
        crnt_file_path = path;
        check_name(name, path);
        meet_landmark(path);
        if (!is_folder) {
            walk_file(dir, path);
            continue;
        }
        if (dir == landmark_path(str_all_fold) &&
            std::find(std::begin(all_folders), std::end(all_folders), name + "/") == std::end(all_folders))
            build_fatal("What the hell is THIS doing in here!?!?!?", name + "/", path, name, 426);
        pref_level(path);
    }
}
