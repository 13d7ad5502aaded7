// Lines for scripts and for people: JSON that always parses, progress that neither floods nor tears a character apart.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "app/json.h"
#include "app/progress_line.h"

namespace {

TEST(Json, KeepsValidUtf8AndWritesEveryOtherByteAsACode) {
    EXPECT_EQ(json_text("a\"b\\c"), R"("a\"b\\c")");
    EXPECT_EQ(json_text("gr\xc3\xbc\xc3\x9f"), "\"gr\xc3\xbc\xc3\x9f\"");
    EXPECT_EQ(json_text("\xf0\x9f\x9b\xa9"), "\"\xf0\x9f\x9b\xa9\"");
    EXPECT_EQ(json_text("gr\xfc\xdf"), R"("gr\u00FC\u00DF")");
    EXPECT_EQ(json_text(std::string_view("\0\n\x7f", 3)), R"("\u0000\u000A\u007F")");
    for (const char* bad : {"\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe0\x80\x80", "\xc3", "\xf0\x9f\x9b"})
        for (const char c : json_text(bad))
            EXPECT_LT(static_cast<unsigned char>(c), 0x80) << json_text(bad);
    EXPECT_EQ(json_object("end").add("status", std::int64_t{3}).line(), "{\"event\":\"end\",\"status\":3}\n");
}

TEST(Progress, PlainLinesComeNeitherInAFloodNorNotAtAll) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* out = open_memstream(&text, &size);
    progress_line line;
    line.open(out, false);
    const auto lines_of = [&](auto work) {
        const auto before = size;
        line.restart();
        work();
        std::fflush(out);
        return std::count(text + before, text + size, '\n');
    };
    std::fflush(out);
    // A hundred seconds, each percent ten times: a line for every five percent.
    EXPECT_NEAR(static_cast<double>(lines_of([&] {
                    for (int i = 0; i <= 1000; ++i)
                        line.show(i / 1000.0, "x", "", i / 10.0);
                })),
                20, 2);
    // All of it within a second: one line. A minute without progress: one every five seconds.
    EXPECT_EQ(lines_of([&] {
                  for (int i = 0; i <= 1000; ++i)
                      line.show(i / 1000.0, "x", "", i / 1001.0);
              }),
              1);
    EXPECT_EQ(lines_of([&] {
                  for (int i = 0; i < 60; ++i)
                      line.show(0.5, "x", "", 100.0 + i);
              }),
              12);
    EXPECT_EQ(lines_of([&] { line.show_last(1, "done"); }), 1);
    std::fclose(out);
    EXPECT_TRUE(std::string(text, size).ends_with("100% done\n"));
    std::free(text);
}

TEST(Progress, ANarrowTerminalCutsTheNameAndNotTheNumbers) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* out = open_memstream(&text, &size);
    progress_line line;
    line.open(out, true);
    const std::string numbers = "7 of 12 files, 1.0 Meg of 2.0 Meg";
    line.show(0.5, numbers, "a name that is far too long for what is left of it.zip", 1);
    std::fclose(out);
    EXPECT_NE(std::string(text, size).find(numbers + " a n"), std::string::npos) << text;
    EXPECT_NE(std::string(text, size).find(".zip"), std::string::npos) << text;
    std::free(text);
}

TEST(Progress, ALongNameLosesItsMiddleAndNoHalfCharacter) {
    EXPECT_EQ(cut_middle("short", 10), "short");
    EXPECT_EQ(cut_middle("abcdefghijklmnop", 9), "abc...nop");
    const std::string cut = cut_middle("\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4", 5);
    EXPECT_EQ(cut, "\xc3\xa4...\xc3\xa4");
    EXPECT_EQ(cut_middle("abcdef", 0).size(), 3u);
    EXPECT_EQ(printable("gr\xc3\xbc\x1b[31m\x7f\n"), "gr\xc3\xbc?[31m??");
    EXPECT_EQ(progress_line::bar(2.0, 4), "[####]");
    EXPECT_EQ(progress_line::bar(-1.0, 4), "[....]");
}

}  // namespace
