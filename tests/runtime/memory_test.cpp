#include "runtime/memory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstring>
#include <regex>

#include "runtime/opened_log.h"

TEST(Memory, sizes_keep_two_digits_of_weight) {
    std::string all;
    for (const unsigned long long bytes :
         {0ull, 1433ull, 1434ull, 1468006ull, 1468007ull, 15032385536ull, 15032385537ull})
        all += std::to_string(mem_to_number(bytes)) + mem_to_suffix(bytes) + " ";
    EXPECT_EQ(all, "0B 1433B 1K 1433K 1M 14336M 14G ");
}

TEST(Memory, report_has_figures_and_the_map_of_what_is_mapped) {
    constexpr std::size_t mb = 1 << 20;
    // Two megabytes in use between two that are not, so that no neighbour joins them.
    auto* const start = static_cast<char*>(mmap(nullptr, 6 * mb, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    char* const used = start + 2 * mb;
    mprotect(used, 2 * mb, PROT_READ | PROT_WRITE);
    std::memset(used, 1, 2 * mb);
    const opened_log log;
    testing::internal::CaptureStdout();
    DumpMemCmd();
    const std::string report = testing::internal::GetCapturedStdout();
    EXPECT_EQ(log.text(), "OK check MemoryLog.txt! I just sent him a dump from Remote Commanded Dump\n");
    EXPECT_TRUE(report.starts_with("dump_mem_stats: Remote Commanded Dump\nOS X Info:\n    Page size: "));

    for (const char* label : {
             "Page size:", "Vsize (reported):", "Rsize:", "Free pages:", "Wired Pages:", "Total vsize:", "Total rsize:",
                 "Private rsize:", "Largest gap:",
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they bring an allocator that tells nothing
                 "Max Alloc Space:", "Total Used Space:"
#endif
         })
        EXPECT_NE(std::atoi(report.c_str() + report.find(label) + std::strlen(label)), 0) << label;

    char row[200];
    std::snprintf(row, sizeof row,
                  "        0x%016zX          2M           2M     0B                Private (  1)       null\n",
                  reinterpret_cast<std::size_t>(used));
    EXPECT_NE(report.find(row), std::string::npos) << row << report;
    EXPECT_TRUE(std::regex_search(report, std::regex("\\( +[0-9]+\\)       /.*/runtime_tests\n"))) << report;
}
