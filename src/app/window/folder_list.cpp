#include "app/window/folder_list.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "display/virtual_keys.h"
#include "files/io_utils.h"
#include "gfx/colr.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "platform/paths.h"
#include "runtime/utf8.h"
#include "runtime/xtim.h"
#include "ui/butn.h"
#include "ui/focus.h"
#include "ui/frames.h"
#include "ui/slider.h"

namespace {

constexpr int rows_shown = 17;
constexpr float row_height = 16, left = 20, right = 560, top = 385, bottom = top - rows_shown * row_height;
constexpr float typing_seconds = 1;  // a pause as long begins a new word
constexpr const char* folder_up = "..";

std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

bool come_first(const std::string& a, const std::string& b) {
    const std::string lower_a = lower(a), lower_b = lower(b);
    return lower_a != lower_b ? lower_a < lower_b : a < b;
}

}  // namespace

bool is_usable_name(const std::string& name) {
    return name.find_first_of(":\\\r\n") == std::string::npos;
}

bool folder_list::open(const std::string& path) {
    if (path.empty() || path[0] != '/' || !is_usable_name(path) || !dir_exists(path)) return false;
    path_now = path;
    read_names("");
    return true;
}

void folder_list::show_hidden(bool show) {
    if (show == hidden) return;
    hidden = show;
    read_names(marked < static_cast<int>(names.size()) ? names[static_cast<std::size_t>(marked)] : "");
}

void folder_list::read_names(const std::string& marked_name) {
    namespace fs = std::filesystem;
    const std::vector<std::string> before = std::exchange(names, {});  // `marked_name` may be one of them
    std::error_code error;
    for (fs::directory_iterator item(path_now, fs::directory_options::skip_permission_denied, error), end;
         !error && item != end; item.increment(error)) {
        std::error_code unreadable;
        const std::string name = item->path().filename();
        if ((hidden || name[0] != '.') && is_usable_name(name) && item->is_directory(unreadable)) names.push_back(name);
    }
    std::sort(names.begin(), names.end(), come_first);
    if (path_now != "/") names.insert(names.begin(), folder_up);
    const auto found = std::find(names.begin(), names.end(), marked_name);
    marked = found == names.end() ? 0 : static_cast<int>(found - names.begin());
    first_row = std::max(0, marked - rows_shown / 2);
    typed.clear();
}

bool folder_list::enter(std::size_t row) {
    if (row >= names.size()) return false;
    if (names[row] != folder_up) return open(path_now + names[row] + "/");
    const std::string from(without_slash(last_part(path_now)));
    if (!open(std::string(folder_of(path_now)))) return false;
    read_names(from);  // marks where it came from
    return true;
}

// To the next row whose name begins so, from the marked one on.
bool folder_list::go_to(const std::string& prefix) {
    const std::size_t count = names.size(), start = static_cast<std::size_t>(marked);
    for (std::size_t i = typed.size() > 1 ? 0 : 1; i <= count; ++i) {
        const std::size_t row = (start + i) % count;
        if (!lower(latin1_of_path(names[row])).starts_with(lower(prefix))) continue;
        marked = static_cast<int>(row);
        return true;
    }
    return false;
}

bool folder_list::use_key(int character, int vkey) {
    switch (vkey) {
        case vk_up:
            --marked;
            break;
        case vk_down:
            ++marked;
            break;
        case vk_page_up:
            marked -= rows_shown;
            break;
        case vk_page_down:
            marked += rows_shown;
            break;
        case vk_home:
            marked = 0;
            break;
        case vk_end:
            marked = static_cast<int>(names.size());
            break;
        case vk_return:
        case vk_enter:
        case vk_right:
            return enter(static_cast<std::size_t>(marked));
        case vk_back:
        case vk_left:
            return path_now != "/" && enter(0);
        default:
            if (character < ' ' || names.empty()) return false;
            if (xtim.real_time - typed_at > typing_seconds) typed.clear();
            typed_at = xtim.real_time;
            typed += static_cast<char>(character);
            go_to(typed);
            return false;
    }
    marked = std::clamp(marked, 0, std::max(static_cast<int>(names.size()) - 1, 0));
    // Just far enough that it is seen.
    first_row = std::clamp(first_row, marked - rows_shown + 1, marked);
    return false;
}

bool folder_list::draw() {
    static key_slots slots;
    const int id = widget_id(left, bottom);
    constexpr int accept =
        accept_moves | accept_return | accept_delete | accept_letters | accept_digits | accept_signs | accept_printable;
    const bool focused = slots.join_ring(id, accept, 0);
    BTN_focus_place(id, {left, bottom, right, top}, look_inside);
    bool opened = false;
    slots.drain(id, [&](int character, int vkey, int) { opened |= use_key(character, vkey); });

    BTN_frame2(box_thin, left, bottom, right - left, top - bottom, "");
    const int last = std::max(static_cast<int>(names.size()) - rows_shown, 0);
    if (mnw.wheel_delta != wheel_seen) first_row -= 3 * (mnw.wheel_delta - wheel_seen);
    wheel_seen = mnw.wheel_delta;
    if (focused) first_row = std::clamp(first_row, marked - rows_shown + 1, std::max(marked, 0));
    first_row = std::clamp(first_row, 0, last);
    BTN_vert_slider(0, right + 18, bottom + 14, top - 14, 0, last, &first_row);
    const int end = std::min(first_row + rows_shown, static_cast<int>(names.size()));
    for (int i = first_row; i < end; ++i) {
        const auto row = static_cast<std::size_t>(i);
        const float row_top = top - static_cast<float>(i - first_row) * row_height, row_bottom = row_top - row_height;
        if (focused && i == marked)
            OGL_fillrect(colour_of(tone_blue), 0.25f, left + 2, row_bottom, right - left - 4, row_height);
        if (mouse_in(left, row_bottom + 1, right, row_top))
            OGL_fillrect(colour_highlight, 0.25f, left + 2, row_bottom, right - left - 4, row_height);
        const std::string words = names[row] == folder_up ? "one folder up" : latin1_of_path(names[row]);
        OGL_string(colour_field, left + 12, row_bottom + 5, fit_text(words, right - left - 24, 1), 9999, charset_text,
                   align_left);
        if (pressed_in(left, row_bottom + 1, right, row_top)) return enter(row);  // the list is another one now
    }
    return opened;
}
