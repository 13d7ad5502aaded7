// console.h: the builder's face on a terminal: progress, results to standard output, alerts to standard error.
// On a terminal progress is two lines redrawn in place; elsewhere a plain line at most every five seconds or five percent.
#pragma once

#include <string>

void builder_console_open();                    // fills in the tables of alerts and of both front ends
void builder_console_close();                   // gives the terminal back
void builder_problem(const std::string& text);  // one plain line to standard error
