#include "builder/compress.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <filesystem>

#include "builder/classify.h"
#include "builder/history.h"
#include "builder/landmarks.h"
#include "builder/region.h"
#include "builder/report.h"
#include "engine/stg.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/zip_io.h"
#include "runtime/hl_string.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/thread.h"

// Thousands of bytes, cut. A link counts as what it leads to, 0 where that is no file.
static std::int64_t kilobytes_of(const std::string& path) {
    struct stat facts;
    return stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode) ? facts.st_size / 1000 : 0;
}

// The file may bear other names, outside the reference copy, as in a tree that was made of hard links. What is mended
// here must not change there.
static void own_bytes(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::hard_link_count(path, error) < 2 || error) return;
    const std::string copy =
        (fs::path(path).parent_path() / ".velaris-builder").string();  // hidden, so never published
    if (fs::copy_file(path, copy, fs::copy_options::overwrite_existing, error)) fs::rename(copy, path, error);
    if (error)
        __MACIBM_alert(0, "I could not give the reference copy a file of its own!", path, error.message(), "", t_exit,
                       OOPS_PLACE);
}

// A program for Windows may use all of its memory if its head says so. A link has no bytes of its own to mark; the
// program that it leads to comes by itself.
static void mark_windows_program(const std::string& path) {
    if (path.find(landmark_path(str_win_fold)) == std::string::npos || path.find(".exe") == std::string::npos ||
        is_sim_link(path, nullptr))
        return;
    own_bytes(path);
    if (const int code = make_file_large_address_aware(path))
        build_fatal("Oops! We could not make a windows exe file large-address-aware!", float_text("error# ", code),
                    path, "", 260);
}

namespace {

// One zip in the making: what it is made of, and what became of it.
struct zip_job {
    zip_job() = default;
    zip_job(const zip_job&) = delete;
    zip_job& operator=(const zip_job&) = delete;

    std::string path, zip;
    std::uint64_t bytes = 0;  // of the file, as far as was known before
    zipped_file went_in;
    int err = 0;
    THREAD_call* call = nullptr;  // null: made by the main thread

    // A fatal end may leave the loop with jobs under way.
    ~zip_job() {
        if (!call) return;
        THREAD_is_done(call, -1);
        THREAD_cleanup(call);
    }
};

}  // namespace

// The signature is of the bytes that went into the zip, whatever becomes of the file. One that changes meanwhile, as
// under a copy that is still running, gets a few more chances to come to rest.
static void* make_zip(void* one) {
    zip_job& job = *static_cast<zip_job*>(one);
    job.err = err_file_changed;
    for (int tries = 3; job.err == err_file_changed && tries > 0; --tries)
        job.err = file_to_zip(job.path, job.zip, &job.went_in);
    return nullptr;
}

static void write_rows(const zip_job& job) {
    const std::string rel = job.path.substr(build.src_fold.size());
    std::string dir;
    get_path_with_path(dir, rel);
    const std::string name = get_path_with_path_file;
    if (job.err) build_fatal("I could not zip a file!", error_str(job.err), job.path, job.zip, 292);
    const std::int64_t zip_size = kilobytes_of(job.zip);
    build.zip_bytes += std::filesystem::file_size(job.zip);
    build.zip_size_ins += static_cast<double>(zip_size) * 0.001 * 0.001;

    file_version_struct row;
    row.disc_set = is_dvd;
    row.version = build.release_number;
    row.zip_size = static_cast<float>(zip_size);
    row.ext_size = static_cast<float>(
        is_sim_link(job.path, nullptr) ? kilobytes_of(job.path) : static_cast<std::int64_t>(job.went_in.bytes / 1000));
    row.sig_want = job.went_in.signature;
    write_folder_line(dir);
    row.platform = file_platform(job.path, rel);

    std::string key = rel;
    chop_platform(key, row.platform);
    write_file_rows(key, name, row);
    ++build.num_files_com;
    report_compression(job.zip);
}

void comp_files(const std::vector<std::string>& paths) {
    // Files under way are in memory, packed and unpacked.
    constexpr std::uint64_t most_bytes = 256u << 20;
    // A worker finds its next zip waiting, or it would idle until this thread has had its turn.
    const int waiting = std::max(THREAD_worker_count() * 8, 1);
    const auto most_jobs = static_cast<std::size_t>(build.jobs > 0 ? build.jobs : waiting);
    std::deque<zip_job> jobs;  // in the order of the paths; a job does not move
    std::uint64_t bytes_under_way = 0;
    auto next = paths.begin();
    while (next != paths.end() || !jobs.empty()) {
        while (next != paths.end() && jobs.size() < most_jobs && (jobs.empty() || bytes_under_way < most_bytes)) {
            mark_windows_program(*next);
            const std::uint64_t bytes = static_cast<std::uint64_t>(kilobytes_of(*next)) * 1000;
            const std::string zip = output_folder() + next->substr(build.src_fold.size()) + ".zip";
            zip_job& job = jobs.emplace_back();
            job.path = *next++;
            job.zip = zip;
            job.bytes = bytes;
            bytes_under_way += bytes;
            if (THREAD_worker_count() > 0) job.call = THREAD_run_async(make_zip, &job);
        }
        zip_job& first = jobs.front();
        crnt_file_path = first.path;
        if (!first.call) make_zip(&first);
        while (first.call && !THREAD_is_done(first.call, 100))
            check_stop();
        write_rows(first);
        bytes_under_way -= first.bytes;
        jobs.pop_front();
    }
}
