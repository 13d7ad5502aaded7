// outcome.h: how the file work tells what became of it: lines in the log, and the failure that ends an install.
#pragma once

#include <string>

// One line for a file action, where the user wants them (stg.log_actions).
void log_action(const char* what, const std::string& path, int result);

// The install has failed: the flag, and an alert.
void fail_install(const char* what, const std::string& error, const std::string& zip, const std::string& destination);
