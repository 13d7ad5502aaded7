#include "gfx/glext.h"

#include <GL/gl.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <string_view>

#include "display/display.h"
#include "gfx/glext_names.h"
#include "gfx/ren.h"
#include "runtime/cmdline.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"

OGL_extensions glExt;

namespace {

using flag = int OGL_extensions::*;

struct flag_row {
    flag feature;
    const char* extension;
    const char* or_else;  // another name of the same; null if there is none
    int core_version;     // that took it in; 0: none did
};
constexpr flag_row flag_rows[] = {
    {&OGL_extensions::arb_mtex_avail, "GL_ARB_multitexture", nullptr, 130},
    {&OGL_extensions::tex_clamp_avail, "GL_EXT_texture_edge_clamp", "GL_SGIS_texture_edge_clamp", 120},
    {&OGL_extensions::add_env_avail, "GL_ARB_texture_env_add", "GL_EXT_texture_env_add", 130},
    {&OGL_extensions::combine_avail, "GL_ARB_texture_env_combine", "GL_EXT_texture_env_combine", 130},
    {&OGL_extensions::dis_fog_avail, "GL_NV_fog_distance", nullptr, 0},
    {&OGL_extensions::tex_comp_avail, "GL_ARB_texture_compression", nullptr, 130},
    {&OGL_extensions::vbo_avail, "GL_ARB_vertex_buffer_object", nullptr, 150},
    {&OGL_extensions::pbo_avail, "GL_ARB_pixel_buffer_object", nullptr, 210},
    {&OGL_extensions::vprog_avail, "GL_ARB_vertex_program", nullptr, 0},
    {&OGL_extensions::fprog_avail, "GL_ARB_fragment_program", nullptr, 0},
    {&OGL_extensions::automini_avail, "GL_SGIS_generate_mipmap", nullptr, 140},
    {&OGL_extensions::aniso_avail, "GL_EXT_texture_filter_anisotropic", nullptr, 460},
    {&OGL_extensions::fsaa_avail, "GL_ARB_multisample", nullptr, 130},
    {&OGL_extensions::sprites_avail, "GL_ARB_point_sprite", nullptr, 200},
    {&OGL_extensions::depth_tex_avail, "GL_ARB_depth_texture", nullptr, 140},
    {&OGL_extensions::occlude_avail, "GL_ARB_occlusion_query", nullptr, 150},
    {&OGL_extensions::shad_objs_avail, "GL_ARB_shader_objects", nullptr, 200},
    {&OGL_extensions::vshader_avail, "GL_ARB_vertex_shader", nullptr, 200},
    {&OGL_extensions::fshader_avail, "GL_ARB_fragment_shader", nullptr, 200},
    {&OGL_extensions::gshader_avail, "GL_EXT_geometry_shader4", nullptr, 320},
    {&OGL_extensions::glsl_avail, "GL_ARB_shading_language_100", nullptr, 200},
    {&OGL_extensions::framebuf_avail, "GL_EXT_framebuffer_object", nullptr, 300},
};

struct switch_row {
    const char* option;
    flag turned_off[2];  // the second may be null
};
constexpr switch_row switch_rows[] = {
    {"--no_vbos", {&OGL_extensions::vbo_avail, &OGL_extensions::pbo_avail}},
    {"--no_pbos", {&OGL_extensions::pbo_avail}},
    {"--no_sprites", {&OGL_extensions::sprites_avail}},
    {"--no_pixel_counters", {&OGL_extensions::occlude_avail}},
    {"--no_aniso_filtering", {&OGL_extensions::aniso_avail}},
    {"--no_hw_mipmap", {&OGL_extensions::automini_avail}},
    {"--no_vshaders", {&OGL_extensions::vprog_avail}},
    {"--no_fshaders", {&OGL_extensions::fprog_avail}},
    {"--no_glsl", {&OGL_extensions::glsl_avail}},
    {"--no_fbos", {&OGL_extensions::framebuf_avail}},
    {"--no_threaded_ogl", {&OGL_extensions::threaded_avail}},
    {"--no_sblend", {&OGL_extensions::sblend_avail}},
};

// What is looked up together: where one entry point of a group is missing, its features are off.
struct glext_group {
    const entry_point_names& names;
    flag features[2];  // that need them; the second may be null
};
constexpr glext_group glext_groups[] = {
    {buffer_entry_points, {&OGL_extensions::vbo_avail}},
    {program_entry_points, {&OGL_extensions::vprog_avail, &OGL_extensions::fprog_avail}},
    {attribute_entry_points, {&OGL_extensions::vprog_avail}},
    {query_entry_points, {&OGL_extensions::occlude_avail}},
    {shader_entry_points, {&OGL_extensions::shad_objs_avail}},
    {vertex_shader_entry_points, {&OGL_extensions::vshader_avail}},
    {framebuffer_entry_points, {&OGL_extensions::framebuf_avail}},
    {compression_entry_points, {&OGL_extensions::tex_comp_avail}},
    {blend_entry_points, {&OGL_extensions::sblend_avail}},
};

// What the driver tells of its programs or shaders: instructions, parameters, temporaries and attributes, or their
// like.
constexpr int limit_count = 4;
using limits = std::array<GLint, limit_count>;

bool has(const char* extension) {
    return std::strstr(ren.extensions, extension) != nullptr;
}

const char* driver_text(GLenum which, const char* if_none = "") {
    const GLubyte* text = glGetString(which);
    return text ? reinterpret_cast<const char*>(text) : if_none;
}

GLint integer(GLenum which) {
    GLint value = 0;
    glGetIntegerv(which, &value);
    return value;
}

// What was looked up, found or not. Lives as long as the process; each probe fills it anew.
std::map<std::string_view, void*> procs;

// Where only the core has a feature, its names have lost the suffix.
void* find_proc(const char* name) {
    if (void* proc = display_proc_address(name)) return proc;
    const std::string_view whole = name;
    if (!whole.ends_with("ARB") && !whole.ends_with("EXT")) return nullptr;
    return display_proc_address(std::string(whole.substr(0, whole.size() - 3)).c_str());
}

bool wanted(const OGL_extensions& ext, const glext_group& group) {
    return ext.*group.features[0] || (group.features[1] && ext.*group.features[1]);
}

limits native_limits(const OGL_extensions& ext, GLenum target) {
    static constexpr GLenum asked[] = {GL_MAX_PROGRAM_NATIVE_INSTRUCTIONS_ARB, GL_MAX_PROGRAM_NATIVE_PARAMETERS_ARB,
                                       GL_MAX_PROGRAM_NATIVE_TEMPORARIES_ARB, GL_MAX_PROGRAM_NATIVE_ATTRIBS_ARB};
    const auto get = reinterpret_cast<PFNGLGETPROGRAMIVARBPROC>(ext.entry_point("glGetProgramivARB"));
    limits values{};
    for (std::size_t i = 0; get && i < limit_count; ++i)
        get(target, asked[i], &values[i]);
    return values;
}

// Programs that the card itself has no room for would run in software, so slowly that they count as not there.
limits limit_programs(OGL_extensions& ext, flag feature, GLenum target, const char* kept_by) {
    if (!(ext.*feature)) return {};
    const limits values = native_limits(ext, target);
    if (values == limits{} && !cmdline.has_option(kept_by)) ext.*feature = 0;
    if (values[0] < 100) ext.first_gen_shaders = 1;
    return values;
}

void log_flag(const char* label, int value, const std::string& detail = "") {
    xer << label << (value ? "true" : "false") << detail << "\n";
}

std::string in_brackets(const limits& values) {
    std::string text;
    for (const GLint value : values)
        text += (text.empty() ? " (" : "/") + std::to_string(value);
    return text + ")";
}

}  // namespace

int OGL_extensions::init_entry_points() {
    return display_proc_address("glGetString") ? 0 : 1;
}

void OGL_extensions::init_extensions() {
    // What the driver says of itself.
    ren.vendor = driver_text(GL_VENDOR);
    ren.renderer = driver_text(GL_RENDERER);
    ren.version = driver_text(GL_VERSION);
    ren.extensions = driver_text(GL_EXTENSIONS);
    int major = 0, minor = 0;
    version = std::sscanf(ren.version, "%d.%d", &major, &minor) == 2 ? major * 100 + minor * 10 : 0;

    // A feature is there under its extension's name, or because the core has taken it in.
    for (const flag_row& row : flag_rows)
        this->*row.feature = has(row.extension) || (row.or_else && has(row.or_else)) ||
                             (row.core_version && version >= row.core_version);
    sblend_avail = (has("GL_EXT_blend_func_separate") && has("GL_EXT_blend_equation_separate")) || version >= 200;
    first_gen_shaders = 0;
    threaded_avail = 0;  // the system has no such thing

    // Faults of drivers that have been met. Those that came with a version of another system are not among them.
    if (std::strstr(ren.renderer, "Intel GMA 950 OpenGL Engine") && !cmdline.has_option("--use_glsl")) {
        glsl_avail = 0;
        xer << "Disabling GLSL for GMA 950.\n";
    }
    if (std::strcmp(ren.renderer, "ATI Radeon HD 2600 PRO OpenGL Engine") == 0 &&
        !cmdline.has_option("--use_sprites")) {
        sprites_avail = 0;
        xer << "Disabling point sprites for Radeon HD on OS X.\n";
    }
    if (std::strstr(ren.vendor, "NVIDIA") && !has("GL_NV_fragment_program2")) first_gen_shaders = 1;

    // The entry points of what is there. A group that is not whole takes its features with it.
    procs.clear();
    for (const glext_group& group : glext_groups) {
        if (!wanted(*this, group)) continue;
        for (const char* name : group.names) {
            if ((procs[name] = find_proc(name))) continue;
            xer << "WARNING: extension missing proc " << name << "\n";
            for (const flag feature : group.features)
                if (feature) this->*feature = 0;
        }
    }
    if (pbo_avail && !vbo_avail) {
        pbo_avail = 0;
        xer << "Disabling PBOs because VBOs are not available.  This probably means that VBOs are disabled for "
               "compatibility reasons.\n";
    }

    // Limits, which may take programs away.
    const limits of_fprogs =
        limit_programs(*this, &OGL_extensions::fprog_avail, GL_FRAGMENT_PROGRAM_ARB, "--use_fprogs");
    const limits of_vprogs = limit_programs(*this, &OGL_extensions::vprog_avail, GL_VERTEX_PROGRAM_ARB, "--use_vprogs");
    limits of_vshaders{};
    if (vshader_avail)
        of_vshaders = {integer(GL_MAX_VERTEX_UNIFORM_COMPONENTS), integer(GL_MAX_VERTEX_ATTRIBS),
                       integer(GL_MAX_VARYING_FLOATS), fshader_avail ? integer(GL_MAX_FRAGMENT_UNIFORM_COMPONENTS) : 0};
    const char* shading_language = glsl_avail ? driver_text(GL_SHADING_LANGUAGE_VERSION, "<null string>") : "n/a";
    ren.tex_units = arb_mtex_avail ? std::max(1, integer(GL_MAX_TEXTURE_UNITS)) : 1;
    if (const GLint side = integer(GL_MAX_TEXTURE_SIZE); side > 0) max_texture_size = side;
    if (aniso_avail) glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &max_aniso);
    GLfloat point_sizes[2] = {1, 1};
    glGetFloatv(GL_POINT_SIZE_RANGE, point_sizes);
    max_point_size = point_sizes[1];

    // The switches of the command line have the last word.
    for (const switch_row& row : switch_rows) {
        if (!cmdline.has_option(row.option)) continue;
        for (const flag feature : row.turned_off)
            if (feature) this->*feature = 0;
    }

    // The log tells all of it, in an order that support knows by heart.
    xer << "OpenGL Vendor    : " << ren.vendor << "\n";
    xer << "OpenGL Render    : " << ren.renderer << "\n";
    xer << "OpenGL Version   : " << ren.version << " (" << version << ")\n";
    xer << "OpenGL Extensions: " << ren.extensions << "\n";
    log_flag("tex_clamp_avail  : ", tex_clamp_avail);
    log_flag("add_env_avail    : ", add_env_avail);
    log_flag("combine_avail    : ", combine_avail);
    log_flag("dis_fog_avail    : ", dis_fog_avail);
    log_flag("tex_comp_avail   : ", tex_comp_avail);
    log_flag("vbo_avail        : ", vbo_avail);
    log_flag("pbo_avail        : ", pbo_avail);
    log_flag("vprog_avail      : ", vprog_avail, in_brackets(of_vprogs));
    log_flag("fprog_avail      : ", fprog_avail, in_brackets(of_fprogs));
    log_flag("automini_avail   : ", automini_avail);
    log_flag("aniso_avail      : ", aniso_avail);
    log_flag("fsaa_avail       : ", fsaa_avail);
    log_flag("sprites_avail    : ", sprites_avail);
    log_flag("depth_tex_avail  : ", depth_tex_avail);
    log_flag("occlude_avail    : ", occlude_avail);
    log_flag("shad_objs_avail  : ", shad_objs_avail);
    log_flag("vshader_avail    : ", vshader_avail, in_brackets(of_vshaders));
    log_flag("fshader_avail    : ", fshader_avail);
    log_flag("gshader_avail    : ", gshader_avail);
    log_flag("glsl_avail       : ", glsl_avail, std::string(" (") + shading_language + ")");
    log_flag("framebuf_avail   : ", framebuf_avail);
    log_flag("sblend_avail     : ", sblend_avail);
    log_flag("threaded_avail   : ", threaded_avail);
    log_flag("first-gen shaders: ", first_gen_shaders);
    xer << "max tex units    : " << ren.tex_units << "\n";
    xer << "max iso filtering: " << max_aniso << "\n";
    xer << "max texture size : " << max_texture_size << "\n";
    xer << "max point size   : " << max_point_size << "\n";
    xer.flush();

    // Hardware that is too weak ends the program, unless it was told to run all the same.
    if (!arb_mtex_avail && version < 110) {
        const bool forced = cmdline.has_option("--force_run");
        __MACIBM_alert(
            0,
            "Your graphics hardware cannot support Velaris. Velaris requires a graphics card with 16 MB of VRAM and "
            "multitexturing.",
            forced ? "Your system does not meet Velaris's hardware requirements."
                   : "First, try updating your graphics drivers.",
            forced ? "You have used the force-run command inline option to run Velaris anyway, but it may crash."
                   : "If this does not help, check your graphics card specifications.",
            std::string(forced ? "For system requirements and support please see "
                               : "For further help please write to the support of ") +
                maker_site + ".",
            forced ? t_alert : t_exit, OOPS_PLACE);
    }

    // Drawing in software works, slowly. Names that merely begin so are drivers of their own.
    for (const char* software : {"GENERIC", "Generic", "Mesa GLX Indirect"})
        if (std::strcmp(ren.renderer, software) == 0)
            __MACIBM_alert(0,
                           "I can not find a 3-D accelerator card that can handle OpenGL that has correctly installed "
                           "drivers.",
                           "I will still let you run the simulator, but the frame rate will NOT allow for a good "
                           "simulation.",
                           "For you to fly realistically, you must use Velaris version Classic, or get a 3-D "
                           "accelerator card that can handle OpenGL.",
                           std::string("A list of compatible video cards is at ") + maker_site + ".", t_alert,
                           OOPS_PLACE);
}

void* OGL_extensions::entry_point(const char* name) const {
    for (const glext_group& group : glext_groups)
        for (const char* known : group.names)
            if (std::strcmp(known, name) == 0) {
                const auto found = wanted(*this, group) ? procs.find(known) : procs.end();
                return found == procs.end() ? nullptr : found->second;
            }
    return nullptr;
}
