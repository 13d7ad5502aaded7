#include "runtime/utf8.h"

#include <gtest/gtest.h>

TEST(Printable, nothing_that_a_terminal_obeys_gets_through_and_names_stay) {
    const struct {
        const char *text, *shown;
    } cases[] = {
        {"gr\xc3\xbc\xc3\x9f \xe2\x82\xac \xf0\x9f\x9b\xa9", "gr\xc3\xbc\xc3\x9f \xe2\x82\xac \xf0\x9f\x9b\xa9"},
        {"\x1b[31m\x7f\r\n", "?[31m???"},
        {"\xc2\x9b"
         "31m\xc2\x85",
         "?31m?"},                                    // C1 in UTF-8
        {"\x9b\x80 \xe2\x80 \xfc", "?? \xe2? \xfc"},  // alone, and left over from what was cut
        {"\xc3\x80", "\xc3\x80"},                     // the same byte within a letter
        {"a\xe2\x80\xaegpj\xe2\x80\xac", "a?gpj?"},
        {"\xe2\x81\xa6\xe2\x81\xa9\xe2\x80\x8e\xe2\x80\x8f\xd8\x9c", "?????"},
        {"\xe2\x80\x8d\xe2\x81\xa5\xd8\x9d", "\xe2\x80\x8d\xe2\x81\xa5\xd8\x9d"},  // their neighbours
    };
    for (const auto& one : cases)
        EXPECT_EQ(printable(one.text), one.shown);
}

TEST(Latin1, goes_out_as_utf8_and_comes_back_and_nothing_else_does) {
    std::string all;
    for (int c = 1; c < 256; ++c)
        all += static_cast<char>(c);
    const std::string text = utf8_of_latin1(all) + "\xe2\x82\xac\xc3";
    std::string back;
    for (std::size_t i = 0; i < text.size();)
        back += static_cast<char>(utf8_take_latin1(text, i));
    EXPECT_EQ(back, all + std::string(2, '\0'));
}
