#include "runtime/memory.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/memory_map.h"
#include "platform/report_file.h"
#include "runtime/log.h"

mem_report_place mem_report_without_folder = mem_report_place::standard_output;

void* nedmalloc(std::size_t size) {
    return std::malloc(size);
}

void nedfree(void* memory) {
    std::free(memory);
}

// The C library tells the largest size that its heaps had only in a long text, in the last of these rows.
static std::size_t largest_size_of_heaps() {
    static const char row[] = "<system type=\"max\" size=\"";
    char* text = nullptr;
    std::size_t size = 0, largest = 0;
    std::FILE* const stream = open_memstream(&text, &size);
    if (!stream) return 0;
    malloc_info(0, stream);
    std::fclose(stream);
    for (const char* at = text; at && (at = std::strstr(at, row)); ++at)
        largest = std::strtoull(at + sizeof row - 1, nullptr, 10);
    std::free(text);
    return largest;
}

struct mallinfo2 nedmallinfo() {
    struct mallinfo2 info = mallinfo2();
    info.usmblks = largest_size_of_heaps() + info.hblkhd;
    return info;
}

struct scale_t {
    double above;
    int shift;
    char suffix;
};

static const scale_t& scale_of(unsigned long long bytes) {
    static constexpr scale_t scales[] = {
        {14.0 * (1 << 30), 30, 'G'}, {1.4 * (1 << 20), 20, 'M'}, {1.4 * 1024, 10, 'K'}, {0, 0, 'B'}};
    return *std::find_if(std::begin(scales), std::end(scales) - 1,
                         [bytes](const scale_t& scale) { return static_cast<double>(bytes) > scale.above; });
}

unsigned long long mem_to_number(unsigned long long bytes) {
    return bytes >> scale_of(bytes).shift;
}

char mem_to_suffix(unsigned long long bytes) {
    return scale_of(bytes).suffix;
}

const char* sm_string(unsigned char share_mode) {
    static const char* const names[] = {"Copy-on-write", "Private",         "Empty",         "Shared",
                                        "True-Shared",   "Private-Aliased", "Shared-Aliased"};
    return share_mode >= 1 && share_mode <= std::size(names) ? names[share_mode - 1] : "Unknown";
}

namespace {

struct map_totals {
    std::uint64_t vsize = 0, resident = 0, shared = 0, priv = 0;
    std::uint64_t largest_free = 0, free = 0;  // regions of which nothing is in memory
    std::uint64_t largest_gap = 0, gap = 0;    // address space without a region
};

struct row_t {
    const char* label;
    std::uint64_t bytes;
    const char* meaning;
};

void print_row(std::FILE* out, const row_t& row) {
    std::fprintf(out, "    %-22s%5llu%c      %s\n", row.label, mem_to_number(row.bytes), mem_to_suffix(row.bytes),
                 row.meaning);
}

void print_sizes(std::FILE* out) {
    const process_memory own = get_process_memory();
    const std::uint64_t swap = system_memory("SwapTotal"), swap_left = system_memory("SwapFree");
    const std::uint64_t wired = system_memory("Unevictable") + system_memory("SUnreclaim") +
                                system_memory("KernelStack") + system_memory("PageTables");
    const row_t rows[] = {
        {"Page size:", page_size(), "This is the size of one page of memory."},
        {"Vsize (reported):", own.virtual_size, "This is the address space that the system says we use."},
        {"Rsize:", own.resident, "This is the real RAM used by the program."},
        {"Free pages:", system_memory("MemFree"), "This is the RAM of the machine that nobody uses."},
        {"Active Pages:", system_memory("Active"), "This is the RAM that was used a short time ago."},
        {"Inactive Pages:", system_memory("Inactive"),
         "This is the RAM that was not used for a while and is taken first."},
        {"Wired Pages:", wired, "This is the RAM that can never be swapped out."},
        {"Total Swap Pages:", swap, "This is the swap space of the machine."},
        {"Avail Swap Pages:", swap_left, "This is the swap space that is left."},
        {"Used  Swap Pages:", swap - swap_left, "This is the swap space in use. A lot of it means that RAM is short."},
    };
    for (const row_t& row : rows)
        print_row(out, row);
}

void print_gap(std::FILE* out, std::uintptr_t start, std::uint64_t size, map_totals& totals) {
    std::fprintf(out, "        0x%0*zX      %5llu%c               --------\n", static_cast<int>(2 * sizeof start),
                 start, mem_to_number(size), mem_to_suffix(size));
    totals.gap += size;
    totals.largest_gap = std::max(totals.largest_gap, size);
}

void print_region(std::FILE* out, const memory_region& region, map_totals& totals) {
    const std::uint64_t size = region.end - region.start;
    const unsigned char mode = region.shared      ? share_true_shared
                               : !region.resident ? share_empty
                               : region.inode     ? share_copy_on_write
                                                  : share_private;
    // The kernel counts no references; what it tells is by how many processes a page is divided on the average.
    const std::uint64_t sharers =
        region.proportional ? (region.resident + region.proportional / 2) / region.proportional : 0;
    const char* const image = *region.name && region.offset == 0 ? region.name : "null";
    std::fprintf(out, "        0x%0*zX      %5llu%c       %5llu%c %5llu%c   %20s (% 3d)       %s\n",
                 static_cast<int>(2 * sizeof region.start), region.start, mem_to_number(size), mem_to_suffix(size),
                 mem_to_number(region.private_resident), mem_to_suffix(region.private_resident),
                 mem_to_number(region.shared_resident), mem_to_suffix(region.shared_resident), sm_string(mode),
                 static_cast<int>(sharers), image);
    totals.vsize += size;
    totals.resident += region.resident;
    totals.shared += region.shared_resident;
    totals.priv += region.private_resident;
    if (mode != share_empty) return;
    totals.free += size;
    totals.largest_free = std::max(totals.largest_free, size);
}

void print_map(std::FILE* out) {
    std::fputs(
        "    I will now print the entire map of virtual memory.\n"
        "        Address           Size    r-private r-shared sharing-mode (ref count)\n",
        out);
    map_totals totals;
    memory_region region;
    std::uintptr_t at = 0;
    // The upper half of the address space is the kernel's, a page there for old programs included.
    for (memory_map_reader map(memory_map_reader::detail::resident);
         map.next(region) && region.start <= UINTPTR_MAX / 2;) {
        if (region.start > at) print_gap(out, at, region.start - at, totals);
        print_region(out, region, totals);
        at = region.end;
    }
    const row_t rows[] = {
        {"Total vsize:", totals.vsize, "This is the address space of all regions above."},
        {"Total rsize:", totals.resident, "This is the real RAM in all regions above."},
        {"Shared rsize:", totals.shared, "This is the part of it that other programs use too."},
        {"Private rsize:", totals.priv, "This is the part of it that is ours alone."},
        {"Largest free:", totals.largest_free, "This is the largest region that no RAM was given to yet."},
        {"Total free:", totals.free, "This is the size of all regions that no RAM was given to yet."},
        {"Largest gap:", totals.largest_gap, "This is the largest gap in the address space."},
        {"Total gap:", totals.gap, "This is the size of all gaps in the address space."},
    };
    for (const row_t& row : rows)
        print_row(out, row);
}

void print_allocator(std::FILE* out) {
    const struct mallinfo2 info = nedmallinfo();
    std::fputs("NED-MALLOC INFO:\n    This version of Velaris is using the NED allocator.\n", out);
    const row_t rows[] = {
        {"Arena:", info.arena, "This is the memory that the heaps have from the system."},
        {"Free Chunks:", info.ordblks, "This is the number of free pieces in the heaps."},
        {"Mapped Space:", info.hblkhd, "This is the memory of large pieces, each mapped by itself."},
        {"Max Alloc Space:", info.usmblks, "This is the most that we ever had from the system."},
        {"Total Alloc Space:", info.arena + info.hblkhd, "This is all that we have from the system now."},
        {"Total Free Space:", info.fordblks, "This is the part of it that is free."},
        {"Total Used Space:", info.uordblks + info.hblkhd, "This is the part of it that is in use."},
        {"Releasable Space:", info.keepcost, "This is what could go back to the system at once."},
    };
    for (const row_t& row : rows)
        print_row(out, row);
}

// Null: nowhere.
std::FILE* stream_without_folder() {
    switch (mem_report_without_folder) {
        case mem_report_place::standard_output:
            return stdout;
        case mem_report_place::standard_error:
            return stderr;
        case mem_report_place::nowhere:
            break;
    }
    return nullptr;
}

std::FILE* open_report() {
    static bool first_of_run = true;
    const std::string folder = log_folder();
    if (folder.empty()) return nullptr;
    const int fd =
        open_report((folder + "MemoryLog.txt").c_str(), first_of_run ? report_begin::anew : report_begin::behind);
    if (fd < 0) return nullptr;
    first_of_run = false;
    return fdopen(fd, "a");
}

}  // namespace

void dump_mem_stats(const char* reason) {
    xer << "OK check MemoryLog.txt! I just sent him a dump from " << reason << "\n";
    std::FILE* const file = open_report();
    std::FILE* const out = file ? file : stream_without_folder();
    if (!out) return;
    // The name of the system is the family's; support finds the block by it.
    std::fprintf(out, "dump_mem_stats: %s\nOS X Info:\n", reason);
    print_sizes(out);
    print_map(out);
    print_allocator(out);
    if (file)
        std::fclose(file);
    else
        std::fflush(out);
}

void DumpMemCmd() {
    dump_mem_stats("Remote Commanded Dump");
}

float UTL_lazy_mempool::global_total = 0;

UTL_lazy_mempool::~UTL_lazy_mempool() {
    while (blocks) {
        block* const gone = blocks;
        blocks = gone->next;
        nedfree(gone);
        global_total -= block_size;
    }
}

void UTL_lazy_mempool::dump() const {
    xer << "Total memory allocated: " << allocated << "\n"
        << "Total wasted memory: " << wasted << "\n"
        << "Total ready memory: " << ready << "\n";
}
