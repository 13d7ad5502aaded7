#include "gfx/builtin.h"

#include <gtest/gtest.h>

#include <cstring>

#include "gfx/colr.h"
#include "gfx/gl_window.h"
#include "gfx/images/tex.h"
#include "gfx/oglp.h"
#include "support/alerts.h"

TEST(builtin, pictures_are_those_of_the_art_and_leave_the_atlas_with_its_colours) {
    static constexpr const char* names[] = {"installer_sheet", "background_1", "background_2", "interface_atlas"};
    for (int i = 0; i < 4; ++i) {
        const builtin_image& image = builtin_images[i];
        TEX_image_desc desc;
        std::vector<unsigned char> pixels;
        const std::string path = std::string(VELARIS_ROOT_DIR) + "/art/rendered/" + names[i] + ".png";
        ASSERT_EQ(TEX_load_any(path, desc, tex_format_rgba, pixels), 1) << path;
        ASSERT_EQ(desc.width, image.width);
        ASSERT_EQ(desc.height, image.height);
        EXPECT_EQ(std::memcmp(pixels.data(), image.pixels, pixels.size()), 0) << names[i];
    }
    recall_ins_texes();
    EXPECT_EQ(scratch_dx, 512);
    EXPECT_EQ(std::memcmp(scratch_array, builtin_images[3].pixels, 512 * 512 * 4), 0);
    take_palette_from_atlas();
    constexpr float rgb_of_34[] = {51, 67, 86};
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(colr.rgb(34)[i] * 255, rgb_of_34[i], 0.5f);
}

TEST(colr, each_light_has_its_tint_and_the_interface_stays_readable_in_it) {
    const alert_catcher alerts;
    colr.set_lit_col(2);
    EXPECT_LT(colr.tint[2], colr.tint[0]) << "red";
    colr.set_lites_for_interface();
    EXPECT_EQ(colr.tint[0], 1);
    EXPECT_EQ(colr.tint[2], 0.75f);
    colr.set_lit_col(0);
    EXPECT_EQ(colr.tint[2], 1);
    EXPECT_THROW(colr.set_lit_col(3), left);
    EXPECT_TRUE(alerts.last().starts_with("bad col_type!"));
}

TEST(builtin, a_new_context_gets_all_pictures_under_their_numbers) {
    gl_window window;
    const auto drawn = [&](int ref) {
        window.clear();
        OGL_2dquad(ref, 49, 1, 0, 0, 0, 0, 0, 256, 0, 0.25f, 256, 256, 0.25f, 0.25f, 256, 0, 0.25f, 0, 1, alpha_blend);
        return window.grab().bytes;
    };
    std::vector<std::vector<unsigned char>> before;
    recall_ins_texes();
    for (const builtin_image& image : builtin_images)
        before.push_back(drawn(image.reference));
    window.make_context();
    recall_ins_texes();
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_TRUE(drawn(builtin_images[i].reference) == before[i]) << builtin_images[i].reference;
    EXPECT_NE(before[1], before[2]);
}
