// walk.h: the walk over the reference copy. It only looks and chooses, so that every complaint about the copy comes
// before the long work begins.
#pragma once

#include <string>

// `dir` is a full path and ends in "/". Fills comp_files and comp_paths, meets landmarks, counts. Items come in the
// order of their names' bytes; hidden ones are passed over; links are files and never followed. Any sign of a dirty
// copy (a stray copy or source file, a name that some system cannot have, something strange under "All/") is fatal.
void pref_level(const std::string& dir);
