// S3TC: blocks of 4 by 4 pixels. The colour half is two end colours in 5-6-5 bits, then a byte of 2-bit indices for
// each row. DXT3 puts 16 bits of alpha for each row before it; DXT5 two end alphas, then 48 bits of 3-bit indices.
#include <squish.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "gfx/images/tex.h"
#include "gfx/images/tex_levels.h"
#include "runtime/bytes.h"

static std::size_t block_bytes(int format) {
    return tex_squish_flag(format) == squish::kDxt1 ? 8 : 16;
}

static void nv_flip_blocks_dxtc1(unsigned char* block) {
    std::reverse(block + 4, block + 8);
}

static void nv_flip_blocks_dxtc3(unsigned char* block) {
    std::swap_ranges(block, block + 2, block + 6);
    std::swap_ranges(block + 2, block + 4, block + 4);
    nv_flip_blocks_dxtc1(block + 8);
}

// Two halves of 24 bits, each two rows of 12.
static std::uint32_t swap_alpha_rows(const unsigned char* half) {
    const std::uint32_t bits = little_word(half, 3);
    return bits >> 12 | (bits & 0xfff) << 12;
}

static void nv_flip_dxt5_alpha(unsigned char* block) {
    const std::uint32_t halves[2] = {swap_alpha_rows(block + 5), swap_alpha_rows(block + 2)};
    for (unsigned i = 0; i < 6; ++i)
        block[2 + i] = static_cast<unsigned char>(halves[i / 3] >> (i % 3 * 8));
}

static void nv_flip_blocks_dxtc5(unsigned char* block) {
    nv_flip_dxt5_alpha(block);
    nv_flip_blocks_dxtc1(block + 8);
}

void tex_flip_blocks(int format, const tex_level& level, unsigned char* blocks) {
    const std::size_t size = block_bytes(format);
    const auto flip = format == tex_format_dxt3   ? nv_flip_blocks_dxtc3
                      : format == tex_format_dxt5 ? nv_flip_blocks_dxtc5
                                                  : nv_flip_blocks_dxtc1;
    for (std::size_t at = 0; at < level.stride * level.strides; at += size)
        flip(blocks + at);
}

struct channel_565 {
    unsigned shift, top;
};
static constexpr channel_565 channels_565[] = {{0, 31}, {5, 63}, {11, 31}};  // blue, green, red

// One step of one channel, the faintest that lifts the colour above `floor`; the colour itself if none does.
static unsigned IncColor565(unsigned colour, unsigned floor) {
    for (const auto& [shift, top] : channels_565)
        if ((colour >> shift & top) < top && colour + (1u << shift) > floor) return colour + (1u << shift);
    return colour;
}

static unsigned DecColor565(unsigned colour, unsigned ceiling) {
    for (const auto& [shift, top] : channels_565)
        if ((colour >> shift & top) > 0 && colour - (1u << shift) < ceiling) return colour - (1u << shift);
    return colour;
}

static unsigned gamma_565(unsigned colour, const unsigned char* table) {
    const unsigned r = colour >> 11, g = colour >> 5 & 63, b = colour & 31;
    return unsigned{table[r << 3 | r >> 2]} >> 3 << 11 | unsigned{table[g << 2 | g >> 4]} >> 2 << 5 |
           unsigned{table[b << 3 | b >> 2]} >> 3;
}

void nv_gamma_correct(unsigned char* block, const unsigned char* table) {
    const std::uint32_t before[2] = {little_word(block, 2), little_word(block + 2, 2)};
    unsigned end[2] = {gamma_565(before[0], table), gamma_565(before[1], table)};
    const bool first_leads = before[0] > before[1];
    if (first_leads != (end[0] > end[1])) {
        // The order chooses between four colours and three with a transparent one, so it has to stay.
        unsigned &high = end[first_leads ? 0 : 1], &low = end[first_leads ? 1 : 0];
        const unsigned raised = IncColor565(high, low);
        if (raised > low)
            high = raised;
        else
            low = DecColor565(low, high);
    }
    for (unsigned i = 0; i < 4; ++i)
        block[i] = static_cast<unsigned char>(end[i / 2] >> (i % 2 * 8));
}

// Both images level by level, if they agree in size and the second asks for no level that the first has not.
static std::vector<std::pair<tex_level, tex_level>> paired_levels(const TEX_image_desc& from,
                                                                  const TEX_image_desc& to) {
    if (from.width != to.width || from.height != to.height || (to.mipmaps && !from.mipmaps)) return {};
    const std::vector<tex_level> in = tex_levels(from), out = tex_levels(to);
    std::vector<std::pair<tex_level, tex_level>> pairs;
    for (std::size_t i = 0; i < std::min(in.size(), out.size()); ++i)
        pairs.emplace_back(in[i], out[i]);
    return pairs;
}

// squish takes single blocks here: its calls for whole images start a team of threads that stays for good.
struct block_walk {
    const tex_level& plain;
    const tex_layout& layout;
    int x, y;  // of the block's first pixel
    int flag;
    bool opaque;  // the compressed format has no alpha

    std::size_t place_of(int px, int py) const {
        return plain.offset + static_cast<std::size_t>(py) * plain.stride + static_cast<std::size_t>(px) * layout.bytes;
    }

    // A level of less than a block is repeated over the whole of it: turning a block turns all of its rows. Of a larger
    // one, what lies outside does not count.
    void encode(const unsigned char* image, unsigned char* block) const {
        squish::u8 rgba[64] = {};
        int mask = 0;
        for (int i = 0; i < 16; ++i) {
            const int px = plain.width < 4 ? i % 4 % plain.width : x + i % 4;
            const int py = plain.height < 4 ? i / 4 % plain.height : y + i / 4;
            if (px >= plain.width || py >= plain.height) continue;
            const tex_pixel p = tex_get(layout, image + place_of(px, py));
            const squish::u8 channels[4] = {p.r, p.g, p.b, opaque ? squish::u8{255} : p.a};
            std::copy_n(channels, 4, rgba + std::ptrdiff_t{i} * 4);
            mask |= 1 << i;
        }
        squish::CompressMasked(rgba, mask, block, flag);
    }

    void decode(const unsigned char* block, unsigned char* image) const {
        squish::u8 rgba[64];
        squish::Decompress(rgba, block, flag);
        for (int i = 0; i < 16; ++i) {
            const int px = x + i % 4, py = y + i / 4;
            if (px >= plain.width || py >= plain.height) continue;
            const squish::u8* p = rgba + std::ptrdiff_t{i} * 4;
            tex_put(layout, image + place_of(px, py), {p[0], p[1], p[2], opaque ? squish::u8{255} : p[3]});
        }
    }
};

// Calls `work` with each block of a level and the place of its bytes.
template <class Work>
static void for_each_block(const tex_level& plain, const tex_level& packed, int plain_format, int packed_format,
                           Work work) {
    block_walk block = {plain, *tex_layout_of(plain_format),   0,
                        0,     tex_squish_flag(packed_format), packed_format == tex_format_dxt1_rgb};
    std::size_t at = packed.offset;
    for (block.y = 0; block.y < plain.height; block.y += 4)
        for (block.x = 0; block.x < plain.width; block.x += 4, at += block_bytes(packed_format))
            work(block, at);
}

int TEX_encode_s3tc(const TEX_image_desc& src_desc, const TEX_image_desc& dst_desc, const unsigned char* src,
                    unsigned char* dst) {
    const auto pairs = paired_levels(src_desc, dst_desc);
    if (!tex_layout_of(src_desc.format) || !tex_squish_flag(dst_desc.format) || pairs.empty()) return 0;
    for (const auto& [from, to] : pairs)
        for_each_block(from, to, src_desc.format, dst_desc.format,
                       [&](const block_walk& block, std::size_t at) { block.encode(src, dst + at); });
    return 1;
}

int TEX_decode_s3tc(const TEX_image_desc& src_desc, const TEX_image_desc& dst_desc, const unsigned char* src,
                    unsigned char* dst) {
    const auto pairs = paired_levels(src_desc, dst_desc);
    if (!tex_squish_flag(src_desc.format) || !tex_layout_of(dst_desc.format) || pairs.empty()) return 0;
    for (const auto& [from, to] : pairs)
        for_each_block(to, from, dst_desc.format, src_desc.format,
                       [&](const block_walk& block, std::size_t at) { block.decode(src + at, dst); });
    return 1;
}
