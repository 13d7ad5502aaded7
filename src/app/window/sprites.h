// sprites.h: the pictures of the installer sheet, of which the screens make their buttons.
#pragma once

// Where a picture stands in the sheet, and its size, in units of the sheet. The hover picture of a button lies below it,
// the pressed one below that.
struct sprite {
    float x, y, w, h;
};
constexpr sprite sprite_destination = {513, 166, 126, 22}, sprite_install = {640, 166, 83, 22},
                 sprite_quit = {780, 166, 51, 22}, sprite_shop = {822, 235, 116, 22},
                 sprite_refuse = {832, 166, 85, 22}, sprite_agree = {918, 166, 59, 22},
                 sprite_logo = {644, 33, 128, 86};
// The turning globe, as indices of the grid of icons.
constexpr int icon_globe_first = 8, icon_globe_last = 23, icon_globe_at_rest = 21;

enum : int { tint_white = 0, tint_green = 1, tint_red = 2 };

// One picture of the sheet, its lower left corner at tex_x, tex_y. A live one shows its hover picture under the mouse and
// its pressed one while the button is held. 1 when it was clicked in this frame, live or not.
int interface_rect(float x, float y, float tex_x, float tex_y, float w, float h, int live, int tint);

int interface_button(float x, float y, const sprite& picture, int live, int tint);  // the same by its name

int interface_icon(float x, float y, int index);  // a 64 by 64 picture of the sheet's grid

void draw_background();
