// Text fields. Most needs no screen: without a drawing context every drawing call does nothing.
#include "ui/field.h"

#include <gtest/gtest.h>

#include "gfx/builtin.h"
#include "gfx/gl_window.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "runtime/xtim.h"
#include "ui/focus.h"

namespace {

constexpr float x = 100, width = 60;  // of both fields
constexpr char go_left = 28, go_right = 29, backspace = 8;

class Field : public ::testing::Test {
  protected:
    Field() {
        recall_ins_texes();
        mnw.wind_id = 0;
    }
    // One frame with two fields; the second stands below the first.
    int frame(int auto_focus = 0) {
        BTN_begin_focus_ring();
        const int first_changed = BTN_enterstring(x, 200, &first, 5, "", width, auto_focus);
        BTN_enterstring(x, 100, &second, 99, "", width, 0);
        mnw.mouse_down = 0;
        ++xtim.frame_count;
        return first_changed;
    }
    void press(float at_x, float at_y, int auto_focus = 0) {
        BTN_unfocus_any();
        mnw.mouse_down = 1;
        mnw.mouse_x = at_x;
        mnw.mouse_y = at_y;
        frame(auto_focus);
    }
    static void key(int character, int vkey = 0, int flags = key_goes_down) {
        BTN_dispatch_to_focus(character, vkey, flags);
        BTN_dispatch_to_focus(character, vkey, (flags & ~key_goes_down) | key_goes_up);
    }
    static void tab() { key(9, 9); }
    static void type(const std::string& text) {
        for (const char c : text)
            key(static_cast<unsigned char>(c), c == backspace ? 8 : c == go_left ? 37 : c == go_right ? 39 : 0);
    }

    std::string first = "abcd", second = "123";
};

TEST_F(Field, TheFirstAutomaticFieldTakesAFreeKeyboardOnly) {
    frame(1);
    EXPECT_EQ(focus_id, widget_id(x, 200));
    press(x, 100);
    frame(1);
    EXPECT_EQ(focus_id, widget_id(x, 100));
}

TEST_F(Field, KeepsToItsLengthAndItsBytes) {
    press(x + 60, 200);
    type("efg");
    frame();
    EXPECT_EQ(first, "abcde");
    type({go_left, 'x'});
    frame();
    EXPECT_EQ(first, "abcdx") << "the caret stands behind the x";
    type({backspace, backspace});
    for (const int dropped : {0x85, 127, 1})
        key(dropped);
    type("\xE9");
    frame();
    EXPECT_EQ(first, "abc\xE9");
}

TEST_F(Field, KeysGoToTheFieldThatHadTheKeyboardWhenTheyWereTyped) {
    press(x + 7, 108);  // behind the 1
    type("-");
    frame();
    EXPECT_EQ(second, "1-23");
    press(x + 60, 200);
    type("e");
    tab();
    type("4");
    frame();
    EXPECT_EQ(first, "abcde");
    EXPECT_EQ(second, "4");
    type("5");
    tab();  // and round to the field that is drawn earlier
    type("f");
    frame();
    EXPECT_EQ(first, "f");
    EXPECT_EQ(second, "45");
}

TEST_F(Field, ManyKeysInOneFrameAndKeysForAFieldThatWentBlockNothing) {
    press(x + 60, 100);
    type(std::string(500, 'w'));
    frame();
    EXPECT_GT(second.size(), 20u);
    type(std::string(500, 'w'));
    BTN_unfocus_any();
    BTN_begin_focus_ring();
    BTN_enterstring(x, 200, &first, 5, "", width, 1);  // the other one is gone
    type("ab");
    BTN_begin_focus_ring();
    EXPECT_EQ(BTN_enterstring(x, 200, &first, 5, "", width, 1), 1);
    EXPECT_EQ(first, "ab");
}

TEST_F(Field, TheArrayFormStaysInItsArray) {
    char text[6] = {'a', 'b', 0, 0, 0, '!'};
    for (const bool second_frame : {false, true}) {
        BTN_begin_focus_ring();
        EXPECT_EQ(BTN_enterstring(x, 100, text, 5, "", width, 1), second_frame);
        type({go_right, 'c', 'd', 'e', 'f'});
    }
    EXPECT_EQ(std::string(text, 6), std::string("abcd\0!", 6));
}

TEST_F(Field, TheCaretStaysInSightAndTheTextInTheBox) {
    gl_window window;
    recall_ins_texes();
    take_palette_from_atlas();
    const auto look = [&] {
        window.clear();
        mnw.mouse_x = -100;
        frame();
        return window.grab();
    };
    const int left = static_cast<int>(x), right = static_cast<int>(x + width);
    second = std::string(30, 'W');
    const picture rest = look();
    const auto differs = [&](const picture& drawn, int column) {
        for (int row = 99; row < 107; ++row)
            if (difference(drawn.at(column, row), rest.at(column, row)) > 20) return true;
        return false;
    };
    press(x + 1, 104);
    EXPECT_TRUE(differs(look(), left));
    type(std::string(29, go_right));
    const picture at_end = look();
    EXPECT_TRUE(differs(at_end, right)) << "scrolled to the caret at the right edge";
    for (int column = 0; column < 300; ++column)
        EXPECT_TRUE((column >= left - 1 && column <= right + 1) || !differs(at_end, column)) << column;
    tab();
    EXPECT_FALSE(differs(look(), left + 30)) << "without the keyboard it shows its start";
}

}  // namespace
