#include "builder/build.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "builder/compress.h"
#include "builder/copy_check.h"
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
#include "platform/sync.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/startup.h"

namespace fs = std::filesystem;

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

// With a history that is not whole, files would be withdrawn from nobody, or asked about everywhere.
void bad_history(const char* what) {
    __MACIBM_alert(0, what, build.old_dir_path, "Take the directory.txt.zip of the last release as it was published.",
                   "", t_exit, OOPS_PLACE);
}

bool read_old_directory() {
    // It may come as it was published. Its text then lies in the run's own folder, which goes with the run.
    std::string text = build.old_dir_path;
    if (text.ends_with(".zip")) {
        std::string entry = "directory.txt";
        if (temp_path.empty() || zip_to_file(text, temp_path, &entry, 1)) return false;
        text = temp_path + "directory.txt";
    }
    {
        // The reader meets a file that it does not know with the advice to fetch a newer installer and opens a browser,
        // which is no help to whoever makes one.
        const int versions[] = {840, 900, 0};
        xmap_class map;
        if (!map.retry_exact(text) || !map.check_file(file_text, versions, "INSTALLER", nullptr)) return false;
        // Whatever is missing at its end would be new, and withdrawn from nobody.
        if (map.length() == 0 || !is_line_end(map.mem_end[-1]))
            bad_history("The old directory is cut: it does not end with a whole line!");
    }
    if (read_catalogue(text, "Scanning old directory text file to get change log!") != dir_ready) return false;
    if (sim_info.empty()) bad_history("The old directory has no file in it!");
    return true;
}

void no_target_folder(const std::string& path) {
    build_fatal("Could not make the target_folder!", path,
                "THIS MAY SIMPLY BE BECAUSE THE FOLDER ALREADY EXISTS THOUGH!", "", 530);
}

// In each unfinished folder, so that nothing but what a builder left is ever swept away.
constexpr const char* marker_name = ".velaris-builder";
constexpr const char* marker_text = "An unfinished release. The next run of the builder sweeps it away.\n";

// Links on the way are followed, on both sides.
bool lies_in(const std::string& path, const std::string& folder) {
    std::error_code ignored;
    const std::string inner = (fs::weakly_canonical(path, ignored) / "").string();
    return inner.starts_with((fs::weakly_canonical(folder, ignored) / "").string());
}

// What an earlier run left unfinished. Anything else that bears the name is not ours.
void sweep(const std::string& folder) {
    std::error_code error;
    const fs::file_status found = fs::symlink_status(folder, error);
    if (!fs::exists(found)) return;
    if (lies_in(build.src_fold, folder) || (!build.old_dir_path.empty() && lies_in(build.old_dir_path, folder)))
        __MACIBM_alert(0, "The reference copy or the old directory lies where the builder does its work!", folder,
                       "An unfinished release of that name is swept away.", "Move them to another folder.", t_exit,
                       OOPS_PLACE);
    std::ifstream marker(folder + "/" + marker_name);
    const std::string text(std::istreambuf_iterator<char>(marker), {});
    const bool is_ours = fs::is_directory(found) && (text == marker_text || fs::is_empty(folder, error));
    if (!is_ours)
        __MACIBM_alert(0, "Something that the builder did not make is in its way!", folder,
                       "It bears the name of an unfinished release, but not the builder's mark.",
                       "Look what it is, and move it or remove it.", t_exit, OOPS_PLACE);
    fs::remove_all(folder, error);
}

// Fresh, with the mark of an unfinished release in it.
void make_output_folder() {
    // Better to hear of the last region's folder now than after hours of work on the others.
    const region_range range = regions_of_set();
    std::error_code ignored;
    for (int region = range.first; region <= range.last; ++region) {
        const std::string path = build.dst_folder + region_name(region);
        if (fs::exists(fs::symlink_status(path, ignored))) no_target_folder(path + "/");
    }
    sweep(build.dst_folder + unfinished_name(build.reg));
    if (make_folder(output_folder())) no_target_folder(output_folder());
    std::ofstream(output_folder() + marker_name) << marker_text;
}

// Told when the names are given, for all regions at once.
release_summary summary_of_region() {
    release_summary summary;
    summary.name = build.sim_name;
    summary.folder = build.dst_folder + build.sim_name + "/";
    summary.files = build.num_files_com;
    summary.tally = build.tally;
    summary.hidden = build.num_hidden;
    summary.bytes = build.zip_bytes;
    return summary;
}

}  // namespace

void sub_install() {
    const std::string directory = output_folder() + "directory.txt";
    set_landmarks();
    check_reference_path();

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
    comp_files(build.comp_files);
    write_gone_files();

    // The catalogue.
    ouf.close();
    if (ouf.fail())
        __MACIBM_alert(0, "I could not write the whole directory file!", directory, "Is the disk full?", "", t_exit,
                       OOPS_PLACE);
    const std::string zip = directory + ".zip";
    if (file_to_zip(directory, zip)) build_fatal("zip!=0", "", directory, zip, 604);
    if (delete_file(directory)) build_fatal("del!=0", "", directory, "", 605);

    // On the disk before it may bear its name: nobody looks a release over after a power cut.
    if (const int err = sync_volume(output_folder()))
        __MACIBM_alert(0, "I could not bring the release to the disk!", output_folder(), error_str(err), "", t_exit,
                       OOPS_PLACE);
}

void build_install() {
    temp_path = start_temp_folder();
    std::vector<release_summary> summaries;
    int files = 0;
    const region_range range = regions_of_set();
    for (int region = range.first; region <= range.last; ++region) {
        begin_region(region);
        sub_install();
        summaries.push_back(summary_of_region());
        files += build.num_files_com;
    }
    // Mars and the Moon have no regions of their own yet.
    if (files == 0 && is_dvd <= 2)
        __MACIBM_alert(0, "The release would have no file!", build.src_fold, "", "", t_exit, OOPS_PLACE);

    // Six regions of seven would look like a set, so none has its name before all are whole.
    for (int region = range.first; region <= range.last; ++region) {
        delete_file(build.dst_folder + unfinished_name(region) + "/" + marker_name);
        if (const int err = rename_file(build.dst_folder, unfinished_name(region), region_name(region)))
            __MACIBM_alert(0, "I could not give the finished release its name!",
                           build.dst_folder + unfinished_name(region), region_name(region), error_str(err), t_exit,
                           OOPS_PLACE);
    }
    sync_volume(build.dst_folder);
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
