// options.h: what the command line says about a run on the terminal.
#pragma once

#include <string>

// What to do with files that the user changed.
enum class changed_files { ask, keep, backup, overwrite, cancel };

struct console_options {
    bool agree = false;
    changed_files changed = changed_files::cancel;
    bool check = false;          // scan only
    double give_up_seconds = 0;  // 0: never
    bool quiet = false;
    bool json = false;
    std::string list_host;
    int target_os = 0;
};

// Reads the options, with their defaults for a terminal or none. False on wrong usage; `problem` is one plain sentence.
bool read_console_options(bool on_terminal, console_options& options, std::string& problem);
