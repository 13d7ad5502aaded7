// rename.h: at the end of an install the destination takes the name of the release, if programs came and the user wants
// it so. A folder that is more than a copy of the simulator keeps its name: the home folder, one of the desktop's
// folders, a root, a mount point, and one that held other things before the first install.
// Threads: main thread only.
#pragma once

// After the agreement, before the first file comes: a folder that holds other things, and no copy yet, is marked, so that it keeps its name
// in later runs too.
void note_what_else_is_there();

// A failure leaves the name. Where it took place the settings are saved at once, and the front is told.
void rename_destination();
