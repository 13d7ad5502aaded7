// Bars and boxes: no seams, no gaps, right sizes.
#include "ui/frames.h"

#include <gtest/gtest.h>

#include "gfx/builtin.h"
#include "gfx/gl_window.h"

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

TEST_F(Frames, ABarIsAsWideAsAskedWhateverTheWidthIsCutTo) {
    for (const int width : {52, 53, 100, 333, 880}) {
        window.clear();
        BTN_frame1(bar_trough, 500, 300, static_cast<float>(width), 0);
        const std::vector<int> box = window.grab().extent(black);
        const int even = (width + 1) / 2 * 2;
        EXPECT_EQ(box[0], 500 - even / 2) << width;
        EXPECT_EQ(box[2], 500 + even / 2) << width;
    }
}

TEST_F(Frames, TheBodyOfEveryBoxIsOneFlatColour) {
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
        EXPECT_NEAR(right, 132 + 884 * i / 100, 8) << i;
        last = right;
    }
}

}  // namespace
