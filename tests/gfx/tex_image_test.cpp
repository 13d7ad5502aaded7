#include <gtest/gtest.h>

#include "gfx/fixtures/fixtures.h"
#include "gfx/images/tex.h"
#include "support/alerts.h"

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
