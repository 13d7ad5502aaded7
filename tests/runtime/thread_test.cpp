#include "runtime/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <vector>

#include "runtime/opened_log.h"
#include "support/alerts.h"

using entry_t = void* (*)(void*);

static void* as_message(std::intptr_t number) {
    return reinterpret_cast<void*>(number);
}

class Threads : public testing::Test {
  protected:
    Threads() { THREAD_init(); }
    ~Threads() override { THREAD_shutdown(); }

    // Runs `entry` on a thread of its own until its end.
    static void* run(entry_t entry, void* arg = nullptr) {
        UTL_thread thread, id, join;
        THREAD_create(entry, arg, &thread, &id, &join, 0);
        return UTL_thread_join(&thread, join);
    }

    opened_log log;
    alert_catcher alerts;
};

static bool went_on = false;

template <int level>
static void* raise_and_go_on(void*) {
    __MACIBM_alert(0, "from a worker", "", "", "", level, "w", 1);
    went_on = true;
    return nullptr;
}

TEST_F(Threads, a_workers_warning_waits_for_the_main_thread_and_the_worker_goes_on) {
    run(raise_and_go_on<t_alert>);
    run(raise_and_go_on<0>);  // a question has no road to the main thread
    EXPECT_TRUE(went_on);
    THREAD_check_exception(0);
    EXPECT_EQ(alerts.count(), 0U);
    THREAD_check_exception(1);
    THREAD_check_exception(1);
    ASSERT_EQ(alerts.count(), 1U);
    EXPECT_EQ(alerts.last(), "from a worker\n\n\n\n(w line 1)");
}

TEST_F(Threads, a_workers_fatal_alert_ends_it_there_and_the_program_on_the_main_thread) {
    went_on = false;
    run(raise_and_go_on<t_exit>);
    EXPECT_FALSE(went_on);
    EXPECT_EQ(alerts.count(), 0U);
    EXPECT_THROW(THREAD_check_exception(0), left);
    EXPECT_EQ(alerts.last(), "from a worker\n\n\n\n(w line 1)");
}

TEST_F(Threads, whatever_escapes_from_a_thread_is_fatal) {
    const std::vector<std::pair<entry_t, const char*>> cases = {
        {[](void*) -> void* { throw exce_class("own", "words", "", "", "e", 5, t_alert); },
         "own\nwords\n\n\n(e line 5)"},
        {[](void*) -> void* { throw std::runtime_error("why"); },
         "Caught an unhandled C++ exception\nwhy\n\n\n(src/runtime/thread.cpp line "},
        {[](void*) -> void* { throw 7; }, "Caught an unhandled unknown exception\n\n\n\n(src/runtime/thread.cpp line "},
    };
    for (const auto& [entry, words] : cases) {
        run(entry);
        EXPECT_THROW(THREAD_check_exception(0), left);
        EXPECT_EQ(alerts.last().find(words), 0U) << alerts.last();
        EXPECT_EQ(alerts.seen.back().level, t_exit);
    }
}

TEST_F(Threads, leaving_a_thread_early_is_no_exception) {
    EXPECT_EQ(run([](void*) -> void* { UTL_thread_exit(as_message(9)); }), as_message(9));
    THREAD_check_exception(1);
    EXPECT_EQ(alerts.count(), 0U);
}

TEST_F(Threads, the_pool_answers_every_call_and_uses_records_again) {
    THREAD_make_workers();
    const entry_t twice = [](void* arg) { return as_message(2 * reinterpret_cast<std::intptr_t>(arg)); };
    std::vector<THREAD_call*> calls;
    for (std::intptr_t i = 0; i < 200; ++i)
        calls.push_back(THREAD_run_async(twice, as_message(i)));
    for (std::intptr_t i = 0; i < 200; ++i) {
        THREAD_call* const call = calls[static_cast<std::size_t>(i)];
        ASSERT_TRUE(THREAD_is_done(call, -1));
        EXPECT_TRUE(THREAD_is_done(call, -1));  // its one answer is read, and it is still done
        EXPECT_EQ(THREAD_cleanup(call), as_message(2 * i));
    }
    EXPECT_EQ(THREAD_run_async(twice, nullptr), calls.back());
    EXPECT_TRUE(THREAD_is_done(calls.back(), -1));
    THREAD_cleanup(calls.back());
}

TEST_F(Threads, a_call_that_runs_is_not_done_and_may_not_be_cleaned_up) {
    THREAD_make_workers();
    UTL_message_queue* gate;
    UTL_message_queue_create(&gate);
    THREAD_call* const call = THREAD_run_async(
        [](void* arg) { return UTL_message_queue_read(static_cast<UTL_message_queue*>(arg), -1); }, gate);
    EXPECT_FALSE(THREAD_is_done(call, 0));
    EXPECT_THROW(THREAD_cleanup(call), left);
    EXPECT_EQ(alerts.last().find("Thread cleanup called on not-done call.\n\n\n\n("), 0U);
    UTL_message_queue_write(gate, as_message(5));
    EXPECT_TRUE(THREAD_is_done(call, -1));
    EXPECT_EQ(THREAD_cleanup(call), as_message(5));
    UTL_message_queue_destroy(gate);
}

TEST_F(Threads, shutdown_finishes_what_is_queued_and_outlives_a_worker_that_threw) {
    static std::atomic<int> finished = 0;
    static auto* const never_cleaned_up = new std::vector<THREAD_call*>;
    THREAD_make_workers();
    EXPECT_EQ(log.text(), "CPU count        : " + std::to_string(UTL_count_processors()) + "\n");
    for (int i = 0; i < 50; ++i)
        never_cleaned_up->push_back(THREAD_run_async([](void*) -> void* { return ++finished, nullptr; }, nullptr));
    never_cleaned_up->push_back(
        THREAD_run_async([](void*) -> void* { throw exce_class("too late", "", "", "", "w", 1, t_exit); }, nullptr));
    THREAD_shutdown();
    EXPECT_EQ(finished, 50);
    EXPECT_FALSE(THREAD_is_inited());
    EXPECT_EQ(alerts.count(), 0U);
    EXPECT_NE(log.text().find("too late\n\n\n\nClean exit from threads.\n"), std::string::npos) << log.text();
}

TEST(MessageQueue, hands_out_in_order_and_polls_without_waiting) {
    UTL_message_queue* queue;
    UTL_message_queue_create(&queue);
    EXPECT_EQ(UTL_message_queue_read(queue, 0), nullptr);
    for (std::intptr_t i = 1; i <= 3; ++i)
        UTL_message_queue_write(queue, as_message(i));
    EXPECT_EQ(UTL_message_queue_read(queue, 0), as_message(1));
    EXPECT_EQ(UTL_message_queue_read(queue, -1), as_message(2));
    UTL_message_queue_write(queue, nullptr);
    EXPECT_EQ(UTL_message_queue_read(queue, 1000), as_message(3));
    EXPECT_EQ(UTL_message_queue_read(queue, -1), nullptr);  // a wake-up, or this would never return
    UTL_message_queue_write(queue, as_message(4));          // never read: destroying frees its node
    UTL_message_queue_destroy(queue);
}

TEST(MessageQueue, a_time_out_across_the_second_is_no_failure_and_not_too_early) {
    using std::chrono::milliseconds;
    alert_catcher alerts;
    UTL_message_queue* queue;
    UTL_message_queue_create(&queue);
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto past_the_second = 1001 - std::chrono::duration_cast<milliseconds>(now).count() % 1000;
    for (const int timeout_ms : {5, static_cast<int>(past_the_second)}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(UTL_message_queue_read(queue, timeout_ms), nullptr);
        EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(timeout_ms - 1));
    }
    EXPECT_EQ(alerts.count(), 0U);
    UTL_message_queue_destroy(queue);
}

TEST(MessageQueue, every_write_wakes_a_reader_that_waits) {
    static UTL_message_queue *to, *back;
    UTL_message_queue_create(&to);
    UTL_message_queue_create(&back);
    UTL_thread thread, id, join;
    const entry_t echo = [](void*) -> void* {
        while (void* message = UTL_message_queue_read(to, -1))
            UTL_message_queue_write(back, message);
        return as_message(77);
    };
    UTL_thread_create(echo, nullptr, &thread, &id, &join);
    for (std::intptr_t i = 1; i <= 500; ++i) {
        UTL_message_queue_write(to, as_message(i));
        EXPECT_EQ(UTL_message_queue_read(back, -1), as_message(i));
    }
    UTL_message_queue_write(to, nullptr);
    EXPECT_EQ(UTL_thread_join(&thread, join), as_message(77));
    UTL_message_queue_destroy(to);
    UTL_message_queue_destroy(back);
}

TEST(CriticalSection, may_be_entered_again_by_its_holder) {
    UTL_critical_section* section;
    UTL_critical_section_create(&section);
    for (int i = 0; i < 2; ++i)
        UTL_critical_section_lock(section);
    for (int i = 0; i < 2; ++i)
        UTL_critical_section_unlock(section);
    UTL_critical_section_destroy(section);
}

TEST(SystemFailures, name_the_call_and_its_code_and_a_failed_join_is_a_log_line_only) {
    opened_log log;
    UTL_thread self = UTL_get_current_thread(), id, join;
    EXPECT_EQ(UTL_thread_join(&self, self), nullptr);
    EXPECT_EQ(log.text(), "Warning: wait on thread cleanup failed with error 35\n");

    pthread_attr_t before, greedy;  // a stack larger than any address space
    pthread_getattr_default_np(&before);
    pthread_attr_init(&greedy);
    pthread_attr_setstacksize(&greedy, std::size_t{1} << 50);
    pthread_setattr_default_np(&greedy);
    alert_catcher alerts;
    EXPECT_THROW(UTL_thread_create([](void* arg) { return arg; }, nullptr, &self, &id, &join), left);
    EXPECT_EQ(alerts.last().find("\"pthread_create\" OS error\nerr=11.000000\n\n\n(src/runtime/utl_thread.cpp line"),
              0U)
        << alerts.last();
    pthread_setattr_default_np(&before);
}
