#include "platform/report_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

int open_report(const char* path, report_begin begin) {
    for (int tries = 0; tries < 2; ++tries) {
        const int fd = open(path, O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0644);
        if (fd < 0) return -1;
        struct stat facts;
        const bool regular = fstat(fd, &facts) == 0 && S_ISREG(facts.st_mode);
        if (regular && begin == report_begin::anew && ftruncate(fd, 0) == 0) return fd;
        if (regular && begin == report_begin::behind && facts.st_size < report_most_bytes) return fd;
        close(fd);
        if (!regular || begin == report_begin::anew) return -1;
        set_report_aside(path);
    }
    return -1;
}

void set_report_aside(const char* path) {
    char older[4096 + 8];
    if (std::snprintf(older, sizeof older, "%s.old", path) < static_cast<int>(sizeof older)) rename(path, older);
}
