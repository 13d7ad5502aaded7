#include "engine/examine.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "engine/directory.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "engine/streams.h"
#include "files/error_str.h"
#include "files/signature_store.h"
#include "net/server_address.h"
#include "runtime/log.h"

examination_t examination;

namespace {

struct records_t {
    std::unique_ptr<signing> running;
    std::unique_ptr<signature_store> store;  // outlives the signing
    std::int64_t begun = 0;                  // nanoseconds since 1970
    std::vector<signed_file> found;          // by index in sim_info
};
// Never destroyed: at a fatal end the workers are gone before the objects that would wait for them.
records_t& records = *new records_t;

std::int64_t nanoseconds_now() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace

void begin_examination() {
    stop_examination();
    records.store = std::make_unique<signature_store>(examination.read_everything ? std::string()
                                                                                  : signature_store_of(dest_dir_path));
    records.begun = nanoseconds_now();
    std::vector<file_to_sign> files;
    files.reserve(sim_info.size());
    for (const file_history_struct& history : sim_info)
        files.push_back({installed_view(history.back()), history.back().ext_size});
    records.running = std::make_unique<signing>(dest_dir_path, std::move(files), records.store.get());
}

bool is_examining() {
    return records.running != nullptr;
}

void stop_examination() {
    records.running.reset();
    records.found.clear();
}

// A folder in the place of a file is cleared away before the files come, if it may be: nothing is there then.
static std::string signature_of(const signed_file& found) {
    if (found.state == file_state::intact) return found.signature;
    return found.state == file_state::unreadable || found.state == file_state::odd ? "UNKNOWN" : "NONE";
}

static void take_in(std::size_t file, signed_file&& found) {
    file_version_struct& row = current_row(file);
    row.sig_have = signature_of(found);
    row.have_file = row.sig_want == row.sig_have;
    records.found[file] = std::move(found);
}

// Where upper and lower case are the same, or a link of the user's joins two folders, several paths lead to one file.
// Hard links do so too, but those are names that come and go one by one: they are told by the file's count of names.
static void join_those_of_one_file() {
    struct place {
        std::uint64_t device, inode;
        std::size_t file;
        auto operator<=>(const place&) const = default;
    };
    std::vector<place> places;
    for (std::size_t file = 0; file < records.found.size(); ++file) {
        const signed_file& found = records.found[file];
        if (found.identity.size >= 0 && found.state != file_state::folder)
            places.push_back({found.identity.device, found.identity.inode, file});
    }
    std::sort(places.begin(), places.end());
    const auto same = [](const place& a, const place& b) { return a.device == b.device && a.inode == b.inode; };
    for (auto first = places.begin(); first != places.end();) {
        const auto end = std::find_if(first, places.end(), [&](const place& other) { return !same(*first, other); });
        std::map<std::string, std::vector<std::size_t>> by_name;  // where the file has one name: all of them
        struct stat facts;
        const bool has_names = end - first > 1 &&
                               destination_folder()->look(installed_path(current_row(first->file)), facts) == 0 &&
                               facts.st_nlink > 1;
        for (; first != end; ++first)
            by_name[has_names ? lower_case(installed_view(current_row(first->file))) : ""].push_back(first->file);
        for (const auto& [name, files] : by_name)
            if (files.size() > 1 && same_file(files.front()) != files) join_histories(files);
    }
}

static void take_in_results() {
    std::vector<signed_file> found = records.running->take_results();
    records.running.reset();
    records.found.resize(found.size());
    double down_kb = 0, disk_kb = 0;
    float largest_kb = 0;
    for (std::size_t file = 0; file < sim_info.size(); ++file) {
        const file_version_struct& row = current_row(file);
        if (behind_shipped_link(installed_view(row))) found[file] = {};
        take_in(file, std::move(found[file]));
        if (is_gone(row) || row.have_file || !is_wanted(row)) continue;
        down_kb += static_cast<double>(row.zip_size);
        disk_kb += static_cast<double>(row.ext_size);
        largest_kb = std::max(largest_kb, row.zip_size);
        if (row.platform >= 1 && row.platform <= 3) this_install_has_exes = 1;
    }
    stg.down_size = static_cast<float>(down_kb);
    stg.disk_size = static_cast<float>(disk_kb);
    stg.temp_size = stream_max * largest_kb;
    join_those_of_one_file();
}

bool go_on_examining(const std::string& label, int ms) {
    const bool over = records.running->wait(ms);
    front.dir_progress_bar(0, records.running->share_done(), 1, scan_phase::examining_disk, label,
                           dest_dir_path + std::string(records.running->at_work()));
    if (!over) return false;
    take_in_results();
    keep_signatures();
    return true;
}

int read_directory(const std::string& dir_path, const std::string& label) {
    stop_examination();
    const int result = read_catalogue(dir_path, label);
    if (result != dir_ready) return result;
    begin_examination();
    while (!go_on_examining(label, 100)) {
    }
    return dir_ready;
}

const signed_file& found_on_disk(std::size_t file) {
    static const signed_file nothing;
    return file < records.found.size() ? records.found[file] : nothing;
}

// What is at the place of a file now; no size where nothing is.
static file_identity identity_now(std::size_t file) {
    struct stat facts;
    const int err = destination_folder()->look(installed_path(current_row(file)), facts);
    if (err == 0) return identity_of(facts);
    file_identity none;
    if (err != ENOENT && err != ENOTDIR) none.size = -2;  // it cannot be told
    return none;
}

bool is_untouched(std::size_t file) {
    const signed_file& found = found_on_disk(file);
    return !found.from_store && identity_now(file) == found.identity;
}

void examine_again(std::size_t file) {
    const file_version_struct& row = current_row(file);
    signing one(way_to_destination(), {{installed_view(row), row.ext_size}}, nullptr);
    while (!one.wait(100)) {
    }
    records.found.resize(sim_info.size());
    take_in(file, std::move(one.take_results().front()));
}

void note_own_change(std::size_t file) {
    records.found.resize(sim_info.size());
    records.found[file].identity = identity_now(file);
    records.found[file].from_store = false;
}

std::string trouble_with(std::size_t file) {
    const signed_file& found = found_on_disk(file);
    if (found.state == file_state::unreadable) return error_str(found.error);
    return found.state == file_state::odd ? "It is a pipe, a socket or a device, and no file" : "";
}

void keep_signatures() {
    const std::string path = signature_store_of(dest_dir_path);
    if (path.empty()) return;
    std::vector<stored_signature> rows;
    bool any_new = false;
    for (std::size_t i = 0; i < records.found.size(); ++i) {
        const signed_file& found = records.found[i];
        if (found.state != file_state::intact) continue;
        any_new = any_new || !found.from_store;
        rows.push_back({installed_view(sim_info[i].back()), found.signature, found.identity});
    }
    if (!any_new && records.store && rows.size() == records.store->size()) return;
    const int err = write_signature_store(path, rows, records.begun);
    if (err != 0) xer << "The signatures could not be kept in " << path << " (" << err << ")" << std::endl;
}
