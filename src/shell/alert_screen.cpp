#include "shell/alert_screen.h"

#include <array>

#include "gfx/colr.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "runtime/oops.h"
#include "shell/pump.h"
#include "ui/butn.h"
#include "ui/frames.h"
#include "ui/keys.h"

namespace {

constexpr std::array<float, 4> line_y = {205, 165, 125, 85};
constexpr float place_y = 45;
constexpr int rows_of_line = 4;  // what lies between two lines

struct alert_texts {
    std::array<std::string, 4> lines;
    std::string place;
    bool fatal;
};

alert_texts fitted(const exce_class& alert, const std::string& place) {
    const float wrap = 0.9f * mnw.wind_dx;
    const auto fit = [&](const std::string& text) { return fit_text(latin1_of_path(text), wrap, rows_of_line); };
    alert_texts texts = {
        {fit(alert.line1), fit(alert.line2), fit(alert.line3), fit(alert.line4)}, "", alert.level == t_exit};
    if (texts.fatal) texts.place = fit_text(place, wrap, 1);
    return texts;
}

// One frame; 1 when the button was pressed.
int draw(const alert_texts& texts) {
    const float middle = mnw.wind_dx / 2, wrap = 0.9f * mnw.wind_dx;
    MACIBM_draw_backdrop();
    BTN_fillwin(1, 21);
    BTN_title_line(texts.fatal ? tone_bad : tone_ask);
    float next_x = 0, next_y = 0;
    BTN_subwin(0, box_panel, -1, 35, -1, -1, "", &next_x, &next_y);
    for (std::size_t i = 0; i < texts.lines.size(); ++i)
        OGL_string(colour_label, middle, line_y[i], texts.lines[i], wrap, charset_text, align_centre);
    if (!texts.place.empty()) OGL_string(colour_label, middle, place_y, texts.place, wrap, charset_text, align_centre);
    BTN_role(role_primary);
    return BTN_action(middle, 18, -1, 0, 1, stls.ok, "-");
}

}  // namespace

void alert_screen_show(const exce_class& alert, const std::string& place, int next_window) {
    OGL_recover();
    const float mouse_x = mnw.mouse_x, mouse_y = mnw.mouse_y;
    stls.title = "Velaris Installer";
    MACIBM_startwind(wind_alert, 0);
    const alert_texts texts = fitted(alert, place);
    return_hit = 0;  // of a frame before the alert was there
    while (mnw.wind_id == wind_alert) {
        if (draw(texts) || return_hit || escape_hit) break;
        MACIBM_event_proc();
    }
    return_hit = 0;
    if (alert.level == t_exit) return;
    MACIBM_startwind(next_window, 0);
    mnw.mouse_x = mouse_x;
    mnw.mouse_y = mouse_y;
}
