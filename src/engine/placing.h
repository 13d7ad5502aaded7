// placing.h: brings files that were expanded beside their places there, and has the last word on each right before.
// Threads: main thread only.
#pragma once

#include <cstddef>
#include <string>

// Where the row's file is expanded to: a hidden name in the folder of its place.
std::string part_of(std::size_t file);

// The part was expanded whole: it takes its place, after what the user wanted kept was kept. A file that is no longer
// what the scan saw is decided anew, and may stay; the part goes then. What became of it is told.
void place_file(std::size_t file);
