#include "engine/placing.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "engine/backup.h"
#include "engine/choose.h"
#include "engine/directory.h"
#include "engine/examine.h"
#include "engine/front.h"
#include "engine/outcome.h"
#include "engine/stg.h"
#include "engine/streams.h"
#include "files/error_str.h"
#include "platform/folders.h"
#include "platform/paths.h"
#include "runtime/thread.h"
#include "runtime/xtim.h"

namespace {

// A flush of volumes, on a worker of the pool where there is one.
class flush {
  public:
    explicit flush(std::vector<std::shared_ptr<const beneath_folder>> on) : folders(std::move(on)) {
        if (THREAD_worker_count() > 0)
            call = THREAD_run_async(run, this);
        else
            run(this);
    }
    ~flush() {
        if (!call) return;
        THREAD_is_done(call, -1);
        THREAD_cleanup(call);
    }
    flush(const flush&) = delete;
    flush& operator=(const flush&) = delete;
    bool is_over(int ms) const { return !call || THREAD_is_done(call, ms) != 0; }

  private:
    static void* run(void* self) {
        for (const auto& folder : static_cast<flush*>(self)->folders)
            folder->sync_volume();
        return nullptr;
    }
    std::vector<std::shared_ptr<const beneath_folder>> folders;
    THREAD_call* call = nullptr;
};

struct placing_t {
    struct expanded {
        std::size_t file;
        std::string part;
    };
    std::vector<expanded> waiting;   // for the next batch
    std::vector<expanded> flushing;  // whose bytes are on their way to the disk
    unsigned parts = 0;              // so far
    std::unique_ptr<flush> running;
    float kilobytes = 0;                  // of those that wait
    double begun_at = 0, flushed_at = 0;  // the last flush
    double flush_seconds = 0;             // it took
};
// Never destroyed: at a fatal end the workers are gone before the objects that would wait for them.
placing_t& placing = *new placing_t;

// Seldom enough that flushes take no more than a tenth of the time; often enough that a kill costs little.
bool batch_is_due() {
    constexpr double shortest_seconds = 0.1, share = 0.1;
    constexpr float most_kilobytes = 256'000;  // the old files and the new ones need room at the same time
    if (placing.waiting.empty()) return false;
    const double elapsed = xtim_class::seconds() - placing.flushed_at;
    return placing.kilobytes >= most_kilobytes ||
           elapsed > std::max(shortest_seconds, placing.flush_seconds * (1 / share - 1));
}

// Of every volume that has a part of the batch: a folder below the destination may be on a disk of its own.
void begin_flush() {
    std::set<std::uint64_t> volumes;
    std::vector<std::shared_ptr<const beneath_folder>> folders;
    const auto root = destination_folder();
    for (const auto& [file, part] : placing.waiting) {
        struct stat facts;
        if (root->look(part, facts) == 0 && volumes.insert(facts.st_dev).second)
            folders.push_back(
                std::make_shared<const beneath_folder>(*root, std::string(without_slash(folder_of(part)))));
    }
    placing.flushing = std::exchange(placing.waiting, {});
    placing.kilobytes = 0;
    placing.begun_at = xtim_class::seconds();
    placing.running = std::make_unique<flush>(std::move(folders));
}

void place_file(std::size_t file, const std::string& part, bool may_ask) {
    const file_version_struct& row = current_row(file);
    const auto root = destination_folder();
    const std::string installed = installed_path(row);
    const last_word word = may_ask || is_untouched(file) ? decide_again(file) : last_word::leave;
    int result = 0;
    if (word == last_word::go_on) {
        result = keep_copy_if_wanted(file);
        if (result == 0) result = root->rename(part, installed);
        if (result == EXDEV) result = err_leads_outside;
    }
    if (word != last_word::go_on || result != 0) root->remove_file(part);
    if (word == last_word::cancel) {
        next.cancelled = 1;
        return;
    }
    if (word == last_word::go_on && result == 0) note_own_change(file);
    if (result == 0)
        ++next.files_done;
    else
        fail_install("The installer cannot extract a file.", error_str(result), "", destination_of(row));
    const bool kept = word == last_word::leave && row.sig_have != row.sig_want;
    front.file_finished(kept ? action_duplicate : action_downloading, installed, result);
}

void end_flush(bool may_ask) {
    placing.running.reset();
    placing.flushed_at = xtim_class::seconds();
    placing.flush_seconds = placing.flushed_at - placing.begun_at;
    for (const auto& [file, part] : std::exchange(placing.flushing, {}))
        place_file(file, part, may_ask && !next.cancelled);
}

}  // namespace

std::string new_part(std::size_t file) {
    return std::string(folder_of(installed_view(current_row(file)))) + temp_part + "." +
           std::to_string(placing.parts++);
}

void place_later(std::size_t file, const std::string& part) {
    ++next.progress;
    placing.waiting.push_back({file, part});
    placing.kilobytes += current_row(file).ext_size;
}

bool go_on_placing(bool all) {
    constexpr int patience_ms = 20;
    if (placing.running && placing.running->is_over(all ? patience_ms : 0)) end_flush(true);
    if (!placing.running && (batch_is_due() || (all && !placing.waiting.empty()))) {
        begin_flush();
        if (placing.running->is_over(all ? patience_ms : 0)) end_flush(true);
    }
    return !placing.running && placing.waiting.empty();
}

void place_all(bool may_ask) {
    if (placing.running) end_flush(may_ask);
    if (placing.waiting.empty()) return;
    begin_flush();
    end_flush(may_ask);
}
