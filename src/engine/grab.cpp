#include "engine/grab.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <map>
#include <set>

#include "engine/front.h"
#include "engine/outcome.h"
#include "engine/placing.h"
#include "engine/rename.h"
#include "engine/stg.h"
#include "engine/streams.h"
#include "engine/withdrawn.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/zip_io.h"
#include "net/http.h"
#include "net/parts.h"
#include "net/server_list.h"
#include "platform/folders.h"
#include "platform/paths.h"
#include "runtime/oops.h"
#include "runtime/product.h"

namespace {

// What came for a file and was not that file: how often, and from which servers.
struct refused_t {
    int count = 0;
    unsigned servers = 0;  // a bit for each
};

struct grab_t {
    // What the transfer of each stream was started for. An install that ended leaves its transfers in the pool, and
    // what they bring must not be taken for a file of the next one.
    struct {
        std::string path;
        int server = 0;
        std::string zip;  // where it is written
    } asked_for[stream_max];
    float install = 0;                         // start_time of the install that `refused` is of
    std::map<std::string, refused_t> refused;  // by the row's path
    // How often each server has said that it has no such file, and the files that none has; of the same install.
    std::map<std::size_t, std::array<int, max_servers>> denied;
    std::set<std::size_t> missing;
    // What the pool was told of: files of the list up to this one, for this server, while next_file stood there.
    int announced = 0, announced_for = -1, announced_at = 0;
};
grab_t grab;

// Kilobytes are cut, and a float holds large ones with gaps; a link may be longer than it counts.
std::int64_t most_bytes(float kilobytes) {
    constexpr double slack = 8192;
    return static_cast<std::int64_t>((static_cast<double>(kilobytes) + 1) * 1000 * 1.001 + slack);
}

http_request request_for(const file_version_struct& row, int server) {
    return {server_list.server_name[server],
            server_list.server_path[server] + row.path + ".zip",
            "",
            2 * most_bytes(row.zip_size),
            row.path,
            static_cast<std::int64_t>(row.zip_size) * 1000,
            false,
            false,
            stg.server_cnt > 1,
            server};
}

// Tells the pool which files the streams will come to, so that it can ask for them ahead.
void announce_files() {
    // Another server, a list that was rewound, or another install: again from the next file on.
    if (grab.announced_for != stg.server_sel || next.next_file < grab.announced_at) {
        http.forget_announced(false);
        grab.announced = 0;
    }
    grab.announced_for = stg.server_sel;
    grab.announced_at = next.next_file;
    http.most_lines = streams_on();
    grab.announced = std::max(grab.announced, next.next_file);
    for (; grab.announced < std::ssize(sim_info) && http.wants_announcements(); ++grab.announced) {
        const file_version_struct& row = sim_info[static_cast<std::size_t>(grab.announced)].back();
        if (row.do_fetch && !row.do_delete && !grab.refused.contains(row.path) &&
            !grab.denied.contains(static_cast<std::size_t>(grab.announced)))
            http.announce(request_for(row, stg.server_sel));
    }
}

// The zip could not be expanded, and that is not for another server to mend.
void fail_file(std::size_t file, const std::string& zip, int result) {
    const file_version_struct& row = current_row(file);
    fail_install("The installer cannot extract a file.", error_str(result), "Compressed File: " + zip,
                 destination_of(row));
    front.file_finished(action_downloading, installed_path(row), result);
}

// The stream asks for its file again, from another server.
void ask_again(int stream, int server) {
    stg.down_failed = 1;
    stg.server_sel = server;
    next.stream_fresh[stream] = 0;
}

// The temporary folder, or for what takes long the place of its part; not for two streams at once.
std::string place_for_zip(int stream, const file_version_struct& row) {
    const std::string part = part_path(row.sig_want, static_cast<std::int64_t>(row.zip_size) * 1000);
    const bool in_use = std::any_of(std::begin(http.slots), std::end(http.slots),
                                    [&](const down_ptr& other) { return other && other->request.local == part; });
    return part.empty() || in_use ? temp_path + temp_stream_zip(stream) : part;
}

// A bit for each server that has lied about the file, or has denied it more often than another.
unsigned servers_to_avoid(std::size_t file) {
    unsigned servers = 0;
    const auto liars = grab.refused.find(current_row(file).path);
    if (liars != grab.refused.end()) servers = liars->second.servers;
    const auto denied = grab.denied.find(file);
    if (denied == grab.denied.end()) return servers;
    const auto& answers = denied->second;
    const int fewest = *std::min_element(answers.begin(), answers.begin() + std::max(stg.server_cnt, 1));
    for (std::size_t server = 0; server < answers.size(); ++server)
        servers |= static_cast<unsigned>(answers[server] > fewest) << server;
    return servers;
}

// A server has said that it has no such file. The others are asked, and each twice, as one may be behind the others by
// a few minutes; then the file is set aside. True once it is.
bool is_absent(int stream, std::size_t file, int server) {
    constexpr int enough = 2;
    auto& answers = grab.denied[file];
    ++answers[static_cast<std::size_t>(server)];
    const int fewest = *std::min_element(answers.begin(), answers.begin() + std::max(stg.server_cnt, 1));
    if (fewest >= enough) {
        grab.missing.insert(file);
        stg.down_failed = 0;
        front.file_finished(action_downloading, installed_path(current_row(file)), ENOENT);
        return true;
    }
    ask_again(stream, pick_other_server(stg.server_cnt, servers_to_avoid(file)));
    return false;
}

// What no server has ends the install as a failure, after all that could be had is there.
void tell_of_missing_files() {
    constexpr int most_named = 3;
    std::string names;
    int named = 0;
    for (auto file = grab.missing.begin(); file != grab.missing.end() && named < most_named; ++file, ++named)
        names += (named ? ", " : "") + installed_path(current_row(*file));
    stg.install_failed = 1;
    __MACIBM_alert(0, "Some files of this release are on none of its servers!",
                   "Missing: " + std::to_string(grab.missing.size()) + ". Everything else was installed.",
                   (grab.missing.size() > most_named ? "Among them: " : "They are: ") + names,
                   "Please try again later.", t_alert, OOPS_PLACE);
}

// One look at the stream's transfer. True once its file is finished, well or not.
bool fetch_over_net(int stream, std::size_t file) {
    const file_version_struct& row = current_row(file);
    constexpr int most_bad_archives = 3;  // of one file, in a row
    auto& asked = grab.asked_for[stream];
    // Ask, or go on asking: in the words of the announcement, where the file is on its way already. Other streams
    // choose servers too, so the choice may have gone back to one that has lied about this very file.
    if (!http.slots[stream_slot(stream)]) {
        const unsigned avoided = servers_to_avoid(file);
        if (avoided >> stg.server_sel & 1) stg.server_sel = pick_other_server(stg.server_cnt, avoided);
        const http_request* announced = http.announced(row.path);
        asked = {row.path, announced ? announced->mark : stg.server_sel, place_for_zip(stream, row)};
    }
    http_request request = request_for(row, asked.server);
    const std::string zip = request.local = asked.zip;
    request.outlasts = !zip.starts_with(temp_path);
    const int outcome = http.net_check(stream_slot(stream), request);
    if (outcome == net_running) {
        stg.file_rat = stream_arrived_share(stream);
        next.part_kb += stg.file_rat * row.zip_size;
        return false;
    }
    if (outcome == net_failed) {
        end_if_temp_is_full(http.last_disk_failure());
        const down_class& over = *http.last[stream_slot(stream)];
        if (over.os_err == 0 && (over.status == 404 || over.status == 403 || over.status == 410))
            return is_absent(stream, file, asked.server);
        stream_retries(stream);
        ask_again(stream, leave_server(stg.server_cnt, asked.server));
        return false;
    }
    // Here it is, unless it was for a file of an install that ended.
    if (asked.path != row.path) return false;
    const int result = extract_and_delete_file(zip, file);
    // What is not the file that was promised counts as a failure of the server that sent it.
    if (is_bad_archive(result)) {
        if (http.reject(stream_slot(stream), error_str(result))) return false;
        refused_t& so_far = grab.refused[row.path];
        so_far.servers |= 1u << asked.server;
        leave_server(stg.server_cnt, asked.server);
        if (++so_far.count < most_bad_archives) {
            ask_again(stream, pick_other_server(stg.server_cnt, so_far.servers));
            return false;
        }
    }
    grab.refused.erase(row.path);
    stg.down_failed = 0;
    if (result != 0) fail_file(file, zip, result);
    return true;
}

// One turn's work on the stream's file. True once the file is finished.
bool work_on_file(int stream, std::size_t file) {
    file_version_struct& row = current_row(file);
    // Where it comes from, for the status lines too.
    crnt_file_path = (is_dvd ? dvd_path + server_list.install_name + "/" : server_list.server_path[stg.server_sel]) +
                     row.path + ".zip";
    crnt_file_name = last_part(crnt_file_path);
    if (row.path.ends_with('/'))
        __MACIBM_alert(0, "I am working through the list and found a path that has no file!",
                       "This is impossible to download or delete!", "It is:", row.path, t_exit, OOPS_PLACE);
    // Withdrawn, or nothing to do.
    if (row.do_delete) {
        stg.file_action = action_deleting;
        delete_withdrawn(file);
        return true;
    }
    if (!row.do_fetch) {
        stg.file_action = row.have_file ? action_duplicate : action_not_needed;
        return true;
    }
    // From a server, in as many turns as it takes, or from a disc, at once.
    stg.file_action = action_downloading;
    if (!is_dvd) {
        if (grab.missing.contains(file)) return true;
        if (!fetch_over_net(stream, file)) return false;
        if (grab.missing.contains(file)) return true;
    } else {
        if (stream != 0)
            __MACIBM_alert(0, "Trying to do a DVD install with multiple streams!",
                           "The shark with the laser on his head is getting very dizzy!", "", "", t_exit, OOPS_PLACE);
        if (const int result = extract_and_delete_file(crnt_file_path, file)) fail_file(file, crnt_file_path, result);
        stg.file_rat = 1;
    }
    row.have_file = 1;
    next.down_kb += row.zip_size;
    next.disk_kb += row.ext_size;
    return true;
}

}  // namespace

int extract_and_delete_file(const std::string& zip, std::size_t file) {
    const file_version_struct& row = current_row(file);
    const std::string installed = installed_path(row), dest = destination_of(row), part = new_part(file);
    const auto root = destination_folder();
    const zip_promise promise = {std::string(last_part(installed)), row.sig_want,
                                 static_cast<std::uint64_t>(most_bytes(row.ext_size)), part};
    const int result = zip_to_file(zip, *root, std::string(without_slash(folder_of(installed))), promise);
    log_action("EXPANDING file ", dest, result);
    if (result == 0) {
        const bool is_program = dest.find("Contents/MacOS/") != std::string::npos;
        log_action("CHMODING  file ", dest, is_program ? root->change_mode(part, 0755) : 0);
    }
    if (!is_dvd) log_action("DELETING  file ", zip, delete_file(zip));
    if (result == 0) place_later(file, part);
    return result;
}

int grab_files() {
    if (grab.install != next.start_time) {
        grab.refused.clear();
        grab.denied.clear();
        grab.missing.clear();
        grab.announced = grab.announced_at = 0;
    }
    grab.install = next.start_time;
    if (!is_dvd) announce_files();
    // A turn for each stream.
    next.part_kb = 0;
    for (int stream = 0; stream < stream_max; ++stream)
        if (stream_takes_turn(stream) && work_on_file(stream, stream_file(stream))) stream_finished_file(stream);
    const bool placed = go_on_placing(!streams_have_work());
    if (next.cancelled || stg.install_failed) return 1;
    if (streams_have_work() || !placed) return 0;
    // The end.
    if (!grab.missing.empty()) {
        tell_of_missing_files();
        return 1;
    }
    next.all_done = 1;
    sweep_parts(true);
    sweep_folders();
    if (this_install_has_exes && stg.rename_folder) rename_destination();
    destination_folder()->sync_volume();  // "complete" is said of what no power cut undoes
    return 1;
}
