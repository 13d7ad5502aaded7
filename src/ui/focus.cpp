#include "ui/focus.h"

#include <algorithm>
#include <iterator>

#include "display/virtual_keys.h"
#include "gfx/mnw.h"

std::vector<focus_info_t> focus_ring;
int focus_id = 0, wind_focus = 0;
bool focus_seen = false, widgets_asleep = false;

namespace {

bool any_of_them(int code, int first, int last) {
    return code >= first && code <= last;
}

int class_of_key(int c, int vkey, int flags) {
    const bool edits = vkey == 'A' || vkey == 'C' || vkey == 'X' || vkey == 'V';
    if ((flags & key_control) && edits) return accept_edits;
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

// A stop of Tab: every widget, but of a group only the chosen button, or all while none is.
bool is_stop(const focus_info_t& one) {
    if (!one.choice || one.chosen) return true;
    return std::none_of(focus_ring.begin(), focus_ring.end(),
                        [&](const focus_info_t& other) { return other.choice == one.choice && other.chosen; });
}

// Line by line from the top, each from the left. What overlaps by more than half its height is on one line.
std::vector<focus_info_t> in_reading_order(bool (*wanted)(const focus_info_t&)) {
    std::vector<focus_info_t> sorted;
    std::copy_if(focus_ring.begin(), focus_ring.end(), std::back_inserter(sorted), wanted);
    const auto middle = [](const focus_info_t& one) { return (one.face.bottom + one.face.top) / 2; };
    std::stable_sort(sorted.begin(), sorted.end(), [&](const auto& a, const auto& b) { return middle(a) > middle(b); });
    for (auto line = sorted.begin(); line != sorted.end();) {
        const auto behind =
            std::find_if(line, sorted.end(), [&](const auto& one) { return one.face.top < middle(*line); });
        std::stable_sort(line, behind, [](const auto& a, const auto& b) { return a.face.left < b.face.left; });
        line = behind;
    }
    return sorted;
}

// To the widget `step` stops on, round the ring.
void move_focus(const std::vector<focus_info_t>& stops, int step) {
    if (stops.empty()) return;
    const auto count = static_cast<int>(stops.size());
    const auto now =
        std::find_if(stops.begin(), stops.end(), [](const focus_info_t& one) { return one.id == focus_id; });
    int at = step > 0 ? 0 : count - 1;
    if (now != stops.end()) at = (static_cast<int>(now - stops.begin()) + step + count) % count;
    focus_id = stops[static_cast<std::size_t>(at)].id;
    focus_seen = true;
}

// An arrow in a group of radio buttons goes to the next one and presses it.
bool move_in_choice(const focus_info_t& from, int vkey) {
    const int step = vkey == vk_down || vkey == vk_right ? 1 : vkey == vk_up || vkey == vk_left ? -1 : 0;
    if (!from.choice || !step) return false;
    const void* const choice = from.choice;
    std::vector<focus_info_t> group = in_reading_order([](const focus_info_t& one) { return one.choice != nullptr; });
    group.erase(
        std::remove_if(group.begin(), group.end(), [&](const focus_info_t& one) { return one.choice != choice; }),
        group.end());
    move_focus(group, step);
    return true;
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
    if (widgets_asleep) return 0;
    focus_ring.push_back({id, chars, vkeys, flags, ids, count, capacity, accept});
    if (take) focus_id = id;
    return id == focus_id;
}

void BTN_focus_place(int id, const box_place& face, int look) {
    if (focus_ring.empty() || focus_ring.back().id != id) return;
    focus_ring.back().face = face;
    focus_ring.back().look = look;
}

void BTN_focus_choice(int id, const void* choice, bool chosen) {
    if (focus_ring.empty() || focus_ring.back().id != id) return;
    focus_ring.back().choice = choice;
    focus_ring.back().chosen = chosen;
}

int BTN_dispatch_to_focus(int c, int vkey, int flags) {
    if (mnw.wind_id == wind_alert) return 0;
    const bool goes_up = (flags & key_goes_up) != 0;
    const member widget = focused_member();
    if (widget == focus_ring.end()) focus_id = 0;
    const bool tab = vkey == vk_tab && (widget == focus_ring.end() || !(widget->accept & accept_tab));
    if (tab) {
        if (goes_up) return 0;
        const std::vector<focus_info_t> stops = in_reading_order(is_stop);
        move_focus(stops, flags & key_shift ? -1 : 1);
        return !stops.empty();
    }
    if (widget == focus_ring.end()) return 0;
    if (!goes_up && move_in_choice(*widget, vkey)) {
        append_key(*focused_member(), vk_space, vk_space, flags);
        return 1;
    }
    const bool press = vkey == vk_space && (widget->accept & accept_press);
    if (!press && !(widget->accept & class_of_key(c, vkey, flags))) return 0;
    append_key(*widget, c, vkey, flags);
    return 1;
}

void BTN_draw_focus() {
    const member widget = focused_member();
    if (!focus_seen || widget == focus_ring.end() || widget->face.right <= widget->face.left) return;
    const box_place& face = widget->face;
    constexpr float radius = 4, gap = 1;
    if (widget->look == look_inside) {
        line_rounded(face, radius, 2, tone_blue, 1);
        return;
    }
    const float width = std::max(1.5f, 2 / mnw.scale);
    line_rounded(grown(face, gap), radius + gap, gap, tone_white, 0.9f);
    line_rounded(grown(face, gap + width), radius + gap + width, width, tone_blue, 1);
}

bool BTN_focus_presses() {
    const member widget = focused_member();
    return widget != focus_ring.end() && (widget->accept & accept_press);
}

void BTN_unfocus_any() {
    focus_id = 0;
    focus_seen = false;
}

void BTN_focus_any() {
    const std::vector<focus_info_t> stops = in_reading_order(is_stop);
    focus_id = stops.empty() ? 0 : stops.front().id;
}

void BTN_window_has_focus() {
    wind_focus = 1;
}

int BTN_no_focus_yet() {
    return !wind_focus && !focus_id && !widgets_asleep;
}
