#include "app/window/sprites.h"

#include <algorithm>

#include "gfx/colr.h"
#include "gfx/oglp.h"
#include "gfx/tman.h"
#include "ui/butn.h"
#include "ui/focus.h"

static constexpr float sheet_side = 1024;

int interface_rect(float x, float y, float tex_x, float tex_y, float w, float h, int live, int tint) {
    static const float tints[3][3] = {{1, 1, 1}, {0.8f, 1, 0.8f}, {1, 0.8f, 0.8f}};
    const float* rgb = tints[std::clamp(tint, 0, 2)];
    colr.assign(colour_sprite, rgb[0], rgb[1], rgb[2]);
    const bool inside = mouse_in(x, y, x + w, y + h);
    if (live && inside) tex_y -= (h + 1) * (mnw.mouse_held ? 2.0f : 1.0f);
    const float s1 = tex_x / sheet_side, s2 = (tex_x + w) / sheet_side;
    const float t1 = tex_y / sheet_side, t2 = (tex_y + h) / sheet_side;
    OGL_2dquad(tex_installer, colour_sprite, 1, x, y, s1, t1, x, y + h, s1, t2, x + w, y + h, s2, t2, x + w, y, s2, t1,
               1, alpha_blend);
    return inside && mnw.mouse_down && mnw.menu_open == -1;
}

int interface_button(float x, float y, const sprite& picture, int live, int tint) {
    static key_slots slots;
    const box_place face = {x + 1, y + 2, x + picture.w - 1, y + 20};
    const int presses = live ? slots.join_as_button(widget_id(x, y), face, true) : 0;
    return interface_rect(x, y, picture.x, picture.y, picture.w, picture.h, live, tint) || presses;
}

int interface_icon(float x, float y, int index) {
    constexpr float cell = 64, lowest = 66;
    const int column = index % 8, row = index / 8;
    return interface_rect(x, y, static_cast<float>(column) * cell, static_cast<float>(row) * cell + lowest, cell, cell,
                          0, tint_white);
}

void draw_background() {
    OGL_2dquad(tex_back_1, colour_picture, 1, 0, 0, 0, 0, 0, 768, 0, 0.75f, 1024, 768, 1, 0.75f, 1024, 0, 1, 0, 1,
               alpha_blend);
}
