// dest.h: what a chosen folder means. A folder that already looks like a copy of the simulator is used as it stands;
// any other is taken as the parent of a new one.
// Errors: nothing is reported; a folder that cannot be listed is no copy, a dialog that fails is a cancel.
#pragma once

#include <string>

// Asks for a folder; the front end supplies it. Returns 1 with the choice, without its last "/", else 0.
typedef int (*folder_chooser)(const std::string& message, const std::string& action, const std::string& start,
                              std::string& chosen);
extern folder_chooser choose_folder;  // by default a cancel

// A folder as the user names it, from the current folder where it is relative, and with one "/" at its end.
std::string folder_argument(const std::string& text);

// "Velaris/" below the root of the volume that holds the user's folder where that can be written, else below that
// folder.
std::string default_destination();

bool folder_is_a_sim(const std::string& path);  // by the names of four folders in it
// 1 when dest_dir_path holds folders whose names have "Airfoils", "Instructions", "Output" and "Resources" in them.
int path_is_to_a_sim();

// 1 when the user chose a folder, which is then dest_dir_path; else 0 with nothing changed.
int pick_dest_path();
