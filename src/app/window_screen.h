// window_screen.h: the main screen and what it is made of: a fixed canvas of 1024 by 768 units, repainted from the state
// of the install in every frame. Nothing is laid out at run time and nothing is remembered.
#pragma once

#include <string>

// One picture of the installer sheet. A live one shows its hover picture under the mouse and its pressed one while the
// button is held. 1 when it was clicked in this frame, live or not.
int interface_rect(float x, float y, float tex_x, float tex_y, float w, float h, int live, int tint);
enum : int { tint_white = 0, tint_green = 1, tint_red = 2 };

int interface_icon(float x, float y, int index);  // a 64 by 64 picture of the sheet's grid

void draw_background();
void APP_update();  // one frame of the main screen and of the flow

// One complete frame of the scan's progress, drawn and shown; no event is handled.
void dir_progress_bar(float lo, float value, float hi, int phase, const std::string& label, const std::string& item);
