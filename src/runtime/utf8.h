// utf8.h: names and sentences are bytes that are mostly UTF-8; these are the steps over them.
// Latin-1 is what the keyboard gives and the window's letters show: one byte a character.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// A byte that goes on with a character and begins none.
constexpr bool is_utf8_tail(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

// Length of the valid sequence that starts at `i`, 0 if there is none: no overlong form, no surrogate, nothing above
// U+10FFFF.
std::size_t utf8_length(std::string_view text, std::size_t i);

// The next place from `i` on, `i` included, at which a character begins; the end of the text at last.
std::size_t utf8_boundary(std::string_view text, std::size_t i);

// The character at `i` as Latin-1, 0 where it is none; `i` goes behind it, over one byte of what is no UTF-8.
unsigned char utf8_take_latin1(std::string_view text, std::size_t& i);
std::string utf8_of_latin1(std::string_view text);

// The number of the valid sequence of `length` bytes at `i`.
char32_t utf8_code(std::string_view text, std::size_t i, std::size_t length);

// What a terminal obeys instead of showing it: the control characters, those of C1 among them, and what turns the
// direction of writing, by which a name can be made to look like another one.
bool steers_terminal(char32_t code);

// Text of unknown origin for a terminal or a line of a log: "?" for each such character, and for a byte of C1 alone.
std::string printable(std::string text);
// The same in place, but for the characters in `allowed`; how long the text is now. For a signal handler too.
std::size_t make_printable(char* text, std::size_t size, std::string_view allowed);
