#include "platform/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

static int locked_fd = -1;  // process: the folder that we hold

static bool same_file(int a, int b) {
    struct stat first, second;
    return fstat(a, &first) == 0 && fstat(b, &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

folder_lock_result lock_folder(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return errno == ENOENT || errno == ENOTDIR ? folder_lock_result::no_folder : folder_lock_result::taken;
    // A second lock through another descriptor would wait for our own first one.
    if (locked_fd >= 0 && same_file(fd, locked_fd)) {
        close(fd);
        return folder_lock_result::taken;
    }
    // A shared lock is none of ours: whoever may read the folder could take one and keep us out for ever. Then ours is
    // a shared one too.
    if (flock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK && flock(fd, LOCK_SH | LOCK_NB) != 0 &&
        errno == EWOULDBLOCK) {
        close(fd);
        return folder_lock_result::busy;
    }
    unlock_folder();
    locked_fd = fd;
    return folder_lock_result::taken;
}

void unlock_folder() {
    if (locked_fd >= 0) close(locked_fd);
    locked_fd = -1;
}
