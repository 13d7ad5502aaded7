#include "ui/menu.h"

#include <algorithm>
#include <cmath>

#include "gfx/colr.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "ui/butn.h"
#include "ui/frames.h"

std::vector<menu_struct> menu(menu_count);
int popup_menu_select = 0, active_popup_code = 0, select_popup_code = 0;
void (*menu_chosen)(int menu, int item) = nullptr;

namespace {

constexpr float highlight_alpha = 0.25f;
constexpr int wide_language = 6;  // its titles need the charset of large cells

struct menu_box {
    float left = 0, bottom = 0, right = 0, top = 0;
};

template <class Struct>
menu_box box_of(const Struct& place) {
    return {static_cast<float>(place.left), static_cast<float>(place.bottom), static_cast<float>(place.right),
            static_cast<float>(place.top)};
}

menu_struct* open_menu() {
    const bool there = mnw.menu_open >= 0 && static_cast<std::size_t>(mnw.menu_open) < menu.size();
    return there ? &menu[static_cast<std::size_t>(mnw.menu_open)] : nullptr;
}

bool is_separator(const item_struct& item) {
    return !item.text.empty() && item.text[0] == '-';
}

bool can_be_chosen(const item_struct& item) {
    return !item.text.empty() && item.text[0] != '-' && item.text[0] != '=';
}

// Of the open menu; -1 for none. A row's top edge belongs to the row above.
int item_under_mouse(const menu_struct& open) {
    const auto under = std::find_if(open.items.begin(), open.items.end(), [](const item_struct& item) {
        const menu_box box = box_of(item);
        return can_be_chosen(item) && mouse_in(box.left, box.bottom, box.right, box.top - 1);
    });
    return under == open.items.end() ? -1 : static_cast<int>(under - open.items.begin());
}

menu_box box_around(const std::vector<item_struct>& items) {
    menu_box box;
    bool first = true;
    for (const item_struct& item : items) {
        if (item.text.empty()) continue;
        menu_box own = box_of(item);
        own.bottom -= 2;
        own.top += 2;
        if (first) box = own;
        first = false;
        box = {std::min(box.left, own.left), std::min(box.bottom, own.bottom), std::max(box.right, own.right),
               std::max(box.top, own.top)};
    }
    return box;
}

void draw_bar() {
    constexpr float half_height = 13;
    BTN_frame1(bar_menu, mnw.wind_dx / 2, mnw.wind_dy - half_height, mnw.wind_dx, 0);
    const int charset = mnw.lang == wide_language ? charset_table : charset_text;
    for (const menu_struct& one : menu) {
        const menu_box title = box_of(one);
        if (one.owner == -1 || one.owner == mnw.wind_id)
            OGL_string(colour_menu, title.left + 10, title.bottom + 6, one.title, 9999, charset, align_left);
    }
}

void highlight(const menu_box& place) {
    OGL_fillrect(colour_highlight, highlight_alpha, place.left, place.bottom, place.right - place.left,
                 place.top - place.bottom);
}

void draw_column_lines(const std::vector<item_struct>& items, const menu_box& box) {
    for (std::size_t i = 1; i < items.size(); ++i) {
        const float left = box_of(items[i]).left;
        if (items[i].left == items[i - 1].left) continue;
        OGL_line(colour_groove, 1, left, box.bottom, left, box.top);
        OGL_line(colour_ridge, 1, left + 1, box.bottom, left + 1, box.top);
    }
}

void draw_item(const item_struct& item, float indent) {
    const menu_box box = box_of(item);
    if (is_separator(item)) {
        const float y = std::floor((box.bottom + box.top) / 2);
        OGL_line(colour_ridge, 1, box.left, y, box.right, y);
        OGL_line(colour_groove, 1, box.left, y - 1, box.right, y - 1);
        return;
    }
    constexpr float key_margin = 5;
    const int charset = item.table_size ? charset_table : charset_text;
    const bool marked = !item.text.empty() && item.text[0] == '=';
    OGL_string(colour_menu, box.left + indent, box.bottom + 3, marked ? item.text.substr(1) : item.text, 9999, charset,
               align_left);
    if (!item.key.empty())
        OGL_string(colour_menu, box.right - key_margin, box.bottom + 3, "[" + item.key + "]", 9999, charset_text,
                   align_right);
}

}  // namespace

void MACIBM_clear_menus(int mode) {
    if (mode == 1) menu.assign(menu_count, menu_struct());
}

void MACIBM_clear_menu(int index) {
    menu.at(static_cast<std::size_t>(index)) = menu_struct();
}

void close_popup() {
    mnw.menu_open = -1;
    active_popup_code = select_popup_code = 0;
    menu_struct& popup = menu[popup_menu];
    popup.left = popup.bottom = popup.right = popup.top = -1;
}

int click_in_menu() {
    if (mnw.menu_open == -1) return 0;
    const int index = mnw.menu_open;
    const menu_struct* open = open_menu();
    const int item = open ? item_under_mouse(*open) : -1;
    mnw.menu_open = -1;
    mnw.mouse_down = 0;
    if (index == popup_menu) {
        if (item >= 0) {
            popup_menu_select = item;
            select_popup_code = active_popup_code;
        }
        active_popup_code = 0;  // outside as well, or the list would open again in the next frame
    } else if (item >= 0 && menu_chosen) {
        menu_chosen(index, item);
    }
    return 1;
}

void standard_gui() {
    const menu_struct* open = open_menu();
    if (!open) return;
    const bool popup = mnw.menu_open == popup_menu;
    if (!popup) draw_bar();
    const menu_box box = box_around(open->items);
    const int hovered = item_under_mouse(*open);
    BTN_frame2(box_menu, box.left, box.bottom, box.right - box.left, box.top - box.bottom, "");
    if (!popup) highlight(box_of(*open));
    if (hovered >= 0) highlight(box_of(open->items[static_cast<std::size_t>(hovered)]));
    draw_column_lines(open->items, box);
    for (const item_struct& item : open->items)
        draw_item(item, popup ? 3.0f : 18.0f);
}
