// What widgets do with the mouse and the keys. Without a drawing context every drawing call does nothing, so that these
// cases need no display.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "gfx/builtin.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "runtime/xtim.h"
#include "ui/butn.h"
#include "ui/digits.h"
#include "ui/focus.h"
#include "ui/frames.h"
#include "ui/list.h"
#include "ui/menu.h"
#include "ui/slider.h"

namespace {

class Widgets : public ::testing::Test {
  protected:
    Widgets() {
        recall_ins_texes();
        OGL_swap = [] {};
        mnw.wind_id = 0;
    }
    static void point(float x, float y) {
        BTN_begin_focus_ring();
        stls.help.clear();
        mnw.mouse_x = x, mnw.mouse_y = y;
        mnw.mouse_down = mnw.mouse_held = 0;
    }
    static void press(float x, float y) {
        point(x, y);
        mnw.mouse_down = mnw.mouse_held = 1;
    }
    int number = 5;
    float value = 0;
};

TEST_F(Widgets, EachReactsUpToItsEdgesAndNotUnderAMenu) {
    const auto digits = [&](bool step) {
        value = 50;
        BTN_unfocus_any();
        const int changed = BTN_flt_range(100, 100, &value, 3, 0, 0, 999, "|{?h");
        return (step ? changed : focus_id) != 0;
    };
    const auto list_opens = [&] {
        BTN_textlist(100, 100, &number, "WW-W", "a{?h");
        const bool opened = active_popup_code != 0;
        active_popup_code = 0, mnw.menu_open = -1;
        return opened;
    };
    const struct {
        const char* name;
        std::function<bool()> acted;
        float left, bottom, right, top;
    } areas[] = {
        {"button", [] { return BTN_action(100, 100, 80, 0, 0, "Go{?h", "-"); }, 60, 90, 140, 110},
        {"box", [&] { return BTN_bool(100, 100, &number, "a|b{?h", 0); }, 92, 96, 108, 112},
        {"tab", [&] { return BTN_tab(1, 2, &number, 1, "a{?h"); }, 91, 653, 181, 679},
        {"arrows", [&] { return digits(true); }, 100, 82, 130, 124},
        {"digits", [&] { return digits(false); }, 100, 98, 130, 108},
        {"list", list_opens, 84, 98, 136, 108},
    };
    for (const auto& a : areas) {
        for (const auto& [x, y, out] : {std::tuple(a.left, a.bottom, -0.6f), std::tuple(a.right, a.top, 0.6f)}) {
            press(x, y);
            EXPECT_TRUE(a.acted()) << a.name << out;
            press(x + out, y);
            EXPECT_FALSE(a.acted()) << a.name << out;
            press(x, y + out);
            EXPECT_FALSE(a.acted()) << a.name << out;
        }
        point((a.left + a.right) / 2, (a.bottom + a.top) / 2);
        EXPECT_FALSE(a.acted()) << a.name;
        EXPECT_EQ(stls.help, "h") << a.name;
        mnw.mouse_down = 1;
        mnw.menu_open = 3;
        EXPECT_FALSE(a.acted()) << a.name;
        mnw.menu_open = -1;
    }
}

TEST_F(Widgets, AScrollSliderStepsPagesDragsAndRepeats) {
    const auto draw = [&] { return BTN_vert_slider(1, 20, 100, 300, 0, 100, &number); };
    const float presses[][3] = {{20, 320, 49}, {31, 301, 49}, {20, 321, 50}, {32, 310, 50}, {20, 80, 51},
                                {20, 99, 51},  {20, 79, 50},  {20, 300, 40}, {9, 100, 60}};
    for (const auto& [x, y, after] : presses) {
        number = 50;  // the thumb's centre is 199.5
        press(x, y);
        EXPECT_EQ(draw(), 0);
        EXPECT_EQ(number, after) << x << "," << y;
        mnw.mouse_held = 0;
    }
    number = 50;
    press(20, 205);
    EXPECT_EQ(draw(), 1);
    mnw.mouse_x = 500;  // the grip holds wherever the mouse goes
    for (const int end : {0, 100}) {
        mnw.mouse_y = end ? -1000 : 289;
        EXPECT_EQ(draw(), 1);
        EXPECT_EQ(number, end);
    }
    point(20, 310);
    EXPECT_EQ(draw(), 0);
    mnw.mouse_held = mnw.mouse_repeat = 1;
    for (const int tick : {0, 1, 0, 1}) {
        xtim.once_act[ot5] = tick;
        draw();
    }
    EXPECT_EQ(number, 98);
}

TEST_F(Widgets, ADigitFieldTakesPressesAndKeysAtTheirDigit) {
    // An arrow of the keyboard is written "<", ">", "^" or "v", a key that goes up "!".
    const auto type = [](const std::string& keys) {
        const std::string arrows = "<^>v";
        for (const char c : keys)
            if (const auto arrow = arrows.find(c); arrow != std::string::npos)
                BTN_dispatch_to_focus(0, 37 + static_cast<int>(arrow), key_goes_down);
            else
                BTN_dispatch_to_focus(c == '!' ? '7' : c, 0, c == '!' ? key_goes_up : key_goes_down);
    };
    const struct {
        const char* keys;
        float x, y, before, min, max, after;  // a second press at x, y unless 0
    } cases[] = {{"456", 0, 0, -12.3f, -99, 99, -45.6f},
                 {"<v", 0, 0, 5, -99, 99, 4.9f},
                 {">>>^", 0, 0, 0, -99, 99, 10},
                 {"+", 0, 0, -5, -9, -1, -1},
                 {"!", 0, 0, 5, -99, 99, 5},
                 {"", 124, 90, 3.5f, 0, 99, 3.4f},
                 {"", 104, 115, 3.5f, 0, 99, 13.5f}};
    for (const auto& c : cases) {
        press(103, 104);
        BTN_flt_range(100, 100, &value, 3, 1, c.min, c.max, "");
        type(c.keys);
        point(c.x, c.y);
        mnw.mouse_down = c.x > 0;
        value = c.before;
        EXPECT_EQ(BTN_flt_range(100, 100, &value, 3, 1, c.min, c.max, ""), c.after != c.before) << c.keys << c.x;
        EXPECT_FLOAT_EQ(value, c.after) << c.keys << c.x;
    }
    number = 2147483647;
    BTN_int(0, 0, &number, 12, 1, "");
    EXPECT_EQ(number, 2147483647);
}

TEST_F(Widgets, AChoiceIsCollectedAndAClickOutsideClosesForGood) {
    // The row below the widget, up to its last unit; above the list; the widget itself, where the current row lies.
    const float clicks[][3] = {{296, 2, 1}, {350, 1, 0}, {303, 1, 1}};
    for (const auto& [y, after, chosen] : clicks) {
        number = 1;
        const auto draw = [&] { return BTN_textlist(200, 300, &number, "Macintosh-Windows-Linux", ""); };
        press(200, 303);
        EXPECT_EQ(draw(), 0);
        EXPECT_EQ(mnw.menu_open, popup_menu);
        press(200, y);
        EXPECT_EQ(click_in_menu(), 1);
        EXPECT_EQ(mnw.mouse_down, 0) << "the widgets below must not see the click";
        EXPECT_EQ(draw(), chosen);
        EXPECT_EQ(number, after);
        EXPECT_EQ(draw(), 0);
        EXPECT_EQ(mnw.menu_open, -1);
    }
    EXPECT_EQ(click_in_menu(), 0);
}

}  // namespace
