// What is seen of bars, boxes and widgets: no seams, no gaps, right sizes and places.
#include "ui/frames.h"

#include <gtest/gtest.h>

#include <functional>

#include "gfx/builtin.h"
#include "gfx/gl_window.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "ui/butn.h"
#include "ui/digits.h"
#include "ui/list.h"
#include "ui/slider.h"

namespace {

class Frames : public ::testing::Test {
  protected:
    Frames() {
        recall_ins_texes();
        take_palette_from_atlas();
        window.clear();
    }
    gl_window window;
    const rgb black{0, 0, 0};
};

TEST_F(Frames, ABarIsAsWideAsAskedAndABoxIsOfOneColour) {
    for (const int width : {52, 53, 100, 333, 880}) {
        window.clear();
        BTN_frame1(bar_trough, 500, 300, static_cast<float>(width), 0);
        const std::vector<int> box = window.grab().extent(black);
        const int half = (width + 1) / 2;
        EXPECT_EQ(std::pair(box[0], box[2]), std::pair(500 - half, 500 + half)) << width;
    }
    for (const int type : {box_window_corners, box_window, box_panel, box_bright, box_dark, box_thin, box_picture}) {
        window.clear();
        BTN_frame2(type, 200, 200, 431, 277, "");
        const picture drawn = window.grab();
        for (int x = 260; x < 580; x += 3)
            for (int y = 250; y < 420; y += 3)
                ASSERT_LE(difference(drawn.at(x, y), drawn.at(400, 330)), 2) << type << " at " << x << "," << y;
    }
}

TEST_F(Frames, TheProgressBarMovesInStepsThatStayCrisp) {
    int last = 0;
    for (int i = 4; i <= 100; ++i) {
        window.clear();
        BTN_progress_bar(132, 1016, 15, static_cast<float>(i) / 100);
        const picture drawn = window.grab();
        int right = 144;
        const rgb fill = drawn.at(144, 15);
        while (right < 1016 && difference(drawn.at(right, 15), fill) < 30)
            ++right;
        EXPECT_GE(right, last) << i;
        EXPECT_NEAR(right, 132 + 8.84 * i, 8) << i;
        last = right;
    }
}

TEST_F(Frames, EachWidgetIsDrawnAroundThePlaceWhereItReacts) {
    mnw.wind_id = wind_main;
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

TEST_F(Frames, ShapesLieOneUponAnotherInTheOrderInWhichTheyAreDrawn) {
    const unsigned colours[] = {0x112233, 0x445566, 0x778899, 0xAABBCC};
    for (int i = 0; i < 3; ++i) {
        const auto in = static_cast<float>(3 * i);
        fill_rounded({100 + in, 100 + in, 200 - in, 130 - in}, 4, colours[i], 1);
    }
    line_rounded({110, 108, 190, 122}, 4, 2, colours[3], 1);
    const picture drawn = window.grab();
    const struct {
        int x, y;
        rgb colour;
    } seen[] = {{101, 115, {17, 34, 51}},    {104, 115, {68, 85, 102}},   {108, 115, {119, 136, 153}},
                {111, 115, {170, 187, 204}}, {150, 115, {119, 136, 153}}, {100, 100, {0, 0, 0}},
                {199, 115, {17, 34, 51}},    {150, 100, {17, 34, 51}},    {150, 129, {17, 34, 51}}};
    for (const auto& s : seen)
        EXPECT_LE(difference(drawn.at(s.x, s.y), s.colour), 2) << s.x << "," << s.y << " " << drawn.at(s.x, s.y);
}

}  // namespace
