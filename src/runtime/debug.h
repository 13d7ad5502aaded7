// debug.h: what is left of a process that dies on a fatal signal, by abort or of an exception that nobody caught:
// "crash_log.txt", with what ran, where it was and by which calls it came there.
// The file lies in the application's folder where it can be written, else in the state folder; where neither can be had
// the report goes to standard error. Each crash appends. After the report the process aborts; a terminal gets its echo
// back and is told where the report lies.
// A crash in the reporter itself ends the process at once, and one that hangs is ended by an alarm.
// In a signal handler nothing may be taken for granted, so the reporter neither allocates nor waits for another thread;
// only the line in the log goes through an ordinary stream.
#pragma once

#include <csignal>
#include <cstddef>
#include <cstdio>

#include "platform/callers.h"

// A frame as code with frame pointers lays it down.
struct stack_frame {
    const stack_frame* link;  // of the caller
    const void* return_address;
};

// First of all at start-up, on the main thread. Ignores SIGPIPE, so that a broken socket is an ordinary error, and
// installs the handler. A second call has no effect.
void UTL_debug_init();

// A stack for the handlers of the calling thread, for as long as this lives: where the ordinary one has run over, there
// is no room for a handler. One for each thread; without memory for it the thread does without.
class UTL_signal_stack {
  public:
    UTL_signal_stack();
    ~UTL_signal_stack();
    UTL_signal_stack(const UTL_signal_stack&) = delete;
    UTL_signal_stack& operator=(const UTL_signal_stack&) = delete;

  private:
    void* memory;  // its lowest page cannot be touched
    stack_t before{};
};

[[noreturn]] void fatal_signal_handler(int signal, siginfo_t* info, void* context);

// One line for `pc` and for each caller, 100 at most, by the chain of frames: the way for where the tables for
// unwinding do not lead. Ends quietly where the chain makes no sense.
void UTL_dump_stack(std::FILE* out, const stack_frame* frame, const void* pc);
void print_symbol(std::FILE* out, const void* address);
void UTL_get_debug_symbol(const void* address, symbol_info* info);

// 1 if all of the range is mapped with the wanted rights. An empty range is valid.
int UTL_valid_memory(const void* start, unsigned size, int need_read, int need_write);

// 16 bytes a line, as numbers and as characters.
void dump_hex(std::FILE* out, const void* data, int length);
