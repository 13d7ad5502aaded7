// tex_levels.h: what the image codecs share: pixel layouts and the levels of an image as spans of its bytes.
// Private to the tex_*.cpp files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "gfx/images/tex.h"

constexpr std::size_t tex_max_bytes = std::size_t{512} << 20;  // a loader refuses what would take more
constexpr int tex_max_side = 1 << 20;                          // beyond it a description counts as nonsense

// Where each channel stands within a pixel; -1: the format has none.
struct tex_layout {
    int format;
    std::size_t bytes;  // of a pixel
    int r, g, b, a;
};
const tex_layout* tex_layout_of(int format);  // null unless it is a plain format

int tex_squish_flag(int format);  // 0 unless it is a compressed format

struct tex_pixel {
    unsigned char r, g, b, a;
};
// A channel that the format has not reads as 255; writing drops it.
tex_pixel tex_get(const tex_layout& layout, const unsigned char* from);
void tex_put(const tex_layout& layout, unsigned char* to, const tex_pixel& pixel);

struct tex_level {
    int width, height;
    std::size_t offset;   // from the first byte of the image
    std::size_t stride;   // of a row of pixels, or of 4 by 4 blocks
    std::size_t strides;  // rows
};
// Largest first. Empty for an unknown format, a side outside 1 to tex_max_side or a negative pad.
std::vector<tex_level> tex_levels(const TEX_image_desc& desc);

void tex_flip_blocks(int format, const tex_level& level, unsigned char* blocks);

// The decoders proper, of a file that has been read already; `path` is for their alerts.
int tex_png_from_map(const std::string& path, const xmap_class& file, TEX_image_desc& desc, int format,
                     std::vector<unsigned char>& pixels);
int tex_bmp_from_map(const std::string& path, const xmap_class& file, TEX_image_desc& desc, int format,
                     std::vector<unsigned char>& pixels);
