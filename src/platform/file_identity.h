// file_identity.h: by what a file on the disk is known to be the very one that was seen before, and untouched since.
// Times are in nanoseconds since 1970, as the file system keeps them: some do so by whole seconds, or by two.
#pragma once

#include <sys/stat.h>

#include <cstdint>

struct file_identity {
    std::uint64_t device = 0, inode = 0;
    std::int64_t size = -1;  // -1: there was no file
    std::int64_t mtime = 0, ctime = 0;

    bool operator==(const file_identity&) const = default;
};

inline file_identity identity_of(const struct stat& facts) {
    const auto nanoseconds = [](const timespec& t) { return std::int64_t{t.tv_sec} * 1'000'000'000 + t.tv_nsec; };
    return {facts.st_dev, facts.st_ino, facts.st_size, nanoseconds(facts.st_mtim), nanoseconds(facts.st_ctim)};
}
