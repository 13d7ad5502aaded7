#include <gtest/gtest.h>

#include <algorithm>

#include "gfx/colr.h"
#include "support/alerts.h"

TEST(colr, labels_pulse_at_the_rate_told) {
    float low = 1, high = 0, before = 0;
    int rises = 0;
    for (int i = 0; i <= 10000; ++i) {
        colr.pulse(i / 1000.0);
        low = std::min(low, colr.blink);
        high = std::max(high, colr.blink);
        rises += before < 0.7f && colr.blink >= 0.7f;
        before = colr.blink;
        ASSERT_EQ(colr.rgb(80)[0], colr.blink);
        ASSERT_FLOAT_EQ(colr.rgb(80)[1], 0.3f * colr.blink);
    }
    EXPECT_NEAR(low, 0.4, 0.001);
    EXPECT_NEAR(high, 1.0, 0.001);
    EXPECT_EQ(rises, 32);  // in ten seconds
}

TEST(colr, tint_is_held_up_and_never_down) {
    colr.tint[0] = 0.1f;
    colr.tint[1] = 0.9f;
    colr.set_lites_for_interface();
    EXPECT_EQ(colr.tint[0], 0.75f);
    EXPECT_EQ(colr.tint[1], 0.9f);
}

TEST(colr, an_index_outside_the_table_writes_nothing) {
    const alert_catcher alerts;
    EXPECT_THROW(colr.assign(-1, 1, 1, 1), left);
    EXPECT_THROW(colr.assign(colour_count, 1, 1, 1), left);
}
