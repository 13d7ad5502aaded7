#include "files/xmap.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "runtime/log.h"
#include "runtime/product.h"
#include "support/alerts.h"
#include "support/scratch.h"

using namespace std::string_literals;

namespace {

std::string with_ends(const std::string& text, const std::string& end) {
    std::string lines;
    for (const char c : text)
        lines += c == '|' ? end : std::string(1, c);
    return lines;
}

class scanner : public testing::Test {
  protected:
    void load(const std::string& bytes) { ASSERT_TRUE(file.retry(box.write("f", bytes))); }
    std::string token() {
        std::string text;
        file.TXT_str_scan_space(&text);
        return text;
    }
    std::string rest_of_line() {
        std::string text;
        file.TXT_str_scan_eoln(&text);
        return text;
    }
    // The last line and the place of the alert.
    std::string alert_of(const std::string& path) {
        alert_catcher alerts;
        EXPECT_THROW(file.retry(path), left) << path;
        return alerts.seen[0].line4 + " " + std::to_string(alerts.seen[0].line);
    }
    scratch box;
    xmap_class file;
};

}  // namespace

TEST_F(scanner, all_line_ends_read_alike) {
    const int versions[] = {840, 900, 0};
    for (const std::string& end : {"\n"s, "\r"s, "\r\n"s, "\0"s, "\n \r\n\t\n"s, "\0\0\r"s}) {
        load(with_ends("I|900 version|KIND| a \tb|name with blanks \t|last", end));
        std::string rest;
        ASSERT_EQ(file.check_file(file_text, versions, "KIND", &rest), 900);
        EXPECT_EQ(rest, "version");
        for (const char* want : {"a", "b", "", ""})  // and none of the next line
            EXPECT_EQ(token(), want);
        file.TXT_eoln_skip();
        EXPECT_EQ(rest_of_line(), "name with blanks \t");
        EXPECT_FALSE(file.at_end());
        EXPECT_EQ(rest_of_line(), "last");
        EXPECT_TRUE(file.at_end());
        EXPECT_EQ(rest_of_line() + token(), "");
        EXPECT_EQ(file.TXT_int_scan(), 0);
    }
}

TEST_F(scanner, numbers_take_any_byte_and_wrap) {
    load("\t12 -7 -+7 +7 x 12ab 4294967297 -2147483648 -\n5");
    for (const int want : {12, -7, 7, 7, 72, 1740, 1, -2147483647 - 1, 0, 0})
        EXPECT_EQ(file.TXT_int_scan(), want);
}

TEST_F(scanner, a_word_matches_only_as_a_whole) {
    load("  BETA_VERSION 1\nDIR\tx\nDIR\nDVD");
    EXPECT_FALSE(file.TXT_token_match("BETA") || file.TXT_token_match("BETA_VERSION_2"));
    EXPECT_TRUE(file.TXT_token_match("BETA_VERSION"));
    EXPECT_EQ(file.TXT_int_scan(), 1);
    file.TXT_eoln_skip();
    EXPECT_TRUE(file.TXT_token_match_blank("DIR"));
    EXPECT_EQ(rest_of_line(), "x");
    EXPECT_FALSE(file.TXT_token_match_blank("DIR"));
    EXPECT_EQ(rest_of_line(), "DIR") << "back where the word began";
    EXPECT_FALSE(file.TXT_token_match_blank("DVD") || file.TXT_token_match("DVDX"));
    EXPECT_TRUE(file.TXT_token_match("DVD")) << "the end of the data ends a word";
}

TEST_F(scanner, header_mismatches) {
    const int versions[] = {9001, 0, 77};
    for (const char* bytes : {"", "X\n9001 version\n", "I\n9000 version\n", "I\n77 version\n", "I\n0\n", "I"}) {
        load(bytes);
        EXPECT_EQ(file.check_file(file_text, versions, nullptr, nullptr), 0) << bytes;
    }
    load("A\n9001\n  DVDX\n");
    EXPECT_EQ(file.check_file(file_text, versions, nullptr, nullptr), 9001);
    EXPECT_EQ(file.check_file(file_text, versions, "DVD", nullptr), 0);
    EXPECT_EQ(file.offset(), 9) << "back at the D";
    EXPECT_EQ(xmap_class().check_file(file_text, versions, nullptr, nullptr), 0);
}

TEST_F(scanner, binary_files_of_both_byte_orders) {
    const int versions[] = {258, 0};
    for (const std::string& bytes : {"i\2\1\0\0\4\3\2\1\5\6"s, "a\0\0\1\2\1\2\3\4\5\6"s}) {
        load(bytes.substr(0, 4));
        EXPECT_EQ(file.check_file(file_binary, versions, nullptr, nullptr), 0);
        load(bytes);
        ASSERT_EQ(file.check_file(file_binary, versions, nullptr, nullptr), 258);
        unsigned char six[6];
        file.read_n_rev(six, 6);
        EXPECT_EQ(std::string(six, six + 6), "\4\3\2\1\5\6") << "bytes short of a word stay";
        alert_catcher alerts;
        EXPECT_THROW(file.read_n_rev(six, 1), left);
    }
}

TEST_F(scanner, what_can_and_cannot_be_opened) {
    const int before = mapped_files_open;
    mkfifo((box / "pipe").c_str(), 0600);
    for (const std::string& path : {box / "missing", box / "", box / "pipe"})
        EXPECT_TRUE(!file.retry(path) && file.error()) << path;
    EXPECT_EQ(mapped_files_open, before);
    load("");
    EXPECT_TRUE(file.mem_start && file.mem_start == file.mem_end) << "empty, but there";
    load("x");
    EXPECT_EQ(mapped_files_open, before + 1) << "a map given up is not counted";
    EXPECT_FALSE(file.retry(box / "missing"));
    EXPECT_EQ(token(), "") << "nothing of the map before is left";
    box.write("Some Folder/File.TXT", "mended");
    EXPECT_TRUE(file.retry(box / "some folder/file.txt"));
    EXPECT_EQ(token(), "mended");
    EXPECT_FALSE(file.retry_exact(box / "some folder/file.txt"));
    EXPECT_TRUE(file.retry_exact(box / "Some Folder/File.TXT"));
}

TEST_F(scanner, mistaken_paths_are_fatal) {
    EXPECT_EQ(alert_of(box.write("a:b", "x")), (box / "a:b") + " 128");
    EXPECT_EQ(alert_of("a\\b"), "a\\b 128");
    std::string longest = box.path();
    while (longest.size() < 490)
        longest += "./";
    longest.resize(499, 'f');
    box.write(longest.substr(box.path().size()), "x");
    EXPECT_TRUE(file.retry(longest));
    EXPECT_EQ(alert_of(longest + "f"), " 136");
    app_path = box.path();
    box.write("f", "x");
    EXPECT_TRUE(file.retry("f"));
    EXPECT_EQ(alert_of("/x" + app_path + "f"), "/x" + app_path + "f 122");
}

TEST_F(scanner, a_bad_line_is_told_by_its_number) {
    const std::string log = box / "log";
    for (const std::string& end : {"\n"s, "\r"s, "\r\n"s}) {
        xer.open(log);
        load(with_ends("one|two|third\nlimes and more", end));
        file.TXT_eoln_skip();
        file.TXT_eoln_skip();
        token();
        file.TXT_xer_line();
        xer.close();
        EXPECT_EQ(scratch::read(log), "3 \"third\nlimes a\"\n") << "cut at the first small n, whatever the line";
    }
}
