#include "runtime/xtim.h"

#include <gtest/gtest.h>

#include <cmath>

// A clock that is told the time, frame after frame.
struct told_clock {
    xtim_class clock;
    double now = 100;  // the start is of no account

    void run(int frames, double period, int window = 0) {
        for (int i = 0; i < frames; ++i)
            clock.update_at(now += period, window);
    }
};

TEST(FrameClock, a_steady_rate_is_found_from_the_first_measurement) {
    told_clock t;
    t.run(11, 0.02);
    EXPECT_FLOAT_EQ(t.clock.prd_ratio, 1.0f);
    t.run(500, 0.02);
    EXPECT_NEAR(t.clock.prd_act, 0.02f, 1e-6);
    EXPECT_EQ(t.clock.prd_sim, t.clock.prd_act);
    EXPECT_EQ(t.clock.prd_sim_signed, t.clock.prd_act);
    t.run(2000, 0.01);
    EXPECT_NEAR(t.clock.prd_act, 0.01f, 1e-4);
}

TEST(FrameClock, a_stall_moves_the_period_by_one_step_and_never_past_its_limits) {
    told_clock t;
    t.run(11, 0.02);
    t.now += 3;
    t.run(10, 0.02);
    EXPECT_FLOAT_EQ(t.clock.prd_ratio, 1.5f);
    EXPECT_NEAR(t.clock.prd_act, 0.02 * std::pow(1.5, 0.25), 1e-6);
    t.run(400, 3);
    EXPECT_FLOAT_EQ(t.clock.prd_act, 0.05263158f);
    t.run(2000, 0.00001);
    EXPECT_FLOAT_EQ(t.clock.prd_ratio, 0.5f);
    EXPECT_FLOAT_EQ(t.clock.prd_act, 0.0010000999f);
}

TEST(FrameClock, time_on_a_modal_screen_or_another_window_is_not_measured) {
    told_clock t;
    t.run(15, 0.02, 1);
    for (const int modal : {995, 997, 999}) {
        t.run(50, 0.2, modal);
        t.run(10, 0.02, 1);
        EXPECT_NEAR(t.clock.prd_act, 0.02f, 1e-5) << modal;
    }
    t.run(60, 0.04, 0);  // a store of its own
    EXPECT_GT(t.clock.prd_act, 0.03f);
    t.run(11, 0.02, 1);
    EXPECT_NEAR(t.clock.prd_act, 0.02f, 1e-5);
    EXPECT_FLOAT_EQ(t.clock.prd_ratio, 1.0f);
}

TEST(FrameClock, flags_rise_for_one_frame_after_their_period) {
    told_clock t;
    t.run(1, 0);
    EXPECT_EQ(t.clock.real_time, 0.0f);
    int fired[once_count] = {};
    for (int frame = 0; frame < 1000; ++frame) {
        t.run(1, 0.01);
        for (int i = 0; i < once_count; ++i) {
            fired[i] += t.clock.once_act[i];
            EXPECT_EQ(t.clock.once_sim[i], 0);  // simulated time stands still
        }
        EXPECT_TRUE(t.clock.real_time > 1 || !fired[ot1]);
    }
    EXPECT_NEAR(t.clock.real_time, 10.0f, 1e-3);
    EXPECT_EQ(fired[ot01], 0);
    EXPECT_NEAR(fired[ot1], 9.5, 0.6);
    EXPECT_NEAR(fired[ot5], 49, 2);
    EXPECT_NEAR(fired[ot40], 333, 2);  // stored at the firing: every third frame of 0.01, not 40 a second
    t.run(1, 0.011);
    EXPECT_TRUE(t.clock.once_act[ot01]);
    t.now -= 5;
    t.run(1, 0);
    EXPECT_TRUE(t.clock.once_act[ot1]);  // a clock that was set back still works
}

TEST(FrameClock, days_and_times_are_split) {
    xtim_class clock;
    const int cases[][3] = {{0, 0, 1}, {30, 0, 31}, {31, 1, 1}, {90, 3, 1}, {364, 11, 31}};
    for (const auto& [day_of_year, month, day] : cases) {
        int got[2];
        clock.day_of_year = day_of_year;
        clock.current_month_day(&got[0], &got[1]);
        EXPECT_TRUE(got[0] == month && got[1] == day) << day_of_year;
    }
    float hrs, min, sec;
    xtim_class::xtim_hrs_min_sec(3 * 3600 + 25 * 60 + 45.9f, &hrs, &min, &sec);
    EXPECT_TRUE(hrs == 3 && min == 25 && sec == 45);
}
