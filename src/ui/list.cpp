#include "ui/list.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "display/virtual_keys.h"
#include "gfx/colr.h"
#include "gfx/mnw.h"
#include "gfx/scale.h"
#include "gfx/text.h"
#include "runtime/oops.h"
#include "ui/butn.h"
#include "ui/focus.h"
#include "ui/frames.h"
#include "ui/menu.h"

namespace {

constexpr const char* place = "HLutils/OOPS_cpp/butn";
constexpr int most_rows = 300, row_height = 12;

std::vector<std::string> split_rows(const std::string& items, const std::string& label) {
    if (items.find('|') != std::string::npos)
        __MACIBM_alert(0, "Found | char in text string!", label, items, "", t_exit, place, 825);
    std::vector<std::string> rows(1);
    for (const char c : items) {
        if (c != '-') {
            rows.back() += c;
            continue;
        }
        if (rows.size() == most_rows) {
            __MACIBM_alert(0, "BTN_text_list overflow!", label, items, "", t_exit, place, 829);
            break;
        }
        rows.emplace_back();
    }
    return rows;
}

float widest(const std::vector<std::string>& rows) {
    float width = 0;
    for (const std::string& row : rows)
        width = std::max(width, text_width(row));
    return std::floor(width);
}

short whole(float units) {
    return static_cast<short>(units);
}

// The current row lies on the widget, the others above and below it.
void fill_popup(float x, float y, float width, int current, const std::vector<std::string>& rows) {
    menu_struct& popup = menu[popup_menu];
    const int below = static_cast<int>(rows.size()) - 1 - current;
    const int height = row_height * static_cast<int>(rows.size());
    popup.left = static_cast<short>(whole(x - width / 2) - 2);
    popup.right = static_cast<short>(whole(x + width / 2) + 4);
    popup.bottom = whole(y - static_cast<float>(below * row_height));
    popup.top = static_cast<short>(popup.bottom + height);
    popup.items.resize(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        item_struct& item = popup.items[i];
        item = item_struct();
        item.text = rows[i];
        item.left = popup.left;
        item.right = popup.right;
        item.bottom = whole(y + static_cast<float>((static_cast<int>(i) - current) * -row_height - 3));
        item.top = static_cast<short>(item.bottom + row_height);
    }
}

// By how many rows, 1 or -1, the list has to slide into view. One that is longer than the screen slides as far as its
// other end lets it, and rests there: it must not run to and fro.
int slide() {
    const std::vector<item_struct>& rows = menu[popup_menu].items;
    const float ceiling = surface_dy() - mnw.wind_y;
    const int bottom = rows.back().bottom, top = rows.front().top;
    if (bottom < 0 && static_cast<float>(top + row_height) <= ceiling) return 1;
    if (static_cast<float>(top) > ceiling && bottom - row_height >= 0) return -1;
    return 0;
}

}  // namespace

int BTN_textlist(float x, float y, int* value, const std::string& items, const std::string& label) {
    static key_slots slots;
    const label_parts parts = expand_label(label);
    const std::vector<std::string> rows = split_rows(items, label);
    const int last = static_cast<int>(rows.size()) - 1;
    *value = std::clamp(*value, 0, last);
    const float width = widest(rows), half = width / 2 + 15;
    BTN_frame1(bar_popup, x + 10, y + 5, width + 28, 0);
    draw_side_labels(x - width / 2 - 5, x + width / 2 + 25, y, parts);

    const int code = static_cast<int>(y * 1024 + x), id = widget_id(x, y);
    const bool pressed = active_popup_code != code && pressed_in(x + 10 - half, y - 2, x + 10 + half, y + 8);
    if (pressed) active_popup_code = code;
    const int of_open_list = active_popup_code == code ? accept_return | accept_escape : 0;
    slots.join_ring(id, accept_moves | accept_press | of_open_list, pressed);
    BTN_focus_place(id, {x + 10 - half, y - 4, x + 10 + half, y + 14}, look_around);
    bool chosen = select_popup_code == code;
    if (chosen) {
        *value = std::clamp(popup_menu_select, 0, last);
        select_popup_code = 0;
    }
    // Arrows go to the next row, in an open list as in a closed one; Space opens and closes it.
    slots.drain(id, [&](int, int vkey, int) {
        const int before = *value;
        if (vkey == vk_down || vkey == vk_right) ++*value;
        if (vkey == vk_up || vkey == vk_left) --*value;
        if (vkey == vk_home || vkey == vk_page_up) *value = 0;
        if (vkey == vk_end || vkey == vk_page_down) *value = last;
        *value = std::clamp(*value, 0, last);
        chosen |= *value != before;
        if (vkey != vk_space && vkey != vk_return && vkey != vk_enter && vkey != vk_escape) return;
        const bool opens = vkey == vk_space && active_popup_code != code;
        if (!opens) close_popup();
        if (opens) active_popup_code = code;
    });
    if (active_popup_code == code) {
        mnw.menu_open = popup_menu;
        fill_popup(x, y, width, *value, rows);
        *value = std::clamp(*value + slide(), 0, last);
    } else {
        OGL_string(colour_menu, x, y, rows[static_cast<std::size_t>(*value)], 9999, charset_text, align_centre);
        help_in(x + 10 - half, y - 2, x + 10 + half, y + 8, parts.help);
    }
    return chosen;
}

int BTN_tab(int column, int row, int* value, int my_value, const std::string& label) {
    const label_parts parts = expand_label(label);
    const float x = static_cast<float>(column * 88 + 53), y = mnw.wind_dy - 38 - static_cast<float>(row * 32);
    const bool chosen = *value == my_value;
    BTN_util_element(x, y, 253, chosen ? 499 : 472, 49, 13, 0);
    OGL_string(chosen ? colour_tab_chosen : colour_tab, x - 40, y - 4, parts.left, 9999, charset_text, align_left);
    help_in(x - 50, y - 13, x + 40, y + 13, parts.help);
    static key_slots slots;
    const int id = widget_id(x, y);
    const int presses = slots.join_as_button(id, {x - 49, y - 12, x + 40, y + 12}, false);
    BTN_focus_choice(id, value, chosen);
    if (!presses && !pressed_in(x - 50, y - 13, x + 40, y + 13)) return 0;
    *value = my_value;
    return 1;
}
