// process.h: child processes, without a shell, and what this process itself owes the system at its start.
// Without a shell no word of a path or an address is taken for a command. A child gets SIGPIPE back to its default and
// none of our descriptors, and leaves no zombie.
// Errors: none is told; what is started here is a service to the user that the program does not depend on.
#pragma once

#include <string>
#include <vector>

// Starts `argv` detached with its output discarded. The outcome is not known and not wanted.
void spawn_detached(const std::vector<std::string>& argv);

// Hands a web address to the desktop; no failure is shown.
void open_in_browser(const std::string& url);

// Opens descriptors 0 to 2 on /dev/null where they are closed, so that no file is ever taken for one of them.
void open_standard_descriptors();

// From here on a broken socket is an ordinary error and no signal.
void ignore_sigpipe();
