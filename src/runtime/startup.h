// startup.h: what every front end does first, in its fixed order, before it opens a window or a terminal.
#pragma once

#include <string>

// Crash reporter, SIGPIPE, standard descriptors, log with its header, random tables, command line, threads. After it
// the log, the options and the alerts of any thread work. May end the process (--help).
void runtime_start(int argc, char* const* argv);

// The private temporary folder of this run, made at first need. Where TMPDIR cannot be used and the system's own can,
// the log says so; where there is none at all, a fatal alert does: no run goes on without, and none puts its files
// elsewhere.
std::string start_temp_folder();

extern float randrat[10000];                    // 0 to 0.9999; the same in every run
extern float lookup_sin[361], lookup_cos[361];  // whole degrees

// rand() as a number from 0 to 1, both included.
double random_unit();
