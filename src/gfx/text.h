// text.h: all text, drawn from glyph cells of the atlas with a fixed table of widths, so that layout is the same on
// every machine. Text is Latin-1 bytes; a byte without a cell advances by its width and shows nothing.
// Lines are 10 units apart. Measuring allocates nothing.
#pragma once

#include <string>
#include <string_view>

enum : int { charset_text = 100, charset_digits = 102, charset_table = 103 };
enum : int { align_left = 0, align_centre = 1, align_right = 2 };
constexpr int line_height = 10;

int char_width(char c);                   // of charset 100
float text_width(std::string_view text);  // plain sum

// Sets colour and texture, tells the cell's origin and size; returns the fixed advance, 0 for proportional. An unknown
// charset is a fatal alert.
float OGL_strtex(int charset, int color, float* s, float* t, float* dx, float* dy);
void OGL_char(float x, float y, float s, float t, float dx, float dy, int code,
              int charset);  // inside glBegin(GL_QUADS)
void str_one_line(int color, float x, float y, std::string_view text, int charset, int align);
// Draws, wrapped where 0 < wrap_width < 9999, and returns the y of the last line.
float OGL_string(int color, float x, float y, const std::string& text, float wrap_width, int charset, int align);
void OGL_number(int color, float x, float y, float value, int digits, int decimals, int charset);
void OGL_gray_string(int color, float x, float y, const std::string& text, float wrap_width, int charset, int align);
void OGL_boxed_string(int color, float x, float y, const std::string& text, float wrap_width, int charset, int align);

// The text made to fit `max_lines` lines of OGL_string at that wrap width: words that are wider than a line are broken,
// and what is still too long loses its middle. Names and paths come from outside and may be of any length.
std::string fit_text(const std::string& text, float wrap_width, int max_lines);

// Paths are UTF-8 on disk; shown text is Latin-1, with "?" for what does not fit.
std::string latin1_of_path(const std::string& path);
