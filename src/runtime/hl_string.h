// hl_string.h: numbers to text and back, to the digit, and the fixed buffer of a path. The forms are the family's own:
// files and screens hold them, so what looks odd is kept.
// Errors: nothing throws; the one failure, a path too long for its buffer, is a fatal alert.
#pragma once

#include <string>

#include "platform/paths.h"

// Copies `text` into a buffer of path_buffer_size bytes. Over 499 characters is the fatal alert "String too long!".
void copy_to_path_buffer(char* buffer, const std::string& text);

// Sign, then at most ten digits with leading zeros up to `min_digits`. `buf` takes 12 bytes.
void int_to_str(int value, char* buf, int min_digits, int plus);
// -1 for an empty text, for a byte that is no digit, "+" or "-", and for more than nine digits behind the sign. Further
// signs count as digits of the value 1 and -1.
int str_to_int(const std::string& text);
// Integer part in at least total_digits - decimals places, leading zeros as blanks; fraction in `decimals` places. A
// fraction that rounds up to a whole one is not carried. A negative `decimals` leaves `out` as it was.
void flt_to_str(float value, std::string* out, int total_digits, int decimals, int plus);
// Numbers of up to three digits, separated by blanks, as two non-zero bytes each; see hl_string.cpp.
std::string char_string_to_int_string(const std::string& text);

// "err=22.000000": codes travel through a float in the texts of failures.
std::string float_text(const char* label, double value);
