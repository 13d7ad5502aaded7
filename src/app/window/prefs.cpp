#include "app/window/prefs.h"

#include <algorithm>
#include <iterator>

#include "app/pref.h"
#include "engine/stg.h"
#include "gfx/colr.h"
#include "gfx/oglp.h"
#include "gfx/scale.h"
#include "gfx/text.h"
#include "net/proxy.h"
#include "runtime/hl_string.h"
#include "shell/pump.h"
#include "shell/shell.h"
#include "ui/butn.h"
#include "ui/digits.h"
#include "ui/field.h"
#include "ui/frames.h"
#include "ui/list.h"

static constexpr float left = 30;

static void edit_target_os() {
    int row = stg.target_os - 1;
    BTN_textlist(200, 310, &row, "Macintosh-Windows-Linux",
                 "Operating System to download Velaris for:|(Install and copy the entire Velaris folder to another "
                 "computer if you like)");
    stg.target_os = row + 1;
}

static constexpr int scale_percents[] = {0, 50, 75, 100, 125, 150, 200, 300, 400};

float wanted_scale() {
    return window_scale == 0 ? scale_auto : std::clamp(static_cast<float>(window_scale) / 100, scale_least, scale_most);
}

static void edit_scale() {
    const auto* const chosen = std::find(std::begin(scale_percents), std::end(scale_percents), window_scale);
    // What the list does not have came from the file, and stays until another is chosen.
    const int before = chosen == std::end(scale_percents) ? -1 : static_cast<int>(chosen - scale_percents);
    int row = std::max(before, 0);
    OGL_string(colour_label, 515, 328, "size of this window", 9999, charset_text, align_centre);
    BTN_textlist(505, 310, &row, "automatic-50 %-75 %-100 %-125 %-150 %-200 %-300 %-400 %", "");
    if (row == std::max(before, 0)) return;
    window_scale = scale_percents[row];
    MACIBM_set_scale(wanted_scale());
}

// A count of 0 means that the installer finds the best one itself.
static void edit_streams() {
    int by_hand = stg.stream_count != 0;
    BTN_bool(left, 150, &by_hand,
             "|manually set the number of download streams... typically leave this OFF, and the installer will find "
             "the best number of streams for you.",
             0);
    if (by_hand)
        BTN_int_range(400, 150, &stg.stream_count, 1, 1, 4, "");
    else
        stg.stream_count = 0;
}

static void edit_general() {
    edit_target_os();
    edit_scale();
    BTN_bool(
        left, 265, &stg.use_max_cpu,
        "|run at full speed all the time, always totally saturating the CPU... typically leave this OFF, since the "
        "installer does not need that much CPU to download stuff!",
        0);
    BTN_bool(left, 230, &stg.rename_folder,
             "|re-name the Orbisuite folder to the latest version number when done with the update... typically leave "
             "this ON, so the installer can indicate the proper version number!",
             0);
    BTN_bool(
        left, 190, &stg.always_ask_dir,
        "|always ask you to pick your Orbisuite folder on startup... typically leave this OFF, since the installer "
        "will remember your current Velaris folder after the first use.",
        0);
    edit_streams();
    BTN_bool(left, 110, &stg.log_actions,
             "|log installer actions... turn this on to output the installer file downloads and stuff to the file "
             "log.txt.",
             0);
}

static void edit_proxy() {
    constexpr float x = 85, width = 455;
    constexpr int longest = 65;
    BTN_enterstring(x, 40, &proxy.proxy_host, longest, "-proxy host", width, 0);
    BTN_enterstring(x, 20, &proxy.proxy_port_str, longest, "-proxy port", width, 0);
    if (!proxy.proxy_port_str.empty()) proxy.proxy_port = str_to_int(proxy.proxy_port_str);
}

void handle_prefs() {
    MACIBM_startwind(wind_prefs, 0);
    while (mnw.wind_id == wind_prefs) {
        MACIBM_draw_backdrop();
        BTN_fillwin(1, 21);
        float next_x = 0, top = 0;
        BTN_subwin(0, box_panel, -1, -1, -1, 70, "Proxy (if you are behind a firewall with a Proxy)", &next_x, &top);
        BTN_subwin(0, box_panel, -1, top, -1, -1, "General Preferences", &next_x, &top);
        edit_general();
        edit_proxy();
        MACIBM_event_proc();
    }
}
