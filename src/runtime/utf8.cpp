#include "runtime/utf8.h"

#include <algorithm>
#include <iterator>

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

char32_t utf8_code(std::string_view text, std::size_t i, std::size_t length) {
    const auto lead = static_cast<unsigned char>(text[i]);
    char32_t code = length == 1 ? lead : lead & (0x7fu >> length);
    for (std::size_t k = 1; k < length; ++k)
        code = code << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3fu);
    return code;
}

bool steers_terminal(char32_t code) {
    static constexpr char32_t ranges[][2] = {{0, 0x1f},        {0x7f, 0x9f},     {0x61c, 0x61c},
                                             {0x200e, 0x200f}, {0x202a, 0x202e}, {0x2066, 0x2069}};
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [code](const auto& range) { return code >= range[0] && code <= range[1]; });
}

std::size_t make_printable(char* text, std::size_t size, std::string_view allowed) {
    const std::string_view all(text, size);
    char* to = text;  // never ahead of what is read
    for (std::size_t i = 0; i < size;) {
        const std::size_t valid = utf8_length(all, i), length = std::max<std::size_t>(valid, 1);
        const char32_t code = valid ? utf8_code(all, i, valid) : static_cast<unsigned char>(text[i]);
        if (steers_terminal(code) && allowed.find(text[i]) == std::string_view::npos)
            *to++ = '?';
        else
            to = std::copy(text + i, text + i + length, to);
        i += length;
    }
    return static_cast<std::size_t>(to - text);
}

std::string printable(std::string text) {
    text.resize(make_printable(text.data(), text.size(), ""));
    return text;
}
