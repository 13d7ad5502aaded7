// start.h: what the window and the console do alike between start-up and the first step of the flow.
#pragma once

#include <string>

// Folders to the log, default destination, start values, preferences, "-path", and the folder dialog where it is wanted.
void app_start(int argc, char* const* argv);

// Host that --list_host names, else the built-in one. False when the option's value is no host; `problem` tells why.
bool list_host_option(std::string& host, std::string& problem);
// stg.target_os by --target_os. The same result.
bool target_os_option(int& target_os, std::string& problem);
