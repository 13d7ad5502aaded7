#include <algorithm>
#include <cstdio>

#include "display/display.h"
#include "gfx/builtin.h"
#include "gfx/colr.h"
#include "gfx/glext.h"
#include "gfx/oglp.h"
#include "gfx/scale.h"
#include "gfx/text.h"
#include "runtime/cmdline.h"
#include "runtime/debug.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/startup.h"
#include "runtime/thread.h"
#include "shell/alert_screen.h"
#include "shell/pump.h"
#include "shell/shell.h"
#include "ui/frames.h"
#include "ui/keys.h"
#include "ui/menu.h"

shell_hooks_t shell_hooks;
int ogl_inited = 0;
int plot_init_lights = 0;

static void native_alert(const std::string& main_text, const std::string& secondary_text) {
    if (display_message_box(main_text, secondary_text)) return;
    std::fprintf(stderr, "%s\n%s\n", main_text.c_str(), secondary_text.c_str());
}

static void cannot_draw() {
    __MACIBM_alert(0,
                   "I could not set up the graphics for Velaris! I hope your monitor is at 1024x768 or higher! It must "
                   "be!",
                   "You do not meet the system requirements or you do not have OpenGL drivers or you entered a bad "
                   "resolution in Velaris!",
                   "The system says: " + display_error(),
                   "Without a window it works too: start it on a terminal with --console.", t_exit, OOPS_PLACE);
}

static void close_display(int save) {
    if (save) keys.keys_io(1);
    if (save) MACIBM_setres(0);
    ogl_inited = 0;
    MACIBM_nuke_context(0);
}

void MACIBM_init(int argc, char* const* argv) {
    UTL_debug_init();
    alert_front.native = native_alert;
    alert_front.close_display = close_display;
    const bool has_display = display_start();
    runtime_start(argc, argv);
    mnw = mnw_t{};

    if (!scale_of_text(cmdline.get_option("--scale"), mnw.scale_req)) mnw.scale_req = scale_auto;
    if (has_display) MACIBM_setres(1);
    if (!has_display || !MACIBM_make_context(0)) cannot_draw();
    OGL_swap = display_swap;
    OGL_pix_specs(0);
    glExt.init_extensions();
    THREAD_make_workers();
    recall_ins_texes();
    take_palette_from_atlas();

    keys.keys_io(0);
    MACIBM_clear_menus(1);
    menu_chosen = shell_hooks.handle_menu;
    MACIBM_startwind(wind_none, 0);
    OGL_pix_specs(0);
    ogl_inited = 1;
    alert_front.show = alert_screen_show;
    MACIBM_setupforlang();
    MACIBM_show_init("Will init plugins.", nullptr);
    MACIBM_show_init("Starting application.", nullptr);
}

void MACIBM_show_init(const std::string& text, const float* fraction) {
    static float steps = 0;
    if (!plot_init_lights) return;
    if (!fraction) steps += 0.01f;
    const float share = std::clamp(fraction ? *fraction : steps, 0.02f, 1.0f);
    OGL_plot_back_col();
    BTN_frame2(box_dark, 10, 31, 320, 200, "");
    OGL_string(colour_picture, 20, 210, maker_site, 300, charset_text, align_left);
    OGL_string(colour_note, 20, 60, text, 300, charset_text, align_left);
    BTN_progress_bar(8, 1016, 15, share);
    OGL_sbuff();
}

// Nothing is read from these folders; the choice has its place in the order of start-up.
void MACIBM_setupforlang() {
    static const char* const folders[] = {"text/english/", "text/french/",    "text/german/", "text/italian/",
                                          "text/spanish/", "text/portugese/", "text/korean/"};
    [[maybe_unused]] const char* folder = folders[std::clamp(mnw.lang, 0, 6)];
}
