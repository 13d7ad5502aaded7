// thread.h: a pool of one worker per processor, a record for each asynchronous call, and the road on which an exception
// travels from a worker to the main thread.
// Ownership: a record returned by THREAD_run_async belongs to the caller until THREAD_cleanup.
// On the fatal path workers still wait when the process ends, so the globals are plain pointers and never destroyed
// there.
#pragma once

#include "runtime/oops.h"
#include "runtime/utl_thread.h"

struct THREAD_call;

void THREAD_init();
void THREAD_make_workers();
// Joins the workers, so a call that still runs holds up the end. Logs exceptions that were never reported, and "Clean
// exit from threads." No effect before THREAD_init.
void THREAD_shutdown();

// `want_gl` counts only where the graphics layer offers a context for a worker, which this one does not.
void THREAD_create(void* (*entry)(void*), void* arg, UTL_thread* thread, UTL_thread* id, UTL_thread* join, int want_gl);

THREAD_call* THREAD_run_async(void* (*entry)(void*), void* arg);
int THREAD_is_done(THREAD_call* call, int timeout_ms);  // -1 waits until it is
void* THREAD_cleanup(THREAD_call* call);                // its result; a call that is not done is a fatal alert

// Level 1 goes to the warnings, level 2 to the fatal ones and ends the calling worker; any other level is dropped.
void THREAD_send_exception(const exce_class& e);
// Shows what other threads have raised; the main thread calls it in every frame.
void THREAD_check_exception(int check_warnings);

int THREAD_is_main_thread();
int THREAD_is_inited();
int THREAD_worker_count();  // 0 before THREAD_make_workers
// THREAD_shutdown waits for the calls that run; a long one looks at this and gives up.
bool THREAD_is_ending();
