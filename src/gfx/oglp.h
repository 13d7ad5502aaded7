// oglp.h: the drawing primitives, in immediate mode: state cache, 2D shapes, scissors, swap and screenshot.
// Units: those of the canvas, origin at the bottom left of the logical window, y up; every primitive adds mnw.wind_x
// and wind_y, and scale.h says how many pixels a unit has.
// Colours: an index of colr and an alpha. Fills run from edge to edge; a line at y covers y to y + 1.
// Order: painter's order is the only order; every frame redraws everything. Front faces are clockwise: bottom left, top
// left, top right, bottom right.
// Errors: none of their own. Threads: main thread only.
#pragma once

#include "gfx/mnw.h"
#include "gfx/ren.h"

// The states of OGL_setstate, each a constant, so that a call reads as a list of states.
enum : int {
    fog_on = 0,
    fog_off = 1,
    lit_on = 2,
    lit_off = 3,
    alpha_none = 4,
    alpha_blend = 5,
    alpha_test = 6,
    alpha_both = 7,
    depth_read_on = 8,
    depth_read_off = 9,
    depth_write_on = 10,
    depth_write_off = 11
};
// Calls OpenGL only for what differs from the last call. Nothing else may switch these states.
void OGL_setstate(int fog, int tex_units, int lit, int alpha, int depth_read, int depth_write);
void OGL_recover();       // to a state in which a screen can be drawn, from the middle of any drawing: an alert came up
void OGL_forget_state();  // the context is a new one: the cache is read again at the next call

void OGL_pix_specs(int which);                                  // the canvas's place on the surface, and the viewport
void OGL_viewport(int mode);                                    // 2: orthographic on the surface
void OGL_screensize(int mode, int x1, int y1, int x2, int y2);  // the viewport's rectangle alone, whatever the mode

void OGL_set_color(int color, float alpha);  // the colour rule: tint below 46, alpha scale, green only
void OGL_nrml_colors();                      // white
void OGL_fillrect(int color, float alpha, float x, float y, float dx, float dy);
void OGL_framerect(int color, float alpha, float x, float y, float dx, float dy);
void OGL_grayrect(float x1, float y1, float x2, float y2, float alpha);
void OGL_line(int color, float alpha, float x1, float y1, float x2, float y2);
void OGL_2dquad(int tex_ref, int color, float alpha, float x1, float y1, float s1, float t1, float x2, float y2,
                float s2, float t2, float x3, float y3, float s3, float t3, float x4, float y4, float s4, float t4,
                int units, int alpha_mode);
void OGL_plot_back_col();  // the whole surface in colour 34
void OGL_plot_back_tex();  // the same in the background picture, repeated around the design's place
void OGL_scissors(float x, float y, float dx, float dy);  // do not nest
void OGL_scissors_end();
extern void (*OGL_swap)();  // how a frame reaches the screen; start-up sets it
void OGL_sbuff();           // shows the frame, unless nobody sees it, and begins the next with its margins
// Reads the middle of the surface, at most 2048 by 2048, into scratch_array as RGB: the frame as drawn so far, so
// before OGL_sbuff. With `save` it goes to the first free "screenshot_N.png" of the current folder.
void OGL_screenshot(int save);
