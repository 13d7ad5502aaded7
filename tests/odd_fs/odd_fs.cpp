// odd_fs: a disk for the tests that a real one would make wait for years: one without case, one with sectors that
// cannot be read, one that is full, and one whose power goes. It hands everything through to a folder.
//
//   odd_fs FOLDER MOUNTPOINT [--fold] [--faults=FILE] [--seed=N]
//
// It stays in the foreground, prints "ready" once it can be used, and ends when it is unmounted or on SIGTERM.
//   --fold    spellings that differ in the case of ASCII letters are one name; the spelling of the first stays
//   --faults  FILE has a line "OPERATION ERRNO PATH" for each thing that fails: open, read or write; PATH as seen from the
//             mount point, or "*". "room BYTES *" is the room that it says there is. It is read at every such operation,
//             so that a test may change it at any time.
//   --seed    SIGUSR1 is a power cut: what was not synced may be lost. Names go as a journal has them: some number of the
//             latest changes is undone, none of them before the last sync. A file with bytes that were not synced is
//             torn: empty, cut, with zeros in the place of its end, or whole. N sets which; odd_fs then ends.
// A synced file keeps its bytes and settles all names before it. The kernel keeps syncfs from a file system like this
// one; sync_preload.cpp turns it into an extended attribute, "user.syncfs".
#define FUSE_USE_VERSION 31
#include <dirent.h>
#include <fcntl.h>
#include <fuse3/fuse.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

std::string root, attic, faults;  // `attic` keeps what a change of names would have dropped, beside `root`
bool fold = false;
unsigned seed = 0;
unsigned long kept = 0;                      // files in the attic
std::vector<std::function<void()>> undo;     // of each change of names since the last sync, oldest first
std::set<std::pair<dev_t, ino_t>> unsynced;  // files with bytes that a power cut may take

int failed(long result) {
    return result < 0 ? -errno : 0;
}

// The path on the disk below, each component in the spelling that it has there.
std::string real(const char* path) {
    std::string found = root;
    for (const char* at = path; *at;) {
        const char* const end = at + 1 + std::strcspn(at + 1, "/");
        const std::string name(at + 1, end);
        at = end;
        if (name.empty()) continue;
        std::string spelling = name;
        if (fold && access((found + "/" + name).c_str(), F_OK) != 0) {
            if (DIR* const folder = opendir(found.c_str())) {
                while (const dirent* const entry = readdir(folder))
                    if (strcasecmp(entry->d_name, name.c_str()) == 0) spelling = entry->d_name;
                closedir(folder);
            }
        }
        found += "/" + spelling;
    }
    return found;
}

int fault(const char* operation, const char* path) {
    std::ifstream list(faults);
    std::string what, where;
    int code;
    while (list >> what >> code && std::getline(list >> std::ws, where))
        if (what == operation && (where == "*" || where == path)) return -code;
    return 0;
}

void note_unsynced(const struct stat& facts) {
    unsynced.insert({facts.st_dev, facts.st_ino});
}

// The end of a change of names that can be undone by `back`.
int changed(int result, std::function<void()> back) {
    if (result != 0) return -errno;
    undo.push_back(std::move(back));
    return 0;
}

// Before a name is taken away or over: keeps what it stands for; putting it back is what undoes the change.
std::function<void()> keep(const std::string& path) {
    const std::string copy = attic + "/" + std::to_string(kept++);
    if (linkat(AT_FDCWD, path.c_str(), AT_FDCWD, copy.c_str(), 0) != 0) return [] {};
    return [path, copy] { rename(copy.c_str(), path.c_str()); };
}

void tear(const std::string& path, off_t size, std::mt19937& dice) {
    const unsigned how = dice() % 4;  // empty, cut, with zeros for its end, or whole
    const off_t place = size && how ? static_cast<off_t>(dice() % static_cast<unsigned long>(size)) : 0;
    if (how < 3) truncate(path.c_str(), place);
    if (how == 2) truncate(path.c_str(), size);
}

void tear_below(const std::string& folder, std::mt19937& dice) {
    DIR* const all = opendir(folder.c_str());
    if (!all) return;
    while (const dirent* const entry = readdir(all)) {
        const std::string name = entry->d_name, path = folder + "/" + name;
        struct stat facts;
        if (name == "." || name == ".." || lstat(path.c_str(), &facts) != 0) continue;
        if (S_ISDIR(facts.st_mode)) tear_below(path, dice);
        if (!S_ISREG(facts.st_mode) || !unsynced.count({facts.st_dev, facts.st_ino})) continue;
        const timespec times[2] = {facts.st_atim, facts.st_mtim};
        tear(path, facts.st_size, dice);
        utimensat(AT_FDCWD, path.c_str(), times, 0);
    }
    closedir(all);
}

void cut_power() {
    std::mt19937 dice(seed);
    for (std::size_t lost = dice() % (undo.size() + 1); lost; --lost) {
        undo.back()();
        undo.pop_back();
    }
    tear_below(root, dice);
}

int odd_getattr(const char* path, struct stat* facts, fuse_file_info* file) {
    return failed(file ? fstat(static_cast<int>(file->fh), facts) : lstat(real(path).c_str(), facts));
}

int odd_readlink(const char* path, char* target, std::size_t room) {
    const ssize_t size = readlink(real(path).c_str(), target, room - 1);
    if (size >= 0) target[size] = '\0';
    return failed(size);
}

int odd_mkdir(const char* path, mode_t mode) {
    const std::string made = real(path);
    return changed(mkdir(made.c_str(), mode), [made] { rmdir(made.c_str()); });
}

int odd_unlink(const char* path) {
    const std::string gone = real(path);
    const auto back = keep(gone);
    return changed(unlink(gone.c_str()), back);
}

int odd_rmdir(const char* path) {
    const std::string gone = real(path);
    return changed(rmdir(gone.c_str()), [gone] { mkdir(gone.c_str(), 0755); });
}

int odd_symlink(const char* target, const char* path) {
    const std::string made = real(path);
    return changed(symlink(target, made.c_str()), [made] { unlink(made.c_str()); });
}

int odd_rename(const char* from, const char* to, unsigned flags) {
    const std::string before = real(from);
    std::string after = real(to);
    // A new spelling of itself is a new name.
    if (before == after) after.replace(after.rfind('/'), std::string::npos, std::strrchr(to, '/'));
    const auto back = keep(after);
    return changed(renameat2(AT_FDCWD, before.c_str(), AT_FDCWD, after.c_str(), flags), [before, after, back] {
        rename(after.c_str(), before.c_str());
        back();
    });
}

int odd_chmod(const char* path, mode_t mode, fuse_file_info*) {
    return failed(chmod(real(path).c_str(), mode));
}

int odd_truncate(const char* path, off_t size, fuse_file_info*) {
    if (const int wrong = fault("write", path)) return wrong;
    struct stat facts;
    if (stat(real(path).c_str(), &facts) == 0) note_unsynced(facts);
    return failed(truncate(real(path).c_str(), size));
}

// An existing file when `mode` is 0, else perhaps a new one.
int odd_create(const char* path, mode_t mode, fuse_file_info* file) {
    if (const int wrong = fault("open", path)) return wrong;
    const std::string opened = real(path);
    const bool is_new = access(opened.c_str(), F_OK) != 0;
    struct stat facts;
    if (!is_new && file->flags & O_TRUNC && stat(opened.c_str(), &facts) == 0) note_unsynced(facts);
    const int fd = open(opened.c_str(), file->flags & ~O_NOFOLLOW, mode);
    if (fd < 0) return -errno;
    file->fh = static_cast<std::uint64_t>(fd);
    return is_new ? changed(0, [opened] { unlink(opened.c_str()); }) : 0;
}

int odd_open(const char* path, fuse_file_info* file) {
    return odd_create(path, 0, file);
}

int odd_read(const char* path, char* to, std::size_t size, off_t place, fuse_file_info* file) {
    if (const int wrong = fault("read", path)) return wrong;
    const ssize_t count = pread(static_cast<int>(file->fh), to, size, place);
    return count < 0 ? -errno : static_cast<int>(count);
}

int odd_write(const char* path, const char* from, std::size_t size, off_t place, fuse_file_info* file) {
    if (const int wrong = fault("write", path)) return wrong;
    struct stat facts;
    if (fstat(static_cast<int>(file->fh), &facts) == 0) note_unsynced(facts);
    const ssize_t count = pwrite(static_cast<int>(file->fh), from, size, place);
    return count < 0 ? -errno : static_cast<int>(count);
}

int odd_statfs(const char* path, struct statvfs* facts) {
    const long result = statvfs(root.c_str(), facts);
    if (const int room = -fault("room", path))
        facts->f_bfree = facts->f_bavail = static_cast<fsblkcnt_t>(room) / facts->f_frsize;
    return failed(result);
}

int odd_release(const char*, fuse_file_info* file) {
    return failed(close(static_cast<int>(file->fh)));
}

int odd_fsync(const char*, int, fuse_file_info* file) {
    struct stat facts;
    if (fstat(static_cast<int>(file->fh), &facts) == 0) unsynced.erase({facts.st_dev, facts.st_ino});
    undo.clear();
    return 0;
}

int odd_fsyncdir(const char*, int, fuse_file_info*) {
    undo.clear();
    return 0;
}

int odd_setxattr(const char*, const char* name, const char*, std::size_t, int) {
    if (std::strcmp(name, "user.syncfs") != 0) return -ENOTSUP;
    undo.clear();
    unsynced.clear();
    return 0;
}

int odd_readdir(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, fuse_file_info*, fuse_readdir_flags) {
    DIR* const folder = opendir(real(path).c_str());
    if (!folder) return -errno;
    while (const dirent* const entry = readdir(folder)) {
        struct stat facts {};
        facts.st_ino = entry->d_ino;
        facts.st_mode = static_cast<mode_t>(DTTOIF(entry->d_type));
        fill(buffer, entry->d_name, &facts, 0, fuse_fill_dir_flags{});
    }
    closedir(folder);
    return 0;
}

int odd_utimens(const char* path, const timespec times[2], fuse_file_info*) {
    return failed(utimensat(AT_FDCWD, real(path).c_str(), times, AT_SYMLINK_NOFOLLOW));
}

fuse* mounted = nullptr;
volatile std::sig_atomic_t power_is_cut = 0;

void end_of_power(int) {
    power_is_cut = 1;
    fuse_exit(mounted);
}

void* odd_init(fuse_conn_info*, fuse_config* config) {
    config->use_ino = config->hard_remove = 1;
    config->entry_timeout = config->attr_timeout = config->negative_timeout = 0;
    config->direct_io = 0;
    mounted = fuse_get_context()->fuse;
    struct sigaction cut {};
    cut.sa_handler = end_of_power;
    sigaction(SIGUSR1, &cut, nullptr);
    std::puts("ready");
    std::fflush(stdout);
    return nullptr;
}

}  // namespace

int main(int count, char** words) {
    if (count < 3) return 2;
    root = words[1];
    attic = root + ".attic";
    for (int i = 3; i < count; ++i) {
        const std::string word = words[i];
        if (word == "--fold") fold = true;
        if (word.starts_with("--faults=")) faults = word.substr(9);
        if (word.starts_with("--seed=")) seed = static_cast<unsigned>(std::stoul(word.substr(7)));
    }
    mkdir(attic.c_str(), 0700);
    umask(0);
    fuse_operations does{};
    does.getattr = odd_getattr, does.readlink = odd_readlink, does.mkdir = odd_mkdir, does.unlink = odd_unlink;
    does.rmdir = odd_rmdir, does.symlink = odd_symlink, does.rename = odd_rename, does.truncate = odd_truncate;
    does.chmod = odd_chmod, does.open = odd_open, does.create = odd_create;
    does.read = odd_read, does.write = odd_write, does.statfs = odd_statfs, does.release = odd_release;
    does.fsync = odd_fsync, does.fsyncdir = odd_fsyncdir, does.setxattr = odd_setxattr, does.readdir = odd_readdir;
    does.utimens = odd_utimens, does.init = odd_init;
    const char* given[] = {"odd_fs", words[2], "-f", "-s", "-odefault_permissions", nullptr};
    const int status = fuse_main(5, const_cast<char**>(given), &does, nullptr);
    if (power_is_cut) cut_power();
    return status;
}
