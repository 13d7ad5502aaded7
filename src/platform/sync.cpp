#include "platform/sync.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

static int synced(const std::string& path, int (*sync)(int)) {
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return errno;
    const int err = sync(fd) == 0 ? 0 : errno;
    close(fd);
    return err;
}

int sync_file(const std::string& path) {
    return synced(path, fsync);
}

int sync_volume(const std::string& folder) {
    return synced(folder, syncfs);
}
