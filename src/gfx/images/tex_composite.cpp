#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "gfx/images/tex.h"
#include "gfx/images/tex_levels.h"
#include "runtime/oops.h"

namespace {

// Colour is multiplied by alpha, so that the hidden colour of a clear pixel does not bleed into its neighbours.
struct sample {
    float r = 0, g = 0, b = 0, a = 0;
};

struct source {
    const tex_layout& layout;
    const unsigned char* pixels;
    std::size_t stride;
    TEX_rect rect;

    void add(sample& sum, int x, int y, float weight) const {
        const tex_pixel p =
            tex_get(layout, pixels + static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x) * layout.bytes);
        const float a = weight * static_cast<float>(p.a);
        sum.r += a * static_cast<float>(p.r);
        sum.g += a * static_cast<float>(p.g);
        sum.b += a * static_cast<float>(p.b);
        sum.a += a;
    }

    // Linear between the four pixels around the point, which never leave the rectangle.
    sample at(float x, float y) const {
        const float left = std::floor(x), low = std::floor(y);
        const float fx = x - left, fy = y - low;
        const auto column = [&](int i) { return rect.x + std::clamp(static_cast<int>(left) + i, 0, rect.dx - 1); };
        const auto row = [&](int i) { return rect.y + std::clamp(static_cast<int>(low) + i, 0, rect.dy - 1); };
        sample sum;
        add(sum, column(0), row(0), (1 - fx) * (1 - fy));
        add(sum, column(1), row(0), fx * (1 - fy));
        add(sum, column(0), row(1), (1 - fx) * fy);
        add(sum, column(1), row(1), fx * fy);
        return sum;
    }
};

unsigned char to_byte(float value) {
    return static_cast<unsigned char>(std::clamp(value + 0.5f, 0.0f, 255.0f));
}

// `over` onto what is there. Both may be partly clear: the colours count by their share of what covers the pixel.
void blend(const tex_layout& layout, unsigned char* to, const sample& over, float alpha) {
    if (over.a <= 0 || alpha <= 0) return;
    const tex_pixel under = tex_get(layout, to);
    const float cover = over.a / 255 * alpha;
    const float kept = static_cast<float>(under.a) / 255 * (1 - cover);
    const float all = cover + kept;
    const auto mix = [&](float c, unsigned char u) {
        return to_byte((c / over.a * cover + static_cast<float>(u) * kept) / all);
    };
    tex_put(layout, to, {mix(over.r, under.r), mix(over.g, under.g), mix(over.b, under.b), to_byte(all * 255)});
}

void need(bool holds, const char* what) {
    if (!holds) __MACIBM_alert(0, what, "", "", "", t_exit, "HLutils/TEX/TEX_utils", __LINE__);
}

bool inside(const TEX_rect& rect, const tex_level& level) {
    return rect.dx > 0 && rect.dy > 0 && rect.x >= 0 && rect.y >= 0 && rect.dx <= level.width - rect.x &&
           rect.dy <= level.height - rect.y;
}

}  // namespace

void TEX_composite(const TEX_image_desc& in_desc, const unsigned char* in, const TEX_rect& from,
                   const TEX_image_desc& out_desc, unsigned char* out, const TEX_rect& to, float alpha) {
    need(in_desc.format == tex_format_rgba || in_desc.format == tex_format_rgb,
         "in_desc.format == GL_RGBA || in_desc.format == GL_RGB");
    need(out_desc.format == tex_format_rgba || out_desc.format == tex_format_rgb,
         "out_desc.format == GL_RGBA || out_desc.format == GL_RGB");
    const std::vector<tex_level> in_levels = tex_levels(in_desc), out_levels = tex_levels(out_desc);
    if (in_levels.empty() || out_levels.empty()) return;
    need(inside(from, in_levels[0]), "The rectangle leaves the source image!");

    const source pixels = {*tex_layout_of(in_desc.format), in, in_levels[0].stride, from};
    const tex_layout& layout = *tex_layout_of(out_desc.format);
    // Centres meet centres, so that a picture grows and shrinks about its middle.
    const auto source_place = [](std::int64_t i, int from_side, int to_side) {
        return (static_cast<float>(i) + 0.5f) * static_cast<float>(from_side) / static_cast<float>(to_side) - 0.5f;
    };
    // `to` may lie anywhere and be of any size, so its end is counted in 64 bits.
    const std::int64_t end_x = std::min<std::int64_t>(out_desc.width, std::int64_t{to.x} + to.dx);
    const std::int64_t end_y = std::min<std::int64_t>(out_desc.height, std::int64_t{to.y} + to.dy);
    for (int y = std::max(0, to.y); y < end_y; ++y) {
        const float place_y = source_place(std::int64_t{y} - to.y, from.dy, to.dy);
        unsigned char* row = out + static_cast<std::size_t>(y) * out_levels[0].stride;
        for (int x = std::max(0, to.x); x < end_x; ++x) {
            const float place_x = source_place(std::int64_t{x} - to.x, from.dx, to.dx);
            blend(layout, row + static_cast<std::size_t>(x) * layout.bytes, pixels.at(place_x, place_y),
                  std::min(alpha, 1.0f));
        }
    }
}
