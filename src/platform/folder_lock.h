// folder_lock.h: one run at a time on one destination. The lock lies on the folder itself and leaves no file behind; it
// ends with the process, however that ends.
#pragma once

#include <string>

enum class folder_lock_result {
    taken,     // ours now (or already); also where it cannot be told, as on a volume that knows no locks
    busy,      // another run has it
    no_folder  // nothing there to lock
};

// Taking another folder gives up the one held before; a failure keeps it.
folder_lock_result lock_folder(const std::string& path);
void unlock_folder();
