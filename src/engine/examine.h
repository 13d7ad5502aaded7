// examine.h: what the destination has of every file of the catalogue, whatever system it is for. The signing runs beside
// the main thread, which looks in on it and lives meanwhile; the results are taken in when all of it is through, so
// nothing depends on the order in which files are read.
// Threads: main thread only.
#pragma once

#include <string>

#include "files/sign_files.h"

// Settings of a run.
struct examination_t {
    bool read_everything = false;  // and believe no signature of an earlier run
};
extern examination_t examination;

// Reads the catalogue and compares the destination with it, whole: read_catalogue and what stands below.
int read_directory(const std::string& dir_path, const std::string& label);

void begin_examination();
bool is_examining();
void stop_examination();
// True when it is over: sim_info tells of each file what is there, stg how much is missing. Waits for at most `ms`.
bool go_on_examining(const std::string& label, int ms);

// What stood at the place of a file when it was examined. Where the signature is from the store, the bytes were not read in
// this run: nothing may be replaced or deleted before they were.
const signed_file& found_on_disk(int file);
// Keeps for the next run what is known of the destination, under its present name.
void keep_signatures();
