#include "runtime/log.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/report_file.h"
#include "runtime/opened_log.h"

TEST(Log, holds_nothing_that_a_terminal_obeys_wherever_it_is_cut) {
    opened_log log;
    std::string wanted;
    for (int i = 0; i < 3000; ++i) {
        xer << "\xe2\x82\xac " << i << "\x1b[2J\t\xc2\x9b\xe2\x80\xae\n";
        wanted += "\xe2\x82\xac " + std::to_string(i) + "?[2J\t??\n";
    }
    EXPECT_TRUE(log.text() == wanted);
}

TEST(Log, is_bounded_and_keeps_one_older_file) {
    opened_log log;
    const std::string line = std::string(1023, 'x') + "\n";
    for (int i = 0; i < 3 * 16 * 1024 + 50; ++i)
        xer << line;
    xer << "last\n" << std::flush;
    EXPECT_LE(std::filesystem::file_size(log.path), 16u << 20);
    EXPECT_LE(std::filesystem::file_size(log.path + ".old"), 16u << 20);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(log.folder.path()), {}), 2);
    EXPECT_TRUE(log.text().ends_with("x\nlast\n"));
}

TEST(ReportFile, follows_no_link_opens_no_pipe_and_sets_a_large_one_aside) {
    scratch box;
    const std::string outside = box.write("outside", "the user's own"), plain = box.write("plain", "before\n");
    std::filesystem::create_symlink(outside, box / "link");
    std::filesystem::create_symlink("nothing", box / "dangling");
    mkfifo((box / "pipe").c_str(), 0600);
    std::filesystem::create_directory(box / "folder");
    for (const report_begin begin : {report_begin::behind, report_begin::anew})
        for (const char* name : {"link", "dangling", "pipe", "folder", "no/folder"})
            EXPECT_EQ(open_report((box / name).c_str(), begin), -1) << name;
    EXPECT_EQ(scratch::read(outside), "the user's own");
    EXPECT_FALSE(scratch::exists(box / "nothing"));

    const auto add = [&](report_begin begin, const std::string& text) {
        const int fd = open_report(plain.c_str(), begin);
        EXPECT_EQ(write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(fd);
    };
    add(report_begin::behind, "more\n");
    EXPECT_EQ(scratch::read(plain), "before\nmore\n");
    std::filesystem::resize_file(plain, report_most_bytes);
    add(report_begin::behind, "next\n");
    EXPECT_EQ(scratch::read(plain), "next\n");
    EXPECT_EQ(std::filesystem::file_size(plain + ".old"), static_cast<std::uintmax_t>(report_most_bytes));
    add(report_begin::anew, "new\n");
    EXPECT_EQ(scratch::read(plain), "new\n");
}
