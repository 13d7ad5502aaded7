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

TEST_F(Threads, a_workers_alert_waits_for_the_main_thread_and_a_fatal_one_ends_the_worker) {
    run(raise_and_go_on<t_exit>);
    EXPECT_FALSE(went_on);
    EXPECT_EQ(alerts.count(), 0U);
    EXPECT_THROW(THREAD_check_exception(0), left);
    EXPECT_EQ(alerts.last(), "from a worker\n\n\n\n(w line 1)");

    run(raise_and_go_on<t_alert>);
    run(raise_and_go_on<0>);  // a question has no road to the main thread
    EXPECT_TRUE(went_on);
    THREAD_check_exception(0);
    EXPECT_EQ(alerts.count(), 1U);
    THREAD_check_exception(1);
    EXPECT_EQ(alerts.count(), 2U);
}

TEST_F(Threads, whatever_escapes_from_a_thread_is_fatal) {
    const entry_t cases[] = {
        [](void*) -> void* { throw exce_class("why", "", "", "", "e", 5, t_alert); },
        [](void*) -> void* { throw std::runtime_error("why"); },
        [](void*) -> void* { throw 7; },
    };
    for (const entry_t entry : cases) {
        run(entry);
        EXPECT_THROW(THREAD_check_exception(0), left);
        EXPECT_EQ(alerts.seen.back().level, t_exit);
        EXPECT_NE(alerts.last().find(entry == cases[2] ? "unknown exception" : "why"), std::string::npos);
    }
}

TEST_F(Threads, the_pool_answers_every_call_and_one_that_runs_is_not_done) {
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

    UTL_message_queue* gate;
    UTL_message_queue_create(&gate);
    THREAD_call* const call = THREAD_run_async(
        [](void* arg) { return UTL_message_queue_read(static_cast<UTL_message_queue*>(arg), -1); }, gate);
    EXPECT_FALSE(THREAD_is_done(call, 0));
    EXPECT_THROW(THREAD_cleanup(call), left);
    UTL_message_queue_write(gate, as_message(5));
    EXPECT_TRUE(THREAD_is_done(call, -1));
    EXPECT_EQ(THREAD_cleanup(call), as_message(5));
    UTL_message_queue_destroy(gate);
}

TEST_F(Threads, shutdown_finishes_what_is_queued_and_outlives_a_worker_that_threw) {
    static std::atomic<int> finished = 0;
    static auto* const never_cleaned_up = new std::vector<THREAD_call*>;
    THREAD_make_workers();
    for (int i = 0; i < 50; ++i)
        never_cleaned_up->push_back(THREAD_run_async([](void*) -> void* { return ++finished, nullptr; }, nullptr));
    never_cleaned_up->push_back(
        THREAD_run_async([](void*) -> void* { throw exce_class("too late", "", "", "", "w", 1, t_exit); }, nullptr));
    THREAD_shutdown();
    EXPECT_EQ(finished, 50);
    EXPECT_FALSE(THREAD_is_inited());
    EXPECT_NE(log.text().find("too late\n\n\n\nClean exit from threads.\n"), std::string::npos) << log.text();
}

TEST(MessageQueue, keeps_the_order_and_a_time_out_across_the_second_is_not_too_early) {
    using std::chrono::milliseconds;
    alert_catcher alerts;
    UTL_message_queue* queue;
    UTL_message_queue_create(&queue);
    EXPECT_EQ(UTL_message_queue_read(queue, 0), nullptr);  // polls
    for (std::intptr_t i = 1; i <= 3; ++i)
        UTL_message_queue_write(queue, as_message(i));
    for (std::intptr_t i = 1; i <= 3; ++i)
        EXPECT_EQ(UTL_message_queue_read(queue, i == 1 ? 0 : -1), as_message(i));
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
