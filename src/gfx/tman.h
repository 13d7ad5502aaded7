// tman.h: every texture as a small integer reference; the manager owns the names behind them.
// References: 388 interface atlas, 389 installer sheet, 390 and 391 backgrounds, 393 letters of another scale than 1,
// 926 a gray pixel for what is missing; below 1131 they are fixed by the caller, from there on given out.
// Errors: a missing file is fatal with fail mode 4, else a log line and the gray pixel. Misuse is fatal.
// Threads: tables are guarded by one critical section; OpenGL calls on the main thread only.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "gfx/tex_bind.h"
#include "gfx/tex_flags.h"

enum : int {
    tex_atlas = 388,
    tex_installer = 389,
    tex_back_1 = 390,
    tex_back_2 = 391,
    tex_glyphs = 393,
    tex_blank = 926,
    tex_auto = 1131
};
enum : int { load_now = 100, load_on_bind = 101, load_never = 102 };
extern const char* const scratch_name;  // "scratch_array:hardwired textures"

class tman_class {
  public:
    struct ref_dat_struct {
        std::string name = "un-inited";
        unsigned tex_id = 0;
        float width = 0, height = 0, tex_width = 0, tex_height = 0;
        int byte_count = 0;
        int format = 0x1908;
        int load_state = load_never;
        int flags = 0;
        int fail_mode = fail_is_fatal;
        int use_count = 0;       // -1 for a manual reference
        bool miss_told = false;  // that it has no picture is in the log or on the screen; told once, not every frame
    };

    // Returns the reference, 0 for an empty name. `manual_ref` 0 asks for a free one from tex_auto up. Names that begin
    // with "scratch_array" take the pixels in scratch_array, of scratch_dx by scratch_dy, and are never shared; nor is
    // what loads now.
    int load_texture(int fail_mode, int manual_ref, int flags, int load_time, const std::string& name);
    // What has no picture is drawn in gray, and, unless it is reference 0, an alert tells of it once.
    void bind_ref(int ref, int unit, int env);
    void unload_texture(int ref);   // off the card; one from a file comes back with its next bind
    void release_texture(int ref);  // gives up one use
    void purge_unused_texes();      // unloads and forgets what nobody uses any more
    void force_load_tex(int ref);   // now, if it is not loaded
    int total_texes() const;
    int loaded_texes() const;
    int tot_vram() const;  // bytes
    void reset_bind() { TEX_forget_bound(); }
    void forget_textures();  // the context is gone, and the names with it
    void set_blend_level(int unit, float level) { TEX_set_blend_level(unit, level); }
    const ref_dat_struct* record(int ref) const;  // null if there is none

    // For each class of fail mode: whether a picture was missing since the last reset. A class that is muted raises its
    // flag no more, nor the alert of bind_ref.
    bool has_instl_load_fail() const { return instl.failed; }
    void reset_instl_load_fail() { instl.failed = false; }
    void mute_instl_load_fail() { instl.muted = true; }
    bool has_scene_load_fail() const { return scene.failed; }
    void reset_scene_load_fail() { scene.failed = false; }
    void mute_scene_load_fail() { scene.muted = true; }
    bool has_plane_load_fail() const { return plane.failed; }
    void reset_plane_load_fail() { plane.failed = false; }
    void mute_plane_load_fail() { plane.muted = true; }

  private:
    ref_dat_struct& row_of(int ref);  // fatal if there is none
    int shared_ref(const std::string& name);
    int place_for(int manual_ref);  // the reference to use, with its row
    void enter_name(int ref, const std::string& name);
    void leave_name(int ref);
    int load_texture_int(int ref);  // 1 on success
    unsigned blank_texture();
    unsigned missing_texture(int ref);

    struct load_fail {
        bool failed = false, muted = false;
    };
    load_fail instl, scene, plane;
    load_fail& fail_of(int fail_mode);
    std::vector<ref_dat_struct> ref_dat;
    std::unordered_multimap<unsigned, int> tex_hash;  // hash of the name to the reference
};
extern tman_class tman;
