// backup.h: keeps the user's version of a file beside it, before the release's takes its place: "Checklist.txt" stays
// as "Checklist (mine 2026-11-23).txt", or " 2" and so on behind that where the name is taken. Nothing is ever
// overwritten.
#pragma once

#include <cstddef>

// Where the user wants a copy of the file: keeps it, tells the log, and takes the wish back. 0 or errno.
int keep_copy_if_wanted(std::size_t file);
