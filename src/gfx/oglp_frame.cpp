// What concerns a whole frame: viewport, background, swap, screenshot.
#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "display/display.h"
#include "files/io_utils.h"
#include "gfx/colr.h"
#include "gfx/glext.h"
#include "gfx/images/tex.h"
#include "gfx/oglp.h"
#include "gfx/scale.h"
#include "gfx/tman.h"
#include "runtime/xtim.h"

void (*OGL_swap)() = display_swap;

static struct {
    float projection[16], modelview[16];  // by columns, as OpenGL takes them
} xcam = {{}, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

void OGL_screensize(int, int x1, int y1, int x2, int y2) {
    glViewport(x1, y1, x2 - x1, y2 - y1);
}

void OGL_viewport(int mode) {
    if (mode != 2) return;
    // Units from the bottom left of the surface, margins included.
    float* m = xcam.projection;
    std::fill(m, m + 16, 0.0f);
    m[0] = 2 / surface_dx();
    m[5] = 2 / surface_dy();
    m[10] = -1;
    m[12] = m[13] = -1;
    m[15] = 1;
    OGL_screensize(mode, 0, 0, mnw.screen_dx, mnw.screen_dy);
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixf(xcam.projection);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixf(xcam.modelview);
}

void OGL_pix_specs(int) {
    centre_on_surface(canvas_dx, canvas_dy);
    OGL_viewport(2);
}

static void unbind(const char* entry_point, GLenum target) {
    typedef void (*binder)(GLenum, GLuint);
    const auto bind = reinterpret_cast<binder>(glExt.entry_point(entry_point));
    if (bind) bind(target, 0);
}

void OGL_recover() {
    // Whatever was begun is ended; where nothing was, that is an error, which goes with the rest.
    glEnd();
    glEndList();
    constexpr int errors_dropped = 30;  // and no loop until there is none: a lost context reports them without end
    for (int i = 0; i < errors_dropped; ++i)
        glGetError();
    // What drawing a screen takes for granted.
    OGL_nrml_colors();
    if (glExt.vbo_avail) unbind("glBindBufferARB", GL_ARRAY_BUFFER);
    if (glExt.framebuf_avail) unbind("glBindFramebufferEXT", GL_FRAMEBUFFER);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    OGL_scissors_end();
    OGL_forget_state();
}

void OGL_plot_back_col() {
    OGL_fillrect(colour_back, 1.0f, -mnw.wind_x, -mnw.wind_y, surface_dx(), surface_dy());
}

// The tile that covers the design stands where the design stands; its neighbours fill a surface that is larger.
void OGL_plot_back_tex() {
    const tman_class::ref_dat_struct* picture = tman.record(tex_back_1);
    if (!picture || picture->tex_width < 1 || picture->tex_height < 1) return;
    const float back_dx = canvas_dx, back_dy = canvas_dy;
    const float s = picture->width / picture->tex_width, t = picture->height / picture->tex_height;
    const float right = surface_dx() - mnw.wind_x, top = surface_dy() - mnw.wind_y;
    const float first_x = -std::ceil(mnw.wind_x / back_dx) * back_dx;
    const float first_y = -std::ceil(mnw.wind_y / back_dy) * back_dy;
    for (float y = first_y; y < top; y += back_dy)
        for (float x = first_x; x < right; x += back_dx)
            OGL_2dquad(tex_back_1, colour_picture, 1.0f, x, y, 0, 0, x, y + back_dy, 0, t, x + back_dx, y + back_dy, s,
                       t, x + back_dx, y, s, 0, 1, alpha_blend);
}

// Around a canvas that is smaller than the surface; first in a frame, as a help text may reach into them. The screens
// paint the canvas itself.
static void paint_margins() {
    const float dx = (surface_dx() - canvas_dx) / 2, dy = (surface_dy() - canvas_dy) / 2;  // of one margin
    const float left = -mnw.wind_x, low = -mnw.wind_y, right = left + surface_dx(), top = low + surface_dy();
    if (dx > 0) OGL_fillrect(colour_back, 1, left, low, dx, surface_dy());
    if (dx > 0) OGL_fillrect(colour_back, 1, right - dx, low, dx, surface_dy());
    if (dy > 0) OGL_fillrect(colour_back, 1, left, low, surface_dx(), dy);
    if (dy > 0) OGL_fillrect(colour_back, 1, left, top - dy, surface_dx(), dy);
}

void OGL_sbuff() {
    if (ren.hidden) return;
    // The colour that a frame begins with, for whoever sets none.
    const float red_and_blue = ren.green_only ? 0.0f : 1.0f;
    glColor4f(red_and_blue, 1.0f, red_and_blue, ren.alpha_scale);
    xtim.profile_chart("sb1", 0);
    OGL_swap();
    paint_margins();
    xtim.profile_chart("sb2", 0);
}

void OGL_screenshot(int save) {
    const int dx = std::min(mnw.screen_dx, scratch_side), dy = std::min(mnw.screen_dy, scratch_side);
    // The buffer holds a square; of a larger surface its middle is taken.
    glReadPixels((mnw.screen_dx - dx) / 2, (mnw.screen_dy - dy) / 2, dx, dy, GL_RGB, GL_UNSIGNED_BYTE, scratch_array);
    scratch_dx = dx;
    scratch_dy = dy;
    if (!save) return;
    static int shot = 0;  // of this run, so that a thousand pictures are not looked for one by one
    std::string name;
    do
        name = "screenshot_" + std::to_string(++shot) + ".png";
    while (file_exists(name));
    write_png_to_disk(name, dx, dy, 3);
}
