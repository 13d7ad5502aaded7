// tex_flags.h: how a texture is wanted: the flags word of a load and its fail mode.
#pragma once

enum : int {
    // The low three bits are the format. 0 is none, and misuse.
    tex_fmt_rgba = 2,
    tex_fmt_alpha = 3,
    tex_fmt_rgb = 4,
    tex_fmt_rgba_too = 5,
    tex_fmt_depth = 6,  // drawn into, never loaded
    tex_fmt_mask = 7,
    // The rest are bits.
    tex_mipmap = 8,
    tex_clamp = 16,    // else it repeats
    tex_clamp_x = 32,  // in x alone
    tex_double = 64,   // twice the size that the quality setting gives, but never enlarged
    tex_half = 128,
    tex_full = 256,          // whatever the quality setting says
    tex_keep_scratch = 512,  // the pixels as loaded stay in scratch_array
    tex_no_effect = 1024,    // the built-in pictures have it
    tex_float16 = 2048,
    tex_sized8 = 4096,
    tex_any_size = 8192  // no rounding up to powers of two
};

// What a picture is for, and so what follows where it is missing: the installer's own are a fatal alert, others a line
// in the log. Any other number counts as scenery.
enum : int { fail_scenery = 0, fail_plane = 1, fail_is_fatal = 4 };
