// console.h: the front end of the terminal: the same flow as the window, paced by the sockets instead of by frames.
#pragma once

// Runs the program to its end and returns the exit status.
int console_main(int argc, char* const* argv);
