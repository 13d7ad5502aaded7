#include "app/console/json.h"

#include <cstdio>

#include "runtime/utf8.h"

static void append_escaped(std::string& out, char32_t code) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(code));  // no escaped byte is above
    out += escape;
}

std::string json_text(std::string_view text) {
    std::string out = "\"";
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        const std::size_t n = utf8_length(text, i);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (n == 0) {
            append_escaped(out, c);
        } else if (const char32_t code = utf8_code(text, i, n); steers_terminal(code)) {
            append_escaped(out, code);
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
