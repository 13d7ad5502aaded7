#include <gtest/gtest.h>
#include <unistd.h>

#include <tuple>
#include <utility>

#include "gfx/fixtures/fixtures.h"
#include "gfx/images/tex.h"
#include "support/alerts.h"
#include "support/scratch.h"

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
