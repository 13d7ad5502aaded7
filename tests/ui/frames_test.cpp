// Bars and boxes: no seams, no gaps, right sizes, and no picture at all for a type that does not exist.
#include "ui/frames.h"

#include <gtest/gtest.h>

#include "gfx/builtin.h"
#include "gfx/gl_window.h"
#include "gfx/mnw.h"
#include "support/alerts.h"

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

TEST_F(Frames, TheMiddleOfABarHasNoSeam) {
    BTN_frame1(bar_fill, 500, 300, 701, 0);
    const picture drawn = window.grab();
    for (int x = 170; x < 830; ++x)
        for (const int y : {296, 300, 304})
            ASSERT_LE(difference(drawn.at(x, y), drawn.at(500, y)), 1) << x;
}

TEST_F(Frames, TheBodyOfEveryBoxIsOneFlatColour) {
    for (const int type : {box_window_corners, box_window, box_panel, box_bright, box_dark, box_thin, box_picture}) {
        window.clear();
        BTN_frame2(type, 200, 200, 431, 277, "");
        const picture drawn = window.grab();
        for (int x = 260; x < 580; x += 3)
            for (int y = 250; y < 420; y += 3)
                ASSERT_LE(difference(drawn.at(x, y), drawn.at(400, 330)), 2) << type << " at " << x << "," << y;
        EXPECT_NE(drawn.at(201, 330), black) << type;
        EXPECT_EQ(drawn.at(180, 330), black) << type;
    }
}

TEST_F(Frames, ABoxLeftOpenFillsItsWindowAndTellsWhereTheNextGoes) {
    mnw.wind_dx = 600;
    mnw.wind_dy = 380;
    float next_x = 0, next_y = 0;
    BTN_subwin(0, box_panel, -1, -1, -1, 70, "", &next_x, &next_y);
    EXPECT_FLOAT_EQ(next_x, 600);
    EXPECT_FLOAT_EQ(next_y, 90);
    BTN_subwin(5, box_panel, -1, next_y, -1, -1, "", &next_x, &next_y);
    EXPECT_FLOAT_EQ(next_y, 380 - 28 - 5 + 10);
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

TEST_F(Frames, ABadTypeIsNamedByItsLastingPlace) {
    const struct {
        void (*call)();
        const char* words;
    } cases[] = {
        {[] { BTN_frame0(5, 1, 1, 1); }, "Bad BTN_frame0 call!\n\n\n\n(HLutils/OOPS_cpp/butn line 301)"},
        {[] { BTN_frame0(6, 1.5f, 1, 1); }, "BTN_frame0 non-int x_center!\n\n\n\n(HLutils/OOPS_cpp/butn line 302)"},
        {[] { BTN_frame1(6, 1, 1, 1, 0); }, "Bad BTN_frame1 call!\n\n\n\n(HLutils/OOPS_cpp/butn line 375)"},
        {[] { BTN_frame2(10, 1, 1, 1, 1, ""); }, "Bad BTN_frame2 call!\n\n\n\n(HLutils/OOPS_cpp/butn line 439)"},
    };
    for (const auto& c : cases) {
        alert_catcher alerts;
        EXPECT_THROW(c.call(), left);
        EXPECT_EQ(alerts.last(), c.words);
    }
}

}  // namespace
