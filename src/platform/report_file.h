// report_file.h: the files that a run leaves beside the program, or in the state folder, for people to read: log,
// memory log and crash log. Their names are known, and a release is put into the same folder, so a link or a pipe may
// lie in their place: no link is followed, and nothing but a regular file is written.
// A file grows to report_most_bytes and is then set aside as the older one, of which one is kept.
// Nothing here allocates or throws: a signal handler may call it.
#pragma once

#include <sys/types.h>

constexpr off_t report_most_bytes = 16 << 20;

enum class report_begin { anew, behind };  // what the file holds already goes, or stays

// For writing behind what is there; made where it is missing. -1: there is no writing it.
int open_report(const char* path, report_begin begin);

void set_report_aside(const char* path);  // becomes "path.old"
