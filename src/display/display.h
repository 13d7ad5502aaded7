// display.h: the one window, its drawing context and its events, over the desktop's own interfaces. Everything that
// knows the window library stands behind this header, in the other files of its folder.
// Units: pixels; the mouse has its origin at the top left of the drawing surface, as the system gives it.
// Errors: a call returns false and display_error() has the system's words.
// Threads: main thread only.
#pragma once

#include <string>
#include <vector>

struct display_mode {
    int dx, dy, depth;  // of the main display
};

bool display_start();  // the video system; false where there is none
bool display_get_mode(display_mode& mode);
std::string display_error();

// What the window's display has room for, decorations as far as they are known taken off: they are once the window is
// shown. Before there is a window: the main display.
struct display_room {
    int dx, dy;     // pixels of the drawing surface
    float density;  // dots an inch over 96, from the display or else from the desktop's settings
};
display_room display_get_room();

// A window of dx by dy that the user cannot resize; `full_screen`: borderless, as large as asked, at the display's
// corner.
bool display_open_window(const std::string& title, int dx, int dy, bool full_screen);
void display_resize_window(int dx, int dy);  // and moves it, if it would not lie wholly inside the usable display
bool display_is_hidden();                    // minimised, or on a desktop that is not shown
void display_get_surface(int& dx, int& dy);  // what the desktop made of it
void display_close_window();
bool display_window_is_open();

// What a context came out with.
struct context_facts {
    bool rgba, double_buffer;
    int red, green, blue, alpha, depth, samples;
    int accelerated;  // 1 yes, 0 positively not, -1 the system does not tell
};
// A double-buffered RGBA context of the compatibility profile with a depth buffer and `samples` samples, 0 for none,
// made current. Swaps do not wait for the screen: the pump keeps the pace.
bool display_make_context(int samples, context_facts& facts);
// The picture that the desktop shows for the window: RGBA bytes, rows from the top down.
void display_set_icon(const unsigned char* pixels, int dx, int dy);
void display_keep_awake(bool awake);  // no screen saver and no sleep of the screen while it is wanted
void display_swap();
void* display_proc_address(const char* name);  // an entry point by name, null if there is none

enum class display_event_kind {
    key_down,
    key_up,
    key_repeat,
    mouse_down,
    mouse_up,
    wheel,
    redraw,
    activated,
    resized,          // the drawing surface has another size
    display_changed,  // another display, or another size or depth of it: what was drawn with may be gone
    quit
};
struct display_event {
    display_event_kind kind;
    int x = 0, y = 0;             // of a press or release, the event's own position
    int wheel = 0;                // notches, away from the user positive
    unsigned char character = 0;  // Latin-1, by the user's layout; 0 for none
    int vkey = 0;                 // virtual_keys.h; 0 for none
    bool shift = false, alt = false, control = false;
};

// Waits up to `wait_ms` for the first event, then takes all that are there, in their order.
void display_take_events(int wait_ms, std::vector<display_event>& events);
void display_get_mouse(int& x, int& y);
void display_show_cursor(bool show);

// The desktop's clipboard, as UTF-8; empty where it holds no text.
std::string display_clipboard();
void display_set_clipboard(const std::string& text);

// A message box of the system; false where none can be shown.
bool display_message_box(const std::string& main_text, const std::string& secondary_text);
