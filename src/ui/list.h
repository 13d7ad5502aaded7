// list.h: a choice of one row: the pop-up list and the tabs of a window.
#pragma once

#include <string>

// The rows stand in one string, each ended by "-". 1 in the frame in which a row was chosen.
int BTN_textlist(float x, float y, int* value, const std::string& items, const std::string& label);
int BTN_tab(int column, int row, int* value, int my_value, const std::string& label);  // 1 when it was pressed
