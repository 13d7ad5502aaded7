// tman_load.h: one load, from a name to a texture on the card. Private to tman*.cpp.
// The pixels stand in one of the two scratch buffers and never anywhere else.
#pragma once

#include <string>

#include "gfx/images/tex.h"
#include "gfx/tex_flags.h"

struct tex_load_vars {
    int fail_mode = 0;
    int flags = 0;
    std::string name;
    TEX_image_desc desc;              // of `pixels`; as read, then as scaled
    unsigned char* pixels = nullptr;  // null for a texture without contents
    int tex_dx = 0, tex_dy = 0;       // the texture's size
};

bool is_scratch_name(const std::string& name);
int tex_bytes_per_pixel(int flags);  // 0 for a format that there is not
int tex_gl_format(int flags);
void check_dxy(int dx, int dy, const std::string& name);  // each from 1 to 2048, or fatal

int load_texture_io(tex_load_vars& load);  // the pixels; 0 if no file could be read
void TEX_get_scale(tex_load_vars& load);   // the sizes, and the pixels scaled down to them
void load_texture_ogl(const tex_load_vars& load, unsigned& tex_id);
