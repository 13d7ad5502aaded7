// choose.h: turns the compared catalogue into a work list: for each file fetch, delete or leave; and has the last word
// on each, right before it is replaced or deleted.
// Threads: main thread only; the front may run a loop of its own inside a question.
#pragma once

#include <cstddef>

enum class verdict {
    leave,   // up to date, not for this system, or already gone
    fetch,   // missing or stale
    remove,  // withdrawn, and the copy on disk is one that was shipped
    ask      // the user changed it, or nobody can tell: fetch or remove only if told so
};

// Decides one file of sim_info by its last row, without asking and without touching anything.
// A withdrawn file is left alone where a wanted one leads to the same file: it only moved in the distribution, or is
// spelled otherwise, and deleting it would delete its successor.
verdict decide_file(std::size_t file);

// Decides every file, asking through the front where the user changed one. 0 when the user cancelled; flags set so far
// stay. The answer for a whole folder covers that folder and not the ones below it, and holds for one installation.
int choose_files();

// A file that is about to be replaced or deleted. Where it is no longer what the scan saw it is signed again and
// decided anew, with a question where that is called for.
enum class last_word { go_on, leave, cancel };
last_word decide_again(std::size_t file);
