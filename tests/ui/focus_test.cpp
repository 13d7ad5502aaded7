// Which widget a key goes to, and whether it is used.
#include "ui/focus.h"

#include <gtest/gtest.h>

#include "display/virtual_keys.h"
#include "gfx/mnw.h"

namespace {

constexpr int take_all = 1023;

struct {
    int chars[focus_queue_length], vkeys[focus_queue_length], flags[focus_queue_length], ids[focus_queue_length];
    int count = 0;
} queue;  // of one widget function

int show(int id, int accept, int take) {
    return BTN_register_focus(id, queue.chars, queue.vkeys, queue.flags, queue.ids, &queue.count, focus_queue_length,
                              accept, take);
}

TEST(Focus, TabEntersTheRingAndGoesRoundBothWays) {
    EXPECT_EQ(BTN_dispatch_to_focus(9, vk_tab, key_goes_down), 0) << "there is nothing to go to";
    for (const int id : {10, 20, 30})
        show(id, accept_letters, 0);
    focus_id = 99;  // has left the screen
    EXPECT_EQ(BTN_dispatch_to_focus('a', 65, key_goes_down), 0);
    const struct {
        int flags, used, reaches;
    } steps[] = {{key_goes_down, 1, 10}, {0, 1, 20},        {key_goes_up, 0, 20}, {0, 1, 30}, {0, 1, 10},
                 {key_shift, 1, 30},     {key_shift, 1, 20}};
    for (const auto& step : steps) {
        EXPECT_EQ(BTN_dispatch_to_focus(9, vk_tab, step.flags), step.used);
        EXPECT_EQ(focus_id, step.reaches);
    }
    EXPECT_EQ(queue.count, 0);
}

TEST(Focus, AWidgetGetsTheKeysOfItsClassesAndNoOthers) {
    const struct {
        int c, vkey, accept;
    } keys[] = {{27, 27, accept_escape},   {8, 46, accept_delete},      {8, 8, accept_delete},
                {13, 13, accept_return},   {13, 187, accept_return},    {0, 33, accept_moves},
                {31, 40, accept_moves},    {'+', 107, accept_signs},    {'-', 177, accept_signs},
                {'0', 48, accept_digits},  {'9', 105, accept_digits},   {'A', 65, accept_letters},
                {'z', 90, accept_letters}, {' ', 32, accept_printable}, {0xE9, 0, accept_printable},
                {0, 112, accept_others},   {0x85, 0, accept_others}};
    for (const auto& key : keys)
        for (const bool wanted : {true, false}) {
            BTN_begin_focus_ring();
            show(7, wanted ? key.accept : take_all & ~key.accept, 1);
            queue.count = 0;
            EXPECT_EQ(BTN_dispatch_to_focus(key.c, key.vkey, 0), wanted) << key.c << "," << key.vkey;
            EXPECT_EQ(queue.count, wanted) << key.c << "," << key.vkey;
        }
    mnw.wind_id = wind_alert;
    EXPECT_EQ(BTN_dispatch_to_focus(0x85, 0, 0), 0) << "an alert keeps keys from the fields below it";
}

// The keys of a widget that is gone would lie in the shared queue for ever and overrun it.
TEST(Focus, AFullQueueKeepsTheKeysOfTheLivingWidget) {
    show(1, take_all, 1);
    for (int i = 0; i < focus_queue_length + 10; ++i)
        BTN_dispatch_to_focus('a', 65, 0);
    EXPECT_EQ(queue.count, focus_queue_length);
    show(2, take_all, 1);
    EXPECT_EQ(BTN_dispatch_to_focus('b', 66, 0), 1);
    EXPECT_EQ(queue.count, 1);
    EXPECT_EQ(queue.chars[0], 'b');
    EXPECT_EQ(queue.ids[0], 2);
}

}  // namespace
