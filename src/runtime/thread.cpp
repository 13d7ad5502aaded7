#include "runtime/thread.h"

#include <cxxabi.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

#include "runtime/debug.h"
#include "runtime/log.h"

struct THREAD_call {
    THREAD_call* next;  // spare records only
    UTL_message_queue* reply;
    UTL_critical_section* section;  // guards result and done
    void* (*entry)(void*);
    void* arg;
    void* result;
    int done;
    std::uint32_t cookie;
};

// Three forms of each worker's handle, as UTL_thread_create tells them.
struct worker_handles {
    std::vector<UTL_thread> thread, join, id;
};

// Process, from THREAD_init to THREAD_shutdown. Plain pointers: at a fatal end workers still wait on these.
static UTL_thread main_thread;
static std::atomic<bool> threads_inited = false, threads_end = false;
static UTL_message_queue *warn_exce, *quit_exce;  // of exce_class*
static UTL_message_queue* call_queue;             // of THREAD_call*, or stop_message
static UTL_critical_section* free_calls_lock;     // guards the two below
static THREAD_call* free_calls;
static std::uint32_t next_cookie;
static worker_handles* workers;

static void* const stop_message = reinterpret_cast<void*>(std::intptr_t{-1});

void THREAD_init() {
    if (threads_inited) return;
    main_thread = UTL_get_current_thread();
    UTL_message_queue_create(&warn_exce);
    UTL_message_queue_create(&quit_exce);
    UTL_critical_section_create(&free_calls_lock);
    UTL_message_queue_create(&call_queue);
    workers = new worker_handles;
    threads_inited = true;
    threads_end = false;
    alert_road.off_main_thread = [] { return THREAD_is_inited() && !THREAD_is_main_thread(); };
    alert_road.send_to_main = THREAD_send_exception;
    alert_road.stop_threads = THREAD_shutdown;
}

int THREAD_is_main_thread() {
    return pthread_equal(UTL_get_current_thread(), main_thread) != 0;
}

int THREAD_is_inited() {
    return threads_inited;
}

struct launch_record {
    void* (*entry)(void*);
    void* arg;
    UTL_message_queue* started;
};

// What escapes from `entry` is a fatal exception. The end of a thread travels as an exception too and must go on, or
// the C library ends the process; it has no object of its type, which the sanitizer would take for a null reference.
__attribute__((no_sanitize("null"))) static void* run_guarded(const launch_record& launch,
                                                              std::optional<exce_class>& escaped) {
    try {
        return launch.entry(launch.arg);
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (const exce_class& e) {
        escaped = e;
        escaped->MakeFatal();
    } catch (const std::exception& e) {
        escaped.emplace("Caught an unhandled C++ exception", e.what(), "", "", OOPS_PLACE, t_exit);
    } catch (...) {
        escaped.emplace("Caught an unhandled unknown exception", "", "", "", OOPS_PLACE, t_exit);
    }
    return nullptr;
}

static void* THREAD_launch(void* arg) {
    const UTL_signal_stack signal_stack;
    const launch_record launch = *static_cast<const launch_record*>(arg);
    UTL_message_queue_write(launch.started, nullptr);  // from here on the record and the queue may be gone
    std::optional<exce_class> escaped;
    void* const result = run_guarded(launch, escaped);
    if (escaped) THREAD_send_exception(*escaped);
    return result;
}

void THREAD_create(void* (*entry)(void*), void* arg, UTL_thread* thread, UTL_thread* id, UTL_thread* join,
                   int /*want_gl*/) {
    launch_record launch{entry, arg, nullptr};
    UTL_message_queue_create(&launch.started);
    UTL_thread_create(THREAD_launch, &launch, thread, id, join);
    UTL_message_queue_read(launch.started, -1);
    UTL_message_queue_destroy(launch.started);
}

// A worker: one call after another, until it is told to stop. What a call throws ends the worker (run_guarded).
static void* xtaskproc(void*) {
    UTL_message_queue* const queue = call_queue;
    for (;;) {
        void* const message = UTL_message_queue_read(queue, -1);
        if (message == stop_message) return nullptr;
        auto* const call = static_cast<THREAD_call*>(message);
        void* const result = call->entry(call->arg);
        UTL_critical_section_lock(call->section);
        call->result = result;
        UTL_critical_section_unlock(call->section);
        UTL_message_queue_write(call->reply, reinterpret_cast<void*>(std::uintptr_t{call->cookie}));
    }
}

void THREAD_make_workers() {
    const int count = UTL_count_processors();
    xer << "CPU count        : " << count << "\n";
    for (int i = 0; i < count; ++i) {
        UTL_thread thread, id, join;
        THREAD_create(xtaskproc, nullptr, &thread, &id, &join, 1);
        workers->thread.push_back(thread);
        workers->id.push_back(id);
        workers->join.push_back(join);
    }
}

int THREAD_worker_count() {
    return threads_inited ? static_cast<int>(workers->join.size()) : 0;
}

bool THREAD_is_ending() {
    return threads_end;
}

// Null when no exception waits.
static std::unique_ptr<exce_class> take_exception(UTL_message_queue* queue) {
    return std::unique_ptr<exce_class>(static_cast<exce_class*>(UTL_message_queue_read(queue, 0)));
}

// What was never shown is at least told in the log.
static void destroy_exceptions(UTL_message_queue* queue) {
    while (const auto e = take_exception(queue))
        e->LogAndContinue();
    UTL_message_queue_destroy(queue);
}

void THREAD_shutdown() {
    if (!threads_inited) return;
    threads_end = true;
    for (std::size_t i = 0; i < workers->join.size(); ++i)
        UTL_message_queue_write(call_queue, stop_message);
    // A worker may end the run itself: it is not joined, and has its own stop message still to read.
    bool by_worker = false;
    for (std::size_t i = 0; i < workers->join.size(); ++i) {
        if (pthread_equal(workers->join[i], UTL_get_current_thread()))
            by_worker = true;
        else
            UTL_thread_join(&workers->thread[i], workers->join[i]);
    }
    delete workers;
    UTL_critical_section_destroy(free_calls_lock);
    if (!by_worker) UTL_message_queue_destroy(call_queue);
    while (free_calls) {
        THREAD_call* const call = free_calls;
        free_calls = call->next;
        UTL_message_queue_destroy(call->reply);
        UTL_critical_section_destroy(call->section);
        delete call;
    }
    destroy_exceptions(warn_exce);
    destroy_exceptions(quit_exce);
    threads_inited = threads_end = false;
    xer << "Clean exit from threads.\n";
}

THREAD_call* THREAD_run_async(void* (*entry)(void*), void* arg) {
    UTL_critical_section_lock(free_calls_lock);
    next_cookie += 4;
    if (!next_cookie) next_cookie = 4;  // null means "nothing" to a queue
    const std::uint32_t cookie = next_cookie;
    THREAD_call* call = free_calls;
    if (call) free_calls = call->next;
    UTL_critical_section_unlock(free_calls_lock);

    if (!call) {
        call = new THREAD_call{};
        UTL_message_queue_create(&call->reply);
        UTL_critical_section_create(&call->section);
    }
    call->entry = entry;
    call->arg = arg;
    call->result = nullptr;
    call->done = 0;
    call->cookie = cookie;
    UTL_message_queue_write(call_queue, call);
    return call;
}

static int get_done(THREAD_call* call) {
    UTL_critical_section_lock(call->section);
    const int done = call->done;
    UTL_critical_section_unlock(call->section);
    return done;
}

int THREAD_is_done(THREAD_call* call, int timeout_ms) {
    THREAD_check_exception(0);
    if (get_done(call)) return 1;  // the one reply has been read
    const void* const reply = UTL_message_queue_read(call->reply, timeout_ms);
    THREAD_check_exception(0);
    if (!reply) return 0;
    UTL_critical_section_lock(call->section);
    call->done = 1;
    UTL_critical_section_unlock(call->section);
    return 1;
}

void* THREAD_cleanup(THREAD_call* call) {
    THREAD_check_exception(0);
    if (!get_done(call)) __MACIBM_alert(0, "Thread cleanup called on not-done call.", "", "", "", t_exit, OOPS_PLACE);
    void* const result = call->result;
    UTL_critical_section_lock(free_calls_lock);
    call->next = free_calls;
    free_calls = call;
    UTL_critical_section_unlock(free_calls_lock);
    return result;
}

void THREAD_send_exception(const exce_class& e) {
    if (!threads_inited) {
        e.Report();
        return;
    }
    if (e.level == t_alert) UTL_message_queue_write(warn_exce, new exce_class(e));
    if (e.level != t_exit) return;
    UTL_message_queue_write(quit_exce, new exce_class(e));
    if (!THREAD_is_main_thread()) UTL_thread_exit(nullptr);
}

static void report_all(UTL_message_queue* queue) {
    while (const auto e = take_exception(queue))
        e->Report();
}

void THREAD_check_exception(int check_warnings) {
    if (!threads_inited) return;
    report_all(quit_exce);
    if (check_warnings) report_all(warn_exce);
}
