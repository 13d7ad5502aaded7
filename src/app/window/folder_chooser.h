// folder_chooser.h: how the user picks a folder in the window: by the desktop's own dialog where it has one, else by a
// plain chooser of the program's.
#pragma once

#include <string>

// A folder_chooser (dest.h).
int choose_folder_in_window(const std::string& message, const std::string& action, const std::string& start,
                            std::string& chosen);
