// pref.h: every setting of every folder, named once: one table reads them all, writes them all, and tells what a --pref:
// option may name.
// Set 11 is the installer's own, "Velaris Installer.prf" in the user's preferences folder. Set 10 are the display
// settings that a family of programs shares; the installer carries their form.
// Errors: a missing or bad file leaves the defaults; one that cannot be written shows the alert of ouf_open.
#pragma once

#include <string>

enum { pref_display = 10, pref_installer = 11 };

// Set 10. Sizes outside 600 to 9999 become 1024 and 768.
struct display_prefs_t {
    int x_res_req_PLN = 0, y_res_req_PLN = 0;  // kept and written back
    int x_res_req_WRL = 0, y_res_req_WRL = 0;
    int x_res_req_ALL = 1024, y_res_req_ALL = 768;  // wanted; on writing taken from the live window
    int col_res_req = 32;
    int set_res = 0;
    int lang = 0;
    int alias_req = 0;
    int keylist_up = 0;
    int sec_mon_inuse = 0;
    int prefs_found = 0;                    // forced to 1 just before writing
    int window_dx = 1024, window_dy = 768;  // the live window's size, and after reading its requested size
};
extern display_prefs_t display_prefs;

// Of set 11: the scale of the window in percent, 0 for what suits the display.
extern int window_scale;

class pref_class {
  public:
    void IO_set(int set, int dir);                   // dir: scan_read or scan_write
    bool has_setting(const std::string& key) const;  // of either set
    void IO_sta(int set, int dir) { IO_set(set, dir); }
};
extern pref_class pref;
