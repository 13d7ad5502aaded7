// scale.h: how large the canvas is shown. Everything is laid out in units of a canvas of 1024 by 768 and drawn at one
// scale, mnw.scale: from it follow the window's size, the viewport, the mouse, scissors, lines and letters, all of them
// by the functions of this header.
// Units: "units" are the canvas's, "pixels" the drawing surface's; a surface that is larger than the canvas has
// margins.
#pragma once

#include <string>

constexpr int canvas_dx = 1024, canvas_dy = 768;
constexpr float scale_auto = 0;  // the wish for what suits the display
constexpr float scale_least = 0.5f, scale_most = 4;

// What a display has for the inside of a window.
struct scale_room {
    int dx, dy;     // pixels
    float density;  // dots an inch over 96
};

// "auto" or a number from 0.5 to 4. False, and `asked` as it was, for anything else.
bool scale_of_text(const std::string& text, float& asked);
// What is asked for where it fits, else the largest step below it that does; where none does, what just fits.
// scale_auto:
// the largest step that fits and is bearable: at most one and a half times the density, so that nobody sits before a
// wall of buttons. Below 1 the room alone decides.
float scale_that_fits(float asked, const scale_room& room);

int pixels_of(float units);  // to the nearest
// The place, in units from the surface's edge, where a pixel begins: the nearest, and the nearest that is not above.
float on_pixel(float units);
float pixel_below(float units);
float surface_dx();  // units, margins included
float surface_dy();
float line_width();                          // units: whole pixels, at least one
void scale_mouse(int x, int y);              // sets mnw's mouse from the surface's pixels, y down
void centre_on_surface(float dx, float dy);  // sets mnw.wind_x and wind_y for a logical window of that size
