#include "runtime/memory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstring>
#include <regex>

#include "runtime/oops.h"
#include "runtime/opened_log.h"
#include "runtime/startup.h"
#include "support/own_copy.h"

TEST(Memory, sizes_keep_two_digits_of_weight_and_modes_have_names) {
    const struct {
        unsigned long long bytes, number;
        char suffix;
    } rows[] = {{0, 0, 'B'},       {1433, 1433, 'B'},         {1434, 1, 'K'},        {1468006, 1433, 'K'},
                {1468007, 1, 'M'}, {15032385536, 14336, 'M'}, {15032385537, 14, 'G'}};
    for (const auto& row : rows) {
        EXPECT_EQ(mem_to_number(row.bytes), row.number) << row.bytes;
        EXPECT_EQ(mem_to_suffix(row.bytes), row.suffix) << row.bytes;
    }
    std::string names;
    for (unsigned char mode = 0; mode <= 8; ++mode)
        names += std::string(sm_string(mode)) + " ";
    EXPECT_EQ(names, "Unknown Copy-on-write Private Empty Shared True-Shared Private-Aliased Shared-Aliased Unknown ");
}

static std::string report_on_standard_output(void (*dump)()) {
    testing::internal::CaptureStdout();
    dump();
    return testing::internal::GetCapturedStdout();
}

TEST(Memory, report_has_every_row_filled_and_the_map_of_what_is_mapped) {
    constexpr std::size_t mb = 1 << 20;
    // Two megabytes in use between two that are not, so that no neighbour joins them.
    auto* const start = static_cast<char*>(mmap(nullptr, 6 * mb, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    char* const used = start + 2 * mb;
    mprotect(used, 2 * mb, PROT_READ | PROT_WRITE);
    std::memset(used, 1, 2 * mb);
    const opened_log log;
    const std::string report = report_on_standard_output(DumpMemCmd);
    EXPECT_EQ(log.text(), "OK check MemoryLog.txt! I just sent him a dump from Remote Commanded Dump\n");
    EXPECT_TRUE(report.starts_with("dump_mem_stats: Remote Commanded Dump\nOS X Info:\n    Page size: "));

    std::string pattern;
    const auto add_rows = [&](std::initializer_list<const char*> labels) {
        for (const char* label : labels)
            pattern += std::string("    ") + label + " +[0-9]+[BKMG]      This is .*\n";
    };
    add_rows({"Page size:", "Vsize \\(reported\\):", "Rsize:", "Free pages:", "Active Pages:", "Inactive Pages:",
              "Wired Pages:", "Total Swap Pages:", "Avail Swap Pages:", "Used  Swap Pages:"});
    pattern +=
        "    I will now print the entire map of virtual memory\\.\n"
        "        Address           Size    r-private r-shared sharing-mode \\(ref count\\)\n@";
    add_rows({"Total vsize:", "Total rsize:", "Shared rsize:", "Private rsize:", "Largest free:", "Total free:",
              "Largest gap:", "Total gap:"});
    pattern += "NED-MALLOC INFO:\n    This version of Velaris is using the NED allocator\\.\n";
    add_rows({"Arena:", "Free Chunks:", "Mapped Space:", "Max Alloc Space:", "Total Alloc Space:", "Total Free Space:",
              "Total Used Space:", "Releasable Space:"});
    // The map itself is too long for the library's expressions.
    const std::size_t map = report.find("        0x"), behind = report.find("    Total vsize:");
    ASSERT_LT(map, behind);
    const std::string rest =
        report.substr(report.find("    Page size:"), map - report.find("    Page size:")) + "@" + report.substr(behind);
    EXPECT_TRUE(std::regex_match(rest, std::regex(pattern))) << report;
    for (const char* label :
         {"Page size:", "Vsize (reported):", "Rsize:", "Free pages:", "Wired Pages:", "Total vsize:", "Total rsize:",
          "Private rsize:", "Largest gap:", "Max Alloc Space:", "Total Used Space:"})
        EXPECT_NE(std::atoi(report.c_str() + report.find(label) + std::strlen(label)), 0) << label;

    char row[200];
    std::snprintf(row, sizeof row,
                  "        0x%016zX          2M           2M     0B                Private (  1)       null\n",
                  reinterpret_cast<std::size_t>(used));
    EXPECT_NE(report.find(row), std::string::npos) << row << report;
    std::snprintf(row, sizeof row,
                  "        0x%016zX          2M           0B     0B                  Empty (  0)       null\n",
                  reinterpret_cast<std::size_t>(used + 2 * mb));
    EXPECT_NE(report.find(row), std::string::npos) << row << report;
    EXPECT_TRUE(std::regex_search(report, std::regex("        0x0{16} +[0-9]+[KMG]               --------\n")));
    EXPECT_TRUE(std::regex_search(report, std::regex("\\( +[0-9]+\\)       /.*/runtime_tests\n"))) << report;
}

static void alerts() {
    char program[] = "program";
    char* argv[] = {program};
    runtime_start(1, argv);
    for (const char* line : {"first", "second"})
        __MACIBM_alert(0, line, "", "", "", t_alert, OOPS_PLACE);
}
static const own_copy::job registered("alerts", alerts);

TEST(Memory, report_of_each_alert_of_a_run_lies_beside_the_log_and_no_earlier_run) {
    const own_copy copy;
    copy.home.write("app/MemoryLog.txt", "an earlier run\n");
    EXPECT_EQ(copy.run("alerts").out.find("dump_mem_stats"), std::string::npos);
    const std::string report = scratch::read(copy.app + "MemoryLog.txt");
    const std::string head = "dump_mem_stats: This is the dump_mem_stats call from the following code: if(type==t_exit";
    EXPECT_EQ(report.find(head), 0u);
    EXPECT_NE(report.find(head, 1), std::string::npos);
}

TEST(Memory, a_pool_gives_its_blocks_back_and_takes_them_off_the_total) {
    UTL_lazy_mempool::global_total = 3 * UTL_lazy_mempool::block_size;
    const opened_log log;
    {
        UTL_lazy_mempool pool;
        for (int i = 0; i < 2; ++i)
            pool.blocks = new (nedmalloc(UTL_lazy_mempool::block_size)) UTL_lazy_mempool::block{pool.blocks};
        pool.allocated = 40000, pool.wasted = 12, pool.ready = 25000;
        pool.dump();
    }
    EXPECT_EQ(UTL_lazy_mempool::global_total, 32768);
    EXPECT_EQ(log.text(), "Total memory allocated: 40000\nTotal wasted memory: 12\nTotal ready memory: 25000\n");
}
