#include "app/window/sprites.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "display/display.h"
#include "gfx/builtin.h"
#include "gfx/colr.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
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

int interface_picture(float x, float y, const sprite& picture) {
    return interface_rect(x, y, picture.x, picture.y, picture.w, picture.h, 0, tint_white);
}

// 11 by 8, its lower left corner at x, y.
static void draw_folder(float x, float y, unsigned ink) {
    line_rounded({x, y, x + 11, y + 7}, 1.5f, 1.2f, ink, 1);
    fill_rounded({x, y + 6, x + 5, y + 8.2f}, 1, ink, 1);
}

// An arrow to the upper right, 6 by 6.
static void draw_arrow(float x, float y, unsigned ink) {
    stroke(x + 0.4f, y + 0.4f, x + 5.4f, y + 5.4f, 1.3f, ink, 1);
    stroke(x + 1.6f, y + 5.4f, x + 6, y + 5.4f, 1.3f, ink, 1);
    stroke(x + 5.4f, y + 6, x + 5.4f, y + 1.6f, 1.3f, ink, 1);
}

int interface_button(const face_button& button, button_role role, bool link) {
    static key_slots slots;
    constexpr float radius = 4;
    const float x = button.x, y = button.y, right = x + button.width;
    const box_place face = {x + 1, y + 2, right - 1, y + 20};
    int presses = role == role_off ? 0 : slots.join_as_button(widget_id(x, y), face, true);
    if (role == role_primary && take_return()) ++presses;
    const bool hovered = role != role_off && mnw.menu_open == -1 && mouse_in(x, y, right, y + 22);
    const bool down = hovered && mnw.mouse_held;
    button_tones tones = tones_of(role, hovered);
    const unsigned border = tones.line ? tones.line : role == role_primary ? tone_blue_down : tone_stroke;
    if (down) tones.face = role == role_primary ? tone_blue_down : tone_down_face;
    if (link) {
        tones.ink = hovered ? tone_blue_down : tone_blue;
        if (hovered) fill_rounded(face, radius, tone_white, down ? 0.35f : 0.75f);
    } else {
        if (!down) fill_rounded({face.left, face.bottom - 1, face.right, face.top - 1}, radius, tone_dim, 0.12f);
        fill_rounded(face, radius, border, 1);
        fill_rounded(grown(face, -1), radius - 1, tones.face, 1);
    }
    const float extra = button.with_folder ? 17.0f : link ? 11.0f : 0.0f;  // of the little picture and its air
    const float words = text_width(button.caption), base = y + 8 - (down ? 1.0f : 0.0f);
    const float left = std::round((x + right - words - extra) / 2), text = left + (button.with_folder ? extra : 0);
    OGL_string(colour_of(tones.ink), text, base, button.caption, 9999, charset_text, align_left);
    if (button.with_folder) draw_folder(left, base, tones.ink);
    if (link) draw_arrow(text + words + 4, base, tones.ink);
    if (link && hovered) OGL_fillrect(colour_of(tones.ink), 1, text, base - 2, words, 1);
    if (role == role_off) return 0;
    return presses || (hovered && mnw.mouse_down);
}

// The grid of icons in the sheet, from its lower left.
static constexpr int icon_side = 64, icon_columns = 8, lowest_icon = 66;

int interface_icon(float x, float y, int index) {
    const int column = index % icon_columns * icon_side, row = index / icon_columns * icon_side + lowest_icon;
    return interface_rect(x, y, static_cast<float>(column), static_cast<float>(row), icon_side, icon_side, 0,
                          tint_white);
}

void set_window_icon() {
    const builtin_image& sheet = builtin_images[0];
    constexpr int left = icon_globe_at_rest % icon_columns * icon_side,
                  top = icon_globe_at_rest / icon_columns * icon_side + lowest_icon + icon_side - 1;
    std::vector<unsigned char> pixels;
    for (int row = 0; row < icon_side; ++row) {
        const unsigned char* line = sheet.pixels + (std::ptrdiff_t{top - row} * sheet.width + left) * 4;
        pixels.insert(pixels.end(), line, line + icon_side * 4);
    }
    display_set_icon(pixels.data(), icon_side, icon_side);
}

void draw_background() {
    OGL_2dquad(tex_back_1, colour_picture, 1, 0, 0, 0, 0, 0, 768, 0, 0.75f, 1024, 768, 1, 0.75f, 1024, 0, 1, 0, 1,
               alpha_blend);
}
