// grab.h: fetches, expands and deletes what was decided, a turn for each stream in every call; sweeps up folders that
// have become empty; may rename the destination to the release's name at the end.
// How a file travels: server_path + path + ".zip" -> temp_path + stream + ".zip" -> expanded beside its target,
// renamed. A transfer that fails chooses another server and is tried again, for as long as the user lets it. A file
// that arrives and is not the one that was promised counts as a failed transfer too; after three in a row the install
// has failed. Threads: main thread only; nothing here blocks but the expansion of a file.
#pragma once

#include <string>

#include "engine/directory.h"

// 0: call again. Non-zero: over; failed if stg.install_failed is set.
int grab_files();

// Expands the file's zip beside its place and deletes it, but for a disc's. What comes out stays only if it signs as
// the row says. 0 or a code for error_str; is_bad_archive tells whether another server may do better.
int extract_and_delete_file(const std::string& zip, std::size_t file);
