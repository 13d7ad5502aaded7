// Lines for scripts and for people: JSON that always parses, progress that neither floods nor tears a character apart.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "app/console/json.h"
#include "app/progress_line.h"

namespace {

TEST(Json, KeepsValidUtf8AndWritesEveryOtherByteAsACode) {
    EXPECT_EQ(json_text("a\"b\\c"), R"("a\"b\\c")");
    EXPECT_EQ(json_text("\xf0\x9f\x9b\xa9"), "\"\xf0\x9f\x9b\xa9\"");
    EXPECT_EQ(json_text("gr\xfc\xdf"), R"("gr\u00FC\u00DF")");
    EXPECT_EQ(json_text("\xe2\x80\xae\xc2\x9b"), R"("\u202E\u009B")") << "what steers a terminal";
    EXPECT_EQ(json_text(std::string_view("\0\n\x7f", 3)), R"("\u0000\u000A\u007F")");
    for (const char* bad : {"\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe0\x80\x80", "\xc3", "\xf0\x9f\x9b"})
        for (const char c : json_text(bad))
            EXPECT_LT(static_cast<unsigned char>(c), 0x80) << json_text(bad);
}

TEST(Progress, PlainLinesComeNeitherInAFloodNorNotAtAll) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* out = open_memstream(&text, &size);
    progress_line line;
    line.open(out, false);
    for (int i = 0; i <= 1000; ++i)  // all of it within a second: one line
        line.show(i / 1000.0, "x", "", i / 1001.0);
    line.restart();
    for (int i = 0; i < 60; ++i)  // a minute without progress: one every five seconds
        line.show(0.5, "x", "", 100.0 + i);
    std::fclose(out);
    EXPECT_EQ(std::count(text, text + size, '\n'), 1 + 12);
    std::free(text);
}

TEST(Progress, ALongNameLosesItsMiddleAndNoHalfCharacter) {
    EXPECT_EQ(cut_middle("abcdefghijklmnop", 9), "abc...nop");
    const std::string cut = cut_middle("\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4", 5);
    EXPECT_EQ(cut, "\xc3\xa4...\xc3\xa4");
    EXPECT_EQ(cut_middle("abcdef", 0).size(), 3u);
    EXPECT_EQ(progress_line::bar(2.0, 4), "[####]");
    EXPECT_EQ(progress_line::bar(-1.0, 4), "[....]");
}

}  // namespace
