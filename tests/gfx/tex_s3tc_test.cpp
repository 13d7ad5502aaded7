#include <gtest/gtest.h>

#include <algorithm>

#include "gfx/fixtures/fixtures.h"
#include "gfx/images/tex.h"

TEST(tex_s3tc, reads_dds_as_other_programs_do) {
    for (const char* name : {"dxt1.dds", "dxt5.dds"}) {
        SCOPED_TRACE(name);
        TEX_image_desc desc;
        xmap_class file;
        const unsigned char* data = nullptr;
        ASSERT_EQ(TEX_load_dds(fixture(name), file, desc, &data), 1);
        bytes blocks(data, data + TEX_bytes_needed_for_image(desc));
        TEX_flip_y(desc, blocks.data());
        const TEX_image_desc plain = {tex_format_rgba, desc.width, desc.height, 0, 0};
        const bytes wanted = expected_rgba(name, 16);
        bytes rgba(wanted.size());
        ASSERT_EQ(TEX_bytes_needed_for_image(plain), wanted.size());
        ASSERT_EQ(TEX_decode_s3tc(desc, plain, blocks.data(), rgba.data()), 1);
        for (std::size_t i = 0; i < rgba.size(); ++i)
            ASSERT_NEAR(rgba[i], wanted[i], 2) << i;
    }
}

// Each row of each level has one colour and one alpha, in steps that blocks can hold.
TEST(tex_s3tc, encodes_and_turns_every_level) {
    for (const int format : {tex_format_dxt1, tex_format_dxt3, tex_format_dxt5, tex_format_dxt1_rgb}) {
        SCOPED_TRACE(format);
        const TEX_image_desc plain = {tex_format_rgba, 8, 16, 0, 1}, packed = {format, 8, 16, 0, 1};
        const bool has_alpha = format == tex_format_dxt3 || format == tex_format_dxt5;
        bytes image;
        for (unsigned w = 8, h = 16; h > 0; w = w > 1 ? w / 2 : 1, h /= 2)
            for (unsigned i = 0; i < w * h; ++i) {
                const auto slope = static_cast<unsigned char>(30 + i / w * 8);
                image.insert(image.end(),
                             {slope, slope, 30, static_cast<unsigned char>(has_alpha ? 100 + slope : 255)});
            }
        ASSERT_EQ(image.size(), TEX_bytes_needed_for_image(plain));
        bytes blocks(TEX_bytes_needed_for_image(packed)), back(image.size());
        ASSERT_EQ(TEX_encode_s3tc(plain, packed, image.data(), blocks.data()), 1);
        TEX_flip_y(packed, blocks.data());
        ASSERT_EQ(TEX_decode_s3tc(packed, plain, blocks.data(), back.data()), 1);
        TEX_flip_y(plain, back.data());
        for (std::size_t i = 0; i < image.size(); ++i)
            ASSERT_NEAR(back[i], image[i], format == tex_format_dxt3 && i % 4 == 3 ? 9 : 5) << i;
    }
}

// Three colours and a clear one, which is solid black where the format has no alpha.
TEST(tex_s3tc, a_clear_colour_is_clear_where_the_format_has_one_and_sizes_have_to_agree) {
    const bytes punched = {0, 0, 255, 255, 255, 255, 255, 255};
    bytes rgba(16);
    for (const int format : {tex_format_dxt1, tex_format_dxt1_rgb}) {
        ASSERT_EQ(TEX_decode_s3tc({format, 1, 1}, {tex_format_rgba, 1, 1}, punched.data(), rgba.data()), 1);
        EXPECT_EQ(rgba[3], format == tex_format_dxt1 ? 0 : 255);
    }
    EXPECT_EQ(TEX_decode_s3tc({tex_format_dxt1, 1, 1}, {tex_format_rgba, 2, 2}, punched.data(), rgba.data()), 0);
    EXPECT_EQ(TEX_encode_s3tc({tex_format_rgba, 1, 1}, {tex_format_rgba, 1, 1}, rgba.data(), rgba.data()), 0);
}

// Whether a block has a clear colour lies in the order of its two end colours.
TEST(tex_s3tc, gamma_keeps_the_order_of_the_ends) {
    const auto first_is_larger = [](const bytes& b) { return b[0] + 256 * b[1] > b[2] + 256 * b[3]; };
    const bytes blocks = random_bytes(24000, 11);
    unsigned char table[256];
    for (const int floor : {0, 130, 200, 256}) {
        for (int i = 0; i < 256; ++i)
            table[i] = static_cast<unsigned char>(i < floor ? 0 : i * i / 255);
        for (std::size_t at = 0; at < blocks.size(); at += 8) {
            const bytes block(&blocks[at], &blocks[at] + 8);
            bytes out = block;
            nv_gamma_correct(out.data(), table);
            ASSERT_EQ(first_is_larger(out), first_is_larger(block)) << at;
            ASSERT_TRUE(std::equal(out.begin() + 4, out.end(), block.begin() + 4));
        }
    }
}
