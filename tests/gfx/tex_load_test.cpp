#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "gfx/fixtures/fixtures.h"
#include "gfx/images/tex.h"
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
