// field.h: text entry on one line. The caller's string is the state; only the field that has the keyboard can scroll.
#pragma once

#include <string>

// From x on, `width` units; y is the base line. Longer text than `max_chars` is cut. `auto_focus`: takes the keyboard
// when nothing else has it. 1 in a frame in which the text changed.
int BTN_enterstring(float x, float y, std::string* text, int max_chars, const std::string& label, float width,
                    int auto_focus);
// The same on an array of `size` bytes, its last one the NUL.
int BTN_enterstring(float x, float y, char* text, int size, const std::string& label, float width, int auto_focus);
// A fixed number of boxes, one character each. `text` has `max` bytes and need not end in NUL; a NUL shows as an empty
// box.
int BTN_chars(float x, float y, char* text, int max, const std::string& label);
