// withdrawn.h: files that a release took back: how they are deleted, and the folders that this leaves empty.
// Threads: main thread only.
#pragma once

#include <string>

#include "engine/directory.h"

// What the simulator expects to find, whether a file is installed there or not: below the destination, no "/" at the
// end.
inline constexpr const char* fixed_folders[] = {
    "Output",    "Output/FMS plans",     "Output/logbooks", "Output/movies", "Output/situations",
    "Resources", "Resources/preferences"};
// A folder that every install makes; `folder` with its "/".
bool is_fixed_folder(std::string_view folder);

// Deletes the file of a withdrawn row, if that is still what was decided, and marks its folders for the sweep. A
// failure is told to the log and the front. 0, or why the file is still there: EEXIST where the user keeps it,
// ECANCELED where he ended the install (next.cancelled).
int delete_withdrawn(std::size_t file);

// Notes on the disk, for good, what is about to be deleted, so that a later run may sweep what this one emptied.
void note_deletions();
// Removes the marked folders that have become empty, children before their parents.
void sweep_folders();
