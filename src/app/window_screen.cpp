#include "app/window_screen.h"

#include <algorithm>
#include <cstdint>

#include "app/words.h"
#include "engine/flow.h"
#include "engine/stg.h"
#include "gfx/colr.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "gfx/tman.h"
#include "platform/display.h"
#include "runtime/xtim.h"
#include "shell/pump.h"
#include "ui/frames.h"

namespace {

constexpr int sprite_colour = 102;
constexpr float sheet_side = 1024;
constexpr float base_x1 = 132, base_x2 = 1016;  // the progress bar
constexpr int globe_first = 8, globe_last = 23, globe_at_rest = 21;

int globe_frame = globe_first;

bool mouse_in(float x, float y, float w, float h) {
    return mnw.mouse_x >= x && mnw.mouse_x <= x + w && mnw.mouse_y >= y && mnw.mouse_y <= y + h;
}

void draw_text(const sentence& said, float x, float y, float wrap) {
    OGL_string(said.colour, x, y, said.text, wrap, charset_text, align_left);
}

void draw_destination() {
    BTN_frame1(bar_field, 285, 89, 300, 0);
    draw_text({latin1_of_path(dest_dir_path), 45}, 142, 86, 9999);
    draw_text(
        {"Click on the 'DESTINATION' button below to choose the copy of Velaris you wish to update, or choose the "
         "destination you wish to install a new copy of Velaris to!"},
        134, 112, 9999);
}

void turn_globe() {
    if (stg.install_state != install_running)
        globe_frame = globe_at_rest;
    else if (xtim.once_act[ot10])
        globe_frame = globe_frame == globe_last ? globe_first : globe_frame + 1;
}

void draw_header() {
    interface_rect(0, 595, 644, 33, 128, 86, 0, tint_white);
    interface_icon(29, 608, globe_frame);
    if (install_name != no_install_name) {
        BTN_frame2(box_picture, 135, 600, 790, 72, "NET: " + install_name);
        BTN_frame2(box_picture, 935, 600, 80, 72, "Download");
        std::string size;
        set_size_str(stg.down_size, &size);
        draw_text({size}, 954, 635, 700);
    }
    draw_text(header_sentence(), 154, 615, 700);
}

void draw_status() {
    BTN_frame2(box_picture, 135, 32, 880, 40, "");
    const status_sentences status = status_lines();
    for (int i = 0; i < 3; ++i)
        draw_text(status.line[i], 144, 58.0f - 10.0f * static_cast<float>(i), 9999);
    const bool moving = stg.install_state == install_running && flow.totl_inst_rat > 0.02f;
    BTN_progress_bar(base_x1, base_x2, 15, moving ? flow.totl_inst_rat : -1.0f);
}

}  // namespace

int interface_rect(float x, float y, float tex_x, float tex_y, float w, float h, int live, int tint) {
    static const float tints[3][3] = {{1, 1, 1}, {0.8f, 1, 0.8f}, {1, 0.8f, 0.8f}};
    const float* rgb = tints[std::clamp(tint, 0, 2)];
    colr.assign(sprite_colour, rgb[0], rgb[1], rgb[2]);
    const bool inside = mouse_in(x, y, w, h);
    if (live && inside) tex_y -= (h + 1) * (mnw.mouse_held ? 2.0f : 1.0f);
    const float s1 = tex_x / sheet_side, s2 = (tex_x + w) / sheet_side;
    const float t1 = tex_y / sheet_side, t2 = (tex_y + h) / sheet_side;
    OGL_2dquad(tex_installer, sprite_colour, 1, x, y, s1, t1, x, y + h, s1, t2, x + w, y + h, s2, t2, x + w, y, s2, t1,
               1, alpha_blend);
    return inside && mnw.mouse_down && mnw.menu_open == -1;
}

int interface_icon(float x, float y, int index) {
    constexpr float cell = 64, lowest = 66;
    const int column = index % 8, row = index / 8;
    return interface_rect(x, y, static_cast<float>(column) * cell, static_cast<float>(row) * cell + lowest, cell, cell,
                          0, tint_white);
}

void draw_background() {
    OGL_2dquad(tex_back_1, 49, 1, 0, 0, 0, 0, 0, 768, 0, 0.75f, 1024, 768, 1, 0.75f, 1024, 0, 1, 0, 1, alpha_blend);
}

void APP_update() {
    draw_background();
    flow_server_list();
    flow_make_paths();
    flow_directory();
    draw_destination();
    flow_scan();
    turn_globe();
    draw_header();
    if (interface_rect(960, 78, 780, 166, 51, 22, 1, tint_green) || quit_requested()) flow_quit();
    if (stg.install_state == install_running) flow_file_work();
    flow_disk_space();
    draw_status();
}

void dir_progress_bar(float lo, float value, float hi, int phase, const std::string& label, const std::string& item) {
    constexpr float dx = 512, dy = 138;
    // A frame of a software renderer costs more than many a file; nobody sees more than so many in a second.
    constexpr std::int64_t shortest_us = 33'000;
    static std::int64_t last_shown = -shortest_us;
    const std::int64_t now = xtim_class::microsecs();
    if (now - last_shown < shortest_us) return;
    last_shown = now;
    draw_background();
    const float x = (mnw.wind_dx - dx) / 2, y = (mnw.wind_dy - dy) / 2;
    BTN_frame2(box_picture, x + 20, y + 20, 472, 98, "");
    const float share = lo == hi ? 0.52f : std::clamp(0.04f + 0.96f * (value - lo) / (hi - lo), 0.04f, 1.0f);
    BTN_progress_bar(x + 30, x + 482, y + 35, share);
    const char* phase_text =
        phase == 0 ? "Currently SCANNING the directory text file." : "Currently EXAMINING the hard disk.";
    OGL_string(colour_text, x + 32, y + 100, label, 452, charset_text, align_left);
    OGL_string(colour_text, x + 32, y + 80, phase_text, 452, charset_text, align_left);
    OGL_string(colour_text, x + 32, y + 60, latin1_of_path(item), 452, charset_text, align_left);
    OGL_sbuff();
}
