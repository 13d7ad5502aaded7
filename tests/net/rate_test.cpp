#include "net/rate.h"

#include <gtest/gtest.h>

TEST(Rate, KeepsToItsNumberAndSavesNothingUp) {
    rate_limit limit;
    EXPECT_GT(limit.allowance(0), 1'000'000'000);
    for (const int rate : {700, 50'000, 40'000'000}) {
        limit = {};
        limit.bytes_a_second = rate;
        double time = 1000;
        std::int64_t spent = 0;
        limit.allowance(time);
        for (; time < 1010; time += limit.next_allowance(time) + 0.003) {
            const std::int64_t now = limit.allowance(time);
            ASSERT_LE(now, rate / 10 + 1);
            limit.spend(now);
            spent += now;
            ASSERT_LT(limit.next_allowance(time), 0.05);
        }
        EXPECT_NEAR(static_cast<double>(spent), 10.0 * rate, 0.05 * 10 * rate);
        EXPECT_LE(limit.allowance(time + 3600), rate / 10 + 1) << "an hour's rest is no hour's worth of bytes";
    }
}

TEST(Rate, TheCommandLineWinsAndUnderstandsUnits) {
    rate_limit limit;
    limit.bytes_a_second = 5;
    EXPECT_TRUE(read_rate("0", limit.of_this_run));
    EXPECT_EQ(limit.now(), 0);
    EXPECT_TRUE(read_rate("500k", limit.of_this_run));
    EXPECT_EQ(limit.now(), 500'000);
    EXPECT_TRUE(read_rate("2147M", limit.of_this_run));
    for (const char* wrong : {"", "k", "-1", "1.5M", "2148M", "1G", "1 k", "1kk"})
        EXPECT_FALSE(read_rate(wrong, limit.of_this_run)) << wrong;
}
