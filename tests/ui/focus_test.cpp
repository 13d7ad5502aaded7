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

TEST(Focus, TabGoesInReadingOrderAndArrowsStayInAGroup) {
    int first_choice = 0, second_choice = 0;
    const struct {
        int id;
        box_place face;
        const void* choice;
        bool chosen;
    } drawn[] = {{10, {500, 10, 600, 30}, nullptr, false},        {11, {10, 12, 40, 28}, nullptr, false},
                 {12, {10, 80, 24, 94}, &first_choice, false},    {13, {10, 60, 24, 74}, &first_choice, true},
                 {14, {10, 100, 24, 114}, &second_choice, false}, {15, {90, 100, 104, 114}, &second_choice, false}};
    const auto frame = [&] {
        BTN_begin_focus_ring();
        for (const auto& one : drawn) {
            show(one.id, accept_press, 0);
            BTN_focus_place(one.id, one.face, look_around);
            if (one.choice) BTN_focus_choice(one.id, one.choice, one.chosen);
        }
    };
    frame();
    EXPECT_FALSE(focus_seen);
    for (const int reached : {14, 15, 13, 11, 10, 14}) {
        BTN_dispatch_to_focus(9, vk_tab, key_goes_down);
        EXPECT_EQ(focus_id, reached);
    }
    EXPECT_TRUE(focus_seen);
    focus_id = 13;
    for (const int reached : {12, 13, 12}) {
        queue.count = 0;
        EXPECT_EQ(BTN_dispatch_to_focus(0, vk_up, key_goes_down), 1);
        EXPECT_EQ(focus_id, reached) << "round the group";
        EXPECT_EQ(queue.ids[0], reached) << "and presses it";
    }
    EXPECT_EQ(BTN_dispatch_to_focus('x', 'X', key_goes_down), 0);
    widgets_asleep = true;
    frame();
    EXPECT_TRUE(focus_ring.empty()) << "what lies below a dialog";
    widgets_asleep = false;
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

}  // namespace
