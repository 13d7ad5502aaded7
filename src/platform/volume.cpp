#include "platform/volume.h"

#include <sys/statvfs.h>

bool volume_free_bytes(const std::string& path, std::uint64_t& bytes) {
    struct statvfs volume;
    if (statvfs(path.c_str(), &volume) != 0) return false;
    bytes = std::uint64_t{volume.f_bavail} * volume.f_frsize;  // f_bfree would count what only root may fill
    return true;
}
