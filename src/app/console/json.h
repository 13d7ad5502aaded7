// json.h: one JSON object a line, for scripts that follow a run.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// A string literal with its quotes. Bytes that are no valid UTF-8 are written as \u00XX, so that every line is valid.
std::string json_text(std::string_view text);

// Builds one object: json_object("status").add("text", "...").line()
class json_object {
  public:
    explicit json_object(std::string_view event);
    json_object& add(std::string_view key, std::string_view text);
    json_object& add(std::string_view key, std::int64_t number);
    json_object& add_raw(std::string_view key, std::string_view json);
    std::string line() const { return body + "}\n"; }

  private:
    std::string body;
};
