#include "ui/butn.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "gfx/colr.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "ui/focus.h"
#include "ui/frames.h"
#include "ui/keys.h"

namespace {

constexpr std::size_t longest_line = 12;

button_role next_role = role_plain;

// The place nearest the middle at which a label may be broken; npos if there is none.
std::size_t break_of(const std::string& label) {
    std::size_t best = std::string::npos;
    long nearest = 0;
    const long middle = static_cast<long>(label.size()) - 1;  // doubled, as the places are below
    for (std::size_t i = label.find_first_of(" -/"); i != std::string::npos; i = label.find_first_of(" -/", i + 1)) {
        const long away = std::labs(2 * static_cast<long>(i) - middle);
        if (best != std::string::npos && away >= nearest) continue;
        best = i;
        nearest = away;
    }
    return best;
}

// A box with a tick or a disc with a dot, in 14 units around x, y + 3.
void draw_mark(float x, float y, bool on, bool round, bool hovered) {
    const box_place face = {x - 7, y - 4, x + 7, y + 10};
    const float radius = round ? 7.0f : 3.0f, line = 1.25f;
    fill_rounded(face, radius, on || hovered ? tone_blue : tone_stroke, 1);
    if (!on) return fill_rounded(grown(face, -line), radius - line, tone_white, 1);
    if (hovered) fill_rounded(grown(face, -line), radius - line, tone_blue_hover, 1);
    if (round) return fill_rounded({x - 2.7f, y + 0.3f, x + 2.7f, y + 5.7f}, 2.7f, tone_white, 1);
    stroke(x - 3.8f, y + 3.2f, x - 1.1f, y + 0.4f, 1.9f, tone_white, 1);
    stroke(x - 1.6f, y + 0.5f, x + 3.7f, y + 6.2f, 1.9f, tone_white, 1);
}

template <class T>
int flip(float x, float y, T* value, const std::string& label) {
    int flag = *value ? 1 : 0;
    const int hit = BTN_bool(x, y, &flag, label, 0);
    *value = static_cast<T>(flag ? 1 : 0);
    return hit;
}

}  // namespace

bool mouse_in(float left, float bottom, float right, float top) {
    return !widgets_asleep && mnw.mouse_x >= left && mnw.mouse_x <= right && mnw.mouse_y >= bottom &&
           mnw.mouse_y <= top;
}

bool pressed_in(float left, float bottom, float right, float top) {
    return mnw.mouse_down && mnw.menu_open == -1 && mouse_in(left, bottom, right, top);
}

void help_in(float left, float bottom, float right, float top, const std::string& help) {
    if (mnw.menu_open == -1 && mouse_in(left, bottom, right, top)) stls.help = help;
}

void BTN_expand_label(const std::string& label, std::string* left, std::string* right, std::string* help) {
    const std::size_t bar = label.rfind('|'), brace = label.rfind('{');
    const std::size_t end = brace == std::string::npos ? label.size() : brace;
    *left = label.substr(0, bar == std::string::npos ? end : bar);
    *right = bar == std::string::npos ? "" : label.substr(bar + 1, end - bar - 1);
    *help = brace == std::string::npos ? "" : label.substr(brace + 2);
}

label_parts expand_label(const std::string& label) {
    label_parts parts;
    BTN_expand_label(label, &parts.left, &parts.right, &parts.help);
    return parts;
}

// A label as it is drawn: one line, or two around the place where it breaks.
struct label_lines {
    std::string upper, lower;  // `lower` is empty for a single line
};

static label_lines lines_of(const std::string& label, int side) {
    const bool whole = !label.empty() && label[0] == '-';
    const bool may_break = !whole && side != label_centred && label.size() > longest_line;
    const std::size_t at = may_break ? break_of(label) : std::string::npos;
    if (at == std::string::npos) return {whole ? label.substr(1) : label, ""};
    // A space at the line's end would only push the text off its edge.
    return {label.substr(0, label[at] == ' ' ? at : at + 1), label.substr(at + 1)};
}

void BTN_util_draw_label(float x, float y, int side, const std::string& label, int glow) {
    const int colour = glow ? colour_latched : colour_label;
    const int align = side == label_ends_at ? align_right : side == label_centred ? align_centre : align_left;
    const label_lines lines = lines_of(label, side);
    const auto draw = [&](float line, const std::string& text) {
        OGL_string(colour, x, line, text, 9999, charset_text, align);
    };
    if (lines.lower.empty()) return draw(y, lines.upper);
    draw(y + 5, lines.upper);
    draw(y - 5, lines.lower);
}

box_place label_box(float x, float y, int side, const std::string& label) {
    const label_lines lines = lines_of(label, side);
    const float width = std::max(text_width(lines.upper), text_width(lines.lower));
    const float left = side == label_ends_at ? x - width : side == label_centred ? x - width / 2 : x;
    const float spread = lines.lower.empty() ? 0.0f : 5.0f;
    return {left, y - 3 - spread, left + width, y + 9 + spread};
}

void draw_side_labels(float left_x, float right_x, float y, const label_parts& label) {
    BTN_util_draw_label(left_x, y, label_ends_at, label.left, 0);
    BTN_util_draw_label(right_x, y, label_starts_at, label.right, 0);
}

void BTN_role(button_role role) {
    next_role = role;
}

bool take_return() {
    if (widgets_asleep || !return_hit) return false;
    return_hit = 0;
    return true;
}

button_tones tones_of(button_role role, bool hovered) {
    switch (role) {
        case role_primary:
            return {hovered ? tone_blue_hover : tone_blue, 0, tone_white};
        case role_danger:
            return {hovered ? tone_danger_hover : tone_danger_face, tone_danger_line, tone_danger_ink};
        case role_off:
            return {tone_off_face, tone_off_line, tone_off_ink};
        default:
            return {hovered ? tone_plain_hover : tone_white, 0, tone_ink};
    }
}

int BTN_action(float x, float y, float width, int latched, int feedback, const std::string& label,
               const std::string& text) {
    static key_slots slots;
    const button_role role = std::exchange(next_role, role_plain);
    const label_parts parts = expand_label(label);
    if (width <= 0) width = text_width(parts.left) + 21;
    const float left = x - width / 2, right = x + width / 2;
    const box_place face = {left + 1, y - 10, right - 1, y + 10};
    int presses = role == role_off ? 0 : slots.join_as_button(widget_id(x, y), face, true);
    if (role == role_primary && take_return()) ++presses;
    const button_tones tones = tones_of(role, mnw.menu_open == -1 && mouse_in(left, y - 10, right, y + 10));
    const auto draw = [&](int bar) {
        BTN_frame1(bar, x, y, width, colour_of(tones.face));
        if (tones.line) line_rounded(face, 4, 1, tones.line, 1);
        if (feedback == 2 && latched)
            BTN_util_draw_label(x, y - 3, label_centred, parts.left, 1);
        else
            OGL_string(colour_of(tones.ink), x, y - 3, parts.left, 9999, charset_text, align_centre);
    };
    draw(latched ? bar_button_down : bar_button_up);
    if (text != "-") OGL_string(colour_field, x + width / 2 + 10, y + 7, text, 500, charset_text, align_left);

    help_in(left, y - 10, right, y + 10, parts.help);
    if (role == role_off || (!presses && !pressed_in(left, y - 10, right, y + 10))) return 0;
    if (!latched && feedback) {
        // Shown at once: what the press sets off may take longer than a frame.
        draw(bar_button_down);
        OGL_sbuff();
    }
    return 1;
}

namespace {

// `choice`: what the radio buttons of a group share, null for a box.
int toggle(float x, float y, int* value, const std::string& label, int radio, const void* choice) {
    static key_slots slots;
    const label_parts parts = expand_label(label);
    const int id = widget_id(x, y);
    const int presses = slots.join_as_button(id, {x - 7, y - 4, x + 7, y + 10}, false);
    if (choice) BTN_focus_choice(id, choice, *value != 0);
    const box_place left = label_box(x - 12, y, label_ends_at, parts.left),
                    right = label_box(x + 12, y, label_starts_at, parts.right);
    const auto within = [](const box_place& box, auto test) { return test(box.left, box.bottom, box.right, box.top); };
    const auto pressed = [&](const box_place& box, const std::string& words) {
        return !words.empty() && within(box, pressed_in);
    };
    draw_mark(x, y, *value != 0, radio != 0, mnw.menu_open == -1 && mouse_in(x - 8, y - 4, x + 8, y + 12));
    draw_side_labels(x - 12, x + 12, y, parts);
    help_in(x - 8, y - 4, x + 8, y + 12, parts.help);
    if (!parts.left.empty()) help_in(left.left, left.bottom, left.right, left.top, parts.help);
    if (!parts.right.empty()) help_in(right.left, right.bottom, right.right, right.top, parts.help);
    const bool hit =
        pressed_in(x - 8, y - 4, x + 8, y + 12) || pressed(left, parts.left) || pressed(right, parts.right);
    if ((presses + hit) % 2 == 0) return choice && presses > 0;
    *value = !*value;
    return 1;
}

}  // namespace

int BTN_bool(float x, float y, int* value, const std::string& label, int radio) {
    return toggle(x, y, value, label, radio, nullptr);
}

int BTN_is_int(float x, float y, int* value, int my_value, const std::string& label) {
    int flag = *value == my_value;
    const int hit = toggle(x, y, &flag, label, 1, value);
    if (flag || hit) *value = my_value;
    return hit;
}

int BTN_xbol(float x, float y, bool* value, const std::string& label) {
    return flip(x, y, value, label);
}

int BTN_xchr(float x, float y, char* value, const std::string& label) {
    return flip(x, y, value, label);
}

int BTN_xbyt(float x, float y, unsigned char* value, const std::string& label) {
    return flip(x, y, value, label);
}
