#include "ui/field.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "display/virtual_keys.h"
#include "gfx/colr.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "runtime/xtim.h"
#include "ui/butn.h"
#include "ui/focus.h"
#include "ui/frames.h"
#include "ui/ogle.h"

namespace {

constexpr int text_colour = 45, selection_colour = 8;
constexpr float field_line = 11;  // height of the one line, of which `below` lies under the base line
constexpr float below = 2;
constexpr char blanks[] = {' ', '\t', '\r', '\n', '\v', '\f'};
constexpr float room_right = 1024;  // the line of a field goes on beyond what is seen, and never wraps

bool is_printable(int character) {
    return (character >= 32 && character <= 126) || (character >= 160 && character <= 255);
}

// Delete, which is Backspace for the engine, and the arrows.
bool is_caret_key(int character) {
    return character == char_back || (character >= char_left && character <= char_down);
}

constexpr int chars_accept = accept_moves | accept_letters | accept_digits | accept_signs | accept_printable;
constexpr int field_accept = chars_accept | accept_delete;

// Boxes of one character. The atlas's field box is 24 wide at the least.
constexpr float box_pitch = 24, box_middle = 8;

void draw_box(float x, float y, char c, bool with_caret) {
    BTN_frame1(bar_field, x + box_middle, y + 3, 20, 0);
    if (with_caret) OGL_line(text_colour, colr.blink, x + 2, y - 2, x + 2 * box_middle - 2, y - 2);
    if (c) OGL_string(text_colour, x + box_middle, y, std::string(1, c), 9999, charset_text, align_centre);
}

// A character goes into its box and the caret to the next one; left and right move it. 1 if the text changed.
int type_into_box(char* text, int max, int& caret, int character) {
    const int step = character == char_left ? -1 : character == char_right || is_printable(character) ? 1 : 0;
    const int at = caret;
    caret = std::clamp(caret + step, 0, std::max(max - 1, 0));
    if (!is_printable(character) || max <= 0 || text[at] == static_cast<char>(character)) return 0;
    std::replace(text, text + at, '\0', ' ');  // so that the text does not end before it
    text[at] = static_cast<char>(character);
    return 1;
}

// What the engine works on: set anew by the field that it serves, in every frame.
float OGLE_x, OGLE_y, OGLE_entry_dx;
std::string* OGLE_input;
float OGLE_dx, OGLE_dy;  // scroll
int OGLE_edit;           // the text was changed

// The engine, and whom it served last: 0 for none.
OGLE_Rec* ogle;
int focused_field_id;
int served_frame;
bool pressed_inside;  // the mouse button that is held went down in the field

float width_of(const char* begin, const char* end) {
    return text_width({begin, static_cast<std::size_t>(end - begin)});
}

// How many bytes from `at` on, in steps of `step`, fit.
int bytes_that_fit(const char* at, int count, int step, float width) {
    int fit = 0;
    for (float used = 0; fit < count; ++fit, at += step) {
        used += static_cast<float>(char_width(static_cast<unsigned char>(*at)));
        if (used > width) break;
    }
    return fit;
}

void draw_selection(float* rect) {
    if (rect[0] == rect[2])
        OGL_line(text_colour, colr.blink, rect[0], rect[1], rect[0], rect[3]);
    else
        OGL_fillrect(selection_colour, 1.0f, rect[0], rect[1], rect[2] - rect[0], rect[3] - rect[1]);
}

void visible_bounds(float* bounds) {
    bounds[0] = OGLE_x;
    bounds[1] = OGLE_y - below;
    bounds[2] = OGLE_x + OGLE_entry_dx;
    bounds[3] = bounds[1] + field_line;
}

void logical_bounds(float* bounds) {
    visible_bounds(bounds);
    bounds[2] += std::max(room_right, text_width(*OGLE_input));
    for (int i = 0; i < 4; ++i)
        bounds[i] -= i % 2 ? OGLE_dy : OGLE_dx;
}

const OGLE_callbacks OGLE_cbs = {
    [](OGLE_Rec*, float* bounds) { visible_bounds(bounds); },
    [](OGLE_Rec*, float* bounds) { logical_bounds(bounds); },
    [](OGLE_Rec*, float) {},
    [](OGLE_Rec*, float* xy) {
        OGLE_dx = xy[0];
        OGLE_dy = xy[1];
    },
    [](OGLE_Rec*, const char** begin, const char** end) {
        *begin = OGLE_input->data();
        *end = *begin + OGLE_input->size();
    },
    [](OGLE_Rec*, int start, int end, const char* begin, const char* end_of_new) {
        OGLE_edit = 1;
        OGLE_input->replace(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start), begin,
                            static_cast<std::size_t>(end_of_new - begin));
    },
    [](OGLE_Rec*) { return field_line; },
    [](OGLE_Rec*, const char* begin, const char* end) { return width_of(begin, end); },
    [](OGLE_Rec*, const char* begin, const char* end, float width) {
        return bytes_that_fit(begin, static_cast<int>(end - begin), 1, width);
    },
    [](OGLE_Rec*, const char* begin, const char* end, float width) {
        return begin == end ? 0 : bytes_that_fit(end - 1, static_cast<int>(end - begin), -1, width);
    },
    // The place comes from the logical bounds, so it is scrolled already.
    [](OGLE_Rec*, const char* begin, const char* end, float x, float y) {
        OGL_string(text_colour, x, y + below, std::string(begin, end), 9999, charset_text, align_left);
    },
    [](OGLE_Rec*, float* rect) { draw_selection(rect); },
    [](OGLE_Rec*, const char* begin, const char* end) {
        return std::find_first_of(begin, end, blanks, std::end(blanks));
    },
};

void take_keys(key_slots& slots, int id, int max_chars) {
    slots.drain(id, [](int character, int, int flags) {
        if (is_printable(character) || is_caret_key(character))
            OGLE_Key(ogle, static_cast<char>(character), flags & key_shift);
    });
    const auto most = static_cast<std::size_t>(std::max(max_chars, 0));
    if (!OGLE_edit || OGLE_input->size() <= most) return;
    OGLE_input->resize(most);
    int start = 0, end = 0;
    OGLE_GetSelection(ogle, &start, &end);
    OGLE_Repaginate(ogle);
    OGLE_SetSelection(ogle, start, end);  // held to what is left
    OGLE_RevealSelection(ogle);
}

// The program may have changed the text since the last frame.
void follow_text() {
    OGLE_Repaginate(ogle);
    const bool shrank = ogle->sel_end > static_cast<int>(OGLE_input->size());
    if (shrank) OGLE_RevealSelection(ogle);
}

// The field has the keyboard. `clicked`: by a press in it, in this frame.
void serve(key_slots& slots, int id, int max_chars, bool clicked) {
    // The keyboard may have been elsewhere while the field was off the screen.
    const bool stayed = focused_field_id == id && xtim.frame_count - served_frame <= 1;
    focused_field_id = id;
    served_frame = xtim.frame_count;
    follow_text();
    if (!stayed) {
        OGLE_dx = OGLE_dy = 0;
        if (!clicked) OGLE_SetSelection(ogle, 0, static_cast<int>(OGLE_input->size()));
    }
    if (clicked) OGLE_Click(ogle, mnw.mouse_x, mnw.mouse_y, 0);
    pressed_inside = clicked || (pressed_inside && stayed && mnw.mouse_held);
    if (pressed_inside && mnw.mouse_held) OGLE_Drag(ogle, mnw.mouse_x, mnw.mouse_y);
    take_keys(slots, id, max_chars);
}

// Keys that were typed just before the keyboard went to another field, which may have been served in this frame already.
void serve_late(key_slots& slots, int id, int max_chars) {
    const OGLE_Rec of_other = *ogle;
    const float dx = OGLE_dx, dy = OGLE_dy;
    const bool mine = focused_field_id == id;
    follow_text();
    const int size = static_cast<int>(OGLE_input->size());
    if (!mine) OGLE_SetSelection(ogle, size, size);
    take_keys(slots, id, max_chars);
    if (mine) return;
    *ogle = of_other;
    OGLE_dx = dx;
    OGLE_dy = dy;
}

}  // namespace

int BTN_enterstring(float x, float y, std::string* text, int max_chars, const std::string& label, float width,
                    int auto_focus) {
    static key_slots slots;
    const int id = widget_id(x, y);
    const bool clicked = pressed_in(x, y, x + width, y + 8);
    const int take = clicked || (auto_focus && BTN_no_focus_yet());
    const bool focused = slots.join_ring(id, field_accept, take);
    if (!ogle) ogle = OGLE_Create(&OGLE_cbs, nullptr);
    OGLE_edit = 0;
    OGLE_x = x;
    OGLE_y = y;
    OGLE_entry_dx = width;
    OGLE_input = text;
    const std::string before = *text;
    if (focused)
        serve(slots, id, max_chars, clicked);
    else if (slots.hold_some_of(id))
        serve_late(slots, id, max_chars);
    if (!focused && focused_field_id == id) focused_field_id = 0;

    const label_parts parts = expand_label(label);
    help_in(x, y, x + width, y + 8, parts.help);
    BTN_frame1(bar_field, x + width / 2 - 2, y + 3, width + 10, 0);
    draw_side_labels(x - 12, x + width + 6, y, parts);
    OGL_scissors(x - 1, y - 3, width + 2, field_line);
    if (focused)
        OGLE_Draw(ogle, 1);
    else
        OGL_string(text_colour, x, y, *text, 9999, charset_text, align_left);
    OGL_scissors_end();
    OGLE_input = nullptr;
    return *text != before;
}

int BTN_enterstring(float x, float y, char* text, int size, const std::string& label, float width, int auto_focus) {
    if (size <= 0) return 0;
    const auto room = static_cast<std::size_t>(size);
    std::string value(text, strnlen(text, room));
    const int changed = BTN_enterstring(x, y, &value, size - 1, label, width, auto_focus);
    if (changed) {
        value.copy(text, room - 1);
        text[std::min(value.size(), room - 1)] = 0;
    }
    return changed;
}

int BTN_chars(float x, float y, char* text, int max, const std::string& label) {
    static key_slots slots;
    static int field_with_caret = 0, caret = 0;
    const int id = widget_id(x, y);
    const float width = static_cast<float>(max) * box_pitch;
    const bool clicked = pressed_in(x, y, x + width, y + 8);
    const bool focused = slots.join_ring(id, chars_accept, clicked);
    if (focused && field_with_caret != id) {
        field_with_caret = id;
        caret = 0;
    }
    if (!focused && field_with_caret == id) field_with_caret = 0;
    if (clicked) caret = static_cast<int>((mnw.mouse_x - x) / box_pitch);
    caret = std::clamp(caret, 0, std::max(max - 1, 0));
    int changed = 0;
    slots.drain(id, [&](int character, int, int) { changed |= type_into_box(text, max, caret, character); });

    const label_parts parts = expand_label(label);
    help_in(x, y, x + width, y + 8, parts.help);
    draw_side_labels(x - 12, x + width + 6, y, parts);
    for (int i = 0; i < max; ++i)
        draw_box(x + box_pitch * static_cast<float>(i), y, text[i], focused && i == caret);
    return changed;
}
