#include "ui/focus.h"

#include <algorithm>

#include "display/virtual_keys.h"
#include "gfx/mnw.h"

std::vector<focus_info_t> focus_ring;
int focus_id = 0, wind_focus = 0;

namespace {

bool any_of_them(int code, int first, int last) {
    return code >= first && code <= last;
}

int class_of_key(int c, int vkey) {
    if (vkey == vk_escape) return accept_escape;
    if (vkey == vk_delete || vkey == vk_back) return accept_delete;
    if (vkey == vk_enter || vkey == vk_return) return accept_return;
    if (any_of_them(vkey, vk_page_up, vk_down)) return accept_moves;  // Home, End and the arrows lie between
    if (vkey == vk_tab) return accept_tab;
    if (c == '+' || c == '-') return accept_signs;
    if (any_of_them(c, '0', '9')) return accept_digits;
    if (any_of_them(c, 'A', 'Z') || any_of_them(c, 'a', 'z')) return accept_letters;
    if (any_of_them(c, 32, 126) || any_of_them(c, 160, 255)) return accept_printable;
    return accept_others;
}

using member = std::vector<focus_info_t>::iterator;

member focused_member() {
    if (focus_id == 0) return focus_ring.end();
    return std::find_if(focus_ring.begin(), focus_ring.end(), [](const focus_info_t& m) { return m.id == focus_id; });
}

void move_focus(member from, bool back) {
    if (back)
        focus_id = from == focus_ring.begin() ? focus_ring.back().id : std::prev(from)->id;
    else
        focus_id = std::next(from) == focus_ring.end() ? focus_ring.front().id : std::next(from)->id;
}

// Keys of a widget that has left the screen stay behind in the queue that it shared. Only they give way.
void make_room(const focus_info_t& widget) {
    int kept = 0;
    for (int i = 0; i < *widget.count; ++i) {
        if (widget.ids[i] != widget.id) continue;
        widget.chars[kept] = widget.chars[i];
        widget.vkeys[kept] = widget.vkeys[i];
        widget.flags[kept] = widget.flags[i];
        widget.ids[kept++] = widget.id;
    }
    *widget.count = kept;
}

void append_key(const focus_info_t& widget, int c, int vkey, int flags) {
    if (*widget.count >= widget.capacity) make_room(widget);
    if (*widget.count >= widget.capacity) return;
    const int at = (*widget.count)++;
    widget.chars[at] = c;
    widget.vkeys[at] = vkey;
    widget.flags[at] = flags;
    widget.ids[at] = widget.id;
}

}  // namespace

void BTN_begin_focus_ring() {
    focus_ring.clear();
    wind_focus = 0;
}

int BTN_register_focus(int id, int* chars, int* vkeys, int* flags, int* ids, int* count, int capacity, int accept,
                       int take) {
    focus_ring.push_back({id, chars, vkeys, flags, ids, count, capacity, accept});
    if (take) focus_id = id;
    return id == focus_id;
}

int BTN_dispatch_to_focus(int c, int vkey, int flags) {
    if (mnw.wind_id == wind_alert) return 0;
    const bool goes_up = (flags & key_goes_up) != 0;
    const member widget = focused_member();
    if (widget == focus_ring.end()) {
        focus_id = 0;
        if (vkey != vk_tab || goes_up || focus_ring.empty()) return 0;
        BTN_focus_any();
        return 1;
    }
    if (vkey == vk_tab && !(widget->accept & accept_tab)) {
        if (goes_up) return 0;
        move_focus(widget, (flags & key_shift) != 0);
        return 1;
    }
    if (!(widget->accept & class_of_key(c, vkey))) return 0;
    append_key(*widget, c, vkey, flags);
    return 1;
}

void BTN_unfocus_any() {
    focus_id = 0;
}

void BTN_focus_any() {
    focus_id = focus_ring.empty() ? 0 : focus_ring.front().id;
}

void BTN_window_has_focus() {
    wind_focus = 1;
}

int BTN_no_focus_yet() {
    return !wind_focus && !focus_id;
}
