#include "engine/grab.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "engine/front.h"
#include "engine/stg.h"
#include "engine/withdrawn.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/zip_io.h"
#include "net/http.h"
#include "platform/folders.h"
#include "platform/paths.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/xtim.h"

constexpr int first_stream_slot = 2;  // of the pool

static int file_count() {
    return static_cast<int>(sim_info.size());
}

// Kilobytes are cut, and a float holds large ones with gaps; a link may be longer than it counts.
static std::uint64_t most_bytes(float kilobytes) {
    constexpr double slack = 8192;
    return static_cast<std::uint64_t>((static_cast<double>(kilobytes) + 1) * 1000 * 1.001 + slack);
}

int extract_and_delete_file(const std::string& zip, const file_version_struct& row) {
    const std::string installed = installed_path(row), dest = destination_of(row);
    const std::string folder(without_slash(folder_of(installed)));
    const beneath_folder root = destination_folder();
    const int result =
        zip_to_file(zip, root, folder, {std::string(last_part(installed)), row.sig_want, most_bytes(row.ext_size)});
    log_action("EXPANDING file ", dest, result);
    if (result == 0) {
        const bool is_program = dest.find("Contents/MacOS/") != std::string::npos;
        log_action("CHMODING  file ", dest, is_program ? root.change_mode(installed, 0755) : 0);
    }
    if (!is_dvd) log_action("DELETING  file ", zip, delete_file(zip));
    return result;
}

static void tell_result(const file_version_struct& row, const std::string& zip, int result) {
    if (result == 0)
        ++next.files_done;
    else
        fail_install("The installer cannot extract a file.", error_str(result), "Compressed File: " + zip,
                     destination_of(row));
    front.file_finished(action_downloading, installed_path(row), result);
}

// The share of the stream's file that has arrived; a little below 0 while its length is not known.
static float arrived_share(int stream) {
    const down_class* transfer = http.slots[stream + first_stream_slot];
    if (!transfer) return 0.0f;
    if (transfer->content_len <= 0) return -0.01f;
    return static_cast<float>(static_cast<double>(transfer->received) / static_cast<double>(transfer->content_len));
}

// What the transfer of each stream was started for. An install that ended leaves its transfers in the pool, and what they
// bring must not be taken for a file of the next one.
static struct {
    std::string path;
    int server = 0;
} asked_for[stream_max];

// What came for a file and was not that file: how often, and from which servers, in one install.
struct refused_t {
    float install = 0;  // its next.start_time
    int count = 0;
    unsigned servers = 0;  // a bit for each
};
static std::map<std::string, refused_t> refused;  // by the row's path

// The same stream asks again, from another server.
static void ask_again(std::size_t s, int server) {
    stg.down_failed = 1;
    stg.server_sel = server;
    next.stream_fresh[s] = 0;
}

// The zip has arrived. True once the file is finished, well or not.
static bool take_zip(std::size_t s, const file_version_struct& row, const std::string& zip) {
    constexpr int most_bad_archives = 3;  // of one file, in a row
    const int result = extract_and_delete_file(zip, row);
    if (is_bad_archive(result)) {
        http.reject(static_cast<int>(s) + first_stream_slot, error_str(result));
        refused_t& so_far = refused[row.path];
        if (so_far.install != next.start_time) so_far = {next.start_time, 0, 0};
        so_far.servers |= 1u << asked_for[s].server;
        if (++so_far.count < most_bad_archives) {
            ask_again(s, pick_other_server(stg.server_cnt, so_far.servers));
            return false;
        }
    }
    refused.erase(row.path);
    stg.down_failed = 0;
    tell_result(row, zip, result);
    return true;
}

// The path as a request names it. The transfer itself sees to blanks; these a server would take for the end of the path, for
// a code, or for a broken request.
static std::string path_in_request(const std::string& path) {
    std::string asked;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= ' ' && byte != 127 && c != '%' && c != '?' && c != '#') {
            asked += c;
            continue;
        }
        asked += '%';
        asked += "0123456789ABCDEF"[byte >> 4];
        asked += "0123456789ABCDEF"[byte & 15];
    }
    return asked;
}

// Notes what the next transfer is for. Other streams choose servers too, so the choice may have gone back to one that has
// lied about this very file.
static void ask_for(std::size_t s, const std::string& path) {
    const auto liars = refused.find(path);
    if (liars != refused.end() && (liars->second.servers >> stg.server_sel & 1))
        stg.server_sel = pick_other_server(stg.server_cnt, liars->second.servers);
    asked_for[s] = {path, stg.server_sel};
}

// One look at the stream's transfer. True once its file is finished.
static bool fetch_over_net(int stream, const file_version_struct& row) {
    const std::size_t s = static_cast<std::size_t>(stream);
    const int slot = stream + first_stream_slot;
    if (!http.slots[slot]) ask_for(s, row.path);
    const std::size_t server = static_cast<std::size_t>(stg.server_sel);
    const std::string source = server_path[server] + path_in_request(row.path) + ".zip";
    const std::string zip = temp_path + temp_stream_zip(stream);
    http.most_bytes[slot] = static_cast<std::int64_t>(2 * most_bytes(row.zip_size));
    switch (http.net_check(slot, server_name[server], source, zip)) {
        case net_running:
            stg.file_rat = arrived_share(stream);
            next.part_kb += stg.file_rat * row.zip_size;
            return false;
        case net_complete:
            return asked_for[s].path == row.path && take_zip(s, row, zip);
        default:
            // Files beyond this one are handed out once more.
            next.next_file = std::min(next.next_file, next.stream_file[s]);
            ask_again(s, pick_server_biased(stg.server_cnt));
            return false;
    }
}

static bool fetch_from_disc(int stream, const file_version_struct& row, const std::string& source) {
    if (stream != 0)
        __MACIBM_alert(0, "Trying to do a DVD install with multiple streams!",
                       "The shark with the laser on his head is getting very dizzy!", "", "", t_exit, OOPS_PLACE);
    tell_result(row, source, extract_and_delete_file(source, row));
    stg.file_rat = 1;
    return true;
}

// One turn's work on the stream's file. True once the file is finished.
static bool work_on_file(int stream, file_version_struct& row) {
    const std::string source = is_dvd ? dvd_path + install_name + "/" + row.path + ".zip"
                                      : server_path[static_cast<std::size_t>(stg.server_sel)] + row.path + ".zip";
    crnt_file_path = source;
    crnt_file_name = last_part(source);
    if (row.path.ends_with('/'))
        __MACIBM_alert(0, "I am working through the list and found a path that has no file!",
                       "This is impossible to download or delete!", "It is:", row.path, t_exit, OOPS_PLACE);
    if (row.do_delete) {
        stg.file_action = action_deleting;
        delete_withdrawn(row);
    } else if (row.do_fetch) {
        stg.file_action = action_downloading;
        if (!(is_dvd ? fetch_from_disc(stream, row, source) : fetch_over_net(stream, row))) return false;
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

static void rename_destination() {
    if (dest_dir_path.size() < 2 || install_name.empty() || install_name.find('/') != std::string::npos) return;
    const std::string parent(folder_of(dest_dir_path));
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
    sweep_folders();
    if (this_install_has_exes && stg.rename_folder) rename_destination();
    return 1;
}
