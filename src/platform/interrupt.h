// interrupt.h: Ctrl-C, SIGTERM and SIGHUP as a remembered wish to quit, and a descriptor that wakes a poll; single keys
// of the terminal. The program acts on the wish in its own loop, where it can close what it has open.
// Errors: without a pipe or a terminal the calls have no effect.
// Threads: main thread; restore_terminal may be called by a signal handler.
#pragma once

void catch_interrupts();    // a second Ctrl-C while the first is being served ends the process at once, status 130
int interrupt_requested();  // the signal's number, 0 for none
int interrupt_wake_fd();    // readable once a signal came; -1 before catch_interrupts

// True once the user pressed `key` on the terminal of standard input (read without echo, without waiting). Ends at once
// with false where standard input is no terminal.
bool terminal_key_pressed(char key);
void watch_terminal_keys();  // puts the terminal into key-by-key mode; restored at exit and by the next call
void restore_terminal();
