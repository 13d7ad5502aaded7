// prefs.h: the preferences, in a window of their own. Every change takes effect at once; they are written to their
// file when the program ends.
#pragma once

void handle_prefs();   // returns when the window is closed
float wanted_scale();  // of the window, as the preference has it: for MACIBM_set_scale
