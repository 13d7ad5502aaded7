#include "gfx/oglp.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

#include "gfx/colr.h"
#include "gfx/scale.h"
#include "gfx/tman.h"

static constexpr int most_tex_units = 8;  // that OGL_setstate switches, however many the card has

// What the context is set to. Every switch of these states goes through OGL_setstate, or this is no longer true.
static struct {
    bool known = false;
    int o_fog;  // fog_on or fog_off; the others likewise
    int o_tex;  // units in use, from 0 up
    int o_lit;
    int o_alB, o_alT;  // blending and the alpha test: 0 or 1
    int o_deR, o_deW;  // depth: read and written
    int num_units;     // at most so many are used
} state;

void OGL_forget_state() {
    state.known = false;
}

static void read_state() {
    state.known = true;
    state.o_fog = !glIsEnabled(GL_FOG);
    state.o_tex = glIsEnabled(GL_TEXTURE_2D);
    state.o_lit = glIsEnabled(GL_LIGHTING) ? lit_on : lit_off;
    state.o_alB = glIsEnabled(GL_BLEND);
    state.o_alT = glIsEnabled(GL_ALPHA_TEST);
    state.o_deR = glIsEnabled(GL_DEPTH_TEST) ? depth_read_on : depth_read_off;
    state.o_deW = depth_write_off;  // as every context starts
    state.num_units = std::min(ren.tex_units, most_tex_units);
}

static void switch_state(GLenum what, bool on) {
    if (on)
        glEnable(what);
    else
        glDisable(what);
}

static void update(int& cached, int wanted, GLenum what, int on) {
    if (cached == wanted) return;
    cached = wanted;
    switch_state(what, wanted == on);
}

// Unit 0 is the active one before and after.
static void set_units(int wanted) {
    wanted = std::clamp(wanted, 0, state.num_units);
    int active = 0;
    for (int unit = std::min(wanted, state.o_tex); unit < std::max(wanted, state.o_tex); ++unit) {
        if (unit != active) glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        active = unit;
        switch_state(GL_TEXTURE_2D, wanted > state.o_tex);
    }
    if (active != 0) glActiveTexture(GL_TEXTURE0);
    state.o_tex = wanted;
}

void OGL_setstate(int fog, int tex_units, int lit, int alpha, int depth_read, int depth_write) {
    if (!state.known) read_state();
    update(state.o_fog, fog, GL_FOG, fog_on);
    if (state.o_tex != tex_units) set_units(tex_units);
    if (state.o_lit != lit) {
        state.o_lit = lit;
        switch_state(GL_LIGHTING, lit == lit_on);
        switch_state(GL_LIGHT0, lit == lit_on);
    }
    update(state.o_alB, alpha == alpha_blend || alpha == alpha_both, GL_BLEND, 1);
    update(state.o_alT, alpha == alpha_test || alpha == alpha_both, GL_ALPHA_TEST, 1);
    update(state.o_deR, depth_read, GL_DEPTH_TEST, depth_read_on);
    if (state.o_deW != depth_write) {
        state.o_deW = depth_write;
        glDepthMask(depth_write == depth_write_on ? GL_TRUE : GL_FALSE);
    }
}

static void flat_state() {
    OGL_setstate(fog_off, 0, lit_off, alpha_blend, depth_read_off, depth_write_off);
}

void OGL_set_color(int color, float alpha) {
    const float* entry = colr.rgb(color);
    float rgb[3] = {entry[0], entry[1], entry[2]};
    if (color < colour_first_untinted)
        for (int i = 0; i < 3; ++i)
            rgb[i] *= colr.tint[i];
    alpha *= ren.alpha_scale;
    // One channel for all three, and never quite dark.
    if (ren.green_only) {
        rgb[1] = std::clamp(rgb[0] + rgb[1] + rgb[2], 0.01f, 1.0f);
        rgb[0] = rgb[2] = 0;
    }
    if (alpha > 0.99f)
        glColor3fv(rgb);
    else
        glColor4f(rgb[0], rgb[1], rgb[2], alpha);
}

void OGL_nrml_colors() {
    glColor3f(1, 1, 1);
}

// Clockwise, as front faces are; others are culled.
static void corners(float x1, float y1, float x2, float y2) {
    glVertex2f(x1, y1);
    glVertex2f(x1, y2);
    glVertex2f(x2, y2);
    glVertex2f(x2, y1);
}

void OGL_fillrect(int color, float alpha, float x, float y, float dx, float dy) {
    if (ren.hidden) return;
    flat_state();
    OGL_set_color(color, alpha);
    const float left = on_pixel(x + mnw.wind_x), low = on_pixel(y + mnw.wind_y);
    glBegin(GL_QUADS);
    corners(left, low, left + on_pixel(dx), low + on_pixel(dy));
    glEnd();
}

// Lines are filled, not stroked: whole pixels wide at every scale, and the same on every driver.
void OGL_framerect(int color, float alpha, float x, float y, float dx, float dy) {
    const float width = line_width();
    OGL_fillrect(color, alpha, x, y, dx + width, width);
    OGL_fillrect(color, alpha, x, y + dy, dx + width, width);
    OGL_fillrect(color, alpha, x, y + width, width, dy - width);
    OGL_fillrect(color, alpha, x + dx, y + width, width, dy - width);
}

void OGL_grayrect(float x1, float y1, float x2, float y2, float alpha) {
    OGL_fillrect(colour_black, alpha, x1, y1, x2 - x1, y2 - y1);
}

void OGL_line(int color, float alpha, float x1, float y1, float x2, float y2) {
    const float width = line_width();
    if (y1 == y2) return OGL_fillrect(color, alpha, std::min(x1, x2), y1, std::fabs(x2 - x1), width);
    if (x1 == x2) return OGL_fillrect(color, alpha, x1, std::min(y1, y2), width, std::fabs(y2 - y1));
    if (ren.hidden) return;
    flat_state();
    OGL_set_color(color, alpha);
    const float middle = width / 2;
    glLineWidth(width * mnw.scale);
    glBegin(GL_LINES);
    glVertex2f(x1 + mnw.wind_x + middle, y1 + mnw.wind_y + middle);
    glVertex2f(x2 + mnw.wind_x + middle, y2 + mnw.wind_y + middle);
    glEnd();
}

void OGL_2dquad(int tex_ref, int color, float alpha, float x1, float y1, float s1, float t1, float x2, float y2,
                float s2, float t2, float x3, float y3, float s3, float t3, float x4, float y4, float s4, float t4,
                int units, int alpha_mode) {
    if (ren.hidden) return;
    static constexpr int glowing_ref = 414, glowing_env = 17;
    // Binding first: it may load a picture or raise an alert, which draws, and so changes state and colour.
    if (tex_ref > 0) tman.bind_ref(tex_ref, 0, tex_ref == glowing_ref ? glowing_env : 0);
    OGL_setstate(fog_off, units, lit_off, alpha_mode, depth_read_off, depth_write_off);
    OGL_set_color(color, alpha);
    const float x = mnw.wind_x, y = mnw.wind_y;
    glBegin(GL_QUADS);
    glTexCoord2f(s1, t1);
    glVertex2f(x1 + x, y1 + y);
    glTexCoord2f(s2, t2);
    glVertex2f(x2 + x, y2 + y);
    glTexCoord2f(s3, t3);
    glVertex2f(x3 + x, y3 + y);
    glTexCoord2f(s4, t4);
    glVertex2f(x4 + x, y4 + y);
    glEnd();
}

void OGL_scissors(float x, float y, float dx, float dy) {
    // OpenGL's scissors are in pixels of the surface and know no window.
    const int left = pixels_of(x + mnw.wind_x), low = pixels_of(y + mnw.wind_y);
    const int right = pixels_of(x + mnw.wind_x + dx), top = pixels_of(y + mnw.wind_y + dy);
    glEnable(GL_SCISSOR_TEST);
    glScissor(left, low, std::max(0, right - left), std::max(0, top - low));
}

void OGL_scissors_end() {
    glDisable(GL_SCISSOR_TEST);
}
