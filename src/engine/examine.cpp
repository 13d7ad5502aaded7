#include "engine/examine.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "engine/directory.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "files/signature_store.h"
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

static void take_in_results() {
    records.found = records.running->take_results();
    records.running.reset();
    double down_kb = 0, disk_kb = 0;
    for (std::size_t i = 0; i < sim_info.size(); ++i) {
        file_version_struct& row = sim_info[i].back();
        signed_file& found = records.found[i];
        if (behind_shipped_link(installed_view(row))) found = {};
        row.sig_have = found.state == file_state::intact ? found.signature : "NONE";
        row.have_file = row.sig_want == row.sig_have;
        if (is_gone(row) || row.have_file || !is_wanted(static_cast<int>(i))) continue;
        down_kb += static_cast<double>(row.zip_size);
        disk_kb += static_cast<double>(row.ext_size);
        if (row.platform >= 1 && row.platform <= 3) this_install_has_exes = 1;
    }
    stg.down_size = static_cast<float>(down_kb);
    stg.disk_size = static_cast<float>(disk_kb);
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

const signed_file& found_on_disk(int file) {
    static const signed_file nothing;
    const std::size_t i = static_cast<std::size_t>(file);
    return i < records.found.size() ? records.found[i] : nothing;
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
