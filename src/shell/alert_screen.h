// alert_screen.h: an alert drawn in the window, in place of whatever is open. It pumps frames of its own until the
// button or Return is pressed.
// Threads: main thread only.
#pragma once

#include <string>

class exce_class;

// `next_window` opens when a level 1 alert is acknowledged; behind a level 2 alert the process ends.
void alert_screen_show(const exce_class& alert, const std::string& place, int next_window);
