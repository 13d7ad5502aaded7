// The installer's own window after start-up, on a private display, with real mouse and key events.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>

#include "display/display.h"
#include "gfx/gl_window.h"
#include "gfx/images/tex.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "runtime/oops.h"
#include "shell/pump.h"
#include "shell/shell.h"
#include "support/scratch.h"

inline std::function<void()> on_update;
inline picture last_frame(1024, 768);

// The frame as it is shown: what stands in the back buffer after a swap is anybody's guess.
inline void swap_and_keep() {
    OGL_screenshot(0);
    std::copy_n(scratch_array, last_frame.bytes.size(), last_frame.bytes.begin());
    display_swap();
}

class Shell : public ::testing::Test {
  protected:
    Shell() {
        need_test_display();
        setenv("XDG_CONFIG_HOME", home.path().c_str(), 1);
        on_update = nullptr;
        shell_hooks.update = [] {
            if (on_update) on_update();
        };
        char name[] = "velaris-installer", scale[] = "--scale=1";
        char* argv[] = {name, scale, nullptr};
        MACIBM_init(2, argv);
        OGL_swap = swap_and_keep;
        MACIBM_event_proc();
    }
    ~Shell() override { MACIBM_finishup(1); }

    // xdotool answers when the display has taken the event.
    static void desktop(const std::string& what) {
        ASSERT_EQ(std::system(("xdotool " + what + " >/dev/null 2>&1").c_str()), 0) << what;
    }
    void move_mouse(int x, int y) {
        desktop("search --onlyvisible --name 'Velaris Installer' mousemove --window %1 " + std::to_string(x) + " " +
                std::to_string(y));
    }
    // Frames until `there` holds; false after five seconds.
    static bool frames_until(const std::function<bool()>& there) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (std::chrono::steady_clock::now() < end) {
            MACIBM_event_proc();
            if (there()) return true;
        }
        return false;
    }

    scratch home;
};
