#include "ui/field.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>

#include "display/display.h"
#include "display/virtual_keys.h"
#include "gfx/colr.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "runtime/utf8.h"
#include "runtime/xtim.h"
#include "ui/butn.h"
#include "ui/focus.h"
#include "ui/frames.h"
#include "ui/ogle.h"

namespace {

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
constexpr int field_accept = chars_accept | accept_delete | accept_edits;

// Boxes of one character. The atlas's field box is 24 wide at the least.
constexpr float box_pitch = 24, box_middle = 8;

void draw_box(float x, float y, char c, bool with_caret) {
    BTN_frame1(bar_field, x + box_middle, y + 3, 20, 0);
    if (with_caret) OGL_line(colour_field, colr.blink, x + 2, y - 2, x + 2 * box_middle - 2, y - 2);
    if (c) OGL_string(colour_field, x + box_middle, y, std::string(1, c), 9999, charset_text, align_centre);
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

// All fields share one engine, as only the one that has the keyboard needs it.
struct {
    // What the callbacks work on: set by each field when it is drawn, and no longer valid when it has been.
    float OGLE_x, OGLE_y, OGLE_entry_dx;
    std::string* OGLE_input;
    int OGLE_edit;  // the text was changed

    // Of the field that has the keyboard, from one frame to the next.
    int focused_field_id;  // the one served last, 0 for none
    int served_frame;
    float OGLE_dx, OGLE_dy;  // scroll
    bool pressed_inside;     // the mouse button that is held went down in the field

    // From the first field drawn to the end of the run.
    std::unique_ptr<OGLE_Rec, void (*)(OGLE_Rec*)> ogle{nullptr, OGLE_Destroy};
} host{};

float width_of(const char* begin, const char* end) {
    return text_width({begin, static_cast<std::size_t>(end - begin)});
}

// How many bytes from `at` on, in steps of `step`, fit.
int bytes_that_fit(const char* at, int count, int step, float width) {
    int fit = 0;
    for (float used = 0; fit < count; ++fit, at += step) {
        used += static_cast<float>(char_width(*at));
        if (used > width) break;
    }
    return fit;
}

void draw_selection(float* rect) {
    if (rect[0] == rect[2])
        OGL_line(colour_field, colr.blink, rect[0], rect[1], rect[0], rect[3]);
    else
        OGL_fillrect(colour_selection, 1.0f, rect[0], rect[1], rect[2] - rect[0], rect[3] - rect[1]);
}

void visible_bounds(float* bounds) {
    bounds[0] = host.OGLE_x;
    bounds[1] = host.OGLE_y - below;
    bounds[2] = host.OGLE_x + host.OGLE_entry_dx;
    bounds[3] = bounds[1] + field_line;
}

void logical_bounds(float* bounds) {
    visible_bounds(bounds);
    bounds[2] += std::max(room_right, text_width(*host.OGLE_input));
    for (int i = 0; i < 4; ++i)
        bounds[i] -= i % 2 ? host.OGLE_dy : host.OGLE_dx;
}

const OGLE_callbacks OGLE_cbs = {
    [](OGLE_Rec*, float* bounds) { visible_bounds(bounds); },
    [](OGLE_Rec*, float* bounds) { logical_bounds(bounds); },
    [](OGLE_Rec*, float) {},
    [](OGLE_Rec*, float* xy) {
        host.OGLE_dx = xy[0];
        host.OGLE_dy = xy[1];
    },
    [](OGLE_Rec*, const char** begin, const char** end) {
        *begin = host.OGLE_input->data();
        *end = *begin + host.OGLE_input->size();
    },
    [](OGLE_Rec*, int start, int end, const char* begin, const char* end_of_new) {
        host.OGLE_edit = 1;
        host.OGLE_input->replace(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start), begin,
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
        OGL_string(colour_field, x, y + below, std::string(begin, end), 9999, charset_text, align_left);
    },
    [](OGLE_Rec*, float* rect) { draw_selection(rect); },
    [](OGLE_Rec*, const char* begin, const char* end) {
        return std::find_first_of(begin, end, blanks, std::end(blanks));
    },
};

OGLE_Rec* engine() {
    if (!host.ogle) host.ogle.reset(OGLE_Create(&OGLE_cbs, nullptr));
    return host.ogle.get();
}

// Ctrl with A, C, X or V. The clipboard holds UTF-8, a field one byte a character; what has no place there is left out.
void edit(int vkey) {
    int start = 0, end = 0;
    OGLE_GetSelection(engine(), &start, &end);
    if (vkey == 'A') return OGLE_SetSelection(engine(), 0, static_cast<int>(host.OGLE_input->size()));
    std::string pasted;
    if (vkey == 'V') {
        const std::string text = display_clipboard();
        for (std::size_t i = 0; i < text.size();)
            if (const unsigned char c = utf8_take_latin1(text, i); is_printable(c)) pasted += static_cast<char>(c);
        if (pasted.empty()) return;
    } else {
        if (start == end) return;
        const auto chosen =
            host.OGLE_input->substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
        display_set_clipboard(utf8_of_latin1(chosen));
        if (vkey == 'C') return;
    }
    OGLE_ReplaceText(engine(), start, end, pasted.data(), pasted.data() + pasted.size());
    const int behind = start + static_cast<int>(pasted.size());
    OGLE_SetSelection(engine(), behind, behind);
    OGLE_RevealSelection(engine());
}

// Home and End; with Shift the selection's other end stays.
void go_to_end(int vkey, int flags) {
    int start = 0, end = 0;
    OGLE_GetSelection(engine(), &start, &end);
    const int to = vkey == vk_home ? 0 : static_cast<int>(host.OGLE_input->size());
    const int from = !(flags & key_shift) ? to : engine()->active_end ? start : end;
    OGLE_SetSelection(engine(), std::min(from, to), std::max(from, to));
    engine()->active_end = to >= from;
    OGLE_RevealSelection(engine());
}

void take_keys(key_slots& slots, int id, int max_chars) {
    slots.drain(id, [](int character, int vkey, int flags) {
        if ((flags & key_control) && character == 0 && vkey >= 'A' && vkey <= 'Z') return edit(vkey);
        if (vkey == vk_home || vkey == vk_end) return go_to_end(vkey, flags);
        if (is_printable(character) || is_caret_key(character))
            OGLE_Key(engine(), static_cast<char>(character), flags & key_shift);
    });
    const auto most = static_cast<std::size_t>(std::max(max_chars, 0));
    if (!host.OGLE_edit || host.OGLE_input->size() <= most) return;
    host.OGLE_input->resize(most);
    int start = 0, end = 0;
    OGLE_GetSelection(engine(), &start, &end);
    OGLE_Repaginate(engine());
    OGLE_SetSelection(engine(), start, end);  // held to what is left
    OGLE_RevealSelection(engine());
}

// The program may have changed the text since the last frame.
void follow_text() {
    OGLE_Repaginate(engine());
    const bool shrank = engine()->sel_end > static_cast<int>(host.OGLE_input->size());
    if (shrank) OGLE_RevealSelection(engine());
}

// The field has the keyboard. `clicked`: by a press in it, in this frame.
void serve(key_slots& slots, int id, int max_chars, bool clicked) {
    // The keyboard may have been elsewhere while the field was off the screen.
    const bool stayed = host.focused_field_id == id && xtim.frame_count - host.served_frame <= 1;
    host.focused_field_id = id;
    host.served_frame = xtim.frame_count;
    follow_text();
    if (!stayed) {
        host.OGLE_dx = host.OGLE_dy = 0;
        if (!clicked) OGLE_SetSelection(engine(), 0, static_cast<int>(host.OGLE_input->size()));
    }
    if (clicked) OGLE_Click(engine(), mnw.mouse_x, mnw.mouse_y, 0);
    host.pressed_inside = clicked || (host.pressed_inside && stayed && mnw.mouse_held);
    if (host.pressed_inside && mnw.mouse_held) OGLE_Drag(engine(), mnw.mouse_x, mnw.mouse_y);
    take_keys(slots, id, max_chars);
}

// Keys that were typed just before the keyboard went to another field, which may have been served in this frame already.
void serve_late(key_slots& slots, int id, int max_chars) {
    const OGLE_Rec of_other = *engine();
    const float dx = host.OGLE_dx, dy = host.OGLE_dy;
    const bool mine = host.focused_field_id == id;
    follow_text();
    const int size = static_cast<int>(host.OGLE_input->size());
    if (!mine) OGLE_SetSelection(engine(), size, size);
    take_keys(slots, id, max_chars);
    if (mine) return;
    *engine() = of_other;
    host.OGLE_dx = dx;
    host.OGLE_dy = dy;
}

}  // namespace

int BTN_enterstring(float x, float y, std::string* text, int max_chars, const std::string& label, float width,
                    int auto_focus) {
    static key_slots slots;
    const int id = widget_id(x, y);
    const bool clicked = pressed_in(x, y, x + width, y + 8);
    const int take = clicked || (auto_focus && BTN_no_focus_yet());
    const bool focused = slots.join_ring(id, field_accept, take);
    BTN_focus_place(id, {x - 5, y - 6, x + width + 1, y + 12}, look_inside);
    host.OGLE_edit = 0;
    host.OGLE_x = x;
    host.OGLE_y = y;
    host.OGLE_entry_dx = width;
    host.OGLE_input = text;
    const std::string before = *text;
    if (focused)
        serve(slots, id, max_chars, clicked);
    else if (slots.hold_some_of(id))
        serve_late(slots, id, max_chars);
    if (!focused && host.focused_field_id == id) host.focused_field_id = 0;

    const label_parts parts = expand_label(label);
    help_in(x, y, x + width, y + 8, parts.help);
    BTN_frame1(bar_field, x + width / 2 - 2, y + 3, width + 10, 0);
    if (mnw.menu_open == -1 && mouse_in(x, y, x + width, y + 8))
        line_rounded({x - 5, y - 6, x + width + 1, y + 12}, 4, 1, tone_blue, 1);
    draw_side_labels(x - 12, x + width + 6, y, parts);
    OGL_scissors(x - 1, y - 3, width + 2, field_line);
    if (focused)
        OGLE_Draw(engine(), 1);
    else
        OGL_string(colour_field, x, y, *text, 9999, charset_text, align_left);
    OGL_scissors_end();
    host.OGLE_input = nullptr;
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
    BTN_focus_place(id, {x, y - 6, x + width, y + 12}, look_inside);
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
