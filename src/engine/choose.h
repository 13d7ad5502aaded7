// choose.h: turns the compared catalogue into a work list: for each file fetch, delete or leave.
// Threads: main thread only; the front may run a loop of its own inside a question.
#pragma once

#include <string>

enum class verdict {
    leave,   // up to date, not for this system, or already gone
    fetch,   // missing or stale
    remove,  // withdrawn, and the copy on disk is one that was shipped
    ask      // the user changed it: fetch or remove only if told so
};

// Decides one file of sim_info by its last row, without asking and without touching anything.
// A withdrawn file is left alone where a wanted one has the same installed path: it only moved in the distribution, and
// deleting it would delete its successor.
verdict decide_file(int file);

// Decides every file, asking through the front where the user changed one. 0 when the user cancelled; flags set so far
// stay. The answer for a whole folder covers that folder and not the ones below it.
int choose_files();
