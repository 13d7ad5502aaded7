#include "platform/beneath.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <vector>

#include "platform/paths.h"

bool beneath_without_kernel = false;

static constexpr int max_links = 40;  // as the kernel's own limit
static constexpr int folder_flags = O_PATH | O_DIRECTORY | O_CLOEXEC;

bool path_stays_below(std::string_view path) {
    if (path.find('\0') != std::string_view::npos) return false;
    for (const std::string_view part : path_parts(path))
        if (part.empty() || part == "." || part == "..") return false;
    return true;
}

namespace {

// The folders from the start to where the walk stands. ".." goes back to one that was come through, never to what is
// its parent by now.
class walk {
  public:
    explicit walk(int start) : start_fd(start) {}
    ~walk() {
        while (!way.empty())
            leave();
    }
    walk(const walk&) = delete;
    walk& operator=(const walk&) = delete;

    int go(const std::string& path);
    int take() {  // the folder that was reached
        const int fd = way.empty() ? openat(start_fd, ".", folder_flags) : way.back();
        if (!way.empty()) way.pop_back();
        return fd;
    }

  private:
    int here() const { return way.empty() ? start_fd : way.back(); }
    void leave() {
        close(way.back());
        way.pop_back();
    }
    int step(const std::string& part);
    int follow(int link);

    int start_fd;
    std::vector<int> way;
    int links = 0;
};

int walk::go(const std::string& path) {
    if (path.starts_with('/')) return EXDEV;
    for (const std::string_view part : path_parts(path)) {
        if (part == ".." && way.empty()) return EXDEV;
        if (part == "..") {
            leave();
        } else if (!part.empty() && part != ".") {
            if (const int err = step(std::string(part))) return err;
        }
    }
    return 0;
}

// Into a folder, or along a link. What is opened is only a place (O_PATH): nothing of a pipe or a device is touched.
int walk::step(const std::string& part) {
    const int fd = openat(here(), part.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) return errno;
    struct stat facts = {};
    if (fstat(fd, &facts) == 0 && S_ISDIR(facts.st_mode)) {
        way.push_back(fd);
        return 0;
    }
    const int err = S_ISLNK(facts.st_mode) ? follow(fd) : ENOTDIR;
    close(fd);
    return err;
}

// The text is read from the link that was opened, not by its name, which may be another one's by now.
int walk::follow(int link) {
    char target[PATH_MAX];
    const ssize_t size = readlinkat(link, "", target, sizeof target);
    if (size < 0) return errno;
    if (++links > max_links) return ELOOP;
    return go(std::string(target, static_cast<std::size_t>(size)));
}

int open_by_walk(int start, const std::string& path, int& fd) {
    walk from(start);
    if (const int err = from.go(path)) return err;
    fd = from.take();
    return fd < 0 ? errno : 0;
}

int open_folder_below(int start, const std::string& path, int& fd) {
    static bool kernel_can = true;  // until it says that it cannot, as a sandbox does
    open_how how = {};
    how.flags = folder_flags;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    constexpr int tries = 8;  // EAGAIN: something was renamed meanwhile
    for (int i = 0; kernel_can && !beneath_without_kernel && i < tries; ++i) {
        fd = static_cast<int>(syscall(SYS_openat2, start, path.c_str(), &how, sizeof how));
        if (fd >= 0) return 0;
        if (errno == ENOSYS || errno == EPERM)
            kernel_can = false;
        else if (errno != EAGAIN)
            return errno;
    }
    return open_by_walk(start, path, fd);
}

}  // namespace

beneath_folder::beneath_folder(const std::string& path) : fd(open(path.c_str(), folder_flags)) {
    if (fd < 0) err = errno;
}

beneath_folder::beneath_folder(const beneath_folder& above, const std::string& path) : err(above.err) {
    if (err) return;
    if (!path.empty() && !path_stays_below(path))
        err = EXDEV;
    else
        err = open_folder_below(above.fd, path.empty() ? "." : path, fd);
}

beneath_folder::~beneath_folder() {
    if (fd >= 0) close(fd);
}

// `act` gets the folder that holds the last component, and that component; -1 is a failure with its errno.
template <class action>
int beneath_folder::in_parent(const std::string& path, action act) const {
    if (err) return err;
    if (!path_stays_below(path)) return EXDEV;
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return act(fd, path.c_str()) == 0 ? 0 : errno;
    const beneath_folder parent(*this, path.substr(0, slash));
    if (parent.err) return parent.err;
    const int result = act(parent.fd, path.c_str() + slash + 1);
    return result == 0 ? 0 : errno;
}

int beneath_folder::make_file(const std::string& path, mode_t mode, int& made) const {
    return in_parent(path, [&](int at, const char* name) {
        made = openat(at, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
        return made < 0 ? -1 : 0;
    });
}

int beneath_folder::append(const std::string& path, const std::string& text) const {
    return in_parent(path, [&](int at, const char* name) {
        const int file = openat(at, name, O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666);
        if (file < 0) return -1;
        const ssize_t written = write(file, text.data(), text.size());
        const int failure = written == static_cast<ssize_t>(text.size()) ? 0 : written < 0 ? errno : ENOSPC;
        close(file);
        errno = failure;
        return failure ? -1 : 0;
    });
}

int beneath_folder::make_folder(const std::string& path, mode_t mode) const {
    return in_parent(path, [&](int at, const char* name) { return mkdirat(at, name, mode); });
}

int beneath_folder::make_link(const std::string& target, const std::string& path) const {
    return in_parent(path, [&](int at, const char* name) { return symlinkat(target.c_str(), at, name); });
}

int beneath_folder::remove_file(const std::string& path) const {
    return in_parent(path, [](int at, const char* name) { return unlinkat(at, name, 0); });
}

int beneath_folder::remove_folder(const std::string& path) const {
    return in_parent(path, [](int at, const char* name) { return unlinkat(at, name, AT_REMOVEDIR); });
}

int beneath_folder::rename(const std::string& from, const std::string& to) const {
    return in_parent(from, [&](int from_at, const char* from_name) {
        const int result =
            in_parent(to, [&](int at, const char* name) { return renameat(from_at, from_name, at, name); });
        errno = result;
        return result ? -1 : 0;
    });
}

int beneath_folder::keep_as(const std::string& path, const std::string& kept) const {
    const auto keep = [](int from_at, const char* from, int at, const char* name) {
        if (linkat(from_at, from, at, name, 0) == 0) return 0;
        if (errno == EEXIST || errno == ENOENT) return errno;
        if (renameat2(from_at, from, at, name, RENAME_NOREPLACE) == 0) return 0;
        if (errno != EINVAL && errno != ENOSYS) return errno;
        struct stat facts;
        if (fstatat(at, name, &facts, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
        return renameat(from_at, from, at, name) == 0 ? 0 : errno;
    };
    return in_parent(path, [&](int from_at, const char* from) {
        const int result = in_parent(kept, [&](int at, const char* name) {
            errno = keep(from_at, from, at, name);
            return errno ? -1 : 0;
        });
        errno = result;
        return result ? -1 : 0;
    });
}

int beneath_folder::look(const std::string& path, struct stat& facts) const {
    return in_parent(path, [&](int at, const char* name) { return fstatat(at, name, &facts, AT_SYMLINK_NOFOLLOW); });
}

int beneath_folder::change_mode(const std::string& path, mode_t mode) const {
    return in_parent(path, [&](int at, const char* name) {
        struct stat facts;
        if (fstatat(at, name, &facts, AT_SYMLINK_NOFOLLOW) != 0) return -1;
        if (S_ISREG(facts.st_mode)) return fchmodat(at, name, mode, 0);
        errno = S_ISLNK(facts.st_mode) ? ELOOP : EINVAL;
        return -1;
    });
}

int beneath_folder::sync_volume() const {
    if (err) return err;
    const int own = openat(fd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);  // ours is no more than a place
    if (own < 0) return errno;
    const int result = syncfs(own) == 0 ? 0 : errno;
    close(own);
    return result;
}
