// folder_lock.h: one run at a time on one destination. The lock lies on the folder itself and leaves no file behind; it
// ends with the process, however that ends, and moves with the folder when that is renamed.
// It keeps mistakes apart, not enemies: who may read the folder may lock it too. A shared lock, which is never ours,
// keeps nobody out, but while somebody holds one, two runs do not see each other.
// Considered and dropped: a file of our own in the folder, which a killed run would leave in the user's copy; one
// elsewhere, which the runs of two users would not share.
// Threads: main thread only.
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
