// glext.h: what the driver can do, found out once at start-up, logged, and corrected by the command line's switches.
#pragma once

// Lifetime: the findings hold for the context that was probed; a context that is made again on the same card has the
// same.
// Errors: a missing entry point is a line in the log and the end of its feature; weak hardware is an alert.
class OGL_extensions {
  public:
    int init_entry_points();  // how names are looked up; 0 on success
    void init_extensions();   // probes, logs; may end the program on hardware that is too weak

    // 1 where the feature is there and not switched off.
    int arb_mtex_avail = 0, tex_clamp_avail = 0, add_env_avail = 0, combine_avail = 0, dis_fog_avail = 0,
        tex_comp_avail = 0, vbo_avail = 0, pbo_avail = 0, vprog_avail = 0, fprog_avail = 0, automini_avail = 0,
        aniso_avail = 0, fsaa_avail = 0, sprites_avail = 0, depth_tex_avail = 0, occlude_avail = 0, shad_objs_avail = 0,
        vshader_avail = 0, fshader_avail = 0, gshader_avail = 0, glsl_avail = 0, first_gen_shaders = 0,
        framebuf_avail = 0, sblend_avail = 0, threaded_avail = 0;
    int max_texture_size = 2048;
    float max_point_size = 1, max_aniso = 1;
    int version = 0;  // major * 100 + minor * 10

    // Entry point by name, null if the driver has none or its group is off.
    void* entry_point(const char* name) const;
};
extern OGL_extensions glExt;
