// window.h: the front end of the desktop: one window, the frame loop, the main screen.
#pragma once

// Runs the program to its end and returns the exit status.
int window_main(int argc, char* const* argv);
