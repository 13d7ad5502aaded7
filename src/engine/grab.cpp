#include "engine/grab.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "engine/front.h"
#include "engine/stg.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/opensave.h"
#include "files/zip_io.h"
#include "net/http.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/xtim.h"

constexpr int first_stream_slot = 2;  // of the pool

static int file_count() {
    return static_cast<int>(sim_info.size());
}

static void log_action(const char* what, const std::string& path, int result) {
    if (stg.log_actions) xer << what << path << ", with result=" << result << ".\n";
}

// The path without its last component; what is left ends in "/", or is empty.
static std::string folder_of(const std::string& path) {
    return path.size() < 2 ? std::string() : path.substr(0, path.rfind('/', path.size() - 2) + 1);
}

int delete_withdrawn(const file_version_struct& row) {
    const std::string installed = installed_path(row);
    const std::string destination = dest_dir_path + installed;
    int result = 0;
    if (!behind_shipped_link(installed)) {
        result = delete_file(destination);
        log_action("now we want to nuke a file: DELETING  file ", destination, result);
        for (std::string folder = folder_of(destination); folder.size() > dest_dir_path.size();
             folder = folder_of(folder))
            deleted_files.insert(folder);
        if (show_del_err(result))
            __MACIBM_alert(0, "Could not delete a file that I no longer want to have!", error_str(result), destination,
                           "", t_alert, OOPS_PLACE);
    }
    ++next.files_done;
    front.file_finished(action_deleting, installed, result);
    return result;
}

int extract_and_delete_file(const std::string& zip, const std::string& dest) {
    const int result = zip_to_file(zip, folder_of(dest), nullptr, 0);
    if (result != 0) {
        stg.install_failed = 1;
        __MACIBM_alert(0, "The installer cannot extract a file.", "Error: " + error_str(result),
                       "Compressed File: " + zip, "Destination: " + dest, t_alert, OOPS_PLACE);
    } else {
        const bool is_program = dest.find("Contents/MacOS/") != std::string::npos;
        const int chmod_result = is_program ? make_file_executable(dest) : 0;
        log_action("EXPANDING file ", dest, result);
        log_action("CHMODING  file ", dest, chmod_result);
    }
    if (!is_dvd) {
        const int delete_result = delete_file(zip);
        log_action("DELETING  file ", zip, delete_result);
    }
    return result;
}

static void expand(const file_version_struct& row, const std::string& zip) {
    const int result = extract_and_delete_file(zip, destination_of(row));
    if (result == 0) ++next.files_done;
    front.file_finished(action_downloading, installed_path(row), result);
}

// The share of the stream's file that has arrived; a little below 0 while its length is not known.
static float arrived_share(int stream) {
    const down_class* transfer = http.slots[stream + first_stream_slot];
    if (!transfer) return 0.0f;
    if (transfer->content_len <= 0) return -0.01f;
    return static_cast<float>(static_cast<double>(transfer->received) / static_cast<double>(transfer->content_len));
}

// One look at the stream's transfer. True once its file is finished.
static bool fetch_over_net(int stream, const file_version_struct& row, const std::string& source) {
    // What the transfer in each slot was started for. An install that ended leaves its transfers in the pool, and what
    // they bring must not be taken for a file of the next one.
    static std::string asked_for[stream_max];
    const std::size_t s = static_cast<std::size_t>(stream);
    const std::size_t server = static_cast<std::size_t>(stg.server_sel);
    const std::string zip = temp_path + std::to_string(stream) + ".zip";
    if (!http.slots[stream + first_stream_slot]) asked_for[s] = row.path;
    switch (http.net_check(stream + first_stream_slot, server_name[server], source, zip)) {
        case net_running:
            stg.file_rat = arrived_share(stream);
            next.part_kb += stg.file_rat * row.zip_size;
            return false;
        case net_complete:
            if (asked_for[s] != row.path) return false;
            stg.down_failed = 0;
            expand(row, zip);
            return true;
        default:
            // The same stream asks again, from the new server. Files beyond this one are handed out once more.
            stg.down_failed = 1;
            next.next_file = std::min(next.next_file, next.stream_file[s]);
            stg.server_sel = pick_server_biased(stg.server_cnt);
            next.stream_fresh[s] = 0;
            return false;
    }
}

static bool fetch_from_disc(int stream, const file_version_struct& row, const std::string& source) {
    if (stream != 0)
        __MACIBM_alert(0, "Trying to do a DVD install with multiple streams!",
                       "The shark with the laser on his head is getting very dizzy!", "", "", t_exit, OOPS_PLACE);
    expand(row, source);
    stg.file_rat = 1;
    return true;
}

// One turn's work on the stream's file. True once the file is finished.
static bool work_on_file(int stream, file_version_struct& row) {
    const std::string source = is_dvd ? dvd_path + install_name + "/" + row.path + ".zip"
                                      : server_path[static_cast<std::size_t>(stg.server_sel)] + row.path + ".zip";
    crnt_file_path = source;
    crnt_file_name = source.substr(source.rfind('/') + 1);
    if (row.path.ends_with('/'))
        __MACIBM_alert(0, "I am working through the list and found a path that has no file!",
                       "This is impossible to download or delete!", "It is:", row.path, t_exit, OOPS_PLACE);
    if (row.do_delete) {
        stg.file_action = action_deleting;
        delete_withdrawn(row);
    } else if (row.do_fetch) {
        stg.file_action = action_downloading;
        if (!(is_dvd ? fetch_from_disc(stream, row, source) : fetch_over_net(stream, row, source))) return false;
        row.have_file = 1;
        next.down_kb += row.zip_size;
        next.disk_kb += row.ext_size;
    } else {
        stg.file_action = row.have_file ? action_duplicate : action_not_needed;
    }
    return true;
}

// How many streams the speed so far is worth; only stream_max of them exist.
static int target_streams() {
    if (is_dvd) return 1;
    if (stg.stream_count) return std::max(stg.stream_count, 1);
    static const struct {
        float above_kb_s;
        int streams;
    } steps[] = {{200, 9}, {150, 8}, {100, 6}, {50, 4}};
    const float speed = (next.down_kb + next.part_kb) / std::max(xtim.real_time - next.start_time, 1.0f);
    for (const auto& step : steps)
        if (speed > step.above_kb_s) return step.streams;
    return 2;
}

// After a finished file: one stream more, one less, or the same ones go on.
static void decide_future(std::size_t s) {
    const int target = target_streams();
    const auto active = std::count(std::begin(next.stream_on), std::end(next.stream_on), 1);
    if (target > active) {
        for (std::size_t free = 0; free < stream_max; ++free) {
            if (next.stream_on[free]) continue;
            next.stream_on[free] = next.stream_fresh[free] = 1;
            break;
        }
    }
    if (target >= active)
        next.stream_fresh[s] = 1;
    else
        next.stream_on[s] = 0;
}

static void take_turn(int stream) {
    const std::size_t s = static_cast<std::size_t>(stream);
    if (!next.stream_on[s]) return;
    if (next.stream_fresh[s]) {
        next.stream_file[s] = next.next_file;
        next.next_file = std::min(next.next_file + 1, file_count());
    }
    if (next.stream_file[s] >= file_count()) return;  // idle, but it may be needed again
    next.stream_fresh[s] = 0;
    if (work_on_file(stream, sim_info[static_cast<std::size_t>(next.stream_file[s])].back())) decide_future(s);
}

static bool has_work_left() {
    for (std::size_t s = 0; s < stream_max; ++s)
        if (next.stream_on[s] && next.stream_file[s] < file_count()) return true;
    return false;
}

// Folders that became empty, children before their parents.
static void sweep() {
    for (auto folder = deleted_files.rbegin(); folder != deleted_files.rend(); ++folder) {
        std::vector<std::string> names;
        std::vector<int> kinds;
        if (opensave_getitems(*folder, kind_any, names, kinds) > 0) continue;
        const int result = delete_file(*folder);
        log_action("cleanup: DELETING  file ", *folder, result);
    }
}

static void rename_destination() {
    if (dest_dir_path.empty() || install_name.empty() || install_name.find('/') != std::string::npos) return;
    const std::string parent = folder_of(dest_dir_path);
    const std::string name = dest_dir_path.substr(parent.size(), dest_dir_path.size() - parent.size() - 1);
    if (rename_file(parent, name, install_name) == 0) dest_dir_path = parent + install_name + "/";
}

int grab_files() {
    next.part_kb = 0;
    for (int stream = 0; stream < stream_max; ++stream)
        take_turn(stream);
    if (has_work_left()) return stg.install_failed;
    // The last file may have failed in a stream that ended with it.
    if (stg.install_failed) return 1;
    next.all_done = 1;
    sweep();
    if (this_install_has_exes && stg.rename_folder) rename_destination();
    return 1;
}
