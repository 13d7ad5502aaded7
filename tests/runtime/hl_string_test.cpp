#include "runtime/hl_string.h"

#include <gtest/gtest.h>

#include <climits>

TEST(Numbers, are_written_to_the_digit) {
    const struct {
        int value, min_digits, plus;
        const char* text;
    } integers[] = {{0, 3, 1, "+000"},
                    {-7, 3, 1, "-007"},
                    {INT_MIN, 0, 0, "-2147483648"},
                    {INT_MAX, 40, 1, "+2147483647"}};  // at most ten digits, or the caller's buffer is too short
    for (const auto& row : integers) {
        char text[12];
        int_to_str(row.value, text, row.min_digits, row.plus);
        EXPECT_STREQ(text, row.text);
    }
    const struct {
        float value;
        int digits, decimals, plus;
        const char* text;
    } fractions[] = {{-1.5f, 5, 2, 0, "-  1.50"},    {1.5f, 5, 2, 1, "   1.50"},
                     {2.05f, 3, 2, 0, "2.05"},       {1.999f, 3, 2, 0, "1.100"},  // a fraction is not carried
                     {1e20f, 3, 0, 0, "2147483647"}, {0.5f, 3, 60, 0, "0.2147483647"}};
    for (const auto& row : fractions) {
        std::string text;
        flt_to_str(row.value, &text, row.digits, row.decimals, row.plus);
        EXPECT_EQ(text, row.text);
    }
}

TEST(Numbers, are_read_and_what_is_none_is_minus_one) {
    for (const char* text : {"", "+", "-", "12a", " 1", "1.5", "1234567890", "+1234567890"})
        EXPECT_EQ(str_to_int(text), -1) << text;
    EXPECT_EQ(str_to_int("-999999999"), -999999999);
    EXPECT_EQ(str_to_int("1+0"), 110);  // further signs count as digits
    EXPECT_EQ(str_to_int("--5"), 5);    // -(-10 + 5)
}
