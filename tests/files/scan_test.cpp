#include "files/scan.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "runtime/cmdline.h"
#include "support/alerts.h"
#include "support/scratch.h"

struct settings {
    int count = 5;
    std::string folder = "default";
};

static settings exchange(const std::string& path, int dir, settings s = {}) {
    scan_class scan(path, dir);
    scan.int_io(&s.count, "_count");
    scan.str_io(&s.folder, "_folder");
    return s;
}

TEST(preferences, what_is_written_comes_back) {
    scratch box;
    exchange(box / "t.prf", scan_write, {-42, "/Volumes/Big Disk/Sim/"});
    EXPECT_EQ(scratch::read(box / "t.prf"), "I\n9001 version\n_count -42\n_folder /Volumes/Big Disk/Sim/\n");
    EXPECT_EQ(exchange(box / "t.prf", scan_read).count, -42);
    EXPECT_EQ(exchange(box / "t.prf", scan_read).folder, "/Volumes/Big Disk/Sim/");
    exchange(box / "t.prf", scan_write, {1, ""});
    EXPECT_EQ(exchange(box / "t.prf", scan_read).folder, "default") << "an empty value is not in the file";
}

TEST(preferences, what_cannot_be_written_is_told_once_and_leaves_the_settings_of_before) {
    scratch box;
    const std::string path = box / "t.prf";
    ::exchange(path, scan_write, {1, "kept"});
    alert_catcher alerts;
    exchange(path + "/x.prf", scan_write);
    ASSERT_EQ(alerts.count(), 1u);
    EXPECT_EQ(alerts.seen[0].line2, path + "/x.prf");
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {40, limit.rlim_max};  // the head fits, as on a disk that is nearly full
    setrlimit(RLIMIT_FSIZE, &small);
    ::exchange(path, scan_write, {2, std::string(100, 'x')});
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(alerts.count(), 2u);
    EXPECT_EQ(::exchange(path, scan_read).folder, "kept");
    EXPECT_FALSE(scratch::exists(path + ".new"));
}

TEST(preferences, odd_files_leave_defaults_and_options_win) {
    scratch box;
    const auto read = [&](const std::string& bytes) { return exchange(box.write("o.prf", bytes), scan_read); };
    const std::string head = "A\r\n9001 version\r\n";
    EXPECT_EQ(read(head + "_count 12abc\r\n").count, 12);
    EXPECT_EQ(read(head + "_count\n_folder x").count, 0);
    EXPECT_EQ(read(head + "_count 1\n\n \t_unknown 7\n_count \t 2").count, 2);
    EXPECT_EQ(read(head + "_COUNT 1\n").count, 5);
    EXPECT_EQ(read(head + "_folder a b\r\n").folder, "a b") << "no CR in a value";
    EXPECT_EQ(read(head + "_folder " + std::string(70000, 'x') + "\n_count 3\n").folder, "default") << "no setting";
    EXPECT_EQ(read("I\n900 version\n_count 1\n").count, 5);
    EXPECT_EQ(exchange(box / "missing.prf", scan_read).count, 5);
    char program[] = "p", count[] = "--pref:_count", folder[] = "--pref:_folder=/option/";
    char* argv[] = {program, count, folder};
    cmdline.init_unix(3, argv);
    EXPECT_EQ(read(head + "_count 1\n").count, 0) << "an option without a value is an empty text";
    EXPECT_EQ(read(head + "_folder x\n").folder, "/option/");
}
