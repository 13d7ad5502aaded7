#include "builder/walk.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <vector>

#include "builder/classify.h"
#include "builder/copy_check.h"
#include "builder/landmarks.h"
#include "builder/region.h"
#include "builder/report.h"
#include "engine/stg.h"
#include "files/error_str.h"
#include "files/file_reader.h"
#include "files/opensave.h"
#include "runtime/oops.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* insult = "YOU IDIOT!";

constexpr std::string_view all_folders[] = {"Aircraft/",  "Airfoils/",      "Instructions/",
                                            "Output/",    "Weapons/",       "install_pfc Aircraft/",
                                            "Resources/", "Custom Scenery/"};

}  // namespace

// One file of the copy: a complaint, a file of the release, or one that is left out.
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
    if (is_good_file(path, 0, 0)) {
        // Left out, it would be withdrawn from every user who has it.
        if (!is_good_file(path, 0, 1))
            __MACIBM_alert(0, "I could not open a file of the reference copy!", path,
                           error_str(file_reader(path).error()),
                           "Nothing may be left out: whoever has it would lose it.", t_exit, OOPS_PLACE);
        const std::string rel = path.substr(build.src_fold.size());
        enter_installed_path(path, file_platform(path, rel));
        check_link(path);
        ++build.num_files_use;
        build.comp_files.push_back(path);
        // Every folder on the way, up to the root of the output, which is there.
        std::string folder = output_folder() + rel;
        for (;;) {
            folder.resize(folder.rfind('/'));
            if (folder.size() < build.dst_fold_base.size()) break;
            if (!build.comp_paths.insert(folder).second) break;  // then its parents are known too
        }
    }
    report_walk(path);
}

// The listing itself tells neither of a folder that it cannot read nor of what it passes over.
static void check_folder(const std::string& dir) {
    std::error_code error;
    for (fs::directory_iterator it(dir, error), end; !error && it != end; it.increment(error))
        build.num_hidden += it->path().filename().string().starts_with('.');
    if (error)
        __MACIBM_alert(0, "I could not list a folder of the reference copy!", dir, error_str(error.value()),
                       "Nothing may be left out: whoever has its files would lose them.", t_exit, OOPS_PLACE);
}

void pref_level(const std::string& dir) {
    check_folder(dir);
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
