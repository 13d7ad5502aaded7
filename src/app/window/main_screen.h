// main_screen.h: the main screen and what it is made of: a fixed canvas of 1024 by 768 units, repainted from the state
// of the install in every frame. Nothing is laid out at run time and nothing is remembered.
#pragma once

#include <string>

#include "engine/front.h"

void main_screen_backdrop();  // the screen as it stands, for what lies below a dialog
void APP_update();            // one frame of the main screen and of the flow

// One complete frame of the scan's progress, drawn and shown; no event is handled.
void dir_progress_bar(float lo, float value, float hi, scan_phase phase, const std::string& label,
                      const std::string& item);
