#include "builder/build.h"

#include <filesystem>
#include <string>
#include <vector>

#include "builder/compress.h"
#include "builder/history.h"
#include "builder/landmarks.h"
#include "builder/region.h"
#include "builder/report.h"
#include "builder/walk.h"
#include "engine/directory.h"
#include "engine/examine.h"
#include "engine/stg.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/xmap.h"
#include "files/zip_io.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/startup.h"

namespace {

struct region_range {
    int first, last;
};

region_range regions_of_set() {
    switch (is_dvd) {
        case 2:
            return {1, 7};
        case 3:
            return {8, 9};
        case 4:
            return {10, 10};
        default:
            return {0, 0};
    }
}

bool read_old_directory() {
    // It may come as it was published. Its text then lies in the run's own folder, which goes with the run.
    if (build.old_dir_path.ends_with(".zip")) {
        std::string entry = "directory.txt";
        if (temp_path.empty() || zip_to_file(build.old_dir_path, temp_path, &entry, 1)) return false;
        build.old_dir_path = temp_path + "directory.txt";
    }
    {
        // The reader meets a file that it does not know with the advice to fetch a newer installer and opens a browser,
        // which is no help to whoever makes one.
        const int versions[] = {840, 900, 0};
        xmap_class map;
        if (!map.retry_exact(build.old_dir_path) || !map.check_file(file_text, versions, "INSTALLER", nullptr))
            return false;
    }
    return read_catalogue(build.old_dir_path, "Scanning old directory text file to get change log!") == dir_ready;
}

void no_target_folder(const std::string& path) {
    build_fatal("Could not make the target_folder!", path,
                "THIS MAY SIMPLY BE BECAUSE THE FOLDER ALREADY EXISTS THOUGH!", "", 530);
}

void make_output_folder() {
    // Better to hear of the last region's folder now than after hours of work on the others.
    const region_range range = regions_of_set();
    std::error_code ignored;
    for (int region = range.first; region <= range.last; ++region) {
        const std::string path = build.dst_folder + region_name(region);
        if (std::filesystem::exists(std::filesystem::symlink_status(path, ignored))) no_target_folder(path + "/");
    }
    std::filesystem::remove_all(build.dst_folder + unfinished_name(build.reg), ignored);
    if (make_folder(output_folder())) no_target_folder(output_folder());
}

release_summary summary_of_region() {
    release_summary summary;
    summary.name = build.sim_name;
    summary.folder = build.dst_folder + build.sim_name + "/";
    summary.files = build.num_files_com;
    summary.tally = build.tally;
    summary.kilobytes = build.zip_size_ins * 1e6;
    return summary;
}

}  // namespace

void sub_install() {
    const std::string directory = output_folder() + "directory.txt";
    set_landmarks();

    // The history. A disc is a fresh start.
    if (is_dvd != 0) build.old_dir_path.clear();
    if (is_dvd == 0 && !build.first_release && !read_old_directory())
        build_fatal("I could not read the old directory!",
                    "This means that this installer will not delete old files (needed even for the Velaris / USA "
                    "scenery install).",
                    "It also means I will forget to fix this, and release without an old directory, and think that "
                    "older versions of stuff is all user-modified cause I don't recognize it!",
                    "So fix this.", 513);
    index_history();

    // The walk, with every complaint that there may be about the copy.
    make_output_folder();
    if (!ouf_open(directory, file_text, 900, "no-copyright-string"))
        __MACIBM_alert(0, "I could not open the new directory file!", directory, "", "", t_exit, OOPS_PLACE);
    ouf << "INSTALLER\n\n";
    pref_level(build.src_fold);
    check_landmarks();

    // The long work.
    for (const std::string& path : build.comp_paths)
        make_folder(path);  // a parent sorts before its children
    for (const std::string& path : build.comp_files)
        comp_file(path);
    write_gone_files();

    // The catalogue.
    ouf.close();
    if (ouf.fail())
        __MACIBM_alert(0, "I could not write the whole directory file!", directory, "Is the disk full?", "", t_exit,
                       OOPS_PLACE);
    const std::string zip = directory + ".zip";
    if (file_to_zip(directory, zip)) build_fatal("zip!=0", "", directory, zip, 604);
    if (delete_file(directory)) build_fatal("del!=0", "", directory, "", 605);
}

void build_install() {
    temp_path = start_temp_folder();
    std::vector<release_summary> summaries;
    const region_range range = regions_of_set();
    for (int region = range.first; region <= range.last; ++region) {
        begin_region(region);
        sub_install();
        summaries.push_back(summary_of_region());
    }

    // Six regions of seven would look like a set, so none has its name before all are whole.
    for (int region = range.first; region <= range.last; ++region)
        if (const int err = rename_file(build.dst_folder, unfinished_name(region), region_name(region)))
            __MACIBM_alert(0, "I could not give the finished release its name!",
                           build.dst_folder + unfinished_name(region), region_name(region), error_str(err), t_exit,
                           OOPS_PLACE);
    for (const release_summary& summary : summaries)
        builder_front.finished(summary);
    __MACIBM_alert(0, "OK compression is done. Checklist if doing net:",
                   "Carry the version string '" + build.release_name + "' and the version number " +
                       std::to_string(build.release_number) +
                       " into the serverlist.txt file of the internet folder, and put that on the server.",
                   "Upload the -NET uploads- folder stuff.",
                   "Extract directory.txt.zip to the next previous directory file for use next time.", t_alert,
                   "Installer-f/make_installer", 109);
}
