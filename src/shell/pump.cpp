#include "shell/pump.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <vector>

#include "display/display.h"
#include "display/virtual_keys.h"
#include "gfx/colr.h"
#include "gfx/oglp.h"
#include "gfx/scale.h"
#include "gfx/text.h"
#include "gfx/tman.h"
#include "runtime/oops.h"
#include "runtime/thread.h"
#include "runtime/xtim.h"
#include "shell/shell.h"
#include "ui/focus.h"
#include "ui/frames.h"
#include "ui/keys.h"
#include "ui/menu.h"

namespace {

constexpr int tick_ms = 17, alert_wait_ms = 167;  // one and ten ticks of a sixtieth of a second
constexpr int rest_ms = 100;
constexpr float lively_seconds = 0.5f;  // after an event: a press may want a second look, a letter a repeat
constexpr float click_seconds = 0.25f;
constexpr float help_after_seconds = 1, hide_after_seconds = 10;

// Of the process; none of it is ever reset.
struct {
    bool quit_wanted;    // the desktop asked for the end; stays set
    int windows_opened;  // a count
    bool main_shown;     // the application has drawn its main screen
    bool in_backdrop;    // ... and draws it now, below a dialog
    bool in_update;      // a modal loop inside the application's update pumps frames of its own
    float last_event;    // when one came, in seconds of xtim.real_time
    double last_frame;   // when one began, in seconds of xtim.seconds()
} pump{};

// Logical windows that are smaller than the canvas; all of them are modal.
const struct {
    int number;
    const char* title;  // null: as it stands in stls
    float dx, dy;
} windows[] = {
    {wind_agreement, "EULA", 500, 300},    {wind_prefs, "Prefs", 600, 380},   {wind_folder, nullptr, 600, 460},
    {wind_folder_wait, nullptr, 420, 120}, {wind_livery, "Livery", 561, 474}, {wind_message, nullptr, 600, 300},
    {wind_alert, nullptr, 420, 250},       {wind_notice, nullptr, 300, 166},  {wind_changed_file, nullptr, 700, 146},
    {wind_tall, nullptr, 561, 474},        {wind_keys, nullptr, 330, 474},
};

// At rest a frame comes with the next event, at the latest after a tenth of a second for what changes by itself.
int wait_ms() {
    if (mnw.wind_id == wind_alert) return alert_wait_ms;
    const bool working = shell_hooks.is_working && shell_hooks.is_working();
    const float since = xtim.real_time - std::max(pump.last_event, mnw.time_moved);
    const bool lively = !ren.hidden && (since < lively_seconds || mnw.mouse_held || mnw.key_held);
    if (!working && !lively) return rest_ms;
    return shell_hooks.may_use_max_cpu && shell_hooks.may_use_max_cpu() ? 0 : tick_ms;
}

void handle_key(const display_event& event, int event_kind) {
    mnw.key_held = event_kind != key_kind_up;
    mnw.key_event |= mnw.key_held;
    keys.handle_key_raw(event_kind, event.vkey, event.character, event.shift, event.alt, event.control);
    const bool is_function_key = event.vkey >= vk_f1 && event.vkey <= vk_f24;
    if (is_function_key && event_kind == key_kind_down && shell_hooks.function_key)
        shell_hooks.function_key(event.vkey);
}

void handle_event(const display_event& event) {
    switch (event.kind) {
        case display_event_kind::key_down:
            handle_key(event, key_kind_down);
            break;
        case display_event_kind::key_up:
            handle_key(event, key_kind_up);
            break;
        case display_event_kind::key_repeat:
            handle_key(event, key_kind_repeat);
            break;
        case display_event_kind::mouse_down:
            scale_mouse(event.x, event.y);
            mnw.mouse_down = 1;
            MACIBM_handleclick(0);
            break;
        case display_event_kind::mouse_up:
            mnw.mouse_up = 1;
            break;
        case display_event_kind::wheel:
            mnw.wheel_delta += event.wheel;
            break;
        case display_event_kind::quit:
            pump.quit_wanted = true;
            break;
        case display_event_kind::resized:
            MACIBM_follow_surface();
            break;
        case display_event_kind::display_changed:
            MACIBM_setres(1);
            MACIBM_remake_context();
            break;
        case display_event_kind::redraw:
        case display_event_kind::activated:
            break;  // every frame redraws everything
    }
}

bool is_press(const display_event& event) {
    return event.kind == display_event_kind::mouse_down;
}

bool is_key(const display_event& event) {
    return event.kind == display_event_kind::key_down || event.kind == display_event_kind::key_repeat;
}

// A press, or a key that acts on the screen as one does.
bool acts_on_screen(const display_event& event) {
    const bool key = event.vkey == vk_return || event.vkey == vk_enter || event.vkey == vk_escape ||
                     (event.vkey == vk_space && BTN_focus_presses());
    return is_press(event) || (is_key(event) && key);
}

// Everything that is there, up to what may be meant for the screen as it will be: anything behind a press or a Return,
// and those behind a key that a field has yet to take. It waits for the next frame, so that a slow one misleads
// nothing.
void take_events() {
    static std::vector<display_event> fresh;
    static std::deque<display_event> waiting;
    const int wait = waiting.empty() ? wait_ms() : 0;
    display_take_events(wait, fresh);
    // A mouse that moves wakes the wait without an event of ours, up to a thousand times a second.
    const auto too_early = [&] { return static_cast<int>(1000 * (xtim.seconds() - pump.last_frame)) + 1 < tick_ms; };
    while (wait >= tick_ms && fresh.empty() && too_early())
        display_take_events(1, fresh);
    pump.last_frame = xtim.seconds();
    ren.hidden = display_is_hidden();
    if (!fresh.empty()) pump.last_event = xtim.real_time;
    waiting.insert(waiting.end(), fresh.begin(), fresh.end());
    bool acted = false, typed = false;
    while (!waiting.empty()) {
        const display_event event = waiting.front();
        const bool acts = acts_on_screen(event);
        if ((acted && (acts || is_key(event))) || (typed && acts)) break;
        waiting.pop_front();  // before it is handled: that may pump frames of its own
        acted |= acts;
        typed |= is_key(event);
        handle_event(event);
    }
    // A press keeps the place it had; otherwise the mouse is where it is now.
    if (mnw.mouse_down) return;
    int x = 0, y = 0;
    display_get_mouse(x, y);
    scale_mouse(x, y);
}

void update_mouse_timing() {
    static float last_x = 0, last_y = 0;
    const float now = xtim.real_time;
    if (std::fabs(mnw.mouse_x - last_x) > 0.5f || std::fabs(mnw.mouse_y - last_y) > 0.5f) {
        mnw.time_moved = now;
        last_x = mnw.mouse_x;
        last_y = mnw.mouse_y;
    }
    mnw.mouse_quick = mnw.mouse_down && mnw.time_pressed > 0 && now - mnw.time_pressed < click_seconds;
    if (mnw.mouse_down) {
        mnw.mouse_held = 1;
        mnw.time_pressed = now;
    }
    mnw.mouse_click = mnw.mouse_up && now - mnw.time_pressed < click_seconds;  // both may come in one slow frame
    if (mnw.mouse_up) mnw.mouse_held = 0;
    mnw.mouse_repeat = mnw.mouse_held && now - mnw.time_pressed > click_seconds;
}

void update_clock() {
    xtim.xtim_update(mnw.wind_id);
    colr.pulse(static_cast<double>(xtim.real_time));
    update_mouse_timing();
    if (mnw.mouse_down) BTN_unfocus_any();  // a field under the mouse takes the keyboard back when it is drawn
}

void take_quit() {
    if (pump.quit_wanted && mnw.modal_wind && mnw.wind_id != wind_alert) MACIBM_startwind(wind_main, 0);
}

// Closes what lies on top: an open list, else a window that is no question.
void take_escape() {
    if (!escape_hit) return;
    if (mnw.menu_open != -1)
        close_popup();
    else if (mnw.wind_id == wind_prefs || mnw.wind_id == wind_agreement || mnw.wind_id == wind_folder_wait)
        MACIBM_startwind(wind_main, 0);
}

void update_application() {
    if (mnw.modal_wind || pump.in_update || !shell_hooks.update) return;
    pump.in_update = pump.main_shown = true;
    shell_hooks.update();
    pump.in_update = false;
    xtim.xtim_running = 0;
}

void draw_help(const std::string& text) {
    constexpr float width = 400, margin = 10;
    const std::size_t lines = text.size() / 50;
    const float height = std::clamp(static_cast<float>(lines) * line_height + 20.0f, 60.0f, 300.0f);
    const float left = 10 - mnw.wind_x, top = surface_dy() - mnw.wind_y - 20;
    const float x = std::max(mnw.mouse_x - width - 15, left + margin);
    const float y = std::min(mnw.mouse_y + 15, top - height - margin);
    BTN_frame2(box_bright, x - margin, y - margin, width + 2 * margin, height + 2 * margin, "");
    OGL_string(colour_help, x + 3, y + height - line_height, text, 394, charset_text, align_left);
}

void draw_cursor(int code) {
    static const struct {
        int column, row;
    } cells[] = {{0, 1}, {1, 1}, {0, 0}, {1, 0}, {2, 1}, {3, 1}, {2, 0}, {3, 0}, {4, 1}, {4, 0}, {-1, 1}, {-1, 0}};
    if (code < 3 || code > 14) return;
    const auto& cell = cells[code - 3];
    // The two turning arrows have a form of their own while the button is held.
    const bool held = mnw.mouse_held && (code == 11 || code == 12);
    const float ax = 200.0f + 32.0f * static_cast<float>(cell.column + held) + 15;
    const float ay = 293.0f + 32.0f * static_cast<float>(cell.row) + 15;
    BTN_util_element(std::round(mnw.mouse_x), std::round(mnw.mouse_y), ax, ay, 15, 15, colour_picture);
}

}  // namespace

int MACIBM_windows_opened() {
    return pump.windows_opened;
}

int quit_requested() {
    return pump.quit_wanted;
}

void mouse_help_per_wind(int number) {
    const float still = xtim.real_time - mnw.time_moved;
    if (!stls.help.empty() && still > help_after_seconds) draw_help(stls.help);
    stls.help.clear();
    const bool hidden = (number == wind_main && still > hide_after_seconds) || mnw.cursor_code > 1;
    display_show_cursor(!hidden || wind_is_special(number));
    if (mnw.cursor_code > 2) draw_cursor(mnw.cursor_code);
}

void MACIBM_draw_backdrop() {
    OGL_plot_back_col();
    // An alert that comes up while the screen is drawn must not draw it once more.
    if (!pump.main_shown || pump.in_backdrop || !shell_hooks.backdrop) return;
    const float x = mnw.wind_x, y = mnw.wind_y, dx = mnw.wind_dx, dy = mnw.wind_dy;
    mnw.wind_dx = canvas_dx;
    mnw.wind_dy = canvas_dy;
    centre_on_surface(mnw.wind_dx, mnw.wind_dy);
    pump.in_backdrop = widgets_asleep = true;
    shell_hooks.backdrop();
    pump.in_backdrop = widgets_asleep = false;
    OGL_fillrect(colour_of(tone_dim), dim_alpha, -mnw.wind_x, -mnw.wind_y, surface_dx(), surface_dy());
    mnw.wind_x = x;
    mnw.wind_y = y;
    mnw.wind_dx = dx;
    mnw.wind_dy = dy;
}

void MACIBM_startwind(int number, int) {
    ++pump.windows_opened;
    plot_init_lights = 1;
    mouse_help_per_wind(number);
    OGL_viewport(2);
    mnw.wind_dx = 1024;
    mnw.wind_dy = 768;
    mnw.modal_wind = 0;
    for (const auto& window : windows) {
        if (window.number != number) continue;
        if (window.title) stls.title = window.title;
        mnw.wind_dx = window.dx;
        mnw.wind_dy = window.dy;
        mnw.modal_wind = 1;
    }
    BTN_unfocus_any();
    BTN_begin_focus_ring();  // what was drawn so far belongs to the window before
    close_popup();
    mnw.wind_id = mnw.wind_req = number;
    centre_on_surface(mnw.wind_dx, mnw.wind_dy);
    // So that no press that opens or closes a window is seen twice.
    mnw.mouse_held = mnw.mouse_down = mnw.key_held = 0;
}

static bool in_closing_corner() {
    const bool near_side = mnw.mouse_x < 25 || mnw.mouse_x > mnw.wind_dx - 25;
    const bool in_window = mnw.mouse_x >= 0 && mnw.mouse_x <= mnw.wind_dx && mnw.mouse_y <= mnw.wind_dy;
    return in_window && near_side && mnw.mouse_y > mnw.wind_dy - 20;
}

static void close_window() {
    MACIBM_handleclick(1);
}

void MACIBM_handleclick(int force) {
    if (!force && click_in_menu()) return;
    if (mnw.wind_id <= wind_main || wind_is_question(mnw.wind_id)) return;
    // There Return opens the folder that was typed, and here it must not be taken for a refusal.
    if (force && (mnw.wind_id == wind_folder || mnw.wind_id == wind_agreement)) return;
    if (!force && !in_closing_corner()) return;
    BTN_zap_boxes(1);
    OGL_sbuff();
    return_hit = 0;
    MACIBM_startwind(wind_main, 0);
}

void MACIBM_event_proc() {
    return_hit = escape_hit = delete_hit = 0;
    mnw.mouse_down = mnw.mouse_up = mnw.key_event = 0;
    xtim.profile_chart("init", 0);
    close_open_window = close_window;
    if (mnw.wind_id == wind_none) MACIBM_startwind(wind_main, 0);
    xtim.profile_chart("startwin", 0);
    take_events();
    take_quit();
    take_escape();
    xtim.profile_chart("event", 0);
    if (mnw.wind_id == wind_main) THREAD_check_exception(1);
    update_clock();
    keys.run_repeat_keys();
    mnw.cursor_code = 0;
    xtim.profile_chart("netlist", 0);
    // A dialog has drawn itself before this call, the main screen does so within it.
    const bool dialog = mnw.modal_wind || pump.in_update;
    if (dialog) BTN_draw_focus();
    BTN_begin_focus_ring();
    update_application();
    if (!dialog) BTN_draw_focus();
    mouse_help_per_wind(mnw.wind_id);
    standard_gui();
    xtim.profile_chart("menu", 0);
    OGL_sbuff();
    xtim.profile_chart("sbuff", 1);
    ++xtim.frame_count;
}
