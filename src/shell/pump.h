// pump.h: one call is one frame: input, clock, application, tool tip, swap. Windows here are logical: one window of the
// desktop, and a number that says which screen is open in it.
#pragma once

void MACIBM_event_proc();
void MACIBM_startwind(int number,
                      int arg);        // opens a logical window: 0 the main screen, 1 agreement, 2 preferences, ...
void MACIBM_handleclick(int force);    // hit test of a press; `force` closes the window as its corner does
void mouse_help_per_wind(int number);  // tool tip and cursor

extern int return_hit, escape_hit, delete_hit;  // of this frame
// The desktop asked for the end (its close box, Ctrl-C, SIGTERM). The main screen acts as if QUIT were clicked.
int quit_requested();
