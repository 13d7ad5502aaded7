#include "app/console/json.h"

#include <cstdio>

// Length of the valid UTF-8 sequence that starts at `i`, 0 if there is none: no overlong form, no surrogate, nothing
// above U+10FFFF.
static std::size_t utf8_length(std::string_view text, std::size_t i) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char first = byte(i);
    if (first < 0x80) return 1;
    const std::size_t n = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || i + n > text.size()) return 0;
    for (std::size_t k = 1; k < n; ++k)
        if ((byte(i + k) & 0xc0) != 0x80) return 0;
    const unsigned char second = byte(i + 1);
    if ((first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) || (first == 0xf0 && second < 0x90) ||
        (first == 0xf4 && second > 0x8f))
        return 0;
    return n;
}

static void append_escaped(std::string& out, unsigned char c) {
    char code[8];
    std::snprintf(code, sizeof code, "\\u%04X", static_cast<unsigned>(c));
    out += code;
}

std::string json_text(std::string_view text) {
    std::string out = "\"";
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        const std::size_t n = utf8_length(text, i);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (n == 0 || c < 0x20 || c == 0x7f) {
            append_escaped(out, c);
        } else {
            out += text.substr(i, n);
        }
        i += n ? n : 1;
    }
    return out + "\"";
}

json_object::json_object(std::string_view event) : body("{\"event\":" + json_text(event)) {}

json_object& json_object::add(std::string_view key, std::string_view text) {
    return add_raw(key, json_text(text));
}

json_object& json_object::add(std::string_view key, std::int64_t number) {
    return add_raw(key, std::to_string(number));
}

json_object& json_object::add_raw(std::string_view key, std::string_view json) {
    body += "," + json_text(key) + ":";
    body += json;
    return *this;
}
