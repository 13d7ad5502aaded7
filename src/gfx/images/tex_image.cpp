#include <algorithm>
#include <bit>
#include <cstdlib>

#include <squish.h>

#include "gfx/images/tex.h"
#include "gfx/images/tex_levels.h"
#include "runtime/oops.h"

alignas(16) static unsigned char scratch_bytes[2][std::size_t{scratch_side} * scratch_side * 4];
unsigned char* scratch_array = scratch_bytes[0];
unsigned char* scratch_array_temp = scratch_bytes[1];
int scratch_dx = 0, scratch_dy = 0;

static constexpr tex_layout layouts[] = {
    {tex_format_alpha, 1, -1, -1, -1, 0}, {tex_format_rgb, 3, 0, 1, 2, -1}, {tex_format_bgr, 3, 2, 1, 0, -1},
    {tex_format_rgba, 4, 0, 1, 2, 3},     {tex_format_bgra, 4, 2, 1, 0, 3},
};

const tex_layout* tex_layout_of(int format) {
    for (const tex_layout& layout : layouts)
        if (layout.format == format) return &layout;
    return nullptr;
}

int tex_squish_flag(int format) {
    switch (format) {
        case tex_format_dxt1_rgb:
        case tex_format_dxt1:
            return squish::kDxt1;
        case tex_format_dxt3:
            return squish::kDxt3;
        case tex_format_dxt5:
            return squish::kDxt5;
        default:
            return 0;
    }
}

tex_pixel tex_get(const tex_layout& layout, const unsigned char* from) {
    const auto channel = [&](int at) { return at < 0 ? static_cast<unsigned char>(255) : from[at]; };
    return {channel(layout.r), channel(layout.g), channel(layout.b), channel(layout.a)};
}

void tex_put(const tex_layout& layout, unsigned char* to, const tex_pixel& pixel) {
    if (layout.r >= 0) to[layout.r] = pixel.r;
    if (layout.g >= 0) to[layout.g] = pixel.g;
    if (layout.b >= 0) to[layout.b] = pixel.b;
    if (layout.a >= 0) to[layout.a] = pixel.a;
}

// Where one level lies. Plain rows have their pad; blocks have none, and a part of a block takes a whole one.
static tex_level level_of(const TEX_image_desc& desc, int width, int height, std::size_t offset) {
    const auto rows = static_cast<std::size_t>(height);
    if (const tex_layout* layout = tex_layout_of(desc.format)) {
        const std::size_t row = static_cast<std::size_t>(width) * layout->bytes;
        return {width, height, offset, row + static_cast<std::size_t>(desc.pad), rows};
    }
    // Asked for one row of blocks at a time: the whole may not fit squish's int.
    const int block_row = squish::GetStorageRequirements(width, 4, tex_squish_flag(desc.format));
    return {width, height, offset, static_cast<std::size_t>(block_row), (rows + 3) / 4};
}

std::vector<tex_level> tex_levels(const TEX_image_desc& desc) {
    const auto sane = [](int side) { return side >= 1 && side <= tex_max_side; };
    if (!tex_layout_of(desc.format) && !tex_squish_flag(desc.format)) return {};
    if (!sane(desc.width) || !sane(desc.height) || desc.pad < 0) return {};
    std::vector<tex_level> levels = {level_of(desc, desc.width, desc.height, 0)};
    while (desc.mipmaps && (levels.back().width > 1 || levels.back().height > 1)) {
        const tex_level& last = levels.back();
        levels.push_back(level_of(desc, std::max(1, last.width / 2), std::max(1, last.height / 2),
                                  last.offset + last.stride * last.strides));
    }
    return levels;
}

std::size_t TEX_bytes_needed_for_image(const TEX_image_desc& desc) {
    const std::vector<tex_level> levels = tex_levels(desc);
    return levels.empty() ? 0 : levels.back().offset + levels.back().stride * levels.back().strides;
}

void TEX_flip_y(const TEX_image_desc& desc, unsigned char* pixels) {
    for (const tex_level& level : tex_levels(desc)) {
        // Rows of pixels, or of blocks, from both ends towards the middle.
        unsigned char* low = pixels + level.offset;
        unsigned char* high = low + level.stride * (level.strides - 1);
        for (; low < high; low += level.stride, high -= level.stride)
            std::swap_ranges(low, low + level.stride, high);
        if (tex_squish_flag(desc.format)) tex_flip_blocks(desc.format, level, pixels + level.offset);
    }
}

// The mean of one box, channel by channel.
static void average_box(const unsigned char* box, std::size_t stride, std::size_t bytes, std::size_t dx, std::size_t dy,
                        unsigned char* out) {
    for (std::size_t c = 0; c < bytes; ++c) {
        std::uint64_t sum = 0;
        for (std::size_t y = 0; y < dy; ++y)
            for (std::size_t x = 0; x < dx; ++x)
                sum += box[y * stride + x * bytes + c];
        out[c] = static_cast<unsigned char>(sum / (dx * dy));
    }
}

void TEX_downscale(TEX_image_desc& desc, unsigned char* pixels, int x_factor, int y_factor) {
    const auto is_power_of_two = [](int n) { return n > 0 && std::has_single_bit(static_cast<unsigned>(n)); };
    if (!is_power_of_two(x_factor) || !is_power_of_two(y_factor))
        __MACIBM_alert(0, "TEX_downscale takes powers of two only!", "x_factor=" + std::to_string(x_factor),
                       "y_factor=" + std::to_string(y_factor), "", t_exit, "HLutils/TEX/TEX_utils", __LINE__);
    const tex_layout* layout = tex_layout_of(desc.format);
    const std::vector<tex_level> levels = tex_levels(desc);
    if (!layout || levels.empty()) return;
    // No side falls below a pixel.
    while (x_factor > desc.width)
        x_factor /= 2;
    while (y_factor > desc.height)
        y_factor /= 2;

    const auto box_dx = static_cast<std::size_t>(x_factor), box_dy = static_cast<std::size_t>(y_factor);
    desc.width /= x_factor;
    desc.height /= y_factor;
    desc.mipmaps = 0;
    const tex_level out = tex_levels(desc)[0];
    const std::size_t in_stride = levels[0].stride, bytes = layout->bytes,
                      columns = static_cast<std::size_t>(desc.width);
    // Every box lies at or behind the pixel that it becomes, so nothing is overwritten before it is read.
    for (std::size_t y = 0; y < out.strides; ++y)
        for (std::size_t x = 0; x < columns; ++x)
            average_box(pixels + y * box_dy * in_stride + x * box_dx * bytes, in_stride, bytes, box_dx, box_dy,
                        pixels + y * out.stride + x * bytes);
}

void TEX_chroma_key(const TEX_image_desc& desc, unsigned char* pixels, const unsigned char rgb[3], int tolerance) {
    if (desc.format != tex_format_rgba) return;
    for (const tex_level& level : tex_levels(desc))
        for (std::size_t y = 0; y < level.strides; ++y) {
            unsigned char* pixel = pixels + level.offset + y * level.stride;
            for (int x = 0; x < level.width; ++x, pixel += 4) {
                const int distance =
                    std::abs(pixel[0] - rgb[0]) + std::abs(pixel[1] - rgb[1]) + std::abs(pixel[2] - rgb[2]);
                if (distance < tolerance) pixel[3] = 0;
            }
        }
}
