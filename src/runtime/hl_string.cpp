#include "runtime/hl_string.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "runtime/oops.h"

static bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

void copy_to_path_buffer(char* buffer, const std::string& text) {
    check_path_length(text);
    const std::size_t size = std::min(text.size(), path_buffer_size - 1);
    std::memcpy(buffer, text.data(), size);
    buffer[size] = '\0';
}

void int_to_str(int value, char* buf, int min_digits, int plus) {
    constexpr int most_digits = 10;
    std::array<char, most_digits> digits;  // last one first
    const int wanted = std::clamp(min_digits, 1, most_digits);
    unsigned rest = value < 0 ? 0U - static_cast<unsigned>(value) : static_cast<unsigned>(value);
    int count = 0;
    for (; rest || count < wanted; rest /= 10)
        digits[static_cast<std::size_t>(count++)] = static_cast<char>('0' + rest % 10);

    if (value < 0)
        *buf++ = '-';
    else if (plus)
        *buf++ = '+';
    buf = std::reverse_copy(digits.begin(), digits.begin() + count, buf);
    *buf = '\0';
}

// The worth of one character at its decimal place. Signs behind the first character count too: names made of two signed
// numbers are read in slices that may hold the next one's sign.
static int place_value(char c) {
    if (c == '+') return 1;
    if (c == '-') return -1;
    return c - '0';
}

int str_to_int(const std::string& text) {
    if (text.empty()) return -1;
    if (!std::all_of(text.begin(), text.end(), [](char c) { return is_digit(c) || c == '+' || c == '-'; })) return -1;
    const std::size_t first = is_digit(text[0]) ? 0 : 1;
    const std::size_t size = text.size() - first;
    if (size < 1 || size > 9) return -1;
    int sum = 0;
    for (std::size_t i = first; i < text.size(); ++i)
        sum = sum * 10 + place_value(text[i]);
    return text[0] == '-' ? -sum : sum;
}

// The magnitude of `value` in at least `min_digits` digits. What an int cannot hold stands at the int's end.
static std::string magnitude(double value, int min_digits) {
    char digits[12];
    int_to_str(static_cast<int>(std::min(std::fabs(value), static_cast<double>(INT_MAX))), digits, min_digits, 0);
    return digits;
}

void flt_to_str(float value, std::string* out, int total_digits, int decimals, int plus) {
    if (decimals < 0) return;
    if (std::isnan(value)) value = 0;
    const float integer = std::trunc(value);
    const float scale = std::pow(10.0f, static_cast<float>(std::min(decimals, 18)));  // the most that a long holds
    const float fraction = std::isinf(value) ? 0 : scale * (value - integer);

    std::string whole = magnitude(integer, total_digits - decimals);
    for (std::size_t i = 0; i + 1 < whole.size() && whole[i] == '0'; ++i)
        whole[i] = ' ';
    *out = value < 0 ? "-" : plus ? " " : "";
    *out += whole;
    if (decimals > 0) *out += "." + magnitude(static_cast<double>(std::lroundf(fraction)), decimals);
}

// A menu's entry as numbers: "12 340" becomes the bytes of 12 and of 340, each as n / 127 + 1 and n % 127 + 1. No byte
// is zero, so the result is safe as C text; a text that begins with "-" or "=" is a line of the menu and no number.
std::string char_string_to_int_string(const std::string& text) {
    if (text.empty() || text[0] == '-' || text[0] == '=') return text;
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        int number = 0, digits = 0;
        for (; digits < 3 && i < text.size() && is_digit(text[i]); ++i, ++digits)
            number = number * 10 + (text[i] - '0');
        if (!digits) {
            ++i;
            continue;
        }
        result += static_cast<char>(number / 127 + 1);
        result += static_cast<char>(number % 127 + 1);
    }
    return result;
}

std::string float_text(const char* label, double value) {
    char number[330];  // the widest double has 309 digits before its point
    std::snprintf(number, sizeof number, "%f", value);
    return label + std::string(number);
}
