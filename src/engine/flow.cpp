#include "engine/flow.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <system_error>

#include "engine/choose.h"
#include "engine/directory.h"
#include "engine/dirs.h"
#include "engine/examine.h"
#include "engine/front.h"
#include "engine/grab.h"
#include "engine/outcome.h"
#include "engine/placing.h"
#include "engine/rename.h"
#include "engine/stg.h"
#include "engine/trust.h"
#include "engine/withdrawn.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/zip_io.h"
#include "net/http.h"
#include "net/server_list.h"
#include "platform/folder_lock.h"
#include "platform/folders.h"
#include "platform/paths.h"
#include "platform/volume.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/startup.h"
#include "runtime/xtim.h"

flow_t flow;

// Far more than any release needs, at 60 bytes a row.
constexpr std::int64_t most_list_bytes = 1 << 20, most_directory_zip_bytes = 256 << 20;
constexpr double file_work_seconds = 0.01;  // of a frame, so that the screen stays live

void flow_start() {
    stg = stg_t{};
    next = next_t{};
    flow = flow_t{};
    flow.list_host = default_list_host;
    server_list.install_name = no_install_name;
    temp_path = start_temp_folder();
}

int flow_server_list() {
    if (stg.server_cnt != -1) return net_complete;
    const std::string local = temp_path + temp_server_list;
    const int result =
        http.net_check(slot_list, {flow.list_host, "/serverlist.txt", local, most_list_bytes, "", -1, true});
    if (result == net_failed) end_if_temp_is_full(http.last_disk_failure());
    if (result != net_complete) return result;
    const int count = read_server_list(local);
    if (count == -1) {
        new_format(local);
        return result;
    }
    stg.server_cnt = count;
    stg.server_sel = pick_server_biased(count);
    return result;
}

void flow_make_paths() {
    if (stg.server_cnt == -1 || !flow.dir_path.empty()) return;
    flow.net_dir_path_zip = temp_path + temp_directory_zip;
    flow.dir_path = temp_path + temp_directory;
    flow.dir_path_path = temp_path;
    flow.dvd_dir_path_zip = dvd_path + server_list.install_name + "/directory.txt.zip";
}

// Signatures do not pack, so a catalogue shrinks to a third or so. What shrinks to nearly nothing is no catalogue but
// meant to fill the disk and the memory.
static std::uint64_t most_directory_bytes() {
    constexpr std::uint64_t always = 16 << 20, times_packed = 20;
    std::error_code error;
    const std::uint64_t packed = std::filesystem::file_size(flow.net_dir_path_zip, error);
    return always + (error ? 0 : times_packed * packed);
}

static void expand_directory() {
    const int err = zip_to_file(flow.net_dir_path_zip, beneath_folder(flow.dir_path_path), "",
                                {"directory.txt", "", most_directory_bytes()});
    end_if_temp_is_full(err);
    if (err == 0) {
        stg.dir_state = dir_unread;
    } else {
        http.reject(slot_directory, error_str(err));
        stg.server_sel = pick_other_server(stg.server_cnt, 1u << stg.server_sel);
        __MACIBM_alert(0, "DIR-scan: The installer cannot extract a file.", "Error: " + error_str(err),
                       "Compressed File/" + flow.net_dir_path_zip, "Destination Path/" + flow.dir_path_path, t_alert,
                       OOPS_PLACE);
    }
    delete_file(flow.net_dir_path_zip);
}

// The server's catalogue is not taken. Another one is asked; when each has been refused there is nothing to install.
static void refuse_catalogue(const std::string& why, int weight) {
    constexpr int enough = 2;
    const std::string server = server_list.server_name[stg.server_sel];
    flow.catalogue_came = 0;
    delete_file(flow.net_dir_path_zip);
    flow.refusals[stg.server_sel] += weight;
    unsigned refused = 0;
    for (int i = 0; i < stg.server_cnt; ++i)
        if (flow.refusals[i] >= enough) refused |= 1u << i;
    if (refused == (1u << stg.server_cnt) - 1) {
        stg.dir_state = dir_failed;
        __MACIBM_alert(0, "I will not install this release, because I cannot tell that it comes from its makers!",
                       "No server has a catalogue that is signed as it should be. The last one that I asked is:",
                       server, "It was refused because " + why + ".", t_alert, OOPS_PLACE);
    }
    stg.server_sel = pick_other_server(stg.server_cnt, refused | 1u << stg.server_sel);
}

// With keys, the signature is fetched from where the catalogue came from, before a row is read.
static int fetch_signature() {
    const std::string local = temp_path + temp_signature;
    const int result =
        http.net_check(slot_directory, {server_list.server_name[stg.server_sel],
                                        server_list.server_path[stg.server_sel] + "directory.txt.zip.minisig", local,
                                        most_signature_bytes});
    if (result == net_failed) end_if_temp_is_full(http.last_disk_failure());
    if (result == net_failed) refuse_catalogue("its signature could not be fetched (" + http.last_failure() + ")", 1);
    if (result != net_complete) return result;
    const std::string why = why_not_trusted(flow.net_dir_path_zip, local, server_list.install_name, std::time(nullptr));
    delete_file(local);
    if (!why.empty()) {
        http.reject(slot_directory, why);
        refuse_catalogue(why, 2);
        return net_failed;
    }
    flow.catalogue_came = 0;
    expand_directory();
    if (stg.dir_state == dir_unread) note_trusted_release();
    return net_complete;
}

int flow_directory() {
    if (stg.dir_state != dir_fetching) return net_complete;
    if (stg.server_cnt < 1) return net_running;
    if (flow.catalogue_came) return fetch_signature();
    flow_make_paths();
    const int server = stg.server_sel;
    const int result = http.net_check(
        slot_directory, {server_list.server_name[server], server_list.server_path[server] + "directory.txt.zip",
                         flow.net_dir_path_zip, most_directory_zip_bytes, "", -1, true});
    if (result == net_failed) {
        end_if_temp_is_full(http.last_disk_failure());
        stg.server_sel = pick_server_plain(stg.server_cnt);
    }
    if (result != net_complete) return result;
    if (!trust.keys.empty()) {
        flow.catalogue_came = 1;
        return net_running;
    }
    expand_directory();
    return result;
}

// Nothing of ours downloads to there; it is what another program of the family would have left. A file of the release
// that has such a name stays, and so does a whole archive, which may be the user's own.
static void delete_partial_zip(const file_version_struct& row) {
    const std::string partial = installed_path(row) + ".zip";
    const auto root = destination_folder();
    struct stat facts;
    if (root->look(partial, facts) != 0 || !S_ISREG(facts.st_mode) || is_whole_archive(way_to_destination() + partial))
        return;
    if (std::none_of(sim_info.begin(), sim_info.end(),
                     [&](const file_history_struct& history) { return installed_path(history.back()) == partial; }))
        root->remove_file(partial);
}

void stream_reset() {
    for (int stream = 0; stream < stream_max; ++stream) {
        const std::size_t file = stream_file(stream);
        if (next.stream_on[stream] && file < sim_info.size()) delete_partial_zip(sim_info[file].back());
    }
    streams_start();
}

static void give_destination_free() {
    let_go_of_destination();
    unlock_folder();
}

void flow_destination_picked() {
    stream_reset();
    give_destination_free();
    stg.install_failed = 0;
    stg.install_state = install_idle;
    stop_examination();
    if (stg.dir_state == dir_ready) stg.dir_state = dir_unread;
}

void flow_scan() {
    static const std::string label = "Scanning directory text file to see if you already have Velaris installed...";
    constexpr int slice_ms = 10;
    if (stg.dir_state != dir_unread) return;
    if (!is_examining()) {
        const int result = read_catalogue(flow.dir_path, label);
        if (result == dir_ready)
            begin_examination();
        else
            stg.dir_state = result;
    } else if (go_on_examining(label, slice_ms)) {
        stg.dir_state = dir_ready;
    }
}

bool flow_install_is_live() {
    return stg.install_state == install_idle && flow.disk_space_avail && stg.dir_state == dir_ready;
}

// False when another run has the destination. A folder that is not there yet is locked once it was made.
static bool lock_destination() {
    if (lock_folder(dest_dir_path) != folder_lock_result::busy) {
        hold_destination();
        return true;
    }
    flow.busy = 1;
    front.destination_busy();
    return false;
}

static void end_install(int state, int failed, int declined) {
    stg.install_state = state;
    stg.install_failed |= failed;
    flow.declined = declined;
    give_destination_free();
}

// An install that ends before its time keeps what has come so far.
static void finish_early() {
    place_all(false);
    sweep_folders();
}

void flow_install() {
    if (!flow_install_is_live()) return;
    flow.declined = flow.busy = 0;
    if (!lock_destination()) return;
    stream_reset();
    stg.install_failed = 0;
    // Folders, also for an agreement that may be refused.
    if (!make_dirs()) return end_install(install_over, 1, 0);
    if (!lock_destination()) return give_destination_free();
    // The agreement, then the questions, whatever was answered.
    if (front.handle_EULA()) stg.install_state = install_running;
    if (!choose_files()) stg.install_state = install_idle;
    if (stg.install_state != install_running) return end_install(install_idle, 0, 1);
    note_what_else_is_there();
    // What stands in the way of the files.
    const int clear = clear_the_way();
    if (next.cancelled) return end_install(install_idle, 0, 1);
    if (!clear) end_install(install_over, 1, 0);
}

void flow_quit() {
    stop_examination();
    if (stg.install_state == install_running) finish_early();
    stream_reset();
    give_destination_free();
    stg.install_state = install_over;
    app_done = 1;
}

void flow_file_work_once() {
    if (stg.install_state != install_running || !grab_files()) return;
    if (next.cancelled || stg.install_failed) finish_early();
    const int cancelled = next.cancelled;
    if (cancelled) stg.dir_state = dir_unread;  // the rows are compared anew before another try
    flow.finished = next;
    stream_reset();
    end_install(cancelled ? install_idle : install_over, 0, cancelled);
}

void flow_file_work() {
    const double start = xtim_class::seconds();
    while (start + file_work_seconds > xtim_class::seconds())
        flow_file_work_once();
    const float weight = 5 * xtim.prd_sim;  // a time constant of about a fifth of a second
    const float share = (1 - weight) * flow.totl_inst_rat + weight * (next.disk_kb / flow.tot_disk_req);
    flow.totl_inst_rat = share > 0 ? std::min(share, 1.0f) : 0.0f;  // no number, as of 0 / 0, is no progress
}

// A folder that is yet to be made will lie on the volume of the nearest one above it that is there.
static std::string nearest_folder(std::string path) {
    struct stat facts;
    while (stat(path.c_str(), &facts) != 0 && path.size() > 1)
        path = folder_of(path);
    return path;
}

void flow_disk_space() {
    if (stg.install_state != install_idle) return;
    flow.totl_inst_rat = 0;
    flow.tot_availabl = -1;
    flow.tot_down_req = stg.down_size;
    flow.tot_disk_req = stg.disk_size;
    const auto kilobytes_free = [](const std::string& folder) {
        std::uint64_t bytes = 0;
        return volume_free_bytes(folder, bytes) ? static_cast<float>(static_cast<double>(bytes) * 0.001) : -1.0f;
    };
    const std::string folder = nearest_folder(dest_dir_path);
    flow.tot_availabl = kilobytes_free(folder);
    if (stg.dir_state == dir_fetching || !(flow.tot_disk_req > 0 && flow.tot_availabl > 0)) return;
    flow.disk_space_avail = flow.tot_availabl > flow.tot_disk_req;
    // What travels lies in the temporary folder first. On the same volume it goes again before the end.
    struct stat here, there;
    if (stat(folder.c_str(), &here) != 0 || stat(temp_path.c_str(), &there) != 0 || here.st_dev == there.st_dev) return;
    const float temp_free = kilobytes_free(temp_path);
    if (temp_free >= 0 && temp_free < stg.temp_size) flow.disk_space_avail = 0;
}
