// slider.h: the upright scroll slider of lists and the lying one of quantities. 1 while the thumb is grabbed.
#pragma once

#include <string>

// `min` at the top, `max` at the bottom; a list that fits (max <= min) shows a bare track. `index` 0 to 3 tells the
// sliders of a screen apart; more are a fatal alert.
int BTN_vert_slider(int index, float x, float y_bottom, float y_top, int min, int max, int* value);
// `live`: follows the mouse. `text` stands above it while the mouse is on it.
int BTN_horz_slider(float x, float y, float width, int color, float min, float max, float* value, int live,
                    const std::string& label, const std::string& text);
