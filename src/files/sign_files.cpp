#include "files/sign_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <numeric>

#include "files/md5.h"
#include "files/md5_lanes.h"
#include "files/signature_store.h"
#include "runtime/thread.h"
#include "runtime/xtim.h"

namespace {

// A disk that turns does badly with many files read in turn by little pieces, so of a large one much is asked for
// ahead.
constexpr std::int64_t ahead_bytes = 4 << 20;
constexpr float large_kilobytes = 1000;

class descriptor {
  public:
    explicit descriptor(int opened = -1) : fd(opened) {}
    ~descriptor() { reset(-1); }
    descriptor(const descriptor&) = delete;
    descriptor& operator=(const descriptor&) = delete;
    void reset(int opened) {
        if (fd >= 0) close(fd);
        fd = opened;
    }
    int get() const { return fd; }

  private:
    int fd;
};

}  // namespace

// Shared by the workers. Each result is written by the one worker that took its file.
struct signing_work {
    std::string root;
    std::vector<file_to_sign> files;
    const signature_store* store = nullptr;
    std::vector<std::size_t> order;
    std::vector<signed_file> results;
    std::atomic<std::size_t> taken{0};
    std::atomic<std::int64_t> weight_done{0};
    std::int64_t weight = 0;  // of all files
    std::atomic<bool> stop{false};
    std::vector<THREAD_call*> calls;
};

namespace {

// A file that is only looked at takes time too, as if it were some bytes.
std::int64_t weight_of(const file_to_sign& file) {
    return 4096 + static_cast<std::int64_t>(std::max(file.kilobytes, 0.0f)) * 1000;
}

// One worker's share. Files of one folder stand together, so the folder last used is kept open for them.
class worker : public md5_messages {
  public:
    explicit worker(signing_work& all)
        : work(all),
          root(open(all.root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
          root_error(root.get() < 0 ? errno : 0) {}

    bool next(std::size_t& message) override {
        while (!ends()) {
            const std::size_t turn = work.taken++;
            if (turn >= work.order.size()) return false;
            message = work.order[turn];
            if (needs_reading(message)) return true;
            work.weight_done += weight_of(work.files[message]);
        }
        return false;
    }

    std::ptrdiff_t read(std::size_t message, unsigned char* to, std::size_t room) override {
        open_file& file = file_of(message);
        if (ends()) return -1;
        if (file.at >= file.asked_ahead && file.at > 0) {
            file.asked_ahead = file.at + ahead_bytes;
            posix_fadvise(file.fd, file.at, ahead_bytes, POSIX_FADV_WILLNEED);
        }
        ssize_t got = 0;
        do
            got = ::read(file.fd, to, room);
        while (got < 0 && errno == EINTR);
        if (got < 0) work.results[message].error = errno;
        if (got > 0) {
            const std::int64_t counted = std::min<std::int64_t>(got, file.weight_left);
            file.at += got;
            file.weight_left -= counted;
            work.weight_done += counted;
        }
        return got;
    }

    void signed_as(std::size_t message, const std::string& signature) override {
        open_file& file = file_of(message);
        work.weight_done += file.weight_left;
        close(file.fd);
        std::swap(file, open_files.back());
        open_files.pop_back();
        signed_file& result = work.results[message];
        result.state = signature.empty() ? file_state::unreadable : file_state::intact;
        result.signature = signature;
    }

  private:
    struct open_file {
        std::size_t message;
        int fd;
        std::int64_t weight_left;
        std::int64_t at = 0, asked_ahead = 0;
    };

    bool ends() const { return work.stop || THREAD_is_ending(); }

    open_file& file_of(std::size_t message) {
        return *std::find_if(open_files.begin(), open_files.end(),
                             [&](const open_file& one) { return one.message == message; });
    }

    // Fills in what can be known of a file without reading it; true if its bytes have to be read, and it is open.
    bool needs_reading(std::size_t message) {
        signed_file& result = work.results[message];
        const std::string_view path = work.files[message].path;
        const std::size_t slash = path.rfind('/');
        const std::string name(slash == std::string_view::npos ? path : path.substr(slash + 1));
        struct stat facts;
        if (!enter(slash == std::string_view::npos ? std::string_view() : path.substr(0, slash)) ||
            fstatat(folder.get(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0)
            return fail(result, errno);
        result.identity = identity_of(facts);
        if (S_ISLNK(facts.st_mode)) return sign_link(result, name);
        if (S_ISDIR(facts.st_mode)) result.state = file_state::folder;
        if (!S_ISREG(facts.st_mode)) {
            if (!S_ISDIR(facts.st_mode)) result.state = file_state::odd;
            return false;
        }
        if (work.store) result.signature = work.store->find(path, result.identity);
        if (!result.signature.empty()) {
            result.state = file_state::intact;
            result.from_store = true;
            return false;
        }
        const int fd = openat(folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0) return fail(result, errno);
        // Between the look and the opening something else may have come there.
        if (fstat(fd, &facts) != 0 || !S_ISREG(facts.st_mode)) {
            close(fd);
            result.state = file_state::odd;
            return false;
        }
        result.identity = identity_of(facts);
        open_files.push_back({message, fd, weight_of(work.files[message])});
        return true;
    }

    bool enter(std::string_view wanted) {
        if (folder.get() >= 0 && wanted == folder_path) return true;
        if (root_error) {
            errno = root_error;
            return false;
        }
        folder_path = wanted;
        folder.reset(openat(root.get(), wanted.empty() ? "." : folder_path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        return folder.get() >= 0;
    }

    static bool fail(signed_file& result, int error) {
        result.error = error;
        result.state = error == ENOENT || error == ENOTDIR ? file_state::missing : file_state::unreadable;
        return false;
    }

    bool sign_link(signed_file& result, const std::string& name) {
        char target[PATH_MAX];
        const ssize_t length = readlinkat(folder.get(), name.c_str(), target, sizeof target);
        if (length < 0) return fail(result, errno);
        result.signature = md5_of(std::string_view(target, static_cast<std::size_t>(length)));
        result.state = file_state::intact;
        return false;
    }

    signing_work& work;
    descriptor root, folder;
    int root_error;  // why it could not be opened, as where a destination is not made yet
    std::string folder_path;
    std::vector<open_file> open_files;  // at most one for each lane
};

void* work_on(void* all) {
    worker mine(*static_cast<signing_work*>(all));
    md5_sign_all(mine);
    return nullptr;
}

}  // namespace

signing::signing(const std::string& root, std::vector<file_to_sign> files, const signature_store* store)
    : work(std::make_unique<signing_work>()) {
    work->root = root;
    work->files = std::move(files);
    work->store = store;
    work->results.resize(work->files.size());
    // Large ones first, or the last of them would be worked alone while the other lanes and processors are idle. The
    // others in their order, which is that of their folders.
    work->order.resize(work->files.size());
    std::iota(work->order.begin(), work->order.end(), std::size_t{0});
    const auto rank = [this](std::size_t i) {
        const float kilobytes = work->files[i].kilobytes;
        return kilobytes < large_kilobytes ? 0.0f : kilobytes;
    };
    std::stable_sort(work->order.begin(), work->order.end(),
                     [&](std::size_t a, std::size_t b) { return rank(a) > rank(b); });
    for (const file_to_sign& file : work->files)
        work->weight += weight_of(file);
    for (int i = 0; i < THREAD_worker_count(); ++i)
        work->calls.push_back(THREAD_run_async(work_on, work.get()));
}

signing::~signing() {
    work->stop = true;
    for (THREAD_call* call : work->calls) {
        THREAD_is_done(call, -1);
        THREAD_cleanup(call);
    }
}

bool signing::wait(int timeout_ms) {
    if (work->calls.empty()) work_on(work.get());
    const double end = xtim_class::seconds() + timeout_ms * 1e-3;
    return std::all_of(work->calls.begin(), work->calls.end(), [&](THREAD_call* call) {
        const double left = std::max(end - xtim_class::seconds(), 0.0);
        return THREAD_is_done(call, static_cast<int>(left * 1000)) != 0;
    });
}

float signing::share_done() const {
    if (work->weight == 0) return 1;
    return static_cast<float>(static_cast<double>(work->weight_done) / static_cast<double>(work->weight));
}

std::string_view signing::at_work() const {
    if (work->order.empty()) return "";
    return work->files[work->order[std::min<std::size_t>(work->taken, work->order.size() - 1)]].path;
}

std::vector<signed_file> signing::take_results() {
    return std::move(work->results);
}
