// The window, its drawing context and the state that every drawing call relies on.
#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>

#include "display/display.h"
#include "gfx/builtin.h"
#include "gfx/glext.h"
#include "gfx/oglp.h"
#include "gfx/scale.h"
#include "gfx/tman.h"
#include "runtime/hl_string.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "shell/shell.h"

int g_mon_x_res_now = 0, g_mon_y_res_now = 0;

constexpr int samples_of_level[] = {0, 2, 4, 8, 16};

void MACIBM_setres(int entering) {
    display_mode mode{};
    if (!entering || !display_get_mode(mode)) return;
    g_mon_x_res_now = mode.dx;
    g_mon_y_res_now = mode.dy;
    mnw.screen_depth = mode.depth;
}

// The size of the window at the scale that is asked for, or at what there is room for.
static void choose_scale() {
    const display_room room = display_get_room();
    mnw.scale = scale_that_fits(mnw.scale_req, {room.dx, room.dy, room.density});
    mnw.screen_dx = pixels_of(canvas_dx);
    mnw.screen_dy = pixels_of(canvas_dy);
}

// Decorations are known once the window is shown, and a desktop may make of it what it likes, such as a tile.
static void settle_window() {
    choose_scale();
    display_resize_window(mnw.screen_dx, mnw.screen_dy);
    MACIBM_follow_surface();
    if (mnw.scale_req > mnw.scale)
        xer << "There is no room for a scale of " << mnw.scale_req << ": it is " << mnw.scale << ".\n" << std::flush;
}

void MACIBM_follow_surface() {
    display_get_surface(mnw.screen_dx, mnw.screen_dy);
    if (mnw.screen_dx < pixels_of(canvas_dx) || mnw.screen_dy < pixels_of(canvas_dy))
        mnw.scale = scale_that_fits(mnw.scale, {mnw.screen_dx, mnw.screen_dy, 1});
    centre_on_surface(mnw.wind_dx, mnw.wind_dy);
    OGL_viewport(2);
    if (ogl_inited) match_ins_texes();
}

void MACIBM_set_scale(float asked) {
    mnw.scale_req = asked;
    if (display_window_is_open()) settle_window();
}

// The levels are tried from the wanted one down.
static bool make_context(context_facts& facts) {
    for (int level = std::clamp(mnw.alias_req, 0, 4); level >= 0; --level) {
        mnw.alias_now = level;
        if (display_make_context(samples_of_level[level], facts)) return true;
    }
    return false;
}

static void log_context(const context_facts& facts) {
    xer << "AGL_RGBA         : " << facts.rgba << '\n'
        << "AGL_DOUBLEBUFFER : " << facts.double_buffer << '\n'
        << "AGL_RED_SIZE     : " << facts.red << '\n'
        << "AGL_GREEN_SIZE   : " << facts.green << '\n'
        << "AGL_BLUE_SIZE    : " << facts.blue << '\n'
        << "AGL_ALPHA_SIZE   : " << facts.alpha << '\n'
        << "AGL_DEPTH_SIZE   : " << facts.depth << '\n'
        << std::flush;
}

static void set_fixed_state() {
    const float black[4] = {0, 0, 0, 0};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, black);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glAlphaFunc(GL_GREATER, 0);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDepthFunc(GL_LEQUAL);
    glFogi(GL_FOG_MODE, GL_LINEAR);
    glHint(GL_FOG_HINT, GL_FASTEST);
    glFrontFace(GL_CW);
    glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glShadeModel(GL_SMOOTH);
    glEnable(GL_DITHER);
    for (const int off : {GL_LOGIC_OP, GL_STENCIL_TEST, GL_TEXTURE_1D, GL_NORMALIZE, GL_SCISSOR_TEST})
        glDisable(static_cast<GLenum>(off));
    glColorMaterial(GL_FRONT, GL_AMBIENT_AND_DIFFUSE);
    glEnable(GL_COLOR_MATERIAL);
    if (mnw.alias_now > 0) glEnable(GL_MULTISAMPLE);
    glDepthMask(GL_FALSE);
}

int MACIBM_make_context(int which) {
    if (which != 0) return 0;  // a second display is not opened
    context_facts facts{};
    if (!display_window_is_open()) {
        choose_scale();
        if (!display_open_window("Velaris Installer", mnw.screen_dx, mnw.screen_dy, false)) return 0;
    }
    if (!make_context(facts)) return 0;
    log_context(facts);
    if (const int err = glExt.init_entry_points())
        __MACIBM_alert(0, "Could not open OpenGL framework", float_text("Error=", err), "", "", t_exit, OOPS_PLACE);
    if (facts.accelerated == 0) return 0;
    OGL_forget_state();
    set_fixed_state();
    settle_window();
    return 1;
}

void MACIBM_nuke_context(int which) {
    if (which == 0) display_close_window();
}

void MACIBM_remake_context() {
    tman.forget_textures();
    if (!MACIBM_make_context(0)) return;
    recall_ins_texes();
}
