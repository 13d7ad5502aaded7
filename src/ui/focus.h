// focus.h: the keyboard's way to a widget. The ring is built anew in every frame by the widgets that are drawn; the key
// that comes before the next frame goes to the ring of the last one. A widget's identity is the place where it stands.
// Tab walks through the ring in reading order. Buttons that share one choice are one stop, at the chosen one; arrows
// move among them.
// Queues belong to a widget function, not to an instance: every entry carries the identity that it is meant for, and an
// instance takes its own at its next draw.
// Threads: main thread only.
#pragma once

#include <algorithm>
#include <vector>

#include "ui/shapes.h"

// Kinds of keys that a widget takes; an unwanted key goes on to the key commands.
enum : int {
    accept_tab = 1,
    accept_return = 2,
    accept_delete = 4,  // and Backspace
    accept_escape = 8,
    accept_moves = 16,  // arrows, page keys, Home, End
    accept_letters = 32,
    accept_digits = 64,
    accept_signs = 128,  // + and -
    accept_printable = 256,
    accept_others = 512,
    accept_press = 1024,  // Space, which presses
    accept_edits = 2048   // Ctrl with A, C, X or V
};
enum : int { key_shift = 1, key_alt = 2, key_control = 4, key_goes_down = 8, key_goes_up = 16 };  // flag word of a key

constexpr int focus_queue_length = 64;

struct focus_info_t {
    int id;
    int *chars, *vkeys, *flags, *ids;  // the queue of the widget's function, not owned
    int* count;
    int capacity;
    int accept;

    // Where it is drawn, in units of the logical window; told after it has joined.
    box_place face = {0, 0, 0, 0};
    int look = 0;
    const void* choice = nullptr;  // of a radio button: what it shares with the others of its group
    bool chosen = false;           // ... and it is the one that is on
};
extern std::vector<focus_info_t> focus_ring;
extern int focus_id;     // the widget that has the keyboard, 0 for none
extern int wind_focus;   // the window keeps the keyboard for itself
extern bool focus_seen;  // a key has moved the focus since the mouse was pressed last: the ring around it is drawn
// What is drawn now lies below a dialog: it reacts to nothing and joins no ring.
extern bool widgets_asleep;

inline int widget_id(float x, float y) {
    return static_cast<int>(y) + (static_cast<int>(x) << 13);
}

void BTN_begin_focus_ring();  // start of a frame
// Joins the ring; `take` asks for the keyboard. 1 if the widget has it.
int BTN_register_focus(int id, int* chars, int* vkeys, int* flags, int* ids, int* count, int capacity, int accept,
                       int take);
enum : int { look_around = 0, look_inside = 1 };  // a line around the widget, or along the inside of a field's border
void BTN_focus_place(int id, const box_place& face, int look);
void BTN_focus_choice(int id, const void* choice, bool chosen);
void BTN_draw_focus();                                  // the ring around the focused widget, if it is to be seen
bool BTN_focus_presses();                               // the focused widget takes Space as a press
int BTN_dispatch_to_focus(int c, int vkey, int flags);  // 1 if the key was used
void BTN_unfocus_any();
void BTN_focus_any();  // the first of the ring
void BTN_window_has_focus();
int BTN_no_focus_yet();

// The keys on their way to the widgets of one function, which keeps it as a static.
struct key_slots {
    int char_slot[focus_queue_length], vkey_slot[focus_queue_length], flag_slot[focus_queue_length],
        id_slot[focus_queue_length];
    int ctr_slot;

    int join_ring(int id, int accept, int take) {
        return BTN_register_focus(id, char_slot, vkey_slot, flag_slot, id_slot, &ctr_slot, focus_queue_length, accept,
                                  take);
    }
    bool hold_some_of(int id) const { return std::find(id_slot, id_slot + ctr_slot, id) != id_slot + ctr_slot; }

    // Hands over the keys of one widget that went down, and closes the gaps.
    template <typename key_use>
    void drain(int id, key_use use) {
        int kept = 0;
        for (int i = 0; i < ctr_slot; ++i) {
            if (id_slot[i] == id) {
                if (!(flag_slot[i] & key_goes_up)) use(char_slot[i], vkey_slot[i], flag_slot[i]);
                continue;
            }
            for (int* slot : {char_slot, vkey_slot, flag_slot, id_slot})
                slot[kept] = slot[i];
            ++kept;
        }
        ctr_slot = kept;
    }

    // Joins the ring as something to press, with Space and, where `with_return`, with Return. How often it was pressed
    // since it was drawn last.
    int join_as_button(int id, const box_place& face, bool with_return) {
        join_ring(id, accept_press | (with_return ? accept_return : 0), 0);
        BTN_focus_place(id, face, look_around);
        int presses = 0;
        drain(id, [&](int, int, int) { ++presses; });
        return presses;
    }
};
