#include "ui/keys.h"

#include <algorithm>

#include "display/virtual_keys.h"
#include "gfx/mnw.h"
#include "runtime/cmnd.h"
#include "ui/focus.h"

int return_hit = 0, escape_hit = 0, delete_hit = 0;
void (*close_open_window)() = nullptr;
keys_class keys;

namespace {

constexpr int modifiers = key_shift | key_alt | key_control;

bool is_return(int vkey) {
    return vkey == vk_return || vkey == vk_enter;
}

// What a screen can test like a press of the mouse, and the character it can read.
void tell_screens(int character, int vkey) {
    if (is_return(vkey)) return_hit = 1;
    if (vkey == vk_escape) escape_hit = 1;
    if (vkey == vk_back || vkey == vk_period || character == '.') delete_hit = 1;
}

bool is_bound(const key_binding& row, int vkey, int flags) {
    return row.vkey == vkey && row.flags == (flags & modifiers);
}

void release(key_binding& row) {
    if (row.down) cmnd.release_one(row.command);
    row.down = 0;
}

}  // namespace

void keys_class::handle_key_raw(int event_kind, int vkey, int character, bool shift, bool alt, bool control) {
    int flags = (shift ? key_shift : 0) | (alt ? key_alt : 0) | (control ? key_control : 0);
    if (!flags && !character && !vkey) return;
    if (event_kind == key_kind_down) flags |= key_goes_down;
    if (event_kind == key_kind_up) flags |= key_goes_up;
    handle_key(character, vkey, flags);
}

void keys_class::handle_key(int character, int vkey, int flags) {
    const bool goes_up = (flags & key_goes_up) != 0;
    // First of all, since the keyboard may have gone to a widget while the key was down, which would keep its command
    // down.
    if (goes_up) execute_key_cmnd(vkey, flags);
    if (BTN_dispatch_to_focus(character, vkey, flags)) return;
    if (!goes_up) {
        tell_screens(character, vkey);
        if (is_return(vkey) && mnw.wind_id != wind_main) {
            if (close_open_window) close_open_window();
            return;
        }
        if (character) mnw.key_char = character;
    }
    last_vkey = vkey;
    last_flags = flags;
    if (goes_up || mnw.wind_id == wind_keys) return;
    if (is_return(vkey) || (vkey && !mnw.keys_off)) execute_key_cmnd(vkey, flags);
}

void keys_class::execute_key_cmnd(int vkey, int flags) {
    for (key_binding& row : bindings) {
        if ((flags & key_goes_down) && is_bound(row, vkey, flags)) {
            cmnd.press_one(row.command);
            row.down = 1;
        }
        if ((flags & key_goes_up) && row.vkey == vkey) release(row);  // whatever the modifiers are by now
    }
}

void keys_class::run_repeat_keys() {
    for (const key_binding& row : bindings)
        if (row.down) cmnd.press_always(row.command);
}

void keys_class::keys_io(int dir) {
    std::for_each(bindings.begin(), bindings.end(), release);
    bindings.clear();
    if (dir == 0) bindings.push_back({0, 0, cmnd.get_cmnd_by_name("cmnd_nothing"), 0});
}

int keys_class::get_key_for_cmnd(int command) const {
    const auto found = std::find_if(bindings.begin(), bindings.end(),
                                    [command](const key_binding& row) { return row.command == command; });
    return found == bindings.end() ? -1 : static_cast<int>(found - bindings.begin());
}

int keys_class::key_bound_to(int vkey, int flags) const {
    const auto found = std::find_if(bindings.begin(), bindings.end(),
                                    [=](const key_binding& row) { return is_bound(row, vkey, flags); });
    return found == bindings.end() ? -1 : found->command;
}

void keys_class::bind(int vkey, int flags, int command) {
    flags &= modifiers;
    const auto found = std::find_if(bindings.begin(), bindings.end(),
                                    [=](const key_binding& row) { return is_bound(row, vkey, flags); });
    if (found == bindings.end()) {
        bindings.push_back({vkey, flags, command, 0});
        return;
    }
    release(*found);
    found->command = command;
}
