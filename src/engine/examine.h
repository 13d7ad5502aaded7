// examine.h: what the destination has of every file of the catalogue, whatever system it is for. The signing runs
// beside the main thread, which looks in on it and lives meanwhile; the results are taken in when all of it is through,
// so nothing depends on the order in which files are read.
// Threads: main thread only.
#pragma once

#include <cstddef>
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

// What stood at the place of a file when it was last looked at.
const signed_file& found_on_disk(std::size_t file);
// It is still the same, and its bytes were read in this run, not only remembered.
bool is_untouched(std::size_t file);
// Looks at the place of a file once more.
void examine_again(std::size_t file);
// The program itself has touched the file: from here on it is this state that must not change.
void note_own_change(std::size_t file);
// Why nobody knows what is in the file, in words; empty for one that could be read, or is not there.
std::string trouble_with(std::size_t file);
// Keeps for the next run what is known of the destination, under its present name.
void keep_signatures();
