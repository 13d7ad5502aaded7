#include "gfx/tman.h"

#include <GL/gl.h>
#include <gtest/gtest.h>

#include <array>

#include "gfx/gl_calls.h"
#include "gfx/gl_window.h"
#include "gfx/glext.h"
#include "gfx/images/tex.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "runtime/opened_log.h"
#include "support/alerts.h"
#include "support/options.h"

using bytes = std::vector<unsigned char>;
constexpr int builtin_flags = tex_fmt_rgba | tex_full | tex_no_effect;

static int side(GLenum which, int level = 0) {
    GLint value = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, level, which, &value);
    return value;
}

static rgb texel(int x, int y, int level = 0) {
    const int dx = side(GL_TEXTURE_WIDTH, level);
    bytes all(static_cast<std::size_t>(dx * side(GL_TEXTURE_HEIGHT, level) * 4));
    glGetTexImage(GL_TEXTURE_2D, level, GL_RGBA, GL_UNSIGNED_BYTE, all.data());
    const unsigned char* p = &all[static_cast<std::size_t>(y * dx + x) * 4];
    return {p[0], p[1], p[2]};
}

static void fill_scratch(int dx, int dy, const rgb& c) {
    scratch_dx = dx;
    scratch_dy = dy;
    for (int i = 0; i < dx * dy * 4; ++i)
        scratch_array[i] = static_cast<unsigned char>(std::array{c.r, c.g, c.b, 255}[i % 4]);
}

// Its upper half stays black.
static std::string save(const scratch& folder, const std::string& name, int size, const rgb& colour) {
    fill_scratch(size, size, {0, 0, 0});
    fill_scratch(size, size / 2, colour);
    const TEX_image_desc plain = {tex_format_rgba, size, size, 0, 0}, blocks = {tex_format_dxt1, size, size, 0, 0};
    if (name.ends_with(".png")) return TEX_save_png(folder / name, plain, scratch_array) ? folder / name : "";
    bytes image(TEX_bytes_needed_for_image(blocks));
    TEX_encode_s3tc(plain, blocks, scratch_array, image.data());
    return TEX_save_dds(folder / name, blocks, image.data()) ? folder / name : "";
}

TEST(tman, a_reference_or_size_out_of_bounds_is_fatal_and_names_the_image) {
    const alert_catcher alerts;
    const auto load = [](int manual_ref) {
        return tman.load_texture(4, manual_ref, builtin_flags, load_now, "scratch_array:x");
    };
    EXPECT_THROW(load(1132), left);
    EXPECT_THROW(load(-1), left);
    scratch_dx = 2049;
    scratch_dy = 1;
    EXPECT_THROW(load(388), left);
    EXPECT_NE(alerts.last().find("scratch_array:x"), std::string::npos);
    EXPECT_THROW(tman.bind_ref(5000, 0, 0), left);
    EXPECT_EQ(tman.load_texture(4, 0, builtin_flags, load_now, ""), 0);
}

TEST(tman, an_image_stands_in_the_low_corner_of_a_texture_of_powers_of_two) {
    gl_window window;
    const rgb orange{255, 128, 0};
    fill_scratch(1010, 764, orange);
    EXPECT_EQ(tman.load_texture(4, 389, builtin_flags, load_now, scratch_name), 389);
    tman.bind_ref(389, 0, 0);
    EXPECT_EQ(side(GL_TEXTURE_WIDTH) * 10000 + side(GL_TEXTURE_HEIGHT), 10241024);
    EXPECT_EQ(texel(0, 0), orange);
    EXPECT_EQ(texel(1009, 763), orange);

    // The same reference again: other pixels in the same texture, and nothing lost on the card.
    fill_scratch(300, 200, {0, 0, 255});
    const unsigned before = tman.record(389)->tex_id;
    tman.load_texture(4, 389, tex_fmt_rgba | tex_any_size | tex_clamp_x, load_now, scratch_name);
    tman.bind_ref(389, 0, 0);
    EXPECT_EQ(tman.record(389)->tex_id, before);
    EXPECT_EQ(side(GL_TEXTURE_WIDTH) * 1000 + side(GL_TEXTURE_HEIGHT), 300200);
    EXPECT_EQ(tman.loaded_texes(), 1);
}

TEST(tman, files_are_shared_by_name_and_go_when_nobody_uses_them) {
    gl_window window;
    const scratch folder;
    const std::string name = save(folder, "one.png", 8, {10, 20, 30});
    const int ref = tman.load_texture(fail_scenery, 0, tex_fmt_rgba | tex_full, load_on_bind, name);
    EXPECT_EQ(tman.load_texture(fail_scenery, 0, tex_fmt_rgba | tex_full, load_on_bind, name), ref);
    for (const int users_left : {1, 0}) {
        tman.release_texture(ref);
        tman.purge_unused_texes();
        EXPECT_EQ(tman.record(ref)->load_state == load_now, users_left == 1);
    }
}

TEST(tman, a_file_is_looked_for_as_dds_png_and_bmp) {
    gl_window window;
    const scratch folder;
    const rgb of_dds{255, 0, 0}, of_png{0, 255, 0};
    save(folder, "p.dds", 8, of_dds);
    save(folder, "p.png", 8, of_png);
    const auto drawn = [&](const char* name) {
        const int ref = tman.load_texture(fail_scenery, 0, tex_fmt_rgb | tex_full, load_now, folder / name);
        tman.bind_ref(ref, 0, 0);
        EXPECT_EQ(texel(2, 6), (rgb{0, 0, 0})) << "the upper half";
        return texel(2, 1);
    };
    EXPECT_EQ(drawn("p.png"), of_dds);
    use_options({"--no_dds"});
    EXPECT_EQ(drawn("p.bmp"), of_png);
}

TEST(tman, quality_and_the_card_bound_the_size_and_mipmaps_go_down_to_one_pixel) {
    gl_window window;
    const scratch folder;
    const std::string name = save(folder, "p.png", 64, {40, 80, 120});
    const auto width = [&](int flags, int quality, int card) {
        mnw.tex_quality = quality;
        glExt.max_texture_size = card;
        const int ref = tman.load_texture(fail_scenery, 0, tex_fmt_rgba | flags, load_now, name);
        tman.bind_ref(ref, 0, 0);
        return side(GL_TEXTURE_WIDTH);
    };
    EXPECT_EQ(width(0, 0, 2048), 2);
    EXPECT_EQ(width(tex_half, 5, 2048), 32);
    EXPECT_EQ(width(tex_full | tex_half, 0, 2048), 64);
    EXPECT_EQ(width(tex_full, 5, 16), 16);
    for (const int by_card : {0, 1}) {
        glExt.automini_avail = by_card;
        EXPECT_EQ(width(tex_full | tex_mipmap, 5, 2048), 64);
        EXPECT_EQ(side(GL_TEXTURE_WIDTH, 6), 1);
        EXPECT_EQ(texel(0, 0, 6), (rgb{20, 40, 60})) << "the mean of all";
    }
}

TEST(tman, what_is_missing_is_drawn_in_gray_and_told_once) {
    gl_window window;
    opened_log log;
    alert_catcher alerts;
    const rgb gray{128, 128, 128};
    const auto drawn = [&](int ref) {
        OGL_2dquad(ref, 49, 1, 0, 0, 0, 0, 0, 8, 0, 1, 8, 8, 1, 1, 8, 0, 1, 0, 1, alpha_blend);
        return window.grab().at(4, 4);
    };
    fill_scratch(1, 1, {255, 255, 255});
    tman.load_texture(4, 388, builtin_flags, load_now, scratch_name);
    EXPECT_EQ(drawn(392), gray);
    EXPECT_EQ(drawn(392), gray);
    ASSERT_EQ(alerts.count(), 1u) << "not in every frame";
    EXPECT_EQ(alerts.seen[0].level, t_alert);
    EXPECT_EQ(drawn(388), (rgb{255, 255, 255}));

    const int lost = tman.load_texture(fail_scenery, 0, tex_fmt_rgba, load_on_bind, "no/such.png");
    EXPECT_EQ(drawn(lost), gray);
    EXPECT_TRUE(log.text().ends_with("\nWARNING: we are missing the texture: no/such.png.\n")) << log.text();
    EXPECT_EQ(alerts.count(), 1u);
    EXPECT_THROW(tman.load_texture(4, 0, tex_fmt_rgba, load_now, "no/such.png"), left);
    EXPECT_EQ(alerts.seen.back().line4, "no/such.png");

    window.make_context();
    EXPECT_EQ(drawn(392), gray) << "the gray is made again with the context";
}

TEST(tman, what_is_missing_raises_the_flag_of_its_class_until_that_is_muted) {
    const alert_catcher alerts;
    const auto failed_after = [](int fail_mode) {
        tman.load_texture(fail_mode, 0, tex_fmt_rgba, load_now, "no/such.png");
        return std::array{tman.has_instl_load_fail(), tman.has_scene_load_fail(), tman.has_plane_load_fail()};
    };
    EXPECT_EQ(failed_after(fail_scenery), (std::array{false, true, false}));
    EXPECT_EQ(failed_after(fail_plane), (std::array{false, true, true}));
    tman.mute_plane_load_fail();
    tman.reset_scene_load_fail();
    tman.reset_plane_load_fail();
    EXPECT_EQ(failed_after(fail_plane), (std::array{false, false, false}));
    EXPECT_THROW(failed_after(fail_is_fatal), left);
    EXPECT_TRUE(tman.has_instl_load_fail());
}

TEST(tman, a_texture_that_is_bound_is_not_bound_again_unless_it_went) {
    gl_window window;
    fill_scratch(1, 1, {255, 255, 255});
    tman.load_texture(4, 388, builtin_flags, load_now, scratch_name);
    tman.load_texture(4, 389, builtin_flags, load_now, scratch_name);
    tman.bind_ref(388, 0, 0);
    const auto calls_of = [](int ref, int unit) {
        watch_anew();
        tman.bind_ref(ref, unit, 0);
        return gl_calls.total();
    };
    EXPECT_EQ(calls_of(388, 0), 0);
    EXPECT_EQ(calls_of(389, 0), 1);
    EXPECT_GT(calls_of(389, 1), 0) << "units are apart";
    // A name that OpenGL gives out again must not pass for the texture that had it.
    const auto gone = static_cast<int>(tman.record(389)->tex_id);
    tman.unload_texture(389);
    watch_anew();
    TEX_bind_ref(gone, 0, 0);
    EXPECT_GT(gl_calls.total(), 0);
}
