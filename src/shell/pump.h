// pump.h: one call is one frame: input, clock, application, tool tip, swap. Windows here are logical: one window of the
// desktop, and a number that says which screen is open in it.
#pragma once

// Logical windows. Those from 993 to 999 are special: no close box, and Return is theirs.
enum : int {
    wind_main = 0,
    wind_agreement = 1,
    wind_prefs = 2,
    wind_folder = 3,       // the program's own folder chooser
    wind_folder_wait = 4,  // the desktop's folder dialog is open
    wind_first_special = 993,
    wind_alert = 995,
    wind_changed_file = 997,
    wind_last_special = 999
};

void MACIBM_event_proc();
void MACIBM_startwind(int number, int arg);  // opens a logical window and closes the one before
int MACIBM_windows_opened();                 // how often; a screen sees by it that another one was drawn over it
void MACIBM_handleclick(int force);          // hit test of a press; `force` closes the window as its corner does
void mouse_help_per_wind(int number);        // tool tip and cursor

// The desktop asked for the end (its close box, Ctrl-C, SIGTERM). The main screen acts as if QUIT were clicked.
int quit_requested();
