#include "engine/withdrawn.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <set>
#include <vector>

#include "engine/backup.h"
#include "engine/choose.h"
#include "engine/front.h"
#include "engine/outcome.h"
#include "engine/stg.h"
#include "engine/streams.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/opensave.h"
#include "files/xmap.h"
#include "platform/folders.h"
#include "platform/paths.h"
#include "runtime/oops.h"

bool is_fixed_folder(std::string_view folder) {
    return std::any_of(std::begin(fixed_folders), std::end(fixed_folders), [&](std::string_view fixed) {
        return folder.size() == fixed.size() + 1 && folder.starts_with(fixed);
    });
}

// The folders on the way to a file may be empty now. Those that every install makes stay.
static void mark_for_sweep(const std::string& installed) {
    for (std::string_view passed = folder_of(installed); !passed.empty(); passed = folder_of(passed)) {
        const std::string folder(passed);
        if (!is_fixed_folder(folder)) deleted_files.insert(dest_dir_path + folder);
    }
}

int delete_withdrawn(std::size_t file) {
    file_version_struct& row = current_row(file);
    const std::string installed = installed_path(row), destination = destination_of(row);
    int result = 0, action = action_deleting;
    if (!behind_shipped_link(installed)) {
        const last_word word = decide_again(file);
        if (word == last_word::cancel) {
            next.cancelled = 1;
            return ECANCELED;
        }
        if (word == last_word::go_on) {
            const auto root = destination_folder();
            result = keep_copy_if_wanted(file);
            if (result == 0) result = root->remove_file(installed);
        } else {
            result = row.sig_have == "NONE" ? ENOENT : EEXIST;
            if (result == EEXIST) action = action_duplicate;
        }
        if (result == EXDEV) result = err_leads_outside;
        log_action("now we want to nuke a file: DELETING  file ", destination, result);
        if (result == 0) mark_for_sweep(installed);
        if (result == err_leads_outside)
            fail_install("I did not delete a file that I no longer want to have!", error_str(result), "", destination);
        else if (show_del_err(result))
            __MACIBM_alert(0, "Could not delete a file that I no longer want to have!", error_str(result), destination,
                           "", t_alert, OOPS_PLACE);
    }
    ++next.files_done;
    ++next.progress;
    front.file_finished(action, installed, action == action_duplicate ? 0 : result);
    return result;
}

void note_deletions() {
    std::string note;
    for (const file_history_struct& history : sim_info)
        if (history.back().do_delete) note += installed_path(history.back()) + "\n";
    if (note.empty()) return;
    // If it fails, an empty folder may stay. Behind a line end, as the note of an earlier run may be torn.
    const auto root = destination_folder();
    if (root->append(emptied_note, "\n" + note) == 0) root->sync_volume();
}

// A run that was killed between the last file of a folder and the sweep leaves the folder to the next one, and a note,
// since a folder may be empty because the user wants it so.
static void mark_what_an_earlier_run_emptied() {
    xmap_class note(way_to_destination() + emptied_note);
    std::set<std::string> noted;
    for (std::string path; note.mem_start && !note.at_end();) {
        note.TXT_str_scan_eoln(&path);
        noted.insert(path);
    }
    if (noted.empty()) return;
    for (const file_history_struct& history : sim_info) {
        const std::string installed = installed_path(history.back());
        if (is_gone(history.back()) && history.back().sig_have == "NONE" && noted.contains(installed))
            mark_for_sweep(installed);
    }
}

void sweep_folders() {
    mark_what_an_earlier_run_emptied();
    const auto root = destination_folder();
    for (auto folder = deleted_files.rbegin(); folder != deleted_files.rend(); ++folder) {
        std::vector<std::string> names;
        std::vector<int> kinds;
        struct stat facts;
        const std::string below = folder->substr(dest_dir_path.size(), folder->size() - dest_dir_path.size() - 1);
        if (root->look(below, facts) != 0 || !S_ISDIR(facts.st_mode)) continue;
        if (opensave_getitems(way_to_destination() + below + "/", kind_any, names, kinds) > 0) continue;
        log_action("cleanup: DELETING  file ", *folder, root->remove_folder(below));
    }
    root->remove_file(emptied_note);
}
