#include "gfx/images/tex.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "gfx/fixtures/fixtures.h"
#include "support/alerts.h"
#include "support/scratch.h"

TEST(tex_load, reads_each_kind_as_other_programs_do) {
    for (const std::string name :
         {"gray1.png", "gray2.png", "gray4.png", "gray8.png", "gray8_keyed.png", "gray_alpha.png", "palette2.png",
          "palette8.png", "palette2_keyed.png", "rgb8.png", "rgb8_gamma.png", "rgb8_keyed.png", "rgba8.png",
          "gray1_interlaced.png", "rgba8_interlaced.png", "rgb24.bmp", "core24.bmp"}) {
        SCOPED_TRACE(name);
        const alert_catcher alerts;
        const bytes rgba = expected_rgba(name, 5);
        TEX_image_desc desc;
        bytes pixels, rgb;
        ASSERT_EQ(TEX_load_any(fixture(name), desc, tex_format_rgba, pixels), 1);
        EXPECT_EQ(pixels, rgba);

        bool clear = false;
        for (std::size_t i = 0; i < rgba.size(); i += 4) {
            rgb.insert(rgb.end(), {rgba[i], rgba[i + 1], rgba[i + 2]});
            clear |= rgba[i + 3] < 255;
        }
        ASSERT_EQ(TEX_load_any_ext(fixture(name), desc, tex_format_rgb, pixels), 1);
        EXPECT_EQ(pixels, rgb);
        EXPECT_EQ(alerts.count(), 0u);

        // A picture with transparency of its own has one channel too many for alpha alone.
        ASSERT_EQ(TEX_load_any(fixture(name), desc, tex_format_alpha, pixels), clear ? 0 : 1);
        EXPECT_EQ(alerts.last().starts_with("Illegal bits per pixel"), clear);
        for (std::size_t i = 0; !clear && i < 35 && name != "rgb8_gamma.png"; ++i)
            EXPECT_NEAR(pixels[i], 0.2126 * rgb[3 * i] + 0.7152 * rgb[3 * i + 1] + 0.0722 * rgb[3 * i + 2], 1.0);
    }
}

TEST(tex_load, refuses_with_the_right_words) {
    const scratch folder;
    const struct {
        std::string path, words;  // no words: no alert
    } cases[] = {
        {fixture("gray16.png"), "Illegal bits per pixel\n\n"},
        {fixture("rgb16.png"), "Illegal bits per pixel\n\n"},
        {fixture("rgba32.bmp"), "We need 24-bit color.\nWrong bitmap color depth for texture!\n"},
        {fixture("rle8.bmp"), "We need 24-bit color.\nWrong bitmap color depth for texture!\n"},
        {folder.write("bare.png", "\x89PNG\r\n\x1a\n"),
         "PING-FILE ERROR!\nsetjmp(png_ptr->jmpbuf\nthe file ends too early\n"},
        {folder.write("cut.png", scratch::read(fixture("rgb8.png")).substr(0, 80)),
         "PING-FILE ERROR!\nsetjmp(png_ptr->jmpbuf\nthe file ends too early\n"},
        {folder.write("cut.bmp", scratch::read(fixture("rgb24.bmp")).substr(0, 100)), ""},
        {folder.write("empty", ""), ""},
        {folder.write("other", "neither of them"), ""},
        {folder / "missing.png", ""},
    };
    TEX_image_desc desc;
    bytes pixels;
    for (const auto& [path, words] : cases) {
        SCOPED_TRACE(path);
        const alert_catcher alerts;
        EXPECT_EQ(TEX_load_any(path, desc, tex_format_rgba, pixels), 0);
        EXPECT_EQ(alerts.last().substr(0, words.size()), words);
        ASSERT_EQ(alerts.count(), words.empty() ? 0u : 1u);
        if (words.empty()) continue;
        EXPECT_EQ(alerts.seen[0].level, t_alert);
        EXPECT_EQ(alerts.seen[0].line4, path);
    }
}

TEST(tex_load, reads_bmp_from_the_top_and_in_either_byte_order) {
    const scratch folder;
    const std::string plain = scratch::read(fixture("rgb24.bmp"));
    const bytes rgba = expected_rgba("rgb24.bmp", 5);
    TEX_image_desc desc;
    bytes pixels;

    std::string from_the_top = plain;
    from_the_top.replace(22, 4, "\xF9\xFF\xFF\xFF");  // a height of -7
    ASSERT_EQ(TEX_load_any(folder.write("top.bmp", from_the_top), desc, tex_format_rgba, pixels), 1);
    EXPECT_EQ(desc.height, 7);
    EXPECT_EQ(pixels, turned(rgba, 20));

    std::string swapped = plain;
    for (const auto& [at, size] : {std::pair{2, 4}, {10, 4}, {14, 4}, {18, 4}, {22, 4}, {26, 2}, {28, 2}, {30, 4}})
        std::reverse(swapped.begin() + at, swapped.begin() + at + size);
    ASSERT_EQ(TEX_load_any(folder.write("swapped.bmp", swapped), desc, tex_format_rgba, pixels), 1);
    EXPECT_EQ(pixels, rgba);
}

// Rows of 5 pixels with 3 bytes behind each that must not reach the file.
TEST(tex_save, png_comes_back_in_every_format) {
    const scratch folder;
    for (const auto& [saved, wanted, channels] : {std::tuple{tex_format_rgba, tex_format_rgba, std::size_t{4}},
                                                  {tex_format_bgra, tex_format_rgba, std::size_t{4}},
                                                  {tex_format_rgb, tex_format_rgb, std::size_t{3}},
                                                  {tex_format_bgr, tex_format_rgb, std::size_t{3}},
                                                  {tex_format_alpha, tex_format_alpha, std::size_t{1}}}) {
        SCOPED_TRACE(saved);
        const std::size_t row = channels * 5, stride = row + 3;
        const bytes padded = random_bytes(stride * 7, 7);
        bytes plain;
        for (std::size_t y = 0; y < 7; ++y)
            plain.insert(plain.end(), &padded[y * stride], &padded[y * stride] + row);
        for (std::size_t i = 0; saved != wanted && i < plain.size(); i += channels)
            std::swap(plain[i], plain[i + 2]);

        TEX_image_desc desc;
        bytes pixels;
        ASSERT_EQ(TEX_save_png(folder / "a.png", {saved, 5, 7, 3, 0}, padded.data()), 1);
        ASSERT_EQ(TEX_load_any(folder / "a.png", desc, wanted, pixels), 1);
        EXPECT_EQ(pixels, plain);
    }
}

TEST(tex_save, leaves_nothing_where_it_cannot_write) {
    const alert_catcher alerts;
    const scratch folder;
    const bytes image(16384);
    const TEX_image_desc plain = {tex_format_rgba, 64, 64, 0, 0}, blocks = {tex_format_dxt5, 64, 64, 0, 0};
    EXPECT_EQ(TEX_save_png(folder / "none/a.png", plain, image.data()), 0);
    EXPECT_EQ(TEX_save_dds(folder / "none/a.dds", blocks, image.data()), 0);
    EXPECT_EQ(TEX_save_png(folder / "a.png", blocks, image.data()), 0);
    EXPECT_EQ(TEX_save_dds(folder / "a.dds", plain, image.data()), 0);
    EXPECT_FALSE(scratch::exists(folder / "a.png") || scratch::exists(folder / "a.dds"));
    // A disk that takes no byte, behind a link: what goes away is the link.
    const std::string full = folder / "full";
    for (const bool dds : {false, true}) {
        ASSERT_EQ(symlink("/dev/full", full.c_str()), 0);
        EXPECT_EQ(dds ? TEX_save_dds(full, blocks, image.data()) : TEX_save_png(full, plain, image.data()), 0);
        EXPECT_FALSE(scratch::exists(full));
    }
    EXPECT_EQ(alerts.count(), 0u);
}

TEST(tex_image, sizes_sum_up_over_the_levels) {
    const struct {
        TEX_image_desc desc;
        std::size_t bytes;
    } cases[] = {
        {{tex_format_rgba, 3, 5, 0, 1}, 72},
        {{tex_format_bgr, 3, 5, 3, 1}, (9 + 3) * 5 + (3 + 3) * 2 + (3 + 3)},
        {{tex_format_dxt1, 3, 5, 0, 1}, 16 + 8 + 8},
        {{tex_format_dxt5, 1 << 20, 1 << 20, 0, 0}, std::size_t{1} << 40},
        {{tex_format_rgb, 1 << 20, 1 << 20, 0x7fffffff, 0}, (std::size_t{3} << 40) + (std::size_t{0x7fffffff} << 20)},
        {{0x1902, 4, 4, 0, 0}, 0},
        {{tex_format_rgb, 4, 4, -1, 0}, 0},
        {{tex_format_dxt1, 0x7fffffff, 0x7fffffff, 0, 1}, 0},
    };
    for (const auto& [desc, size] : cases)
        EXPECT_EQ(TEX_bytes_needed_for_image(desc), size) << desc.format << " " << desc.width << " by " << desc.height;
}

TEST(tex_image, downscale_averages_boxes_in_place) {
    TEX_image_desc desc = {tex_format_rgb, 3, 3, 2, 1};
    bytes image(33, 10);
    image[3] = 50;
    TEX_downscale(desc, image.data(), 2, 2);
    EXPECT_EQ(desc.width * 100 + desc.height * 10 + desc.mipmaps, 110) << "half a box is no box";
    EXPECT_EQ(image[0], 20);

    // Each pixel of a larger image is the mean of its own box, not of one written over.
    desc = {tex_format_rgba, 64, 32, 0, 0};
    const bytes before = image = random_bytes(TEX_bytes_needed_for_image(desc), 21);
    TEX_downscale(desc, image.data(), 4, 1);
    for (std::size_t i = 0; i < TEX_bytes_needed_for_image(desc); ++i) {
        const unsigned char* box = &before[i / 4 * 16 + i % 4];
        ASSERT_EQ(image[i], (box[0] + box[4] + box[8] + box[12]) / 4) << i;
    }

    const alert_catcher alerts;
    EXPECT_THROW(TEX_downscale(desc, image.data(), 3, 1), left);
}

TEST(tex_image, chroma_key_stops_short_of_the_tolerance) {
    bytes image = {250, 0, 255, 200, 249, 0, 255, 200, 99, 255, 4, 255, 200, 250, 1, 255, 200, 99};
    const unsigned char magenta[3] = {255, 0, 255};
    TEX_chroma_key({tex_format_rgba, 2, 2, 1, 0}, image.data(), magenta, 6);
    EXPECT_EQ(image, (bytes{250, 0, 255, 0, 249, 0, 255, 200, 99, 255, 4, 255, 0, 250, 1, 255, 200, 99}));
}

TEST(tex_image, composite_converts_blends_and_keeps_to_its_rectangles) {
    static constexpr TEX_rect dot = {0, 0, 1, 1};
    static constexpr TEX_image_desc rgb_3x2 = {tex_format_rgb, 3, 2, 1, 0}, rgba_2x1 = {tex_format_rgba, 2, 1, 0, 0};
    const bytes in = {200, 100, 0, 255, 9, 9, 9, 0};  // one solid pixel and a clear one
    // Between the two the cover fades, and the hidden colour of the clear one does not show.
    bytes clear(8);
    TEX_composite(rgba_2x1, in.data(), {0, 0, 2, 1}, rgba_2x1, clear.data(), {-1, 0, 4, 1}, 1.0f);
    EXPECT_EQ(clear, (bytes{200, 100, 0, 191, 200, 100, 0, 64}));

    // Far over every edge: all that shows is the middle of the solid half, and no byte of the rows' ends is touched.
    bytes out(20, 50);
    TEX_composite(rgba_2x1, in.data(), {0, 0, 2, 1}, rgb_3x2, out.data(), {-2, -5, 40, 20}, 1.0f);
    for (const std::size_t at : {0u, 3u, 6u, 10u, 13u, 16u})
        EXPECT_EQ(bytes(&out[at], &out[at] + 3), (bytes{200, 100, 0}));
    EXPECT_EQ(out[9], 50);
    TEX_composite(rgba_2x1, in.data(), {0, 0, 2, 1}, rgb_3x2, out.data(), {0x7fffffff, -0x7fffffff, 9, 0x7fffffff}, 1);

    const alert_catcher alerts;
    EXPECT_THROW(TEX_composite(rgba_2x1, in.data(), dot, {tex_format_dxt1, 2, 1}, out.data(), dot, 1), left);
    for (const TEX_rect& from : {TEX_rect{1, 0, 2, 1}, {-1, 0, 1, 1}, {0, 0, 0, 1}, {1, 0, 0x7fffffff, 1}})
        EXPECT_THROW(TEX_composite(rgba_2x1, in.data(), from, rgb_3x2, out.data(), dot, 1), left);
}

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
