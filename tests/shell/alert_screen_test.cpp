// Alerts in the window: told to the end, answered by button or Return, and safe inside one another.
#include "shell/alert_screen.h"

#include <GL/gl.h>

#include <string>
#include <utility>
#include <vector>

#include "gfx/colr.h"
#include "shell/shell_window.h"
#include "ui/frames.h"
#include "ui/keys.h"

namespace {

struct left {};

class Alerts : public Shell {
  protected:
    Alerts() {
        alert_front.leave = [](int) { throw left(); };
        alert_front.native = [](const std::string& main_text, const std::string&) { natives.push_back(main_text); };
    }
    ~Alerts() override { alert_front.leave = nullptr; }

    static void raise(int level, const std::string& line1 = "One") {
        __MACIBM_alert(2, line1, "two", "three", "four", level, "the/place", 17);
    }
    // How many pixels of text stand between two heights of the alert window.
    static int ink(int from_y, int to_y) {
        int count = 0;
        for (int y = 259 + from_y; y < 259 + to_y; ++y)
            for (int x = 330; x < 700; ++x)
                count += last_frame.at(x, y).r < 120;
        return count;
    }
    // Runs in the first frame behind the alert.
    static void in_alert(const std::function<void()>& act) {
        acting = act;
        OGL_swap = [] {
            swap_and_keep();
            if (const auto now = std::exchange(acting, nullptr)) now();
        };
    }

    static inline std::vector<std::string> natives;
    static inline std::function<void()> acting;
};

TEST_F(Alerts, Level2TellsItsPlaceAndEndsTheProcess) {
    in_alert([this] {
        EXPECT_GT(ink(200, 214), 5) << "the first line";
        EXPECT_GT(ink(42, 56), 20);
        move_mouse(512, 768 - (259 + 18));
        desktop("click 1");
    });
    EXPECT_THROW(raise(t_exit), left);
}

TEST_F(Alerts, OneInsideAnotherTakesTheSystemsFormAndEndsTheProcess) {
    in_alert([] {
        EXPECT_EQ(ink(42, 56), 0) << "the place is for a fatal one";
        raise(t_alert, "inner");
    });
    EXPECT_THROW(raise(t_alert), left);
    EXPECT_EQ(natives, std::vector<std::string>{"inner two"});
}

TEST_F(Alerts, LinesOfAnyLengthStayInTheirWindowAndTheScreenBelowGoesOn) {
    MACIBM_startwind(1, 0);
    OGL_scissors(0, 0, 10, 10);
    glBegin(GL_QUADS);  // from the middle of a drawing
    in_alert([] {
        EXPECT_EQ(ink(216, 226), 0);
        const rgb outside = last_frame.at(20, 400);
        for (int y = 250; y < 520; y += 3)
            for (int x = 20; x < 280; x += 3)
                ASSERT_EQ(last_frame.at(x, y), outside);
        desktop("key Return");
    });
    const std::string path = "/" + std::string(255, 'w') + "/" + std::string(255, 'm');
    __MACIBM_alert(2, path, path, path, path, t_alert, "the/place", 17);
    EXPECT_EQ(acting, nullptr) << "nothing was drawn";
    EXPECT_EQ(mnw.wind_id, 2) << "the window that was named";
    EXPECT_EQ(return_hit, 0) << "the key would be seen again";
    EXPECT_TRUE(natives.empty());
}

}  // namespace
