#include "net/parts.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <system_error>

#include "platform/folders.h"
#include "platform/volume.h"

static constexpr std::int64_t least_bytes = 1'000'000;
static constexpr std::int64_t room_left = 100'000'000;  // for everything else that the volume is there for
static constexpr std::time_t month_seconds = 30 * 86400;
static constexpr char ending[] = ".part";

// Of the run, from the first question on. The lock goes with the process.
static struct {
    bool asked = false;
    std::string folder;  // empty: not ours
} parts;

static const std::string& own_folder() {
    if (parts.asked) return parts.folder;
    parts.asked = true;
    const std::string folder = cache_folder();
    const int fd = folder.empty() ? -1 : open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) == 0) {
        parts.folder = folder;
        sweep_parts(false);
    } else if (fd >= 0) {
        close(fd);
    }
    return parts.folder;
}

std::string part_path(const std::string& signature, std::int64_t about_bytes) {
    if (about_bytes < least_bytes || signature.find('/') != std::string::npos || own_folder().empty()) return "";
    const std::string path = parts.folder + signature + ending;
    std::uint64_t room = 0;
    struct stat there;
    const bool plain = lstat(path.c_str(), &there) != 0 || S_ISREG(there.st_mode);
    if (!plain || !volume_free_bytes(parts.folder, room)) return "";
    return room > static_cast<std::uint64_t>(about_bytes + room_left) ? path : "";
}

void sweep_parts(bool all) {
    if (parts.folder.empty()) return;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(parts.folder, error)) {
        struct stat facts;
        if (entry.path().extension() != ending || lstat(entry.path().c_str(), &facts) != 0) continue;
        if (S_ISREG(facts.st_mode) && (all || facts.st_mtime + month_seconds < std::time(nullptr)))
            unlink(entry.path().c_str());
    }
}
