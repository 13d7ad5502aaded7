// What a key does and in which order: the widget, the window, the commands.
#include "ui/keys.h"

#include <gtest/gtest.h>

#include "display/virtual_keys.h"
#include "gfx/mnw.h"
#include "runtime/cmnd.h"
#include "ui/focus.h"

namespace {

class Keys : public ::testing::Test {
  protected:
    Keys() {
        mnw.wind_id = 0;
        keys.keys_io(0);
        command = cmnd.add_cmd("test", "Counts.");
    }
    static void send(int kind, int vkey, int character = 0, bool shift = false, bool alt = false,
                     bool control = false) {
        return_hit = escape_hit = delete_hit = mnw.key_char = 0;
        keys.handle_key_raw(kind, vkey, character, shift, alt, control);
    }
    const cmnd_class::command& state() const { return cmnd.all()[static_cast<std::size_t>(command)]; }

    int command;
    int queue[4][focus_queue_length], count = 0;
};

TEST_F(Keys, ScreensSeeReturnEscapeDeleteAndCharacters) {
    const struct {
        int vkey, character, hits;  // 1 Return, 2 Escape, 4 Delete
    } cases[] = {{vk_return, 13, 1}, {vk_enter, 13, 1},   {vk_numpad_enter, 0, 0}, {vk_escape, 27, 2},
                 {vk_back, 8, 4},    {vk_period, '.', 4}, {181, '.', 4},           {46, 8, 0},
                 {vk_a, 'a', 0},     {0, 0xE9, 0}};
    for (const auto& c : cases)
        for (const int kind : {key_kind_down, key_kind_repeat, key_kind_up}) {
            send(kind, c.vkey, c.character);
            const bool up = kind == key_kind_up;
            EXPECT_EQ(return_hit + 2 * escape_hit + 4 * delete_hit, up ? 0 : c.hits) << c.vkey << " kind " << kind;
            EXPECT_EQ(mnw.key_char, up ? 0 : c.character) << c.vkey;
        }
}

TEST_F(Keys, ABindingWantsItsModifiersAndNoCommandStaysDownWithoutItsKey) {
    keys.bind(vk_f1, key_control | key_shift, command);
    for (int wrong = 0; wrong < 8; ++wrong)
        if (wrong != (key_control | key_shift))
            send(key_kind_down, vk_f1, 0, wrong & key_shift, wrong & key_alt, wrong & key_control);
    EXPECT_EQ(state().pressed, 0);
    const auto hold = [&] {
        keys.bind(vk_f1, key_control | key_shift, command);
        for (const int kind : {key_kind_down, key_kind_repeat})
            send(kind, vk_f1, 0, true, false, true);
        keys.run_repeat_keys();
        EXPECT_EQ(state().held_frames, 2);
    };
    hold();
    send(key_kind_up, vk_f1);
    EXPECT_EQ(state().held_frames, 0) << "the modifiers were let go first";
    hold();
    BTN_register_focus(5, queue[0], queue[1], queue[2], queue[3], &count, focus_queue_length, 1023, 1);
    send(key_kind_up, vk_f1);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(state().held_frames, 0) << "a field got the keyboard meanwhile";
    BTN_unfocus_any();
    hold();
    keys.bind(vk_f1, key_control | key_shift, 0);
    EXPECT_EQ(state().held_frames, 0) << "the key runs something else";
    hold();
    keys.keys_io(1);
    EXPECT_EQ(state().held_frames, 0) << "the bindings were dropped";
    EXPECT_EQ(state().pressed, 4);
}

}  // namespace
