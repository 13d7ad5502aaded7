#include "gfx/glext.h"

#include <GL/gl.h>
#include <gtest/gtest.h>

#include <tuple>

#include "gfx/gl_calls.h"
#include "gfx/gl_window.h"
#include "gfx/oglp.h"
#include "support/alerts.h"
#include "support/options.h"

static OGL_extensions probe(const char* version, const char* extensions, const char* renderer = "R") {
    gl_calls.pretended = {
        {GL_VENDOR, "V"}, {GL_RENDERER, renderer}, {GL_VERSION, version}, {GL_EXTENSIONS, extensions}};
    OGL_extensions ext;
    ext.init_extensions();
    return ext;
}

TEST(glext, a_feature_comes_by_its_name_or_with_the_core_and_goes_with_a_missing_entry_point) {
    OGL_extensions ext = probe("1.1",
                               "GL_ARB_point_sprite GL_EXT_blend_func_separate GL_ARB_vertex_buffer_object "
                               "GL_ARB_pixel_buffer_object GL_SGIS_texture_edge_clamp");
    EXPECT_TRUE(ext.sprites_avail);
    EXPECT_TRUE(ext.tex_clamp_avail);
    EXPECT_FALSE(ext.sblend_avail) << "needs both its halves";
    EXPECT_FALSE(ext.arb_mtex_avail);
    // Without a window no entry point is found.
    EXPECT_FALSE(ext.vbo_avail);
    EXPECT_FALSE(ext.pbo_avail);
    EXPECT_EQ(ext.entry_point("glBindBufferARB"), nullptr);
    EXPECT_TRUE(probe("1.3.2 of somebody", "").arb_mtex_avail);
    EXPECT_FALSE(probe("1.2", "").arb_mtex_avail);
    EXPECT_EQ(probe("nonsense", "GL_ARB_multitexture").version, 0);
}

TEST(glext, weak_hardware_ends_the_program_and_software_only_warns) {
    alert_catcher alerts;
    for (const auto& [version, renderer, warnings] : {std::tuple{"1.1", "R", 0u},
                                                      {"1.4", "llvmpipe (LLVM 15.0.6, 256 bits)", 0u},
                                                      {"1.4", "Generic Vendor's Card", 0u},
                                                      {"1.4", "Generic", 1u}}) {
        probe(version, "", renderer);
        EXPECT_EQ(alerts.count(), warnings) << renderer;
    }
    EXPECT_THROW(probe("1.0", ""), left);
    use_options({"--force_run"});
    EXPECT_NO_THROW(probe("1.0", ""));
    EXPECT_EQ(alerts.seen.back().level, t_alert);
}

TEST(glext, a_real_driver_is_found_out_and_the_switches_have_the_last_word) {
    gl_window window;
    EXPECT_EQ(glExt.init_entry_points(), 0);
    glExt.init_extensions();
    EXPECT_TRUE(glExt.arb_mtex_avail);
    EXPECT_GT(ren.tex_units, 1);
    EXPECT_TRUE(glExt.vbo_avail && glExt.pbo_avail && glExt.framebuf_avail);
    EXPECT_NE(glExt.entry_point("glBindBufferARB"), nullptr);
    EXPECT_EQ(glExt.entry_point("glNoSuchThing"), nullptr);

    const auto without = [](const char* option) {
        use_options({option});
        glExt.init_extensions();
        return glExt;
    };
    EXPECT_FALSE(without("--no_pbos").pbo_avail);
    const OGL_extensions no_vbos = without("--no_vbos");
    EXPECT_FALSE(no_vbos.vbo_avail || no_vbos.pbo_avail);
    EXPECT_EQ(no_vbos.entry_point("glBindBufferARB"), nullptr);
    EXPECT_FALSE(without("--no_glsl").glsl_avail || without("--no_fbos").framebuf_avail);
}
