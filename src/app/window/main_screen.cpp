#include "app/window/main_screen.h"

#include <algorithm>
#include <cstdint>

#include "app/dest.h"
#include "app/window/prefs.h"
#include "app/window/sprites.h"
#include "app/window/tones.h"
#include "app/words.h"
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

// 1 when the user wants to pick another folder.
int draw_destination() {
    BTN_frame1(bar_field, 285, 89, 300, 0);
    draw_text(fit_text(latin1_of_path(dest_dir_path), 286, 1), 142, 86, 9999, 45);
    draw_text(
        "Click on the 'DESTINATION' button below to choose the copy of Velaris you wish to update, or choose the "
        "destination you wish to install a new copy of Velaris to!",
        134, 112, 9999);
    if (stg.install_state == install_running) return 0;
    const int on_button = interface_button(10, 78, sprite_destination, 1, tint_green);
    return on_button || pressed_in(135, 79, 435, 99);
}

// The list's author writes a label; what he writes must not be able to break one.
std::string server_label(std::size_t server) {
    std::string label = server_list.server_desc[server];
    while (!label.empty() && label.back() == '{')
        label.pop_back();
    return latin1_of_path(label);
}

void draw_servers() {
    for (int i = 0; i < stg.server_cnt; ++i)
        BTN_is_int(142, 578 - 20 * static_cast<float>(i), &stg.server_sel, i,
                   server_label(static_cast<std::size_t>(i)));
}

// 1 when INSTALL was clicked while the click means something.
int draw_install() {
    if (stg.install_state != install_idle) return 0;
    const bool live = flow_install_is_live();
    return interface_button(450, 78, sprite_install, live, live ? tint_green : tint_red) && live;
}

void turn_globe() {
    if (stg.install_state != install_running)
        globe_frame = icon_globe_at_rest;
    else if (xtim.once_act[ot10])
        globe_frame = globe_frame == icon_globe_last ? icon_globe_first : globe_frame + 1;
}

void draw_header() {
    interface_button(0, 595, sprite_logo, 0, tint_white);
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

void draw_status() {
    BTN_frame2(box_picture, 135, 32, 880, 40, "");
    const status_sentences status = status_lines();
    for (int i = 0; i < 3; ++i)
        draw_text(fit_text(latin1_of_path(status.line[i].text), 864, 1), 144, 58.0f - 10.0f * static_cast<float>(i),
                  9999, colour_of(status.line[i].kind));
    const bool moving = stg.install_state == install_running && flow.totl_inst_rat > 0.02f;
    BTN_progress_bar(base_x1, base_x2, 15, moving ? flow.totl_inst_rat : -1.0f);
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

static void draw_screen() {
    draw_background();
    flow_server_list();
    flow_make_paths();
    flow_directory();
    if (draw_destination() && pick_dest_path()) flow_destination_picked();
    flow_scan();
    turn_globe();
    draw_servers();
    if (BTN_action(50, 750, -1, 0, 1, "preferences", "-")) handle_prefs();
    draw_header();
    if (draw_install()) flow_install();
    if (interface_button(700, 78, sprite_shop, 1, tint_green)) go_to_URL(shop_url);
    if (interface_button(960, 78, sprite_quit, 1, tint_green) || quit_requested()) flow_quit();
    if (stg.install_state == install_running) flow_file_work();
    flow_disk_space();
    draw_status();
    if (stg.dir_state == dir_unread) draw_scan();
}

void APP_update() {
    const int opened = MACIBM_windows_opened();
    draw_screen();
    // A window that came and went in the middle has painted over the first half.
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
