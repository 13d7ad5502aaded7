#include "app/window/questions.h"

#include <optional>

#include "app/window/sprites.h"
#include "app/window/tones.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "shell/pump.h"
#include "ui/butn.h"
#include "ui/frames.h"
#include "ui/keys.h"

static bool agreed = false;

static void draw_agreement() {
    constexpr float wrap = 400, left = 20;
    MACIBM_draw_backdrop();
    BTN_fillwin(1, 21);
    float next_x = 0, next_y = 0;
    BTN_subwin(0, box_thin, -1, 50, -1, -1, "", &next_x, &next_y);
    const auto say = [](float y, const char* text) {
        OGL_string(colour_text, left, y, text, wrap, charset_text, align_left);
    };
    for (int i = 0; i < 3; ++i)
        say(250.0f - 20.0f * static_cast<float>(i), agreement[i]);
    const auto answer = [](bool yes) {
        agreed = yes;
        MACIBM_startwind(wind_main, 0);
    };
    if (interface_button(button_refuse, role_plain)) answer(false);
    return_hit = 0;  // whoever agrees has put the focus there, or clicked
    if (interface_button(button_agree, role_primary)) answer(true);
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
    changed_answer answer;
    button_role role;
};
constexpr answer_button answers[] = {
    {96, 53, 160, changed_answer::do_it, role_danger},   {96, 28, 160, changed_answer::keep, role_primary},
    {308, 53, 260, changed_answer::do_all, role_danger}, {308, 28, 260, changed_answer::keep_all, role_plain},
    {584, 53, 200, changed_answer::backup, role_plain},  {584, 28, 200, changed_answer::cancel, role_plain}};

// One frame; the answer, if it was given.
std::optional<changed_answer> draw_changed_file(const std::string& file, bool removing, const std::string& trouble) {
    constexpr float left = 20;
    const float wrap = mnw.wind_dx - 40;
    MACIBM_draw_backdrop();
    BTN_fillwin(1, 21);
    BTN_title_line(tone_ask);
    const auto say = [wrap](float y, const std::string& text) {
        OGL_string(colour_text, left, y, text, wrap, charset_text, align_left);
    };
    const changed_question question = question_about(removing);
    say(100, question.above);
    say(90, fit_text(latin1_of_path(file), wrap, 1));
    say(80, trouble.empty() ? question.below : "It cannot be read: " + trouble);
    for (const answer_button& button : answers) {
        BTN_role(button.role);
        if (BTN_action(button.x, button.y, button.width, 0, 1, answer_words(button.answer, removing), "-"))
            return button.answer;
    }
    return std::nullopt;
}

}  // namespace

changed_answer select_alert(const std::string& file, bool removing, const std::string& trouble) {
    stls.title = "You have changed a file";
    MACIBM_startwind(wind_changed_file, 0);
    for (;;) {
        if (mnw.wind_id != wind_changed_file) return changed_answer::cancel;
        const auto answer = draw_changed_file(file, removing, trouble);
        if (answer) {
            MACIBM_startwind(wind_main, 0);
            return *answer;
        }
        MACIBM_event_proc();
    }
}
