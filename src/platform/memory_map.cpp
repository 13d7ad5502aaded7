#include "platform/memory_map.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

kernel_lines::kernel_lines(const char* path) : fd(open(path, O_RDONLY | O_CLOEXEC)) {}

kernel_lines::~kernel_lines() {
    if (fd >= 0) close(fd);
}

// What is left of the bytes goes to the front, so that a line is always in one piece.
bool kernel_lines::fill() {
    std::memmove(buffer, buffer + used, filled - used);
    filled -= used;
    used = 0;
    const std::size_t room = sizeof buffer - 1 - filled;
    if (fd < 0 || room == 0) return false;
    ssize_t got;
    do
        got = read(fd, buffer + filled, room);
    while (got < 0 && errno == EINTR);
    if (got <= 0) return false;
    filled += static_cast<std::size_t>(got);
    return true;
}

const char* kernel_lines::next() {
    for (;;) {
        char* const line = buffer + used;
        if (auto* const end = static_cast<char*>(std::memchr(line, '\n', filled - used))) {
            *end = '\0';
            used = static_cast<std::size_t>(end + 1 - buffer);
            return line;
        }
        if (fill()) continue;
        if (used == filled) return nullptr;
        // The last line without an end, or one that is too long.
        buffer[filled] = '\0';
        used = filled;
        return buffer;
    }
}

// "55d0c000-55d0e000 r-xp 00002000 fe:00 247134    /usr/bin/cat". False for a line of another form.
static bool parse_region(const char* line, memory_region& region) {
    char* at = nullptr;
    region = memory_region{};
    region.start = std::strtoull(line, &at, 16);
    if (at == line || *at != '-') return false;
    region.end = std::strtoull(at + 1, &at, 16);
    if (*at != ' ' || std::strlen(at) < 6) return false;
    region.readable = at[1] == 'r';
    region.writable = at[2] == 'w';
    region.shared = at[4] == 's';
    region.offset = std::strtoull(at + 5, &at, 16);
    at += std::strspn(at, " ");
    at += std::strcspn(at, " ");  // the device
    region.inode = std::strtoull(at, &at, 10);
    at += std::strspn(at, " ");
    std::strncpy(region.name, at, sizeof region.name - 1);
    return true;
}

// The number of bytes in "Rss:     8 kB" if the line is the row `name`.
static bool row_value(const char* line, const char* name, std::uint64_t& bytes) {
    const std::size_t size = std::strlen(name);
    if (std::strncmp(line, name, size) != 0 || line[size] != ':') return false;
    bytes = std::strtoull(line + size + 1, nullptr, 10) * 1024;
    return true;
}

static void add_detail(const char* line, memory_region& region) {
    std::uint64_t bytes = 0;
    if (row_value(line, "Rss", bytes)) region.resident = bytes;
    if (row_value(line, "Pss", bytes)) region.proportional = bytes;
    if (row_value(line, "Private_Clean", bytes) || row_value(line, "Private_Dirty", bytes))
        region.private_resident += bytes;
    if (row_value(line, "Shared_Clean", bytes) || row_value(line, "Shared_Dirty", bytes))
        region.shared_resident += bytes;
}

memory_map_reader::memory_map_reader(detail wanted)
    : lines(wanted == detail::plain ? "/proc/self/maps" : "/proc/self/smaps"), header(lines.next()) {}

// Rows of detail begin with a capital letter; the addresses of a region are in lower case.
static bool is_detail(const char* line) {
    return *line >= 'A' && *line <= 'Z';
}

bool memory_map_reader::next(memory_region& region) {
    if (!header || !parse_region(header, region)) return false;
    while ((header = lines.next()) && is_detail(header))
        add_detail(header, region);
    return true;
}

bool region_at_or_above(std::uintptr_t address, memory_region& region) {
    memory_map_reader map(memory_map_reader::detail::plain);
    while (map.next(region))
        if (address < region.end) return true;
    return false;
}

std::uint64_t system_memory(const char* row) {
    kernel_lines lines("/proc/meminfo");
    std::uint64_t bytes = 0;
    for (const char* line = lines.next(); line; line = lines.next())
        if (row_value(line, row, bytes)) return bytes;
    return 0;
}

std::uint64_t page_size() {
    const long size = sysconf(_SC_PAGESIZE);
    return size > 0 ? static_cast<std::uint64_t>(size) : 0;
}

process_memory get_process_memory() {
    kernel_lines lines("/proc/self/statm");
    const char* const line = lines.next();
    if (!line) return {};
    char* at = nullptr;
    const std::uint64_t pages = std::strtoull(line, &at, 10);
    const std::uint64_t resident = std::strtoull(at, nullptr, 10);
    return {.virtual_size = pages * page_size(), .resident = resident * page_size()};
}
