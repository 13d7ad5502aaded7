#include "engine/dirs.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <set>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/directory.h"
#include "engine/examine.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "engine/withdrawn.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "platform/folders.h"
#include "platform/paths.h"
#include "runtime/log.h"
#include "runtime/oops.h"

typedef std::set<std::string> folder_set;  // below the destination, without a "/" at the end; parents sort first

// Names at which the release carries links. Anything else that stands there is moved aside, to "_" and the name.
static const struct {
    const char* folder;
    const char* name;
} framework_links[] = {{"Resources/plugins/QRNK.framework/Versions/", "Current"},
                       {"Resources/plugins/Panelkit.framework/Versions/", "Current"},
                       {"Resources/plugins/QRNK.framework/", "Resources"},
                       {"Resources/plugins/Panelkit.framework/", "Resources"}};

void make_dir_error(const std::string& path, int err) {
    __MACIBM_alert(0,
                   "I am unable to install or update Velaris. An error occurred while creating new folders. Make sure "
                   "you are installing to a directory that you have access to!",
                   "Error: " + error_str(err), "Install Location: " + dest_dir_path, "Install Path:" + path, t_alert,
                   OOPS_PLACE);
}

// False when the folder could not be made; the user has been told then.
static bool make_or_tell(const std::string& path) {
    const int err = make_folder(path);
    if (!show_make_dir_err(err)) return true;
    make_dir_error(path, err);
    return false;
}

// The same for a folder below the destination, "" for the destination itself. One behind a link that leads out is not
// made; clear_the_way tells of it before anything is written.
static bool make_below_or_tell(const beneath_folder& root, const std::string& folder) {
    const int err = root.make_folder(folder, 0755);
    if (err == EXDEV) xer << "not made, as it would lie outside: " << dest_dir_path << folder << "\n";
    if (err == EXDEV || !show_make_dir_err(err)) return true;
    make_dir_error(dest_dir_path + folder, err);
    return false;
}

static bool make_road_to_destination() {
    for (const std::string_view folder : folders_passed(dest_dir_path))
        if (!make_or_tell(std::string(folder))) return false;
    return true;
}

static folder_set wanted_folders() {
    folder_set folders;
    for (std::size_t file = 0; file < sim_info.size(); ++file) {
        const file_version_struct& row = current_row(file);
        if (is_gone(row) || !is_wanted(row)) continue;
        const std::string path = installed_path(row);
        for (std::string_view folder = folder_of(path); !folder.empty(); folder = folder_of(folder))
            if (!folders.insert(std::string(without_slash(folder))).second) break;  // it brought its ancestors with it
    }
    return folders;
}

// Of the thing itself, not of what a link leads to; 0 for nothing.
static mode_t kind_on_disk(const std::string& installed) {
    struct stat info;
    return lstat((way_to_destination() + installed).c_str(), &info) == 0 ? info.st_mode & S_IFMT : 0;
}

static bool leads_to_folder(const std::string& installed) {
    struct stat info;
    return stat((way_to_destination() + installed).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// The contested paths at which a folder is wanted and something else stands.
static std::vector<std::string> taken_places(const folder_set& folders) {
    std::vector<std::string> taken;
    for (const auto& [path, files] : contested_paths()) {
        const mode_t kind = kind_on_disk(path);
        const bool is_fixed = std::count(std::begin(fixed_folders), std::end(fixed_folders), path) > 0;
        if ((folders.count(path) || is_fixed) && kind != 0 && kind != S_IFDIR) taken.push_back(path);
    }
    return taken;
}

static bool is_at_or_inside(std::string_view path, const std::vector<std::string>& places) {
    return std::any_of(places.begin(), places.end(),
                       [&](const std::string& place) { return path == place || path_is_inside(path, place); });
}

int make_dirs() {
    if (!make_road_to_destination()) return 0;
    const folder_set folders = wanted_folders();
    const std::vector<std::string> taken = taken_places(folders);
    const auto root = destination_folder();
    for (const std::string& folder : folders)
        if (!is_at_or_inside(folder, taken) && !make_below_or_tell(*root, folder)) return 0;
    for (const char* folder : fixed_folders)
        if (!is_at_or_inside(folder, taken) && !make_below_or_tell(*root, folder)) return 0;
    for (const auto& link : framework_links) {
        const std::string folder = link.folder;
        struct stat facts;
        if (root->look(folder + link.name, facts) == 0 && !S_ISLNK(facts.st_mode))
            root->rename(folder + link.name, folder + "_" + link.name);
    }
    return 1;
}

// Whether what stands in the place of a wanted folder may go. Where the choice of files has spoken it holds (the user
// keeps the file, or the release itself wants both); files of other systems were not asked about there.
static bool may_go(const std::string& path, const std::vector<std::size_t>& files) {
    if (std::any_of(files.begin(), files.end(), [](std::size_t file) { return current_row(file).do_delete; }))
        return true;
    if (std::any_of(files.begin(), files.end(), [](std::size_t file) { return is_wanted(current_row(file)); }))
        return false;
    const std::string place = dest_dir_path + path;
    if (signature_was_shipped(files.front(), current_row(files.front()).sig_have)) return true;
    if (leads_to_folder(path)) return false;  // the user's own link to a folder serves as one
    file_version_struct& row = current_row(files.front());
    const changed_answer answer = front.select_alert(place, true, trouble_with(files.front()));
    row.keep_copy = answer == changed_answer::backup;
    return row.keep_copy || answer == changed_answer::do_it || answer == changed_answer::do_all;
}

// What the scan saw below a link was not there: it lay where the link led.
static void decide_anew_below(const std::string& path) {
    for (std::size_t file = 0; file < sim_info.size(); ++file) {
        file_version_struct& row = current_row(file);
        if (!is_wanted(row) || !path_is_inside(installed_path(row), path)) continue;
        row.have_file = 0;
        row.do_fetch = !is_gone(row);
        row.do_delete = 0;
    }
}

// True if folders can be made there from now on.
static bool free_taken_place(const std::string& path, const std::vector<std::size_t>& files) {
    const std::string place = dest_dir_path + path;
    if (kind_on_disk(path) == 0) return true;  // it was seen through a link that is gone by now
    if (!may_go(path, files)) {
        if (leads_to_folder(path)) return true;
        make_dir_error(place, EEXIST);
        return false;
    }
    const int err = delete_withdrawn(files.front());
    if (err != 0) {
        make_dir_error(place, err);
        return false;
    }
    for (const std::size_t file : files)
        current_row(file).do_delete = 0;
    decide_anew_below(path);
    return true;
}

static void free_taken_places() {
    folder_set folders = wanted_folders();
    std::vector<std::string> freed = taken_places(folders);
    if (freed.empty()) return;
    std::erase_if(freed, [](const std::string& path) { return !free_taken_place(path, contested_paths().at(path)); });
    folders.insert(std::begin(fixed_folders), std::end(fixed_folders));
    const auto root = destination_folder();
    for (const std::string& folder : folders)
        if (is_at_or_inside(folder, freed) && !make_below_or_tell(*root, folder)) break;
}

// A folder where a file is to be installed, and what is in it.
struct folder_in_the_way {
    std::string path;                  // installed, as the folders below are
    std::vector<std::size_t> files;    // withdrawn, and to be deleted with it
    std::vector<std::string> folders;  // itself first, parents before children
};

typedef std::unordered_map<std::string, std::size_t> withdrawn_t;  // installed path to the history

// Withdrawn files that may be deleted: decided so, or shipped for a system that is not installed for here.
static withdrawn_t withdrawn_files() {
    withdrawn_t withdrawn;
    for (std::size_t file = 0; file < sim_info.size(); ++file) {
        const file_version_struct& row = current_row(file);
        if (!is_gone(row)) continue;
        if (row.do_delete || (!is_wanted(row) && signature_was_shipped(file, row.sig_have)))
            withdrawn[installed_path(row)] = file;
    }
    return withdrawn;
}

// False if the folder holds anything but withdrawn files, or cannot be looked through.
static bool look_through(folder_in_the_way& found, const withdrawn_t& withdrawn) {
    std::error_code error;
    const std::string way = way_to_destination();
    found.folders.push_back(found.path);
    for (std::filesystem::recursive_directory_iterator item(way + found.path, error), end; !error && item != end;
         item.increment(error)) {
        const std::string path = item->path().string().substr(way.size());
        const auto known = withdrawn.find(path);
        if (kind_on_disk(path) == S_IFDIR)
            found.folders.push_back(path);
        else if (known != withdrawn.end())
            found.files.push_back(known->second);
        else
            return false;
    }
    return !error;
}

static void remove_folder(const folder_in_the_way& found) {
    for (const std::size_t file : found.files) {
        delete_withdrawn(file);
        current_row(file).do_delete = 0;
    }
    for (auto folder = found.folders.rbegin(); folder != found.folders.rend(); ++folder)
        destination_folder()->remove_folder(*folder);
}

static int remove_folders_in_the_way() {
    std::vector<folder_in_the_way> all;
    withdrawn_t withdrawn;
    for (std::size_t file = 0; file < sim_info.size(); ++file) {
        const file_version_struct& row = current_row(file);
        if (!row.do_fetch || kind_on_disk(installed_path(row)) != S_IFDIR) continue;
        if (behind_shipped_link(installed_path(row))) continue;
        if (all.empty()) withdrawn = withdrawn_files();
        all.push_back({installed_path(row), {}, {}});
        if (look_through(all.back(), withdrawn)) continue;
        __MACIBM_alert(0, "I need to install a file, but a folder of that name stands in its place!",
                       "It holds files that do not come from Velaris, so I will not remove it.",
                       "Please move or rename that folder, and install again. The folder is:", destination_of(row),
                       t_alert, OOPS_PLACE);
        return 0;
    }
    for (const folder_in_the_way& found : all)
        remove_folder(found);
    return 1;
}

// The first folder on the way to `folder`, which ends in "/", that leads out of the destination; "" if none does.
static std::string way_out(const beneath_folder& root, const std::string& folder) {
    for (const std::string_view passed : folders_passed(folder)) {
        std::string part(passed);
        const int err = beneath_folder(root, part).error();
        if (err == EXDEV) return part;
        if (err) break;
    }
    return "";
}

// Whether every file to install or delete lies in the destination. What is behind a link that the release itself once
// laid there does not count, as long as that link is still to be cleared away.
static bool all_stays_inside(bool links_are_cleared) {
    const auto root = destination_folder();
    std::string last_folder;  // files of one folder stand together
    for (const file_history_struct& history : sim_info) {
        const file_version_struct& row = history.back();
        if (!row.do_fetch && !row.do_delete) continue;
        const std::string installed = installed_path(row);
        const std::string folder(folder_of(installed));
        if (folder.empty() || folder == last_folder) continue;
        last_folder = folder;
        const std::string out = way_out(*root, folder);
        if (out.empty() || (!links_are_cleared && behind_shipped_link(installed))) continue;
        xer << "leads out of the destination: " << dest_dir_path << out << "\n";
        __MACIBM_alert(0, "A folder of this copy is a link that leads out of it!",
                       "I install and delete nothing outside the folder that you chose.",
                       "Please put a real folder in the place of the link, and install again. The link is:",
                       dest_dir_path + out, t_alert, OOPS_PLACE);
        return false;
    }
    return true;
}

// What a run that was killed has left beside the places of its files. It would also keep its folder from going.
static void remove_leftovers() {
    const auto root = destination_folder();
    std::unordered_set<std::string_view> folders;
    for (const file_history_struct& history : sim_info) {
        const std::string_view folder = folder_of(installed_view(history.back()));
        if (!folders.insert(folder).second) continue;
        std::error_code error;
        for (std::filesystem::directory_iterator item(way_to_destination() + std::string(folder), error), end;
             !error && item != end; item.increment(error)) {
            const std::string name = item->path().filename().string();
            if (name.starts_with(temp_part)) root->remove_file(std::string(folder) + name);
        }
    }
}

int clear_the_way() {
    remove_leftovers();
    if (!all_stays_inside(false)) return 0;
    note_deletions();
    if (!remove_folders_in_the_way()) return 0;
    free_taken_places();
    return all_stays_inside(true);
}
