#include "runtime/utf8.h"

#include <algorithm>

std::size_t utf8_length(std::string_view text, std::size_t i) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char first = byte(i);
    if (first < 0x80) return 1;
    const std::size_t n = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || i + n > text.size()) return 0;
    for (std::size_t k = 1; k < n; ++k)
        if (!is_utf8_tail(text[i + k])) return 0;
    const unsigned char second = byte(i + 1);
    if ((first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) || (first == 0xf0 && second < 0x90) ||
        (first == 0xf4 && second > 0x8f))
        return 0;
    return n;
}

std::size_t utf8_boundary(std::string_view text, std::size_t i) {
    while (i < text.size() && is_utf8_tail(text[i]))
        ++i;
    return i;
}

unsigned char utf8_take_latin1(std::string_view text, std::size_t& i) {
    const std::size_t first = i++;
    const auto lead = static_cast<unsigned char>(text[first]);
    if (lead < 0x80) return lead;
    if (lead >= 0xc0) i = utf8_boundary(text, i);
    if ((lead != 0xc2 && lead != 0xc3) || i != first + 2) return 0;
    return static_cast<unsigned char>((lead & 3) << 6 | (text[first + 1] & 0x3f));
}

std::string utf8_of_latin1(std::string_view text) {
    std::string result;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code >= 0x80) result += static_cast<char>(0xc0 | code >> 6);
        result += code < 0x80 ? c : static_cast<char>(0x80 | (code & 0x3f));
    }
    return result;
}

std::string printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c & ~31) == 0 || c == 127; }, '?');
    return text;
}
