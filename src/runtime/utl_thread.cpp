#include "runtime/utl_thread.h"

#include <sys/time.h>

#include <cerrno>
#include <chrono>
#include <list>
#include <thread>

#include "platform/machine.h"
#include "runtime/hl_string.h"
#include "runtime/log.h"
#include "runtime/oops.h"

struct UTL_critical_section {
    pthread_mutex_t mutex;
};

struct UTL_message_queue {
    pthread_mutex_t mutex;
    pthread_cond_t filled;
    std::list<void*> messages;
    int waiters = 0;  // readers that wait; a write signals only if there is one
};

// The call's name is told with what stands before it in this system's texts, a misprint included: support knows them
// so.
static void check(int error, const char* call, const char* file, int line) {
    if (error)
        __MACIBM_alert(0, std::string("\"") + call + "\" OS error", float_text("err=", error), "", "", t_exit, file,
                       line);
}

UTL_thread UTL_get_current_thread() {
    return pthread_self();
}

int UTL_count_processors() {
    return count_processors();
}

void UTL_thread_create(void* (*entry)(void*), void* arg, UTL_thread* thread, UTL_thread* id, UTL_thread* join) {
    pthread_t handle{};
    check(pthread_create(&handle, nullptr, entry, arg), "pthread_create", OOPS_PLACE);
    *thread = *id = *join = handle;
}

void* UTL_thread_join(UTL_thread*, UTL_thread join) {
    void* result = nullptr;
    const int error = pthread_join(join, &result);
    if (error) xer << "Warning: wait on thread cleanup failed with error " << error << "\n";
    return result;
}

void UTL_thread_exit(void* result) {
    pthread_exit(result);
}

void UTL_thread_murder(UTL_thread* thread) {
    pthread_cancel(*thread);
}

void UTL_sleep(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void UTL_critical_section_create(UTL_critical_section** section) {
    auto* made = new UTL_critical_section;
    pthread_mutexattr_t attributes;
    check(pthread_mutexattr_init(&attributes), "::pthread_mutexattr_init", OOPS_PLACE);
    check(pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE), "::pthread_mutexattr_settype", OOPS_PLACE);
    check(pthread_mutex_init(&made->mutex, &attributes), "::pthread_mutex_init", OOPS_PLACE);
    check(pthread_mutexattr_destroy(&attributes), "::pthread_mutexattr_destroy", OOPS_PLACE);
    *section = made;
}

void UTL_critical_section_destroy(UTL_critical_section* section) {
    check(pthread_mutex_destroy(&section->mutex), "::pthread_mutex_destroy", OOPS_PLACE);
    delete section;
}

void UTL_critical_section_lock(UTL_critical_section* section) {
    check(pthread_mutex_lock(&section->mutex), "pthread_mutex_lock", OOPS_PLACE);
}

void UTL_critical_section_unlock(UTL_critical_section* section) {
    check(pthread_mutex_unlock(&section->mutex), "pthread_mutex_unlock", OOPS_PLACE);
}

void UTL_message_queue_create(UTL_message_queue** queue) {
    auto* made = new UTL_message_queue;
    check(pthread_mutex_init(&made->mutex, nullptr), "::pthread_mutex_init", OOPS_PLACE);
    check(pthread_cond_init(&made->filled, nullptr), "::pthread_cond_init", OOPS_PLACE);
    *queue = made;
}

void UTL_message_queue_destroy(UTL_message_queue* queue) {
    check(pthread_cond_destroy(&queue->filled), "::pthread_cond_desroy", OOPS_PLACE);
    check(pthread_mutex_destroy(&queue->mutex), "::pthread_mutex_destroy", OOPS_PLACE);
    delete queue;
}

void UTL_message_queue_write(UTL_message_queue* queue, void* message) {
    check(pthread_mutex_lock(&queue->mutex), "pthread_mutex_lock", OOPS_PLACE);
    if (queue->waiters) check(pthread_cond_signal(&queue->filled), "pthread_cond_signal", OOPS_PLACE);
    queue->messages.push_back(message);
    check(pthread_mutex_unlock(&queue->mutex), "pthread_mutex_unlock", OOPS_PLACE);
}

void* UTL_message_queue_read(UTL_message_queue* queue, int timeout_ms) {
    // The deadline, before the lock: waiting for that counts too.
    timeval now;
    gettimeofday(&now, nullptr);
    timespec deadline{now.tv_sec + timeout_ms / 1000, now.tv_usec * 1000 + timeout_ms % 1000 * 1000000L};
    if (deadline.tv_nsec > 999999999) {
        ++deadline.tv_sec;
        deadline.tv_nsec -= 1000000000;
    }

    check(pthread_mutex_lock(&queue->mutex), "pthread_mutex_lock", OOPS_PLACE);
    int error = timeout_ms == 0 ? ETIMEDOUT : 0;
    ++queue->waiters;
    while (queue->messages.empty() && error != ETIMEDOUT) {
        error = timeout_ms > 0 ? pthread_cond_timedwait(&queue->filled, &queue->mutex, &deadline)
                               : pthread_cond_wait(&queue->filled, &queue->mutex);
        if (error != ETIMEDOUT) check(error, "pthread_cond_timedwait", OOPS_PLACE);
    }
    --queue->waiters;
    void* message = nullptr;
    if (!queue->messages.empty()) {
        message = queue->messages.front();
        queue->messages.pop_front();
    }
    check(pthread_mutex_unlock(&queue->mutex), "pthread_mutex_unlock", OOPS_PLACE);
    return message;
}
