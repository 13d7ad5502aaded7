// mnw.h: the window and input record: what the event pump found out, read by every primitive and widget.
// Units: those of the canvas, but for the surface, which is in pixels; the origin is the bottom left, y up. Times in
// seconds of xtim.real_time.
// Lifetimes: the first group stays, the second belongs to the open logical window, the third to one frame.
#pragma once

#include "runtime/window_ids.h"

struct mnw_t {
    // The drawing surface and the requests of start-up.
    int screen_dx = 1024, screen_dy = 768, screen_depth = 32;  // pixels
    int x_res_req_ALL = 1024, y_res_req_ALL = 768, col_res_req = 32, set_res = 0;
    int alias_req = 0;  // anti-alias level wanted, 0 to 4
    int alias_now = 0;  // level reached
    int sec_mon_inuse = 0;
    float scale = 1.0f;      // pixels for one unit; see scale.h
    float scale_req = 0.0f;  // wanted; 0: what suits the display
    int lang = 0;            // 0 English; see MACIBM_setupforlang
    int keylist_up = 0, prefs_found = 0;
    int keys_off = 0;     // keys run no commands, except for Return
    int tex_quality = 5;  // 0 to 5: 1/32 to full resolution

    // The logical window.
    int wind_id = wind_none;   // window_ids.h
    int wind_req = wind_none;  // last asked for
    int modal_wind = 0;        // the open window is a dialog
    float wind_x = 0, wind_y = 0, wind_dx = 1024, wind_dy = 768;
    int menu_open = -1;  // index of the open menu, -1 for none

    // Input.
    float mouse_x = 0, mouse_y = 0;  // relative to the logical window
    int mouse_down = 0;              // went down in this frame
    int mouse_up = 0;                // came up in this frame
    int mouse_held = 0;              // from the press to the release
    int mouse_click = 0;             // a release within 0.25 s of its press
    int mouse_quick = 0;             // a press within 0.25 s of the one before
    int mouse_repeat = 0;            // held for over 0.25 s
    int wheel_delta = 0;             // summed
    float time_moved = 0;            // last move of over 0.5 units
    float time_pressed = 0;          // last press
    int key_event = 0;               // a key went down or repeated in this frame
    int key_held = 0;
    int key_char = 0;     // last key with a character, for a screen to read
    int cursor_code = 0;  // wanted in this frame; 0 and 1 the system's
};
extern mnw_t mnw;
