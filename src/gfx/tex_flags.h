// tex_flags.h: how a texture is wanted: the flags word of a load and its fail mode.
#pragma once

enum : int {
    tex_fmt_rgba = 2,
    tex_fmt_alpha = 3,
    tex_fmt_rgb = 4,
    tex_fmt_rgba_too = 5,
    tex_fmt_depth = 6,
    tex_fmt_mask = 7,
    tex_mipmap = 8,
    tex_clamp = 16,
    tex_clamp_x = 32,
    tex_double = 64,
    tex_half = 128,
    tex_full = 256,
    tex_keep_scratch = 512,
    tex_no_effect = 1024,
    tex_float16 = 2048,
    tex_sized8 = 4096,
    tex_any_size = 8192
};

// What a picture is for, and so what follows where it is missing: the installer's own are a fatal alert, others a line
// in the log. Any other number counts as scenery.
enum : int { fail_scenery = 0, fail_plane = 1, fail_is_fatal = 4 };
