// startup.h: what every front end does first, in its fixed order, before it opens a window or a terminal.
#pragma once

// Crash reporter, SIGPIPE, standard descriptors, log with its header, random tables, command line, threads. After it the log, the
// options and the alerts of any thread work. May end the process (--help).
void runtime_start(int argc, char* const* argv);

extern float randrat[10000];                    // 0 to 0.9999; the same in every run
extern float lookup_sin[361], lookup_cos[361];  // whole degrees

// rand() as a number from 0 to 1, both included.
double random_unit();
