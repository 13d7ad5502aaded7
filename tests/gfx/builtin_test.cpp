#include "gfx/builtin.h"

#include <gtest/gtest.h>

#include <cstring>

#include "gfx/colr.h"
#include "gfx/gl_window.h"
#include "gfx/images/tex.h"
#include "gfx/oglp.h"
#include "gfx/tman.h"
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
    EXPECT_EQ(colr.tint[2], 0.75f);
    colr.set_lit_col(0);
    EXPECT_EQ(colr.tint[2], 1);
    EXPECT_THROW(colr.set_lit_col(3), left);
}

TEST(builtin, pictures_are_drawn_pixel_for_pixel_and_come_back_with_a_new_context) {
    gl_window window;
    for (int contexts = 0; contexts < 2; ++contexts) {
        window.make_context();
        recall_ins_texes();
        for (const builtin_image& image : builtin_images) {
            const tman_class::ref_dat_struct& texture = *tman.record(image.reference);
            const int x = image.width * 5 / 8, y = 33;
            const float s1 = static_cast<float>(x) / texture.tex_width, s2 = s1 + 180 / texture.tex_width;
            const float t1 = static_cast<float>(y) / texture.tex_height, t2 = t1 + 180 / texture.tex_height;
            window.clear();
            OGL_2dquad(image.reference, 49, 1, 10, 20, s1, t1, 10, 200, s1, t2, 190, 200, s2, t2, 190, 20, s2, t1, 1,
                       alpha_blend);
            const picture drawn = window.grab();
            EXPECT_LE(drawn.difference_from(image.pixels, image.width, 4, x, y, 180, 180, 10, 20), 2)
                << image.reference;
            EXPECT_GT(drawn.difference_from(image.pixels, image.width, 4, x, y + 20, 180, 160, 10, 20), 9);
        }
    }
}
