#include "ui/frames.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

#include "gfx/colr.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "gfx/tman.h"
#include "runtime/oops.h"

stls_t stls;

namespace {

constexpr const char* place = "HLutils/OOPS_cpp/butn";
constexpr float atlas_side = 512, sheet_side = 1024;

// A strip of the atlas: left end, a middle that repeats, right end.
struct bar_cut {
    int type;
    float end, middle_end, length;  // columns: end of the left end, of the middle, of the strip
    float height;
    float x, y;   // left bottom corner in the atlas
    float extra;  // added to the width that is asked for
};
constexpr bar_cut bars[] = {
    {bar_menu, 10, 90, 100, 26, 1, 487, 0},           {bar_title, 20, 80, 100, 26, 102, 487, 0},
    {bar_button_up, 10, 42, 52, 26, 304, 486, 0},     {bar_button_down, 10, 42, 52, 26, 304, 459, 0},
    {bar_trough, 10, 18, 28, 16, 112, 161, 0},        {bar_fill, 10, 18, 28, 16, 83, 161, 0},
    {bar_slider_trough, 10, 55, 65, 24, 240, 242, 0}, {bar_slider_fill, 7, 9, 16, 16, 289, 219, 0},
    {bar_field, 10, 41, 51, 26, 262, 133, 4},         {bar_popup, 26, 42, 68, 24, 357, 488, 4},
};

// A square of a sheet, cut in nine. The caller's rectangle is the inner area; the padding is border and shadow.
struct box_cut {
    int type;
    float side;
    float pad_x, pad_bottom, pad_top;
    float x, y;  // left bottom corner in the sheet
};
constexpr box_cut boxes[] = {
    {box_window_corners, 100, 9, 14, 4, 1, 358},
    {box_window, 100, 9, 14, 4, 102, 358},
    {box_panel, 100, 9, 14, 4, 203, 358},
    {box_bright, 100, 9, 14, 4, 304, 358},
    {box_dark, 100, 9, 14, 4, 405, 358},
    {box_thin, 68, 2, 2, 2, 1, 289},
    {box_menu, 42, 8, 13, 2, 70, 315},
    {box_menu_title, 42, 8, 13, 2, 113, 315},
    {box_well, 44, 6, 9, 4, 440, 12},
    {box_picture, 41, 1, 1, 1, 774, 78},
};

template <class Cut, std::size_t N>
const Cut* find_cut(const Cut (&table)[N], int type) {
    const Cut* found =
        std::find_if(std::begin(table), std::end(table), [type](const Cut& c) { return c.type == type; });
    return found == std::end(table) ? nullptr : found;
}

// One stretch of a bar's or box's side: from where on the screen, how long, and from where in the sheet.
struct piece {
    float at, length, source;
};

// Lays the three parts of a side over `total` units: the ends once, the middle as often as it fits and once more cut
// short. Shorter than both ends, the ends overlap.
template <class Draw>
void for_each_piece(float start, float total, float source, float end, float middle_end, float length, Draw draw) {
    const float last = length - middle_end;
    draw(piece{start, end, source});
    const float step = middle_end - end;
    const float stop = start + total - last;
    for (float at = start + end; at < stop; at += step)
        draw(piece{at, std::min(step, stop - at), source + end});
    draw(piece{stop, last, source + middle_end});
}

void put_quad(const piece& x, const piece& y, float side) {
    const float left = mnw.wind_x + x.at, bottom = mnw.wind_y + y.at;
    const float right = left + x.length, top = bottom + y.length;
    const float s1 = x.source / side, s2 = (x.source + x.length) / side;
    const float t1 = y.source / side, t2 = (y.source + y.length) / side;
    glTexCoord2f(s1, t1), glVertex2f(left, bottom);
    glTexCoord2f(s1, t2), glVertex2f(left, top);
    glTexCoord2f(s2, t2), glVertex2f(right, top);
    glTexCoord2f(s2, t1), glVertex2f(right, bottom);
}

void begin_quads(int tex_ref, int color) {
    OGL_setstate(fog_off, 1, lit_off, alpha_blend, depth_read_off, depth_write_off);
    tman.bind_ref(tex_ref, 0, 0);
    OGL_set_color(color, 1);
    glBegin(GL_QUADS);
}

float even_width(float width) {
    return 2 * std::round(width / 2);
}

int title_colour(int type) {
    return type == box_window_corners ? colour_title : type == box_dark ? colour_help : colour_label;
}

void draw_title(int type, float x, float y, float width, float height, const std::string& title) {
    if (title.empty()) return;
    const float line = y + height - (type == box_window_corners ? 13.0f : 16.0f);
    const bool at_left = type == box_picture;
    OGL_string(title_colour(type), at_left ? x + 10 : x + width / 2, line, title, 9999, charset_text,
               at_left ? align_left : align_centre);
}

// The corner boxes of a window: up, or pushed.
constexpr float corner_half = 9, corner_atlas_x = 129, corner_up_y = 187, corner_pushed_y = 206;

void draw_corners(bool pushed) {
    const float y = mnw.wind_dy - 10;
    for (const float x : {16.0f, mnw.wind_dx - 16})
        BTN_util_element(x, y, corner_atlas_x, pushed ? corner_pushed_y : corner_up_y, corner_half, corner_half, 0);
}

bool has_corners() {
    return mnw.wind_id != wind_main && !wind_is_question(mnw.wind_id);
}

}  // namespace

void BTN_util_element(float x, float y, float ax, float ay, float half_dx, float half_dy, int color) {
    const float s1 = (ax - half_dx) / atlas_side, s2 = (ax + half_dx) / atlas_side;
    const float t1 = (ay - half_dy) / atlas_side, t2 = (ay + half_dy) / atlas_side;
    OGL_2dquad(tex_atlas, color, 1, x - half_dx, y - half_dy, s1, t1, x - half_dx, y + half_dy, s1, t2, x + half_dx,
               y + half_dy, s2, t2, x + half_dx, y - half_dy, s2, t1, 1, alpha_blend);
}

void BTN_frame0(int type, float x_center, float y_center, float length) {
    if (ren.hidden) return;
    if (type != 6) {
        __MACIBM_alert(0, "Bad BTN_frame0 call!", "", "", "", t_exit, place, 301);
        return;
    }
    // A bar with a fractional centre would blur.
    if (x_center != std::floor(x_center))
        __MACIBM_alert(0, "BTN_frame0 non-int x_center!", "", "", "", t_exit, place, 302);
    if (y_center != std::floor(y_center))
        __MACIBM_alert(0, "BTN_frame0 non-int y_center!", "", "", "", t_exit, place, 303);
    const float total = even_width(length) + 8;
    const piece across = {x_center - 10, 20, 102};
    begin_quads(tex_atlas, 0);
    for_each_piece(y_center - total / 2, total, 248, 10, 30, 40,
                   [&](const piece& along) { put_quad(across, along, atlas_side); });
    glEnd();
}

void BTN_frame1(int type, float x_center, float y_center, float width, int color) {
    if (ren.hidden) return;
    const bar_cut* cut = find_cut(bars, type);
    if (!cut) {
        __MACIBM_alert(0, "Bad BTN_frame1 call!", "", "", "", t_exit, place, 375);
        return;
    }
    const float total = even_width(width) + cut->extra;
    const float lowered = type == bar_title ? 3.0f : 0.0f;
    const piece upright = {y_center - lowered - cut->height / 2, cut->height, cut->y};
    begin_quads(tex_atlas, color);
    for_each_piece(std::round(x_center) - total / 2, total, cut->x, cut->end, cut->middle_end, cut->length,
                   [&](const piece& along) { put_quad(along, upright, atlas_side); });
    glEnd();
}

void BTN_frame2(int type, float x, float y, float width, float height, const std::string& title) {
    if (ren.hidden) return;
    const box_cut* cut = find_cut(boxes, type);
    if (!cut) {
        __MACIBM_alert(0, "Bad BTN_frame2 call!", "", "", "", t_exit, place, 439);
        return;
    }
    const bool menu = type == box_menu;
    const float end_x = menu ? 20 : 0.35f * cut->side, end_y = menu ? 14 : 0.3f * cut->side;
    const float middle_x = menu ? 22 : cut->side - end_x, middle_y = menu ? 28 : cut->side - end_y;
    const float side = type == box_picture ? sheet_side : atlas_side;
    begin_quads(type == box_picture ? tex_installer : tex_atlas, 0);
    for_each_piece(y - cut->pad_bottom, height + cut->pad_bottom + cut->pad_top, cut->y, end_y, middle_y, cut->side,
                   [&](const piece& upright) {
                       for_each_piece(x - cut->pad_x, width + 2 * cut->pad_x, cut->x, end_x, middle_x, cut->side,
                                      [&](const piece& along) { put_quad(along, upright, side); });
                   });
    glEnd();
    draw_title(type, x, y, width, height, title);
    if (type == box_window_corners && has_corners()) draw_corners(false);
}

void BTN_fillwin(int titled, int type) {
    BTN_frame2(titled ? box_window_corners : box_window, 0, 0, mnw.wind_dx, mnw.wind_dy, stls.title);
    if (type == 21) return;
    if (type == 1)
        BTN_frame1(bar_title, mnw.wind_dx / 2, mnw.wind_dy - 50, mnw.wind_dx, 0);
    else
        BTN_frame2(type, 10, 10, mnw.wind_dx - 20, mnw.wind_dy - 40, "");
}

void BTN_subwin(int reserve, int type, float x, float y, float width, float height, const std::string& title,
                float* next_x, float* next_y) {
    if (x < 0) x = 10;
    if (y < 0) y = 10;
    if (width < 0) width = mnw.wind_dx - 10 - x;
    if (height < 0) height = mnw.wind_dy - 28 - static_cast<float>(reserve) - y;
    BTN_frame2(type, x, y, width, height, title);
    if (next_x) *next_x = x + width + 10;
    if (next_y) *next_y = y + height + 10;
}

int BTN_zap_boxes(int zapped) {
    draw_corners(zapped != 0);
    if (!mnw.mouse_down || std::fabs(mnw.mouse_y - (mnw.wind_dy - 10)) > corner_half) return 0;
    return std::fabs(mnw.mouse_x - 16) <= corner_half || std::fabs(mnw.mouse_x - (mnw.wind_dx - 16)) <= corner_half;
}

void BTN_title_line(unsigned rgb) {
    OGL_fillrect(colour_of(rgb), 1, 0, mnw.wind_dy - 22, mnw.wind_dx, 2);
}

void BTN_progress_bar(float x1, float x2, float y, float share, unsigned fill) {
    // The trough's centre is even and its width goes in steps of four, so that its pieces stay crisp.
    BTN_frame1(bar_trough, 2 * std::round(std::trunc(x1 + x2) / 4), y, 4 * std::round((x2 - x1) / 4), 0);
    if (share < 0) return;
    constexpr float inset = 3, half_height = 5, radius = 3;
    const float left = x1 + inset, right = x2 - inset;
    const float end = std::max(left + (right - left) * std::min(share, 1.0f), left + 2 * radius);
    fill_rounded({left, y - half_height, end, y + half_height}, radius, fill, 1);
    fill_rounded({left, y, end, y + half_height}, radius, tone_white, 0.08f);  // the light from above
}
