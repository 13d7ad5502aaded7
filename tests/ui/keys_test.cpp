// What a key does and in which order: the widget, the window, the commands. And the names of keys.
#include "ui/keys.h"

#include <gtest/gtest.h>

#include "gfx/mnw.h"
#include "runtime/cmnd.h"
#include "ui/focus.h"

namespace {

constexpr int vk_return = 13, vk_a = 65, vk_f1 = 112, vk_enter = 187, vk_keypad_enter = 188;
int closed = 0;

class Keys : public ::testing::Test {
  protected:
    Keys() {
        mnw.wind_id = 0;
        close_open_window = [] { ++closed; };
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
    } cases[] = {{vk_return, 13, 1}, {vk_enter, 13, 1}, {vk_keypad_enter, 0, 0}, {27, 27, 2}, {8, 8, 4}, {185, '.', 4},
                 {181, '.', 4},      {46, 8, 0},        {vk_a, 'a', 0},          {0, 0xE9, 0}};
    for (const auto& c : cases)
        for (const int kind : {key_kind_down, key_kind_repeat, key_kind_up}) {
            send(kind, c.vkey, c.character);
            const bool up = kind == key_kind_up;
            EXPECT_EQ(return_hit + 2 * escape_hit + 4 * delete_hit, up ? 0 : c.hits) << c.vkey << " kind " << kind;
            EXPECT_EQ(mnw.key_char, up ? 0 : c.character) << c.vkey;
        }
}

TEST_F(Keys, ReturnClosesTheOpenWindowAndRunsNothing) {
    keys.bind(vk_return, 0, command);
    for (const int window : {2, 995}) {
        mnw.wind_id = window;
        closed = 0;
        send(key_kind_down, vk_keypad_enter);
        EXPECT_EQ(closed, 0);
        send(key_kind_down, vk_return, 13);
        send(key_kind_up, vk_return, 13);
        EXPECT_EQ(closed, 1);
    }
    EXPECT_EQ(state().pressed, 0);
    mnw.wind_id = 0;
    send(key_kind_down, vk_return, 13);
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(state().pressed, 1);
}

TEST_F(Keys, ABindingWantsItsModifiersAndHoldsItsCommandUntilTheKeyIsUp) {
    keys.bind(vk_f1, key_control | key_shift, command);
    EXPECT_EQ(keys.key_bound_to(vk_f1, key_shift), -1);
    EXPECT_EQ(keys.key_bound_to(vk_f1, key_control | key_shift), command);
    for (int wrong = 0; wrong < 8; ++wrong)
        if (wrong != (key_control | key_shift))
            send(key_kind_down, vk_f1, 0, wrong & key_shift, wrong & key_alt, wrong & key_control);
    EXPECT_EQ(state().pressed, 0);
    send(key_kind_down, vk_f1, 0, true, false, true);
    send(key_kind_repeat, vk_f1, 0, true, false, true);
    keys.run_repeat_keys();
    EXPECT_EQ(state().pressed, 1);
    EXPECT_EQ(state().held_frames, 2);
    send(key_kind_up, vk_f1);  // the modifiers were let go first
    EXPECT_EQ(state().held_frames, 0);
}

TEST_F(Keys, NoCommandStaysDownWhenItsKeyUpGoesElsewhere) {
    keys.bind(vk_a, 0, command);
    send(key_kind_down, vk_a, 'a');
    BTN_register_focus(5, queue[0], queue[1], queue[2], queue[3], &count, focus_queue_length, 500, 1);
    send(key_kind_up, vk_a, 'a');
    EXPECT_EQ(count, 1);
    EXPECT_EQ(state().held_frames, 0) << "a field got the keyboard meanwhile";
    BTN_unfocus_any();
    send(key_kind_down, vk_a, 'a');
    keys.bind(vk_a, 0, 0);
    EXPECT_EQ(state().held_frames, 0) << "the key runs something else";
    keys.bind(vk_a, 0, command);
    send(key_kind_down, vk_a, 'a');
    keys.keys_io(1);
    EXPECT_EQ(state().held_frames, 0) << "the bindings were dropped";
}

TEST_F(Keys, CommandsRestInWindow999AndWhileSwitchedOffExceptForReturn) {
    keys.bind(vk_a, 0, command);
    keys.bind(vk_enter, 0, command);
    mnw.keys_off = 1;
    send(key_kind_down, vk_a, 'a');
    EXPECT_EQ(state().pressed, 0);
    EXPECT_EQ(keys.last_vkey, vk_a);
    send(key_kind_down, vk_enter, 13);
    EXPECT_EQ(state().pressed, 1);
    mnw.keys_off = 0;
    mnw.wind_id = 999;
    send(key_kind_down, vk_a, 'a');
    EXPECT_EQ(state().pressed, 1);
}

TEST_F(Keys, EveryKeyHasOneNameThatLeadsBackToIt) {
    int named = 0;
    for (int vkey = 1; vkey < 256; ++vkey) {
        const std::string name = keys_class::vkey_to_str(vkey);
        const bool known = name != "<none>";
        named += known;
        EXPECT_EQ(keys_class::str_to_vkey(name), known ? vkey : 0);
        EXPECT_EQ(keys_class::vkey_to_code(vkey).substr(0, 8), known ? "QRNK_VK_" : std::to_string(vkey));
    }
    EXPECT_EQ(named, 110);
    const struct {
        int vkey;
        const char* name;
    } samples[] = {{33, "pageUP"}, {47, "Help"}, {109, "Numpad--"}, {135, "f24"}, {182, "\\"}, {0, "Page"}};
    for (const auto& sample : samples)
        EXPECT_EQ(keys_class::str_to_vkey(sample.name), sample.vkey);
    int vkey = 0, shift = 0;
    keys_class::ascii_to_vkey('"', vkey, shift);
    EXPECT_EQ(vkey + shift, 180 + 1);
    for (int flags = 0; flags < 8; ++flags)
        EXPECT_EQ(keys_class::str_to_flag(keys_class::flag_to_str(flags)), flags);
}

}  // namespace
