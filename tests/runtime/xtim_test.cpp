#include "runtime/xtim.h"

#include <gtest/gtest.h>

#include <cmath>

// A clock that is told the time, frame after frame.
struct told_clock {
    xtim_class clock;
    double now = 100;  // the start is of no account

    void run(int frames, double period) {
        for (int i = 0; i < frames; ++i)
            clock.update_at(now += period, 0);
    }
};

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
    EXPECT_FLOAT_EQ(t.clock.prd_act, 0.0010000999f);
}

TEST(FrameClock, flags_rise_for_one_frame_after_their_period) {
    told_clock t;
    t.run(1, 0);
    int fired[once_count] = {};
    for (int frame = 0; frame < 1000; ++frame) {
        t.run(1, 0.01);
        for (int i = 0; i < once_count; ++i) {
            fired[i] += t.clock.once_act[i];
            EXPECT_EQ(t.clock.once_sim[i], 0);  // simulated time stands still
        }
    }
    EXPECT_NEAR(t.clock.real_time, 10.0f, 1e-3);
    EXPECT_NEAR(fired[ot1], 9.5, 0.6);
    EXPECT_NEAR(fired[ot40], 333, 2);  // stored at the firing: every third frame of 0.01, not 40 a second
    t.now -= 5;
    t.run(1, 0);
    EXPECT_TRUE(t.clock.once_act[ot1]);  // a clock that was set back still works
}
