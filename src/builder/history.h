// history.h: the rows of the catalogue, and how they pass from one release to the next.
//
// A file's rows are all its earlier versions that differ from the present one, then the present one. A file that left
// the reference copy keeps its rows and gets one more that says "GONE", in this release and every later one, so that an
// installation of any age learns of it and knows the copy that it has.
#pragma once

#include <cstdint>
#include <string>

#include "engine/directory.h"

// Fills sim_info_index from sim_info and sets `do_fetch` of every first row: in a build it means that the file was not
// yet met in the reference copy. Fatal for a file that stands there twice and for a history that has this release
// already.
void index_history();

// The line before the rows of another folder than the last one.
void write_folder_line(const std::string& dir);

// One file of the reference copy, with its history. `present` is its new row.
void write_file_rows(const std::string& key, const std::string& name, const file_version_struct& present);

// The rows of every file that was not met.
void write_gone_files();
