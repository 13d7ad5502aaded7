// Start-up and the frame, on a real display with real mouse and key events.
#include "shell/pump.h"

#include <cmath>

#include "runtime/xtim.h"
#include "shell/shell_window.h"
#include "ui/frames.h"
#include "ui/keys.h"

namespace {

TEST_F(Shell, StartUpShowsItsPanelAndABarThatGrows) {
    const float half = 0.5f;
    MACIBM_show_init("Half way.", &half);
    EXPECT_EQ(last_frame.at(700, 700), (rgb{51, 67, 86})) << "the window's colour comes from the atlas";
    const rgb fill = last_frame.at(300, 15), trough = last_frame.at(900, 15);
    EXPECT_GT(difference(fill, trough), 60);
    EXPECT_LT(difference(last_frame.at(490, 15), fill), 20);
    EXPECT_LT(difference(last_frame.at(540, 15), trough), 20);
}

TEST_F(Shell, TheCanvasFollowsWhatTheDesktopMakesOfTheWindow) {
    EXPECT_EQ(MACIBM_make_context(1), 0) << "there is no second display";
    display_resize_window(1700, 700);  // as a desktop does that lays windows out itself
    ASSERT_TRUE(frames_until([] { return mnw.screen_dx == 1700; }));
    EXPECT_EQ(mnw.scale, 0.875f);
    EXPECT_NEAR(mnw.wind_x * mnw.scale, (1700 - 896) / 2, 1) << "in the middle";
    move_mouse(402, 699);
    ASSERT_TRUE(frames_until([] { return std::abs(mnw.mouse_x) < 1.5f; }));
    EXPECT_LT(mnw.mouse_y, 0) << "below the canvas";
}

TEST_F(Shell, APressIsSeenWhereItFellInOneFrameOnlyWithBothItsEdges) {
    move_mouse(300, 200);
    ASSERT_TRUE(frames_until([] { return std::abs(mnw.mouse_x - 300) < 1; }));
    EXPECT_NEAR(mnw.mouse_y, 768 - 200, 1);

    int downs = 0, ups = 0, clicks = 0;
    on_update = [&] {
        downs += mnw.mouse_down;
        ups += mnw.mouse_up;
        clicks += mnw.mouse_click;
    };
    desktop("click 1");
    ASSERT_TRUE(frames_until([&] { return ups > 0; }));
    for (int i = 0; i < 5; ++i)
        MACIBM_event_proc();
    EXPECT_EQ(downs, 1);
    EXPECT_EQ(ups, 1);
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(mnw.mouse_held, 0);

    desktop("mousedown 1");
    ASSERT_TRUE(frames_until([] { return mnw.mouse_held && mnw.mouse_repeat; }));
    desktop("mouseup 1");
    ASSERT_TRUE(frames_until([] { return !mnw.mouse_held; }));
    EXPECT_EQ(mnw.mouse_repeat, 0);
    EXPECT_EQ(clicks, 1) << "a long press is no click";
}

TEST_F(Shell, TheWheelAddsUpAndKeysReachTheScreenAndTheHook) {
    static int function_keys = 0;
    shell_hooks.function_key = [](int vkey) { function_keys = 100 * function_keys + vkey; };
    move_mouse(300, 200);
    desktop("click 4 click 4 click 5 key F5 key F12 type Q");
    EXPECT_TRUE(frames_until([] { return mnw.wheel_delta == 1; })) << mnw.wheel_delta;
    EXPECT_TRUE(frames_until([] { return mnw.key_char == 'Q'; })) << mnw.key_char;
    EXPECT_EQ(function_keys, 100 * 116 + 123);
    shell_hooks.function_key = nullptr;
}

// A slow frame finds many events waiting.
TEST_F(Shell, WhatFollowsAPressOrAReturnMeetsWhatThatBroughtUp) {
    move_mouse(300, 200);
    std::string seen;
    on_update = [&] {
        if (mnw.mouse_down) seen += 'p';
        if (return_hit) seen += 'R';
        if (mnw.key_event && !return_hit) seen += 'k';
    };
    desktop("click 1 click 1 key a key b key Return key c click 1");
    EXPECT_TRUE(frames_until([&] { return seen == "ppkRkp"; })) << seen;
}

TEST_F(Shell, AClickThatClosesAWindowDoesNotReachTheScreenBelow) {
    int seen = 0;
    on_update = [&] { seen += mnw.mouse_down; };
    MACIBM_startwind(2, 0);  // 600 by 380, centred: its top is 194 from the surface's
    move_mouse(212 + 300, 194 + 10);
    desktop("click 1");
    for (int i = 0; i < 20; ++i)
        MACIBM_event_proc();
    EXPECT_EQ(mnw.wind_id, 2) << "the middle of the title closes nothing";
    move_mouse(212 + 600 - 12, 194 + 10);
    desktop("click 1");
    ASSERT_TRUE(frames_until([] { return mnw.wind_id == 0; }));
    for (int i = 0; i < 5; ++i)
        MACIBM_event_proc();
    EXPECT_EQ(seen, 0);
}

TEST_F(Shell, ADialogOpenedByTheScreenDoesNotRunTheScreenInsideItself) {
    int depth = 0, deepest = 0, frames = 0;
    bool opened = false;
    on_update = [&] {
        deepest = std::max(deepest, ++depth);
        if (!opened) {
            opened = true;
            MACIBM_startwind(2, 0);
            while (mnw.wind_id == 2) {
                MACIBM_event_proc();
                if (++frames == 5) MACIBM_startwind(0, 0);
            }
            MACIBM_event_proc();  // a frame more before the screen goes on
        }
        --depth;
    };
    MACIBM_event_proc();
    EXPECT_EQ(deepest, 1);
    EXPECT_EQ(frames, 5);
}

TEST_F(Shell, AtRestFewFramesAreDrawnWhileHiddenNoneAndTheApplicationGoesOn) {
    static int drawn, updates;
    OGL_swap = [] {
        ++drawn;
        display_swap();
    };
    on_update = [] { ++updates; };
    const auto frames_drawn_in = [](float seconds) {
        drawn = updates = 0;
        for (const float start = xtim.real_time; xtim.real_time - start < seconds;)
            MACIBM_event_proc();
        return drawn;
    };
    frames_until([] { return xtim.real_time - mnw.time_moved > 1; });
    EXPECT_LE(frames_drawn_in(1), 12);
    EXPECT_GE(updates, 8);
    shell_hooks.is_working = [] { return true; };
    EXPECT_GT(frames_drawn_in(0.5f), 15);
    desktop("search --onlyvisible --name 'Velaris Installer' windowunmap");
    ASSERT_TRUE(frames_until([] { return ren.hidden; }));
    EXPECT_EQ(frames_drawn_in(0.3f), 0);
    EXPECT_GT(updates, 5);
    shell_hooks.is_working = nullptr;
    desktop("search --name 'Velaris Installer' windowmap");
    ASSERT_TRUE(frames_until([] { return !ren.hidden; }));
    EXPECT_GT(frames_drawn_in(0.3f), 1);
}

TEST_F(Shell, HelpComesUpAfterASecondOfStillness) {
    move_mouse(700, 300);
    frames_until([] { return std::abs(mnw.mouse_x - 700) < 1; });
    on_update = [] {
        OGL_plot_back_col();
        stls.help = "What this is for, in a sentence.";
    };
    const float start = xtim.real_time;
    const rgb plain = (MACIBM_event_proc(), last_frame.at(400, 500));
    ASSERT_TRUE(frames_until([&] { return last_frame.at(400, 500) != plain; }));
    EXPECT_GT(xtim.real_time - start, 0.8f);
    on_update = [] { OGL_plot_back_col(); };
    EXPECT_TRUE(frames_until([&] { return last_frame.at(400, 500) == plain; })) << "the text lasts one frame";
}

}  // namespace
