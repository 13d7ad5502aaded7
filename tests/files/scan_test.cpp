#include "files/scan.h"

#include <gtest/gtest.h>

#include "support/alerts.h"
#include "support/options.h"
#include "support/scratch.h"

struct settings {
    int count = 5;
    std::string folder = "default";
};

static settings transfer(const std::string& path, int dir, settings s = {}) {
    scan_class scan(path, dir);
    scan.int_io(&s.count, "_count");
    scan.str_io(&s.folder, "_folder");
    return s;
}

TEST(preferences, what_cannot_be_written_is_told_once_and_leaves_the_settings_of_before) {
    scratch box;
    const std::string path = box / "t.prf";
    transfer(path, scan_write, {1, ""});
    EXPECT_EQ(transfer(path, scan_read).folder, "default") << "an empty value is not in the file";
    transfer(path, scan_write, {-42, "kept"});
    EXPECT_EQ(scratch::read(path), "I\n9001 version\n_count -42\n_folder kept\n");
    alert_catcher alerts;
    let_no_file_grow_past(40);  // the head fits
    transfer(path, scan_write, {2, std::string(100, 'x')});
    ASSERT_EQ(alerts.count(), 1u);
    EXPECT_EQ(alerts.seen[0].line2, path);
    EXPECT_EQ(transfer(path, scan_read).folder, "kept");
    EXPECT_FALSE(scratch::exists(path + ".new"));
}

TEST(preferences, odd_files_leave_defaults_and_options_win) {
    scratch box;
    const auto read = [&](const std::string& bytes) { return transfer(box.write("o.prf", bytes), scan_read); };
    const std::string head = "A\r\n9001 version\r\n";
    EXPECT_EQ(read(head + "_count 12abc\r\n").count, 12);
    EXPECT_EQ(read(head + "_count\n_folder x").count, 0);
    EXPECT_EQ(read(head + "_count 1\n\n \t_unknown 7\n_count \t 2").count, 2);
    EXPECT_EQ(read(head + "_COUNT 1\n").count, 5);
    EXPECT_EQ(read(head + "_folder a b\r\n").folder, "a b") << "no CR in a value";
    EXPECT_EQ(read(head + "_folder " + std::string(70000, 'x') + "\n_count 3\n").folder, "default") << "no setting";
    EXPECT_EQ(read("I\n900 version\n_count 1\n").count, 5);
    EXPECT_EQ(transfer(box / "missing.prf", scan_read).count, 5);
    use_options({"--pref:_count", "--pref:_folder=/option/"});
    EXPECT_EQ(read(head + "_count 1\n").count, 0) << "an option without a value is an empty text";
    EXPECT_EQ(read(head + "_folder x\n").folder, "/option/");
}
