// sprites.h: the pictures of the installer sheet, and the buttons that are drawn by code between them.
#pragma once

#include "ui/butn.h"

// Where a picture stands in the sheet, and its size, in units of the sheet.
struct sprite {
    float x, y, w, h;
};
constexpr sprite sprite_logo = {644, 33, 128, 86};
// The turning globe, as indices of the grid of icons.
constexpr int icon_globe_first = 8, icon_globe_last = 23, icon_globe_at_rest = 21;

enum : int { tint_white = 0, tint_green = 1, tint_red = 2 };

// One picture of the sheet, its lower left corner at tex_x, tex_y. A live one shows its hover picture under the mouse
// and its pressed one while the button is held. 1 when it was clicked in this frame, live or not.
int interface_rect(float x, float y, float tex_x, float tex_y, float w, float h, int live, int tint);

int interface_picture(float x, float y, const sprite& picture);  // by its name; for looking at alone

// The buttons of the main screen and of the agreement: 18 units of face in 22 of room, so that all stand level.
struct face_button {
    float x, y, width;
    const char* caption;
    bool with_folder = false;  // a little folder before the caption
};
constexpr face_button button_destination = {10, 78, 120, "DESTINATION", true},
                      button_install = {450, 78, 83, "INSTALL"}, button_shop = {700, 78, 116, "VISIT THE SHOP"},
                      button_quit = {960, 78, 51, "QUIT"}, button_refuse = {294, 10, 96, "I DO NOT AGREE"},
                      button_agree = {400, 10, 62, "I AGREE"};
// 1 when it was pressed, by mouse or key. A link has no face until the mouse is on it.
int interface_button(const face_button& button, button_role role, bool link = false);

void set_window_icon();                           // the globe at rest
int interface_icon(float x, float y, int index);  // a 64 by 64 picture of the sheet's grid

void draw_background();
