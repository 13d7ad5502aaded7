// grab.h: fetches, expands and deletes what was decided, a turn for each stream in every call; sweeps up folders that
// have become empty; may rename the destination to the release's name at the end.
// How a file travels: server_path + path + ".zip" -> temp_path + stream + ".zip" -> expanded beside its target, renamed.
// A transfer that fails chooses another server and is tried again, for as long as the user lets it.
// Threads: main thread only; nothing here blocks but the expansion of a file.
#pragma once

#include <string>

#include "engine/directory.h"

// 0: call again. Non-zero: over; failed if stg.install_failed is set.
int grab_files();

// Expands into the folder of `dest` and deletes the zip, but for a disc's. A failure shows an alert and sets
// install_failed; the result is 0 or a code for error_str.
int extract_and_delete_file(const std::string& zip, const std::string& dest);

// Deletes the file of a withdrawn row and marks its folders for the sweep. A failure is told to the log and the front.
int delete_withdrawn(const file_version_struct& row);
