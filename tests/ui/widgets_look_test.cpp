// Widgets as they look: drawn where they react, and drawn from the right cells.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "gfx/builtin.h"
#include "gfx/gl_window.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "ui/butn.h"
#include "ui/digits.h"
#include "ui/frames.h"
#include "ui/list.h"
#include "ui/menu.h"
#include "ui/slider.h"

namespace {

class WidgetsLook : public ::testing::Test {
  protected:
    WidgetsLook() {
        recall_ins_texes();
        take_palette_from_atlas();
        mnw.wind_id = 0;
        mnw.mouse_x = mnw.mouse_y = -100;
        OGL_swap = [] {};
    }
    picture drawn(const std::function<void()>& draw) {
        window.clear();
        draw();
        return window.grab();
    }
    gl_window window;
    const rgb black{0, 0, 0};
};

TEST_F(WidgetsLook, EachIsDrawnAroundThePlaceWhereItReacts) {
    int number = 1;
    float value = 123;
    const struct {
        const char* name;
        std::function<void()> draw;
        std::vector<int> reacts;
        int air;  // what the picture may have around it
    } cases[] = {
        {"button", [] { BTN_action(300, 300, 80, 0, 1, "Go", "-"); }, {260, 290, 340, 310}, 4},
        {"radio", [&] { BTN_bool(300, 300, &number, "", 1); }, {292, 296, 308, 312}, 2},
        {"tab", [&] { BTN_tab(2, 3, &number, 1, ""); }, {179, 621, 269, 647}, 10},
        {"digits", [&] { BTN_flt_range(300, 300, &value, 3, 0, 0, 999, ""); }, {300, 282, 330, 324}, 14},
        {"list", [&] { BTN_textlist(300, 300, &number, "Mac-Linux", ""); }, {283, 296, 337, 310}, 16},
        {"slider", [&] { BTN_vert_slider(0, 300, 200, 300, 0, 9, &number); }, {290, 180, 310, 320}, 4},
        {"lying", [&] { BTN_horz_slider(300, 300, 100, 2, 0, 9, &value, 1, "", ""); }, {300, 293, 400, 307}, 12},
    };
    for (const auto& c : cases) {
        const std::vector<int> box = drawn(c.draw).extent(black);
        for (const int i : {0, 1, 2, 3})
            EXPECT_NEAR(box[static_cast<std::size_t>(i)], c.reacts[static_cast<std::size_t>(i)], c.air) << c.name << i;
    }
}

TEST_F(WidgetsLook, ALongLabelBreaksNearestItsMiddle) {
    const auto label = [this](const std::string& text, int side) {
        return drawn([&] { BTN_util_draw_label(500, 300, side, text, 0); }).bytes;
    };
    const auto lines = [this](const std::string& first, const std::string& second, int align) {
        return drawn([&] {
                   OGL_string(43, 500, second.empty() ? 300 : 305, first, 9999, charset_text, align);
                   OGL_string(43, 500, 295, second, 9999, charset_text, align);
               })
            .bytes;
    };
    EXPECT_EQ(label("ab cd ef gh ij", 0), lines("ab cd", "ef gh ij", align_right)) << "a tie goes to the earlier";
    EXPECT_EQ(label("destination/folder", 2), lines("destination/", "folder", align_left));
    EXPECT_EQ(label("ab cd ef gh ij", 1), lines("ab cd ef gh ij", "", align_centre));
    EXPECT_EQ(label("abcdefghijklm", 2), lines("abcdefghijklm", "", align_left)) << "no place to break";
    EXPECT_EQ(label("-ab cd ef gh ij", 0), lines("ab cd ef gh ij", "", align_right));
}

TEST_F(WidgetsLook, AnOpenListShowsItsRowsAndLightsTheOneUnderTheMouse) {
    int row = 0;
    mnw.mouse_x = 300;
    mnw.mouse_y = 303;
    mnw.mouse_down = 1;
    BTN_textlist(300, 300, &row, "Macintosh-Windows-Linux", "");
    mnw.mouse_x = mnw.mouse_y = -100;
    const picture plain = drawn(standard_gui);
    const auto& items = menu[popup_menu].items;
    EXPECT_NEAR(plain.extent(black)[1], items[2].bottom, 16);
    EXPECT_NEAR(plain.extent(black)[3], items[0].top, 5);
    mnw.mouse_x = 300;
    mnw.mouse_y = static_cast<float>(items[1].bottom);
    const picture lit = drawn(standard_gui);
    for (int y = items[2].bottom; y < items[0].top; ++y)
        EXPECT_EQ(lit.at(items[1].right - 1, y) != plain.at(items[1].right - 1, y),
                  y >= items[1].bottom && y < items[1].top)
            << y;
}

}  // namespace
