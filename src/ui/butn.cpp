#include "ui/butn.h"

#include <cstdlib>

#include "gfx/colr.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "ui/frames.h"

namespace {

constexpr std::size_t longest_line = 12;

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

// Base and mark, as centres in the atlas.
struct mark_cells {
    float base_x, base_y, mark_x, mark_y;
};
constexpr mark_cells box_cells = {148, 187, 148, 206}, radio_cells = {92, 132, 92, 151};

template <class T>
int flip(float x, float y, T* value, const std::string& label) {
    int flag = *value ? 1 : 0;
    const int hit = BTN_bool(x, y, &flag, label, 0);
    *value = static_cast<T>(flag ? 1 : 0);
    return hit;
}

}  // namespace

bool mouse_in(float left, float bottom, float right, float top) {
    return mnw.mouse_x >= left && mnw.mouse_x <= right && mnw.mouse_y >= bottom && mnw.mouse_y <= top;
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

void BTN_util_draw_label(float x, float y, int side, const std::string& label, int glow) {
    const int colour = glow ? colour_latched : colour_label;
    const int align = side == label_ends_at ? align_right : side == label_centred ? align_centre : align_left;
    const auto draw = [&](float line, const std::string& text) {
        OGL_string(colour, x, line, text, 9999, charset_text, align);
    };
    const bool whole = !label.empty() && label[0] == '-';
    const bool may_break = !whole && side != label_centred && label.size() > longest_line;
    const std::size_t at = may_break ? break_of(label) : std::string::npos;
    if (at == std::string::npos) {
        draw(y, whole ? label.substr(1) : label);
        return;
    }
    // A space at the line's end would only push the text off its edge.
    draw(y + 5, label.substr(0, label[at] == ' ' ? at : at + 1));
    draw(y - 5, label.substr(at + 1));
}

void draw_side_labels(float left_x, float right_x, float y, const label_parts& label) {
    BTN_util_draw_label(left_x, y, label_ends_at, label.left, 0);
    BTN_util_draw_label(right_x, y, label_starts_at, label.right, 0);
}

int BTN_action(float x, float y, float width, int latched, int feedback, const std::string& label,
               const std::string& text) {
    const label_parts parts = expand_label(label);
    if (width <= 0) width = text_width(parts.left) + 21;
    const int glow = feedback == 2 && latched;
    BTN_frame1(bar_button_up, x, y, width, 0);
    if (latched) BTN_frame1(bar_button_down, x, y, width, 0);
    BTN_util_draw_label(x, y - 3, label_centred, parts.left, glow);
    if (text != "-") OGL_string(colour_field, x + width / 2 + 10, y + 7, text, 500, charset_text, align_left);

    const float left = x - width / 2, right = x + width / 2;
    help_in(left, y - 10, right, y + 10, parts.help);
    if (!pressed_in(left, y - 10, right, y + 10)) return 0;
    if (!latched && feedback) {
        // Shown at once: what the press sets off may take longer than a frame.
        BTN_frame1(bar_button_down, x, y, width, 0);
        BTN_util_draw_label(x, y - 3, label_centred, label, glow);
        OGL_sbuff();
    }
    return 1;
}

int BTN_bool(float x, float y, int* value, const std::string& label, int radio) {
    const label_parts parts = expand_label(label);
    const mark_cells& cells = radio ? radio_cells : box_cells;
    BTN_util_element(x, y + 3, cells.base_x, cells.base_y, 9, 9, 0);
    if (*value) BTN_util_element(x, y + 3, cells.mark_x, cells.mark_y, 9, 9, 0);
    draw_side_labels(x - 12, x + 12, y, parts);
    help_in(x - 8, y - 4, x + 8, y + 12, parts.help);
    if (!pressed_in(x - 8, y - 4, x + 8, y + 12)) return 0;
    *value = !*value;
    return 1;
}

int BTN_is_int(float x, float y, int* value, int my_value, const std::string& label) {
    int flag = *value == my_value;
    const int hit = BTN_bool(x, y, &flag, label, 1);
    if (flag) *value = my_value;
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
