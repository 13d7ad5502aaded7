// pump.h: one call is one frame: input, clock, application, tool tip, swap. Windows here are logical: one window of the
// desktop, and a number that says which screen is open in it.
#pragma once

#include "runtime/window_ids.h"

void MACIBM_event_proc();
void MACIBM_startwind(int number, int arg);  // opens a logical window and closes the one before
int MACIBM_windows_opened();                 // how often; a screen sees by it that another one was drawn over it
void MACIBM_handleclick(int force);          // hit test of a press; `force` closes the window as its corner does
// What lies below a dialog: the main screen, dimmed and asleep; before its first frame the window's plain colour.
void MACIBM_draw_backdrop();
void mouse_help_per_wind(int number);  // tool tip and cursor

// The desktop asked for the end (its close box, Ctrl-C, SIGTERM). The main screen acts as if QUIT were clicked.
int quit_requested();
