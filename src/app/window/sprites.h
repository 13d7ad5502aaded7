// sprites.h: the pictures of the installer sheet, of which the screens make their buttons.
#pragma once

enum : int { tint_white = 0, tint_green = 1, tint_red = 2 };

// One picture of the sheet, its lower left corner at tex_x, tex_y. A live one shows its hover picture under the mouse and
// its pressed one while the button is held. 1 when it was clicked in this frame, live or not.
int interface_rect(float x, float y, float tex_x, float tex_y, float w, float h, int live, int tint);

int interface_icon(float x, float y, int index);  // a 64 by 64 picture of the sheet's grid

void draw_background();
