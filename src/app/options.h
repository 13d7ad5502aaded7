// options.h: the options that mean the same in the window and on the console.
#pragma once

#include <string>

extern const char* const installer_usage;  // the installer's own part of --help

// Host that --list_host names, else the built-in one. False when the option's value is no host; `problem` tells why.
bool list_host_option(std::string& host, std::string& problem);
// stg.target_os by --target_os. The same result.
bool target_os_option(int& target_os, std::string& problem);
