#include "files/file_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "files/error_str.h"

static int kind_error(const struct stat& facts) {
    if (S_ISREG(facts.st_mode)) return 0;
    return S_ISDIR(facts.st_mode) ? EISDIR : S_ISLNK(facts.st_mode) ? ELOOP : err_no_file;
}

file_reader::file_reader(const std::string& path, last_link link) {
    const bool follow = link == last_link::followed;
    err = fstatat(AT_FDCWD, path.c_str(), &at_start, follow ? 0 : AT_SYMLINK_NOFOLLOW) == 0 ? kind_error(at_start)
                                                                                            : errno;
    if (err) return;
    fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | (follow ? 0 : O_NOFOLLOW));
    // Between the look and the opening something else may have come there.
    err = fd < 0 || fstat(fd, &at_start) != 0 ? errno : kind_error(at_start);
}

file_reader::~file_reader() {
    if (fd >= 0) close(fd);
}

std::ptrdiff_t file_reader::read(unsigned char* to, std::size_t room) {
    std::size_t filled = 0;
    while (!err && filled < room) {
        const ssize_t got = ::read(fd, to + filled, room - filled);
        if (got == 0) break;
        if (got > 0)
            filled += static_cast<std::size_t>(got);
        else if (errno != EINTR)
            err = errno;
    }
    return err ? -1 : static_cast<std::ptrdiff_t>(filled);
}

bool file_reader::changed_meanwhile() const {
    struct stat now {};
    return fd < 0 || fstat(fd, &now) != 0 || identity_of(now) != identity_of(at_start);
}
