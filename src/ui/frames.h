// frames.h: bars and boxes cut from the atlas, the skin of every widget and window. A bar is three pieces, a box nine;
// the middles repeat. Sizes, cuts and places stand in two tables in frames.cpp.
// Units: canvas units relative to the logical window. A bad type is a fatal alert that draws nothing.
#pragma once

#include <string>

#include "ui/shapes.h"

enum : int {  // bars of BTN_frame1
    bar_menu = 0,
    bar_title = 1,
    bar_button_up = 2,
    bar_button_down = 3,
    bar_trough = 4,
    bar_fill = 5,
    bar_slider_trough = 7,
    bar_slider_fill = 8,
    bar_field = 9,
    bar_popup = 10
};
enum : int {  // boxes of BTN_frame2
    box_window_corners = 11,
    box_window = 12,
    box_panel = 13,
    box_bright = 14,
    box_dark = 15,
    box_thin = 16,
    box_menu = 17,
    box_menu_title = 18,
    box_well = 19,
    box_picture = 20
};

void BTN_frame0(int type, float x_center, float y_center, float length);            // upright; only type 6
void BTN_frame1(int type, float x_center, float y_center, float width, int color);  // lying; y is the centre
void BTN_frame2(int type, float x, float y, float width, float height, const std::string& title);
void BTN_fillwin(int titled, int type);  // the whole window
void BTN_title_line(unsigned rgb);       // right below the title strip, across the window: this one asks or warns
// A box with defaults for what is negative; tells where the next one goes.
void BTN_subwin(int reserve, int type, float x, float y, float width, float height, const std::string& title,
                float* next_x, float* next_y);
// One atlas cell as a quad: its centre on the screen and in the atlas, and half its size.
void BTN_util_element(float x, float y, float ax, float ay, float half_dx, float half_dy, int color);
// The two corner boxes of a window. 1 if the press of this frame lies in one of them.
int BTN_zap_boxes(int zapped);

// A progress bar between x1 and x2, y its centre: the trough, and the fill up to `share` where that is not negative.
void BTN_progress_bar(float x1, float x2, float y, float share, unsigned fill = tone_bar_blue);

// The interface strings: the open window's title, the word on an alert's button, the help text of this frame.
struct stls_t {
    std::string title;
    std::string ok = "OK";
    std::string help;
};
extern stls_t stls;
