// ren.h: the record of the renderer: what the driver says of itself, and what holds for all drawing.
// Lifetime: the texts are the driver's own and live as long as the context; OGL_extensions::init_extensions sets them.
#pragma once

struct ren_t {
    float alpha_scale = 1.0f;  // multiplies every alpha
    bool hidden = false;       // nobody sees the surface: what draws does nothing, but places and returns as ever
    int green_only = 0;        // every colour becomes a green of its brightness
    const char *vendor = "", *renderer = "", *version = "", *extensions = "";
    int tex_units = 1;  // that the driver offers
};
extern ren_t ren;
