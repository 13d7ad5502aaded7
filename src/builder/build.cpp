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
#include "engine/stg.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/xmap.h"
#include "files/zip_io.h"
#include "platform/folders.h"
#include "runtime/oops.h"
#include "runtime/product.h"

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

// The catalogue may come as it was published. Its text then lies in the run's own folder, which goes with the run.
bool expand_old_directory() {
    if (!old_dir_path.ends_with(".zip")) return true;
    const std::string text = "directory.txt";
    std::string entry = text;
    if (temp_path.empty() || zip_to_file(old_dir_path, temp_path, &entry, 1)) return false;
    old_dir_path = temp_path + text;
    return true;
}

// The reader meets a file that it does not know with the advice to fetch a newer installer and opens a browser, which is
// no help to whoever makes one.
bool old_directory_has_a_header() {
    const int versions[] = {840, 900, 0};
    xmap_class map;
    return map.retry_exact(old_dir_path) && map.check_file(file_text, versions, "INSTALLER", nullptr);
}

bool read_old_directory() {
    if (!expand_old_directory() || !old_directory_has_a_header()) return false;
    // The reader also compares a destination with the catalogue; here there is none, and an empty folder is quick.
    dest_dir_path = temp_path;
    return read_directory(old_dir_path, "Scanning old directory text file to get change log!") == dir_ready;
}

void start_history() {
    if (is_dvd != 0) old_dir_path.clear();  // a disc is a fresh start
    if (is_dvd == 0 && !first_release && !read_old_directory())
        build_fatal("I could not read the old directory!",
                    "This means that this installer will not delete old files (needed even for the Velaris / USA "
                    "scenery install).",
                    "It also means I will forget to fix this, and release without an old directory, and think that "
                    "older versions of stuff is all user-modified cause I don't recognize it!",
                    "So fix this.", 513);
    index_history();
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
        const std::string path = dst_folder + region_name(region);
        if (std::filesystem::exists(std::filesystem::symlink_status(path, ignored))) no_target_folder(path + "/");
    }
    std::filesystem::remove_all(dst_folder + unfinished_name(reg), ignored);
    if (make_folder(output_folder())) no_target_folder(output_folder());
}

void open_directory(const std::string& path) {
    if (!ouf_open(path, file_text, 900, "no-copyright-string"))
        __MACIBM_alert(0, "I could not open the new directory file!", path, "", "", t_exit, OOPS_PLACE);
    ouf << "INSTALLER\n\n";
}

void close_directory(const std::string& path) {
    ouf.close();
    if (ouf.fail())
        __MACIBM_alert(0, "I could not write the whole directory file!", path, "Is the disk full?", "", t_exit,
                       OOPS_PLACE);
}

void zip_directory(const std::string& path, const std::string& zip) {
    if (file_to_zip(path, zip)) build_fatal("zip!=0", "", path, zip, 604);
    if (delete_file(path)) build_fatal("del!=0", "", path, "", 605);
}

release_summary summary_of_region() {
    release_summary summary;
    summary.name = sim_name;
    summary.folder = dst_folder + sim_name + "/";
    summary.files = num_files_com;
    summary.added = tally.added;
    summary.changed = tally.changed;
    summary.same = tally.same;
    summary.withdrawn = tally.withdrawn;
    summary.kilobytes = zip_size_ins * 1e6;
    return summary;
}

void give_final_names() {
    const region_range range = regions_of_set();
    for (int region = range.first; region <= range.last; ++region)
        if (const int err = rename_file(dst_folder, unfinished_name(region), region_name(region)))
            __MACIBM_alert(0, "I could not give the finished release its name!", dst_folder + unfinished_name(region),
                           region_name(region), error_str(err), t_exit, OOPS_PLACE);
}

void show_checklist() {
    __MACIBM_alert(0, "OK compression is done. Checklist if doing net:",
                   "Carry the version string '" + release_name + "' and the version number " +
                       std::to_string(release_number) +
                       " into the serverlist.txt file of the internet folder, and put that on the server.",
                   "Upload the -NET uploads- folder stuff.",
                   "Extract directory.txt.zip to the next previous directory file for use next time.", t_alert,
                   "Installer-f/make_installer", 109);
}

}  // namespace

void sub_install() {
    dst_folder = dst_fold_base;
    const std::string directory = output_folder() + "directory.txt";
    reset_region();
    set_landmarks();
    start_history();

    make_output_folder();
    open_directory(directory);
    pref_level(src_fold);
    check_landmarks();

    for (const std::string& path : comp_paths)
        make_folder(path);  // a parent sorts before its children
    for (const std::string& path : comp_files)
        comp_file(path);
    write_gone_files();
    close_directory(directory);
    zip_directory(directory, directory + ".zip");
}

void build_install() {
    get_OS_abs_path(os_dir_temp, &temp_path);
    std::vector<release_summary> summaries;
    const region_range range = regions_of_set();
    for (reg = range.first; reg <= range.last; ++reg) {
        sim_name = region_name(reg);
        sub_install();
        summaries.push_back(summary_of_region());
    }
    give_final_names();
    for (const release_summary& summary : summaries)
        builder_front.finished(summary);
    show_checklist();
}
