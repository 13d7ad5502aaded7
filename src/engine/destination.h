// destination.h: the folder that is installed to. From the start of an install to its end the folder itself is held,
// and not its path: whoever may rename things above it could otherwise put a link there, and lead the work elsewhere.
// Threads: main thread only.
#pragma once

#include <memory>
#include <string>

#include "platform/beneath.h"

extern std::string dest_dir_path;  // as the user chose it; ends in "/"

// The folder, so that no path leads out of it: the one that is held, or else what the path leads to now.
std::shared_ptr<const beneath_folder> destination_folder();
void hold_destination();  // what is held already stays so
void let_go_of_destination();
// A path to the same folder, with a "/" at its end, for what knows only paths. Not for the user's eyes.
std::string way_to_destination();
