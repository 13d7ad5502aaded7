#include "app/window/main_screen.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "app/dest.h"
#include "app/window/prefs.h"
#include "app/window/sprites.h"
#include "app/window/tones.h"
#include "app/words.h"
#include "display/display.h"
#include "engine/flow.h"
#include "engine/stg.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "net/server_list.h"
#include "runtime/oops.h"
#include "runtime/xtim.h"
#include "shell/pump.h"
#include "ui/butn.h"
#include "ui/focus.h"
#include "ui/frames.h"

namespace {

constexpr float base_x1 = 132, base_x2 = 1016;  // the progress bar

int globe_frame = icon_globe_first;

void draw_text(const std::string& text, float x, float y, float wrap, int colour = colour_text) {
    OGL_string(colour, x, y, text, wrap, charset_text, align_left);
}

// What the user pressed in this frame.
struct presses {
    bool destination = false, preferences = false, install = false, shop = false, quit = false;
};

bool is_complete() {
    return stg.install_state == install_over && !stg.install_failed;
}

bool lacks_space() {
    return stg.install_state == install_idle && stg.dir_state == dir_ready && !flow.disk_space_avail;
}

bool draw_destination() {
    BTN_frame1(bar_field, 285, 89, 300, 0);
    draw_text(fit_text(latin1_of_path(dest_dir_path), 286, 1), 142, 86, 9999, colour_field);
    draw_text(
        "Click on the 'DESTINATION' button below to choose the copy of Velaris you wish to update, or choose the "
        "destination you wish to install a new copy of Velaris to!",
        134, 112, 9999);
    if (stg.install_state == install_running) return false;
    return interface_button(button_destination, lacks_space() ? role_primary : role_plain) ||
           pressed_in(135, 79, 435, 99);
}

// The list's author writes a label; what he writes must not be able to break one. Its parts are turned into letters one
// by one, since what parts them is no letter.
std::string server_label(std::size_t server) {
    std::string label = server_list.server_desc[server];
    while (!label.empty() && label.back() == '{')
        label.pop_back();
    const label_parts parts = expand_label(label);
    std::string shown = latin1_of_path(parts.left);
    if (label.find('|') != std::string::npos) shown += "|" + latin1_of_path(parts.right);
    return parts.help.empty() ? shown : shown + "{?" + latin1_of_path(parts.help);
}

void draw_servers() {
    for (int i = 0; i < stg.server_cnt; ++i)
        BTN_is_int(142, 578 - 20 * static_cast<float>(i), &stg.server_sel, i,
                   server_label(static_cast<std::size_t>(i)));
}

bool draw_install() {
    if (stg.install_state != install_idle || is_complete()) return false;
    return interface_button(button_install, flow_install_is_live() ? role_primary : role_off);
}

void turn_globe() {
    if (stg.install_state != install_running)
        globe_frame = icon_globe_at_rest;
    else if (xtim.once_act[ot10])
        globe_frame = globe_frame == icon_globe_last ? icon_globe_first : globe_frame + 1;
}

void draw_header() {
    interface_picture(0, 595, sprite_logo);
    interface_icon(29, 608, globe_frame);
    if (server_list.install_name != no_install_name) {
        BTN_frame2(box_picture, 135, 600, 790, 72, fit_text("NET: " + server_list.install_name, 770, 1));
        BTN_frame2(box_picture, 935, 600, 80, 72, "Download");
        std::string size;
        set_size_str(stg.down_size, &size);
        draw_text(size, 954, 635, 700);
    }
    const sentence header = header_sentence();
    draw_text(header.text, 154, 615, 700, colour_of(header.kind));
}

// The strip inside the status box's left edge: 0 for none.
unsigned strip_of(const status_sentences& status) {
    const auto has = [&](tone kind) {
        return std::any_of(std::begin(status.line), std::end(status.line),
                           [kind](const sentence& line) { return !line.text.empty() && line.kind == kind; });
    };
    if (has(tone::bad_news) || has(tone::error)) return tone_bad;
    if (is_complete() || has(tone::good_news)) return tone_good;
    return stg.install_state == install_running ? unsigned{tone_blue} : 0;
}

void draw_status() {
    BTN_frame2(box_picture, 135, 32, 880, 40, "");
    const status_sentences status = status_lines();
    if (const unsigned strip = strip_of(status)) fill_rounded({135, 32, 139, 72}, 2, strip, 1);
    for (int i = 0; i < 3; ++i)
        draw_text(fit_text(latin1_of_path(status.line[i].text), 864, 1), 144, 58.0f - 10.0f * static_cast<float>(i),
                  9999, colour_of(status.line[i].kind));
    // It moves, is full, or stays where the install broke off.
    if (is_complete())
        BTN_progress_bar(base_x1, base_x2, 15, 1, tone_bar_green);
    else if (stg.install_state == install_running)
        BTN_progress_bar(base_x1, base_x2, 15, flow.totl_inst_rat > 0.02f ? flow.totl_inst_rat : -1.0f);
    else
        BTN_progress_bar(base_x1, base_x2, 15, stg.install_state == install_over ? flow.totl_inst_rat : -1.0f,
                         tone_bar_red);
}

}  // namespace

// What the scan has last told; its box stands over the screen while it runs.
static struct {
    float share = 0;
    scan_phase phase{};
    std::string label, item;
} scan;

static void draw_scan() {
    constexpr float dx = 512, dy = 138;
    const float x = (mnw.wind_dx - dx) / 2, y = (mnw.wind_dy - dy) / 2;
    BTN_frame2(box_picture, x + 20, y + 20, 472, 98, "");
    BTN_progress_bar(x + 30, x + 482, y + 35, scan.share);
    OGL_string(colour_text, x + 32, y + 100, scan.label, 452, charset_text, align_left);
    OGL_string(colour_text, x + 32, y + 80, scan_phase_words(scan.phase), 452, charset_text, align_left);
    OGL_string(colour_text, x + 32, y + 60, fit_text(latin1_of_path(scan.item), 440, 1), 452, charset_text, align_left);
}

static presses draw_screen() {
    presses pressed;
    draw_background();
    pressed.destination = draw_destination();
    draw_servers();
    pressed.preferences = BTN_action(50, 750, -1, 0, 1, "preferences", "-");
    draw_header();
    pressed.install = draw_install();
    pressed.shop = interface_button(button_shop, role_plain, true);
    pressed.quit = interface_button(button_quit, is_complete() ? role_primary : role_plain);
    draw_status();
    if (stg.dir_state == dir_unread) draw_scan();
    return pressed;
}

void main_screen_backdrop() {
    draw_screen();
}

void APP_update() {
    const int opened = MACIBM_windows_opened();
    flow_server_list();
    flow_make_paths();
    flow_directory();
    turn_globe();
    const presses pressed = draw_screen();
    if (pressed.destination && pick_dest_path()) flow_destination_picked();
    flow_scan();
    if (pressed.preferences) handle_prefs();
    if (pressed.install) flow_install();
    if (pressed.shop) go_to_URL(shop_url);
    if (pressed.quit || quit_requested()) flow_quit();
    if (stg.install_state == install_running) flow_file_work();
    flow_disk_space();
    display_keep_awake(stg.install_state == install_running);
    // A window that came and went has painted over the screen.
    if (MACIBM_windows_opened() == opened || app_done) return;
    BTN_begin_focus_ring();
    draw_screen();
}

void dir_progress_bar(float lo, float value, float hi, scan_phase phase, const std::string& label,
                      const std::string& item) {
    scan.share = lo == hi ? 0.52f : std::clamp(0.04f + 0.96f * (value - lo) / (hi - lo), 0.04f, 1.0f);
    scan.phase = phase;
    scan.label = label;
    scan.item = item;
}
