#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "gfx/builtin.h"
#include "gfx/gl_window.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "ui/butn.h"
#include "ui/digits.h"
#include "ui/list.h"
#include "ui/slider.h"

TEST(WidgetsLook, EachIsDrawnAroundThePlaceWhereItReacts) {
    gl_window window;
    recall_ins_texes();
    take_palette_from_atlas();
    mnw.wind_id = 0;
    mnw.mouse_x = mnw.mouse_y = -100;
    OGL_swap = [] {};
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
        window.clear();
        c.draw();
        const std::vector<int> box = window.grab().extent({0, 0, 0});
        for (const int i : {0, 1, 2, 3})
            EXPECT_NEAR(box[static_cast<std::size_t>(i)], c.reacts[static_cast<std::size_t>(i)], c.air) << c.name << i;
    }
}
