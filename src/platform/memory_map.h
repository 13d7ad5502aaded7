// memory_map.h: what of this process's address space is mapped, how, and how much of it is in memory.
// Units: bytes. Nothing here allocates, locks or throws, so that a signal handler may ask.
// Errors: a file of the kernel that cannot be read gives no region, or 0.
#pragma once

#include <cstddef>
#include <cstdint>

struct memory_region {
    std::uintptr_t start, end;  // end: the first byte behind it
    bool readable, writable, shared;
    std::uint64_t offset;  // of `start` in the mapped file
    std::uint64_t inode;   // 0: no file
    // In memory now: all, the share of this process, pages of it alone, pages of others too. 0 from the plain map.
    std::uint64_t resident, proportional, private_resident, shared_resident;
    char name[4096];  // path of the mapped file, or the kernel's word such as "[stack]"; empty when there is none
};

// One of the kernel's text files, line by line. A line is cut to the buffer.
class kernel_lines {
  public:
    explicit kernel_lines(const char* path);
    ~kernel_lines();
    kernel_lines(const kernel_lines&) = delete;
    kernel_lines& operator=(const kernel_lines&) = delete;
    // Without its line end; null at the end of the file. Holds until the next call.
    const char* next();

  private:
    bool fill();  // more bytes behind those that are left
    int fd;
    std::size_t used = 0, filled = 0;
    char buffer[8192];
};

// The regions from low to high addresses.
class memory_map_reader {
  public:
    enum class detail { plain, resident };  // the second takes the kernel longer
    explicit memory_map_reader(detail wanted);
    bool next(memory_region& region);

  private:
    kernel_lines lines;
    const char* header = nullptr;  // line of the region that comes next
};

// The region that holds `address`, or else the next one above it. False when there is none.
bool region_at_or_above(std::uintptr_t address, memory_region& region);

// A row of /proc/meminfo such as "MemFree", in bytes.
std::uint64_t system_memory(const char* row);

// Of this process: size of its address space, and what of it is in memory.
struct process_memory {
    std::uint64_t virtual_size, resident;
};
process_memory get_process_memory();

std::uint64_t page_size();
