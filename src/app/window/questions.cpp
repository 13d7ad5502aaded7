#include "app/window/questions.h"

#include "app/window/sprites.h"
#include "app/words.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "shell/pump.h"
#include "ui/butn.h"
#include "ui/frames.h"

static bool agreed = false;

static void draw_agreement() {
    constexpr float wrap = 400, left = 20;
    OGL_plot_back_col();
    BTN_fillwin(1, 21);
    float next_x = 0, next_y = 0;
    BTN_subwin(0, box_thin, -1, 50, -1, -1, "", &next_x, &next_y);
    const auto say = [](float y, const char* text) {
        OGL_string(colour_text, left, y, text, wrap, charset_text, align_left);
    };
    say(250, "Use Velaris for whatever you like.");
    say(230, "You agree to not make copies of Velaris.");
    say(210,
        "You agree to not distribute the artwork from Velaris, OR ANY DERIVATIVE OF THAT ARTWORK, without permission "
        "from Tarvex.");
    const auto answer = [](bool yes) {
        agreed = yes;
        MACIBM_startwind(wind_main, 0);
    };
    if (interface_rect(300, 10, 832, 166, 85, 22, 1, tint_green)) answer(false);
    if (interface_rect(400, 10, 918, 166, 59, 22, 1, tint_green)) answer(true);
}

int handle_EULA() {
    if (agreed) return 1;
    MACIBM_startwind(wind_agreement, 0);
    while (mnw.wind_id == wind_agreement) {
        draw_agreement();
        MACIBM_event_proc();
    }
    return agreed;
}

namespace {

struct answer_button {
    float x, y, width;
    const char* label[2];  // by whether the file is to be removed
    int answer;
};
constexpr answer_button answers[] = {
    {96, 53, 160, {"OVERWRITE THE OLD FILE", "DELETE THE OLD FILE"}, 1},
    {96, 28, 160, {"KEEP THE OLD FILE", "KEEP THE OLD FILE"}, 2},
    {308, 53, 260, {"OVERWRITE EVERY OLD FILE IN THIS DIRECTORY", "DELETE EVERY OLD FILE IN THIS DIRECTORY"}, 4},
    {308, 28, 260, {"KEEP EVERY OLD FILE IN THIS DIRECTORY", "KEEP EVERY OLD FILE IN THIS DIRECTORY"}, 5},
    {584, 28, 200, {"CANCEL THE WHOLE INSTALLATION!", "CANCEL THE WHOLE INSTALLATION!"}, 3},
};
constexpr int cancel = 3;

// One frame; the answer, or 0.
int draw_changed_file(const std::string& file, int removing) {
    constexpr float left = 20;
    const float wrap = mnw.wind_dx - 40;
    OGL_plot_back_col();
    BTN_fillwin(1, 21);
    const auto say = [wrap](float y, const std::string& text) {
        OGL_string(colour_text, left, y, text, wrap, charset_text, align_left);
    };
    say(100, removing ? "I am about to DELETE:" : "I am about to install:");
    say(90, fit_text(latin1_of_path(file), wrap, 1));
    say(80, removing ? "because we no longer use this file, but it appears you have modified it. What to do?"
                     : "but it appears you have modified this file. What to do?");
    for (const answer_button& button : answers)
        if (BTN_action(button.x, button.y, button.width, 0, 1, button.label[removing != 0], "-")) return button.answer;
    return 0;
}

}  // namespace

int select_alert(const std::string& file, int removing) {
    stls.title = "You have changed a file";
    MACIBM_startwind(wind_changed_file, 0);
    for (;;) {
        if (mnw.wind_id != wind_changed_file) return cancel;
        const int answer = draw_changed_file(file, removing);
        if (answer) {
            MACIBM_startwind(wind_main, 0);
            return answer;
        }
        MACIBM_event_proc();
    }
}
