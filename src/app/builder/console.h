// console.h: the builder's face on a terminal: progress, results to standard output, alerts to standard error.
#pragma once

#include <string>

void builder_console_open();                    // fills in the tables of alerts and of both front ends
void builder_console_close();                   // gives the terminal back
void builder_problem(const std::string& text);  // one plain line to standard error
