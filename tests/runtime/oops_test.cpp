#include "runtime/oops.h"

#include <gtest/gtest.h>

#include "runtime/opened_log.h"
#include "runtime/product.h"
#include "runtime/thread.h"
#include "support/alerts.h"

static std::string trail;  // what the front end was asked for, in order

// What the report on memory, which comes before the alert's own lines, leaves in the log.
static const std::string memory_line =
    "OK check MemoryLog.txt! I just sent him a dump from This is the dump_mem_stats call from the following code: "
    "if(type==t_exit || type == t_alert || recursive_error)\n";
static const std::string shown = "show one (place/file line 42) 3\n", logged = "two\n\nfour\n(place/file line 42)\n";

static void raise_alert(int type, const std::string& line1 = "one") {
    __MACIBM_alert(3, line1, "two", "", "four", type, "place/file", 42);
}

class Alerts : public testing::Test {
  protected:
    Alerts() {
        trail.clear();
        app_done = 0;
        alert_front.show = [](const exce_class& e, const std::string& place, int next_window) {
            trail += "show " + e.line1 + " " + place + " " + std::to_string(next_window) + "\n";
        };
        alert_front.native = [](const std::string& main_text, const std::string& secondary_text) {
            trail += "native " + main_text + "|" + secondary_text + "\n";
        };
        alert_front.save_settings = [] { trail += "save\n"; };
        alert_front.close_display = [](int save) { trail += "close " + std::to_string(save) + "\n"; };
    }
    alert_catcher catcher;  // a fatal alert throws `left`; puts the front end back at its end
    opened_log log;
};

TEST_F(Alerts, a_warning_is_shown_logged_and_returns_and_a_question_is_not_logged) {
    raise_alert(0);
    raise_alert(t_alert);
    EXPECT_EQ(trail, shown + shown);
    EXPECT_EQ(log.text(), memory_line + "\none\n" + logged);
    EXPECT_EQ(app_done, 0);
}

TEST_F(Alerts, a_fatal_one_is_logged_and_closes_without_saving) {
    EXPECT_THROW(raise_alert(t_exit), left);
    EXPECT_EQ(trail, shown + "close 0\n");
    EXPECT_EQ(log.text(), memory_line + "\none\n" + logged);
    EXPECT_FALSE(xer.is_open());
    EXPECT_EQ(app_done, 1);
}

TEST_F(Alerts, one_raised_while_another_shows_opens_no_second_screen_and_ends_the_program) {
    alert_front.show = [](const exce_class& e, const std::string&, int) {
        trail += "show " + e.line1 + "\n";
        raise_alert(t_alert, "inner");
        trail += "not reached\n";
    };
    EXPECT_THROW(raise_alert(t_alert, "outer"), left);
    EXPECT_EQ(trail, "show outer\nnative inner two| four\nclose 0\n");
    EXPECT_EQ(log.text(), memory_line + "\ninner\n" + logged);
}

TEST_F(Alerts, a_failure_of_the_closing_ends_the_program_without_a_circle) {
    alert_front.close_display = [](int) { raise_alert(t_exit, "closing"); };
    EXPECT_THROW(raise_alert(t_exit), left);
    EXPECT_EQ(trail, shown + "native closing two| four\n");

    trail.clear();
    alert_front.show = [](const exce_class&, const std::string&, int) { trail += "shown on a closed display\n"; };
    alert_front.close_display = [](int) { raise_alert(t_alert, "closing"); };
    MACIBM_finishup(1);
    EXPECT_EQ(trail, "save\nnative closing two| four\n");
}

TEST_F(Alerts, an_over_long_native_text_is_fatal_and_then_cut) {
    alert_front.show = nullptr;
    const std::string fits(495, 'x');  // "xxx two" has 499
    raise_alert(t_alert, fits);
    EXPECT_EQ(trail, "native " + fits + " two| four\n");

    trail.clear();
    EXPECT_THROW(raise_alert(t_alert, fits + "x"), left);
    const std::string second = "String too long! " + fits + "x two";
    EXPECT_EQ(trail, "native " + second.substr(0, 499) + "| \nclose 0\n");
}

TEST_F(Alerts, a_report_off_the_main_thread_shows_nothing_and_ends_the_run) {
    THREAD_init();
    UTL_thread thread, id, join;
    const auto report = [](void*) -> void* {
        exce_class("a", "b", "c", "d", "f", 7, t_exit).Report();
        return nullptr;
    };
    THREAD_create(report, nullptr, &thread, &id, &join, 0);
    UTL_thread_join(&thread, join);
    EXPECT_EQ(trail, "save\nclose 1\n");
    EXPECT_EQ(app_done, 1);
    EXPECT_FALSE(THREAD_is_inited());
    EXPECT_EQ(log.text(), "EXCEPTION REPORTED FROM THREAD!!  File: f, line 7.\na\nb\nc\nd\nClean exit from threads.\n");
}

TEST(AlertsByDefault, go_to_standard_error_and_end_the_process_though_workers_wait) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            THREAD_init();
            THREAD_make_workers();
            raise_alert(t_exit);
        },
        testing::ExitedWithCode(1), "^one two\n four\n$");
}
