#include "gfx/oglp.h"

#include <GL/gl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "gfx/builtin.h"
#include "gfx/colr.h"
#include "gfx/gl_calls.h"
#include "gfx/gl_window.h"
#include "gfx/images/tex.h"
#include "gfx/scale.h"
#include "support/scratch.h"

static const rgb black{0, 0, 0}, white{255, 255, 255};
constexpr int white_index = 49;

static void expect_driver_state(int tex_units, int lit, int alpha, int depth_read, int depth_write) {
    GLboolean writes = 0;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &writes);
    EXPECT_EQ(glIsEnabled(GL_LIGHTING), lit == lit_on);
    EXPECT_EQ(glIsEnabled(GL_BLEND), alpha == alpha_blend || alpha == alpha_both);
    EXPECT_EQ(glIsEnabled(GL_ALPHA_TEST), alpha == alpha_test || alpha == alpha_both);
    EXPECT_EQ(glIsEnabled(GL_DEPTH_TEST), depth_read == depth_read_on);
    EXPECT_EQ(writes, depth_write == depth_write_on);
    for (int unit = 0; unit < 4; ++unit) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        EXPECT_EQ(glIsEnabled(GL_TEXTURE_2D), unit < tex_units) << "unit " << unit;
    }
    glActiveTexture(GL_TEXTURE0);
}

TEST(oglp, states_are_as_told_and_reach_the_driver_only_when_they_differ) {
    gl_window window;
    ren.tex_units = 4;
    OGL_forget_state();
    for (const int units : {1, 3, 0, 2})
        for (const int alpha : {alpha_none, alpha_blend, alpha_test, alpha_both})
            for (const bool deep : {true, false}) {
                const int lit = deep ? lit_on : lit_off, read = deep ? depth_read_on : depth_read_off,
                          write = deep ? depth_write_on : depth_write_off;
                OGL_setstate(deep ? fog_on : fog_off, units, lit, alpha, read, write);
                expect_driver_state(units, lit, alpha, read, write);
                EXPECT_EQ(glIsEnabled(GL_FOG), deep);
                watch_anew();
                OGL_setstate(deep ? fog_on : fog_off, units, lit, alpha, read, write);
                EXPECT_EQ(gl_calls.total(), 0);
            }
    window.make_context();  // whose states are the defaults again
    OGL_fillrect(white_index, 0.5f, 0, 0, 1, 1);
    expect_driver_state(0, lit_off, alpha_blend, depth_read_off, depth_write_off);
}

// Filled, framed, drawn as a line and clipped, at a place of the window, in pixels.
TEST(oglp, shapes_cover_exactly_their_pixels_at_every_scale) {
    gl_window window(1536, 1152);
    using edges = std::vector<int>;
    const struct {
        float scale, x, dy;
        edges filled, framed, line, clipped;
    } cases[] = {
        {1, 10, 5, {110, 70, 140, 75}, {110, 70, 141, 76}, {110, 70, 140, 71}, {110, 70, 140, 75}},
        {1.5f, 11, 5, {167, 105, 212, 113}, {167, 105, 214, 115}, {167, 105, 212, 107}, {167, 105, 212, 113}},
    };
    for (const auto& c : cases) {
        mnw.scale = c.scale;
        OGL_pix_specs(0);
        mnw.wind_x = 100;
        mnw.wind_y = 50;
        const auto drawn = [&] {
            const edges found = window.grab().extent(black);
            window.clear();
            return found;
        };
        OGL_fillrect(white_index, 1, c.x, 20, 30, c.dy);
        EXPECT_EQ(drawn(), c.filled);
        OGL_framerect(white_index, 1, c.x, 20, 30, c.dy);
        EXPECT_EQ(window.grab().at(c.framed[0] + 3, c.framed[1] + 3), black);
        EXPECT_EQ(drawn(), c.framed);
        OGL_line(white_index, 1, c.x, 20, c.x + 30, 20);
        EXPECT_EQ(drawn(), c.line);
        OGL_scissors(c.x, 20, 30, c.dy);
        OGL_fillrect(white_index, 1, 0, 0, 500, 500);
        EXPECT_EQ(drawn(), c.clipped);
        OGL_scissors(10, 10, -20, 10);
        OGL_fillrect(white_index, 1, 0, 0, 500, 500);
        OGL_scissors_end();
        EXPECT_EQ(glGetError(), 0u) << "a negative width is no error";
    }
    OGL_fillrect(white_index, 1, 0, 0, 100, 100);
    OGL_grayrect(10, 20, 40, 25, 0.5f);  // half of the black of colour 12 over white
    EXPECT_LE(difference(window.grab().at(180, 108), {127, 127, 127}), 1);
}

TEST(oglp, a_scale_is_the_largest_that_fits_and_is_bearable) {
    const struct {
        float asked;
        scale_room room;
        float scale;
    } cases[] = {
        {scale_auto, {800, 600, 1}, 0.75f},  {scale_auto, {1280, 800, 1}, 1},  {scale_auto, {3840, 2160, 1}, 1.5f},
        {scale_auto, {3840, 2160, 2}, 2.5f}, {scale_auto, {7680, 4320, 4}, 4}, {scale_auto, {640, 480, 2}, 0.625f},
        {1.3f, {1920, 1080, 1}, 1.3f},       {3, {1920, 1080, 1}, 1.25f},      {0.5f, {3840, 2160, 2}, 0.5f},
        {2, {256, 768, 1}, 0.25f},
    };
    for (const auto& [asked, room, scale] : cases)
        EXPECT_EQ(scale_that_fits(asked, room), scale) << asked << " in " << room.dx;
    float asked = 7;
    for (const char* wrong : {"", "big", "0.4", "4.1", "nan", "2x", "-1"})
        EXPECT_FALSE(scale_of_text(wrong, asked)) << wrong;
    EXPECT_EQ(asked, 7);
    EXPECT_TRUE(scale_of_text("2.5", asked) && asked == 2.5f && scale_of_text("auto", asked) && asked == scale_auto);
}

TEST(oglp, a_larger_surface_keeps_the_design_and_is_covered_and_photographed_around_its_middle) {
    gl_window window(2200, 1000);
    recall_ins_texes();
    OGL_plot_back_tex();
    const picture drawn = window.grab();
    const unsigned char* first = builtin_images[1].pixels;
    EXPECT_LE(difference(drawn.at(588, 116), {first[0], first[1], first[2]}), 1) << "the design's corner";
    for (const int x : {0, 587, 1024, 2199})
        for (const int y : {0, 115, 999})
            EXPECT_NE(drawn.at(x, y), black) << x << " " << y;

    take_palette_from_atlas();
    OGL_sbuff();  // and the next frame has its margins
    for (const int x : {0, 587, 1612, 2199})
        EXPECT_EQ(window.grab().at(x, 500), (rgb{51, 67, 86})) << x;

    const scratch folder;
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    for (int n = 1; n <= 9; ++n)
        folder.write("screenshot_" + std::to_string(n) + ".png", "");
    window.clear();
    OGL_fillrect(white_index, 1, 76 - 588, -116, 1, 1);  // the lowest pixel that a picture 2048 wide can show
    OGL_screenshot(1);
    TEX_image_desc desc;
    std::vector<unsigned char> pixels;
    ASSERT_EQ(TEX_load_any(folder / "screenshot_10.png", desc, tex_format_rgb, pixels), 1);
    EXPECT_EQ(desc.width, 2048);
    EXPECT_EQ(desc.height, 1000);
    EXPECT_EQ(pixels[0], 255) << "the corner at the bottom left";
}
