// start.h: what the window and the console do alike between start-up and the first step of the flow.
#pragma once

// Folders to the log, default destination, start values, preferences, "-path", and the folder dialog where it is
// wanted.
void app_start(int argc, char* const* argv);
