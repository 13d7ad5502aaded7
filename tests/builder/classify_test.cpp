#include "builder/classify.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/alerts.h"

TEST(want_reg, the_edges_of_every_region) {
    const struct {
        const char* name;
        int region;
    } tiles[] = {
        {"+20-020.dsf", 1}, {"-90-180.dsf", 1}, {"+21-020.dsf", 2}, {"+48-180.dsf", 2}, {"+49-020.dsf", 3},
        {"+90-180.dsf", 3}, {"-10-020.dsf", 1}, {"-10-019.dsf", 4}, {"+24-019.dsf", 4}, {"+24+058.dsf", 4},
        {"+25-019.dsf", 5}, {"+90+058.dsf", 5}, {"-90+059.dsf", 6}, {"+90+102.dsf", 6}, {"-34+151.dsf", 7},
        {"+48+103.dsf", 7}, {"+48+154.dsf", 7}, {"+49+103.dsf", 7}, {"+50+139.dsf", 7}, {"+35+139.dsf", 7},
        {"+50+140.dsf", 3}, {"+49+154.dsf", 3}, {"+20+155.dsf", 1}, {"-90+180.dsf", 1}, {"+21+155.dsf", 2},
        {"+48+180.dsf", 2}, {"+49+155.dsf", 3}, {"+40-120", 2},     {"+40-120/", 2},    {"library.txt", 4},
        {"+40", 5},  // no longitude reads as -1
    };
    for (const auto& tile : tiles)
        for (int region = 0; region <= 10; ++region)
            EXPECT_EQ(want_reg(region, std::string("/ref/All/x/+60+100/") + tile.name), region == tile.region)
                << tile.name << " in region " << region;
}

TEST(want_reg, a_tile_off_the_globe_is_not_let_through) {
    alert_catcher alerts;
    for (const char* name : {"+91+000.dsf", "-91+000.dsf", "+00+181.dsf", "+00-181.dsf"}) {
        EXPECT_THROW(want_reg(1, std::string("/x/") + name), left);
        EXPECT_NE(alerts.last().find(std::string("\n/x/") + name), std::string::npos) << alerts.last();
    }
    EXPECT_THROW(want_reg(1, "/+40-120/ab"), std::out_of_range);
}
