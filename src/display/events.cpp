#include <SDL.h>

#include "display/display.h"
#include "display/key_codes.h"
#include "display/points.h"
#include "runtime/utf8.h"

// The library tells a key and the text that it types in two events, one behind the other; we want one. So a key that
// may type waits here for its text, at the longest to the next event or to the end of the batch.
static struct {
    display_event key;
    bool waits = false;
    bool text_suppressed = false;  // Ctrl or Super is down, so its text is not meant
} pending;

static void let_key_go(std::vector<display_event>& events) {
    if (pending.waits) events.push_back(pending.key);
    pending.waits = false;
}

static void set_modifiers(display_event& event, int mod) {
    event.shift = (mod & KMOD_SHIFT) != 0;
    event.control = (mod & KMOD_CTRL) != 0;
    // With a third level on the keys the right Alt chooses it (AltGr) and is no modifier.
    event.alt = (mod & KMOD_LALT) || ((mod & KMOD_RALT) && !(mod & KMOD_MODE));
}

static bool suppresses_text(int mod) {
    return (mod & (KMOD_CTRL | KMOD_GUI)) != 0;
}

static void take_key(const SDL_KeyboardEvent& from, std::vector<display_event>& events) {
    const display_key key = display_key_of(from.keysym);
    // Shift and its like alone are no key of ours.
    if (key.vkey == 0 && !key.printable) return;
    const bool down = from.type == SDL_KEYDOWN;
    display_event event{!down         ? display_event_kind::key_up
                        : from.repeat ? display_event_kind::key_repeat
                                      : display_event_kind::key_down};
    event.vkey = key.vkey;
    set_modifiers(event, from.keysym.mod);
    pending.text_suppressed = suppresses_text(from.keysym.mod);
    event.character = pending.text_suppressed ? static_cast<unsigned char>(0) : key.character;
    if (down && key.printable) {
        pending.key = event;
        pending.waits = true;
    } else {
        events.push_back(event);
    }
}

// The first character completes the key that waits; further ones, and those of an input method, come without a key.
static void take_text(std::string_view text, std::vector<display_event>& events) {
    const bool suppressed = pending.waits ? pending.text_suppressed : suppresses_text(SDL_GetModState());
    for (std::size_t i = 0; i < text.size() && !suppressed;) {
        const unsigned char character = utf8_take_latin1(text, i);
        if (!character) continue;
        display_event event = pending.key;
        if (!pending.waits) {
            event = {display_event_kind::key_down};
            set_modifiers(event, SDL_GetModState());
        }
        event.character = character;
        events.push_back(event);
        pending.waits = false;
    }
    let_key_go(events);
}

static void take_other(const SDL_Event& from, std::vector<display_event>& events) {
    switch (from.type) {
        case SDL_KEYDOWN:
        case SDL_KEYUP:
            return take_key(from.key, events);
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP: {
            if (from.button.button != SDL_BUTTON_LEFT) return;
            const bool down = from.type == SDL_MOUSEBUTTONDOWN;
            display_event event{down ? display_event_kind::mouse_down : display_event_kind::mouse_up};
            event.x = from.button.x;
            event.y = from.button.y;
            display_to_surface(event.x, event.y);
            events.push_back(event);
            return;
        }
        case SDL_MOUSEWHEEL: {
            display_event event{display_event_kind::wheel};
            event.wheel = from.wheel.y;
            events.push_back(event);
            return;
        }
        case SDL_WINDOWEVENT:
            if (from.window.event == SDL_WINDOWEVENT_EXPOSED) events.push_back({display_event_kind::redraw});
            if (from.window.event == SDL_WINDOWEVENT_SIZE_CHANGED) events.push_back({display_event_kind::resized});
            if (from.window.event == SDL_WINDOWEVENT_DISPLAY_CHANGED)
                events.push_back({display_event_kind::display_changed});
            if (from.window.event == SDL_WINDOWEVENT_FOCUS_GAINED) events.push_back({display_event_kind::activated});
            return;
        case SDL_DISPLAYEVENT:
            events.push_back({display_event_kind::display_changed});
            return;
        case SDL_QUIT:
            events.push_back({display_event_kind::quit});
            return;
        default:
            return;
    }
}

void display_take_events(int wait_ms, std::vector<display_event>& events) {
    events.clear();
    // The first may be waited for; what else is there is taken without waiting.
    SDL_Event event;
    int there = wait_ms > 0 ? SDL_WaitEventTimeout(&event, wait_ms) : SDL_PollEvent(&event);
    for (; there; there = SDL_PollEvent(&event)) {
        if (event.type == SDL_TEXTINPUT) {
            take_text(event.text.text, events);
            continue;
        }
        let_key_go(events);
        take_other(event, events);
    }
    let_key_go(events);
}
