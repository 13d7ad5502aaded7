// outcome.h: how the file work tells what became of it: lines in the log, and the failure that ends an install.
#pragma once

#include <string>

// One line for a file action, where the user wants them (stg.log_actions).
void log_action(const char* what, const std::string& path, int result);

// A result of work in the temporary folder, or errno of a transfer into it. Where its disk is full no server is to
// blame, and no other one helps: the run ends, with words that name the folder. Anything else has no effect.
void end_if_temp_is_full(int code);

// The install has failed: the flag, and an alert.
void fail_install(const char* what, const std::string& error, const std::string& zip, const std::string& destination);
