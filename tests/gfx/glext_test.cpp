#include "gfx/glext.h"

#include <gtest/gtest.h>

#include <sstream>

#include "gfx/gl_calls.h"
#include "gfx/gl_window.h"
#include "gfx/oglp.h"
#include "runtime/cmdline.h"
#include "runtime/opened_log.h"
#include "support/alerts.h"

static void use_options(std::vector<std::string> options) {
    cmdline.clear();
    std::vector<char*> argv = {options.emplace_back("test").data()};
    for (std::size_t i = 0; i + 1 < options.size(); ++i)
        argv.push_back(options[i].data());
    cmdline.init_unix(static_cast<int>(argv.size()), argv.data());
}

static OGL_extensions probe(const char* version, const char* extensions, const char* renderer = "R",
                            const char* vendor = "V") {
    gl_calls.pretended_vendor = vendor;
    gl_calls.pretended_renderer = renderer;
    gl_calls.pretended_version = version;
    gl_calls.pretended_extensions = extensions;
    OGL_extensions ext;
    ext.init_extensions();
    return ext;
}

static int lines_with(const std::string& text, const std::string& part) {
    int found = 0;
    std::istringstream all(text);
    for (std::string line; std::getline(all, line);)
        found += line.find(part) != std::string::npos;
    return found;
}

TEST(glext, a_feature_comes_by_its_name_or_with_the_core_and_goes_with_a_missing_entry_point) {
    opened_log log;
    OGL_extensions ext = probe("1.1",
                               "GL_ARB_point_sprite GL_EXT_blend_func_separate GL_ARB_vertex_buffer_object "
                               "GL_ARB_pixel_buffer_object GL_SGIS_texture_edge_clamp");
    EXPECT_EQ(ext.version, 110);
    EXPECT_TRUE(ext.sprites_avail);
    EXPECT_TRUE(ext.tex_clamp_avail);
    EXPECT_FALSE(ext.sblend_avail) << "needs both its halves";
    EXPECT_FALSE(ext.arb_mtex_avail);
    EXPECT_EQ(ren.tex_units, 1);
    // Without a window no entry point is found.
    EXPECT_FALSE(ext.vbo_avail);
    EXPECT_FALSE(ext.pbo_avail);
    EXPECT_EQ(lines_with(log.text(), "WARNING: extension missing proc gl"), 11);
    EXPECT_EQ(lines_with(log.text(), "WARNING: extension missing proc glBindBufferARB"), 1);
    EXPECT_EQ(lines_with(log.text(), "Disabling PBOs because VBOs are not available.  This probably means that VBOs"),
              1);
    EXPECT_EQ(ext.entry_point("glBindBufferARB"), nullptr);
    EXPECT_TRUE(probe("1.3.2 of somebody", "").arb_mtex_avail);
    EXPECT_FALSE(probe("1.2", "").arb_mtex_avail);
    EXPECT_EQ(probe("nonsense", "GL_ARB_multitexture").version, 0);
}

TEST(glext, known_faults_of_drivers_are_worked_around_unless_told_not_to) {
    opened_log log;
    const char* gma = "Intel GMA 950 OpenGL Engine";
    EXPECT_FALSE(probe("1.4", "GL_ARB_shading_language_100", gma).glsl_avail);
    EXPECT_EQ(lines_with(log.text(), "Disabling GLSL for GMA 950."), 1);
    use_options({"--use_glsl"});
    EXPECT_TRUE(probe("1.4", "GL_ARB_shading_language_100", gma).glsl_avail);
    EXPECT_EQ(lines_with(log.text(), "Disabling GLSL"), 1);
    EXPECT_FALSE(probe("1.4", "GL_ARB_point_sprite", "ATI Radeon HD 2600 PRO OpenGL Engine").sprites_avail);
    EXPECT_TRUE(probe("1.4", "GL_ARB_point_sprite", "ATI Radeon HD 2600 PRO OpenGL Engine 2").sprites_avail);
    EXPECT_TRUE(probe("1.4", "", "R", "NVIDIA Corporation").first_gen_shaders);
    EXPECT_FALSE(probe("1.4", "GL_NV_fragment_program2", "R", "NVIDIA Corporation").first_gen_shaders);
}

TEST(glext, weak_hardware_ends_the_program_and_software_only_warns) {
    alert_catcher alerts;
    probe("1.1", "");
    EXPECT_EQ(alerts.count(), 0u);
    EXPECT_THROW(probe("1.0", ""), left);
    EXPECT_EQ(alerts.seen.back().line2, "First, try updating your graphics drivers.");
    use_options({"--force_run"});
    EXPECT_NO_THROW(probe("1.0", ""));
    EXPECT_EQ(alerts.seen.back().level, t_alert);
    EXPECT_EQ(alerts.seen.back().line2, "Your system does not meet Velaris's hardware requirements.");
    const std::size_t before = alerts.count();
    probe("1.4", "", "llvmpipe (LLVM 15.0.6, 256 bits)");
    probe("1.4", "", "Generic Vendor's Card");
    EXPECT_EQ(alerts.count(), before);
    probe("1.4", "", "Generic");
    EXPECT_EQ(alerts.count(), before + 1);
    EXPECT_EQ(alerts.seen.back().level, t_alert);
}

TEST(glext, a_real_driver_is_found_out_and_the_switches_have_the_last_word) {
    gl_window window;
    opened_log log;
    EXPECT_EQ(glExt.init_entry_points(), 0);
    glExt.init_extensions();
    EXPECT_TRUE(glExt.arb_mtex_avail);
    EXPECT_GE(glExt.version, 210);
    EXPECT_GT(ren.tex_units, 1);
    EXPECT_TRUE(glExt.vbo_avail && glExt.pbo_avail && glExt.framebuf_avail);
    EXPECT_NE(glExt.entry_point("glBindBufferARB"), nullptr);
    EXPECT_EQ(glExt.entry_point("glNoSuchThing"), nullptr);

    static constexpr const char* labels[] = {
        "OpenGL Vendor    : ", "OpenGL Render    : ", "OpenGL Version   : ", "OpenGL Extensions: ",
        "tex_clamp_avail  : ", "add_env_avail    : ", "combine_avail    : ", "dis_fog_avail    : ",
        "tex_comp_avail   : ", "vbo_avail        : ", "pbo_avail        : ", "vprog_avail      : ",
        "fprog_avail      : ", "automini_avail   : ", "aniso_avail      : ", "fsaa_avail       : ",
        "sprites_avail    : ", "depth_tex_avail  : ", "occlude_avail    : ", "shad_objs_avail  : ",
        "vshader_avail    : ", "fshader_avail    : ", "gshader_avail    : ", "glsl_avail       : ",
        "framebuf_avail   : ", "sblend_avail     : ", "threaded_avail   : ", "first-gen shaders: ",
        "max tex units    : ", "max iso filtering: ", "max texture size : ", "max point size   : "};
    std::istringstream text(log.text());
    std::string line;
    for (const char* label : labels) {
        ASSERT_TRUE(std::getline(text, line));
        EXPECT_TRUE(line.starts_with(label)) << line;
        const bool has_limits = std::string(label).starts_with("vprog") || std::string(label).starts_with("fprog");
        EXPECT_TRUE(!has_limits || line.find("true (") != std::string::npos) << line;
    }

    const auto without = [](const char* option) {
        use_options({option});
        glExt.init_extensions();
        return glExt;
    };
    EXPECT_FALSE(without("--no_pbos").pbo_avail);
    const OGL_extensions no_vbos = without("--no_vbos");
    EXPECT_FALSE(no_vbos.vbo_avail || no_vbos.pbo_avail);
    EXPECT_EQ(no_vbos.entry_point("glBindBufferARB"), nullptr);
    EXPECT_FALSE(without("--no_fshaders").fprog_avail);
    EXPECT_TRUE(without("--no_fshaders").vprog_avail);
    EXPECT_FALSE(without("--no_glsl").glsl_avail || without("--no_fbos").framebuf_avail);
}
