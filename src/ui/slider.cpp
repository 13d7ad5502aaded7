#include "ui/slider.h"

#include <algorithm>
#include <cmath>

#include "display/virtual_keys.h"
#include "gfx/colr.h"
#include "gfx/mnw.h"
#include "gfx/text.h"
#include "runtime/oops.h"
#include "runtime/xtim.h"
#include "ui/butn.h"
#include "ui/focus.h"
#include "ui/frames.h"

namespace {

constexpr const char* place = "HLutils/OOPS_cpp/butn";
constexpr int slider_count = 4;
constexpr float reach = 11;  // of a thumb, to all sides

constexpr int page = 10;  // steps

// Carries `at` from one stretch to another, held to that one. A stretch without length gives the other's start.
float carry(float at, float from_start, float from_end, float to_start, float to_end) {
    if (from_start == from_end) return to_start;
    const float share = std::clamp((at - from_start) / (from_end - from_start), 0.0f, 1.0f);
    return to_start + share * (to_end - to_start);
}

bool acts_now() {
    if (mnw.menu_open != -1) return false;
    return mnw.mouse_down || (mnw.mouse_repeat && xtim.once_act[ot5]);
}

// What a press beside the thumb, or holding there, does: an arrow is one step, the track a page.
int steps(float x, float y_bottom, float y_top, float thumb) {
    constexpr float arrow = 20;
    if (!acts_now() || !mouse_in(x - reach, y_bottom - arrow, x + reach, y_top + arrow)) return 0;
    if (mnw.mouse_y > y_top) return -1;
    if (mnw.mouse_y < y_bottom) return 1;
    return mnw.mouse_y > thumb ? -page : page;
}

}  // namespace

int BTN_vert_slider(int index, float x, float y_bottom, float y_top, int min, int max, int* value) {
    static int slider_grabbed[slider_count] = {};
    BTN_frame0(6, x, (y_top + y_bottom) / 2, y_top - y_bottom);
    if (max <= min) return 0;
    const auto first = static_cast<float>(min), last = static_cast<float>(max);
    const float thumb = carry(static_cast<float>(*value), first, last, y_top - 10, y_bottom + 9);
    if (index < 0 || index >= slider_count) {
        __MACIBM_alert(0, "Too many sliders!", "", "", "", t_exit, place, 588);
        return 0;
    }
    int& grabbed = slider_grabbed[index];
    if (!mnw.mouse_held)
        grabbed = 0;
    else if (mnw.menu_open == -1 && mouse_in(x - reach, thumb - reach, x + reach, thumb + reach))
        grabbed = 1;

    static key_slots slots;
    const int id = widget_id(x, y_bottom);
    slots.join_ring(id, accept_moves, 0);
    BTN_focus_place(id, {x - 9, y_bottom - 20, x + 9, y_top + 18}, look_around);
    long long wanted = *value;
    slots.drain(id, [&](int, int vkey, int) {
        wanted += vkey == vk_down        ? 1
                  : vkey == vk_up        ? -1
                  : vkey == vk_page_down ? page
                  : vkey == vk_page_up   ? -page
                                         : 0;
        if (vkey == vk_home) wanted = min;
        if (vkey == vk_end) wanted = max;
    });
    if (grabbed)
        wanted = static_cast<long long>(carry(mnw.mouse_y, y_top - 11, y_bottom + 11, first, last));
    else
        wanted += steps(x, y_bottom, y_top, thumb);
    *value = static_cast<int>(std::clamp<long long>(wanted, min, max));

    const int colour = grabbed ? colour_help : colour_white;
    constexpr float column = 92, half_width = 9;
    BTN_util_element(x, y_top + 8, column, 277, half_width, 11, colour);
    BTN_util_element(x, std::round(thumb), column, 252, half_width, 12, colour);
    BTN_util_element(x, y_bottom - 10, column, 227, half_width, 11, colour);
    return grabbed;
}

int BTN_horz_slider(float x, float y, float width, int color, float min, float max, float* value, int live,
                    const std::string& label, const std::string& text) {
    constexpr float narrowest_range = 0.01f, shortest_fill = 14, grip = 20;
    const label_parts parts = expand_label(label);
    max = std::max(max, min + narrowest_range);
    BTN_frame1(bar_slider_trough, x + width / 2, y, width, 0);
    draw_side_labels(x - 8, x + width + 8, y, parts);
    help_in(x, y - 7, x + width, y + 7, parts.help);
    if (mouse_in(x, y - 7, x + width, y + 7))
        OGL_string(colour_label, x + width / 2, y + 10, text, 9999, charset_text, align_centre);

    const bool slider_grabbed =
        live && mnw.mouse_held && mnw.menu_open == -1 && mouse_in(x - grip, y - grip, x + width + grip, y + grip);
    if (slider_grabbed) *value = carry(mnw.mouse_x, x, x + width, min, max);
    if (live) {
        static key_slots slots;
        const int id = widget_id(x, y);
        slots.join_ring(id, accept_moves, 0);
        BTN_focus_place(id, {x, y - 9, x + width, y + 9}, look_around);
        slots.drain(id, [&](int, int vkey, int) {
            constexpr float share = 0.05f;
            const int step = vkey == vk_right || vkey == vk_up ? 1 : vkey == vk_left || vkey == vk_down ? -1 : 0;
            *value = std::clamp(*value + static_cast<float>(step) * share * (max - min), min, max);
        });
    }

    const float filled = carry(*value, min, max, 0, width);
    if (color != colour_no_fill && filled > 0) {
        const float drawn = std::max(filled, shortest_fill);  // both its ends
        BTN_frame1(bar_slider_fill, x + drawn / 2, y, drawn, color);
    }
    if (live) BTN_util_element(std::round(x + filled), y + 2, 272, 278, 10, 11, 0);
    return slider_grabbed;
}
