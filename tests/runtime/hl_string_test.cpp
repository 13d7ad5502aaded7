#include "runtime/hl_string.h"

#include <gtest/gtest.h>

#include <climits>

#include "support/alerts.h"

static std::string from_int(int value, int min_digits, int plus) {
    char buf[12];
    int_to_str(value, buf, min_digits, plus);
    return buf;
}

static std::string from_float(float value, int total, int decimals, int plus = 0) {
    std::string out;
    flt_to_str(value, &out, total, decimals, plus);
    return out;
}

TEST(IntToStr, signs_padding_and_limits) {
    EXPECT_EQ(from_int(0, 3, 1), "+000");
    EXPECT_EQ(from_int(-7, 3, 1), "-007");
    EXPECT_EQ(from_int(INT_MIN, 0, 0), "-2147483648");
    EXPECT_EQ(from_int(INT_MAX, 40, 1), "+2147483647");  // at most ten digits, or the caller's buffer is too short
}

TEST(StrToInt, what_is_no_number_is_minus_one) {
    for (const char* text : {"", "+", "-", "12a", " 1", "1.5", "1234567890", "+1234567890"})
        EXPECT_EQ(str_to_int(text), -1) << text;
    EXPECT_EQ(str_to_int("-999999999"), -999999999);
    EXPECT_EQ(str_to_int("+40"), 40);
    EXPECT_EQ(str_to_int("1+0"), 110);  // further signs count as digits
    EXPECT_EQ(str_to_int("--5"), 5);    // -(-10 + 5)
}

TEST(FltToStr, columns_stay_aligned) {
    EXPECT_EQ(from_float(-1.5f, 5, 2), "-  1.50");
    EXPECT_EQ(from_float(1.5f, 5, 2, 1), "   1.50");
    EXPECT_EQ(from_float(-0.25f, 1, 2), "-0.25");
    EXPECT_EQ(from_float(2.05f, 3, 2), "2.05");  // leading zeros of the fraction stay
}

TEST(FltToStr, oddities_and_limits) {
    EXPECT_EQ(from_float(1.999f, 3, 2), "1.100");  // not carried
    EXPECT_EQ(from_float(1.999f, 3, 0), "  1");    // nor rounded
    EXPECT_EQ(from_float(1e20f, 3, 0), "2147483647");
    EXPECT_EQ(from_float(0.5f, 3, 60), "0.2147483647");
}

TEST(PathBuffer, holds_499_characters_and_a_longer_text_is_fatal) {
    char buffer[path_buffer_size];
    const std::string longest(499, 'p');
    copy_to_path_buffer(buffer, longest);
    EXPECT_EQ(buffer, longest);

    alert_catcher alerts;
    EXPECT_THROW(copy_to_path_buffer(buffer, longest + "p"), left);
    EXPECT_EQ(alerts.last(), "String too long!\n" + longest + "p\n\n\n(HLutils/GenH/hl_string line 136)");
}
