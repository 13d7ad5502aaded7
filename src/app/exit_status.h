// exit_status.h: what a program tells the shell that started it. Scripts rely on these numbers.
#pragma once

enum : int {
    status_complete = 0,  // or already the latest
    status_failed = 1,
    status_usage = 2,  // wrong options: one line on standard error
    status_declined = 3,
    status_gave_up = 4,
    status_busy = 5,     // another run is at work on the same folder
    status_signal = 128  // and the signal's number: 130 after Ctrl-C, 143 after SIGTERM
};
