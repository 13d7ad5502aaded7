// utl_thread.h: a thin, checked cover over POSIX threads: recursive critical section, thread, blocking message queue.
// Errors: a failure of the system is a fatal alert that names the call and its code; nothing can go on without a lock.
// Ownership: who creates destroys, when no thread can still be using it.
// Threads: all of it may be called from any.
#pragma once

#include <pthread.h>

struct UTL_critical_section;  // recursive: its owner may enter again
struct UTL_message_queue;     // first in, first out; messages are pointers, null means "nothing"

typedef pthread_t UTL_thread;

UTL_thread UTL_get_current_thread();
int UTL_count_processors();
void UTL_thread_create(void* (*entry)(void*), void* arg, UTL_thread* thread, UTL_thread* id, UTL_thread* join);
void* UTL_thread_join(UTL_thread* thread, UTL_thread join);  // a failure is a log line only
[[noreturn]] void UTL_thread_exit(void* result);
void UTL_thread_murder(UTL_thread* thread);  // asks it to end at its next point of cancellation
void UTL_sleep(int ms);

void UTL_critical_section_create(UTL_critical_section** section);
void UTL_critical_section_destroy(UTL_critical_section* section);
void UTL_critical_section_lock(UTL_critical_section* section);
void UTL_critical_section_unlock(UTL_critical_section* section);

void UTL_message_queue_create(UTL_message_queue** queue);
void UTL_message_queue_destroy(UTL_message_queue* queue);  // frees the nodes, not what they point to
void UTL_message_queue_write(UTL_message_queue* queue, void* message);
// `timeout_ms` 0 polls, -1 waits without limit. Null when nothing came.
void* UTL_message_queue_read(UTL_message_queue* queue, int timeout_ms);
