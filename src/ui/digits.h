// digits.h: a number with a pair of arrows for each digit, for the mouse, and a hot digit, for the keyboard. Ten units
// a digit, from x on; y is the base line.
// The value is held to min and max and rounded to `decimals` places. 1 in a frame in which it changed.
#pragma once

#include <string>

int BTN_flt_range(float x, float y, float* value, int digits, int decimals, float min, float max,
                  const std::string& label);
int BTN_int_range(float x, float y, int* value, int digits, int min, int max, const std::string& label);
int BTN_dob_range(float x, float y, double* value, int digits, int decimals, double min, double max,
                  const std::string& label);  // keeps the precision of a float
// Limits as the digits allow.
int BTN_flt(float x, float y, float* value, int digits, int decimals, int is_signed, const std::string& label);
int BTN_int(float x, float y, int* value, int digits, int is_signed, const std::string& label);
// The same by cell of a grid of 75 by 50 units.
int BTN_fltij(int i, int j, float* value, int digits, int decimals, int is_signed, const std::string& label);
int BTN_flt_rangeij(int i, int j, float* value, int digits, int decimals, float min, float max,
                    const std::string& label);
void BTN_display_number(float x, float y, float value, int digits, int decimals, const std::string& label);
