#include "gfx/tman_load.h"

#include <GL/gl.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "gfx/glext.h"
#include "gfx/mnw.h"
#include "gfx/tex_bind.h"
#include "runtime/cmdline.h"
#include "runtime/oops.h"

static const char* const here = "HLutils/OOPS_cpp/tman";

namespace {

// OpenGL's numbers for each format of the flags word; `bytes` of a pixel in memory.
struct format_row {
    int flag;  // in the low three bits
    int format, bytes;
    int sized8, float16;
};
constexpr format_row formats[] = {
    {tex_fmt_rgba, GL_RGBA, 4, GL_RGBA8, GL_RGBA16F_ARB},
    {tex_fmt_alpha, GL_ALPHA, 1, GL_ALPHA8, GL_ALPHA16F_ARB},
    {tex_fmt_rgb, GL_RGB, 3, GL_RGB8, GL_RGB16F_ARB},
    {tex_fmt_rgba_too, GL_RGBA, 4, GL_RGBA8, GL_RGBA16F_ARB},
    {tex_fmt_depth, GL_DEPTH_COMPONENT, 4, GL_DEPTH_COMPONENT, GL_DEPTH_COMPONENT},
};

const format_row* find_format(int flags) {
    for (const format_row& row : formats)
        if (row.flag == (flags & tex_fmt_mask)) return &row;
    return nullptr;
}

bool is_depth(int flags) {
    return (flags & tex_fmt_mask) == tex_fmt_depth;
}

// Compressed blocks, rows from the top.
bool read_dds(const std::string& path, TEX_image_desc& desc, std::vector<unsigned char>& pixels) {
    xmap_class file;
    TEX_image_desc blocks;
    const unsigned char* data = nullptr;
    if (!TEX_load_dds(path, file, blocks, &data)) return false;
    blocks.mipmaps = 0;
    desc = {tex_format_rgba, blocks.width, blocks.height, 0, 0};
    pixels.resize(TEX_bytes_needed_for_image(desc));
    if (!TEX_decode_s3tc(blocks, desc, data, pixels.data())) return false;
    TEX_flip_y(desc, pixels.data());
    return true;
}

int load_any_into_scratch(tex_load_vars& load) {
    // The name's own ending says nothing: the first of three kinds that is there is taken.
    const std::string base = load.name.substr(0, load.name.size() < 4 ? 0 : load.name.size() - 4);
    const int format = tex_gl_format(load.flags);
    std::vector<unsigned char> pixels;
    if ((cmdline.has_option("--no_dds") || !read_dds(base + ".dds", load.desc, pixels)) &&
        !TEX_load_any(base + ".png", load.desc, format, pixels) &&
        !TEX_load_any(base + ".bmp", load.desc, format, pixels))
        return 0;
    check_dxy(load.desc.width, load.desc.height, load.name);
    std::memcpy(scratch_array_temp, pixels.data(), pixels.size());
    load.pixels = scratch_array_temp;
    return 1;
}

// Scaling works in place, and what somebody else put into scratch_array is his.
void move_to_temp(tex_load_vars& load) {
    if (load.pixels != scratch_array) return;
    std::memcpy(scratch_array_temp, scratch_array, TEX_bytes_needed_for_image(load.desc));
    load.pixels = scratch_array_temp;
}

// The share of the full size that is wanted: a power of two, at most 1, as nothing is ever enlarged.
double wanted_scale(const tex_load_vars& load) {
    if ((load.flags & tex_full) || load.fail_mode == fail_is_fatal) return 1;
    // Quality 5 is the whole, each step below it half as much.
    double scale = 1.0 / (1 << (5 - std::clamp(mnw.tex_quality, 0, 5)));
    if (load.flags & tex_double) scale *= 2;
    if (load.flags & tex_half) scale /= 2;
    return std::min(scale, 1.0);
}

int rounded_up(int side) {
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(side)));
}

void check_power_of_two(int side, const std::string& name) {
    if (!std::has_single_bit(static_cast<unsigned>(side)))
        __MACIBM_alert(0, "load_tex: Trying to read a texture that is not a power of 2!", name, "", "", t_exit, here,
                       __LINE__);
}

// The image stands in the low corner; what lies beyond it in a larger texture is never shown.
void upload_level(const tex_load_vars& load, int level, const TEX_image_desc& desc) {
    const int dx = std::max(1, load.tex_dx >> level), dy = std::max(1, load.tex_dy >> level);
    const auto format = static_cast<GLenum>(is_depth(load.flags) ? GL_DEPTH_COMPONENT : desc.format);
    const GLenum type = is_depth(load.flags) ? GL_UNSIGNED_INT : GL_UNSIGNED_BYTE;
    const bool fills = desc.width == dx && desc.height == dy;
    const format_row& row = *find_format(load.flags);
    const GLint kept_as = load.flags & tex_float16 ? row.float16 : load.flags & tex_sized8 ? row.sized8 : row.format;
    glTexImage2D(GL_TEXTURE_2D, level, kept_as, dx, dy, 0, format, type, fills ? load.pixels : nullptr);
    if (!fills && load.pixels)
        glTexSubImage2D(GL_TEXTURE_2D, level, 0, 0, desc.width, desc.height, format, type, load.pixels);
}

}  // namespace

bool is_scratch_name(const std::string& name) {
    return name.starts_with("scratch_array");
}

int tex_bytes_per_pixel(int flags) {
    const format_row* row = find_format(flags);
    return row ? row->bytes : 0;
}

int tex_gl_format(int flags) {
    const format_row* row = find_format(flags);
    return row ? row->format : 0;
}

void check_dxy(int dx, int dy, const std::string& name) {
    if (dx < 1 || dy < 1 || dx > scratch_side || dy > scratch_side)
        __MACIBM_alert(0, "Trying to create a texture either less than 1 or greater than 2048!",
                       "dx=" + std::to_string(dx), "dy=" + std::to_string(dy), name, t_exit, here, __LINE__);
}

int load_texture_io(tex_load_vars& load) {
    if (!is_scratch_name(load.name)) return load_any_into_scratch(load);
    check_dxy(scratch_dx, scratch_dy, load.name);
    load.desc = {tex_gl_format(load.flags), scratch_dx, scratch_dy, 0, 0};
    load.pixels = is_depth(load.flags) ? nullptr : scratch_array;  // depths are drawn, not read
    return 1;
}

void TEX_get_scale(tex_load_vars& load) {
    // As wanted, but no side below a pixel, and none beyond what the card takes.
    double scale = wanted_scale(load);
    const int shorter = std::min(load.desc.width, load.desc.height);
    const int longer = std::max(load.desc.width, load.desc.height);
    while (shorter * scale < 1)
        scale *= 2;
    while (longer * scale > glExt.max_texture_size)
        scale /= 2;
    // The scale is a power of two, so the factor is whole.
    if (const int factor = static_cast<int>(1 / scale); factor > 1 && load.pixels) {
        move_to_temp(load);
        TEX_downscale(load.desc, load.pixels, factor, factor);
    }
    check_dxy(load.desc.width, load.desc.height, load.name);
    // Old cards take sides of powers of two alone.
    const bool any_size = (load.flags & tex_any_size) != 0;
    load.tex_dx = any_size ? load.desc.width : rounded_up(load.desc.width);
    load.tex_dy = any_size ? load.desc.height : rounded_up(load.desc.height);
    check_dxy(load.tex_dx, load.tex_dy, load.name);
}

void load_texture_ogl(const tex_load_vars& load, unsigned& tex_id) {
    if (!(load.flags & tex_any_size)) {
        check_power_of_two(load.tex_dx, load.name);
        check_power_of_two(load.tex_dy, load.name);
    }
    if (!tex_id) glGenTextures(1, &tex_id);
    TEX_bind_ref(static_cast<int>(tex_id), 0, 0);

    // Clamped where that is wanted, to the edge if the card can.
    const int flags = load.flags;
    const GLint clamp = glExt.tex_clamp_avail ? GL_CLAMP_TO_EDGE : GL_CLAMP;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, flags & (tex_clamp | tex_clamp_x) ? clamp : GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, flags & tex_clamp ? clamp : GL_REPEAT);
    // Smooth, but for depths: a mean of two depths is no depth.
    const GLint smooth = is_depth(flags) ? GL_NEAREST : GL_LINEAR;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, smooth);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, flags & tex_mipmap ? GL_LINEAR_MIPMAP_LINEAR : smooth);
    if (glExt.aniso_avail) glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, 1);

    const bool mipmaps = (flags & tex_mipmap) != 0, card_makes_them = mipmaps && glExt.automini_avail;
    glTexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, card_makes_them ? GL_TRUE : GL_FALSE);
    upload_level(load, 0, load.desc);
    if (!mipmaps || card_makes_them || !load.pixels) return;
    tex_load_vars smaller = load;
    move_to_temp(smaller);
    for (int level = 1; load.tex_dx >> level || load.tex_dy >> level; ++level) {
        TEX_downscale(smaller.desc, smaller.pixels, 2, 2);
        upload_level(smaller, level, smaller.desc);
    }
}
