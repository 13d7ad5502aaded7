#include "gfx/tman.h"

#include <GL/gl.h>

#include <algorithm>
#include <cstdio>

#include "gfx/tex_bind.h"
#include "gfx/tman_load.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/utl_thread.h"

// Lookups by name go through the hash, by reference straight into the rows. A row without a name is free. What OpenGL
// has of a row is its `tex_id`; 0 where there is nothing on the card.
tman_class tman;
const char* const scratch_name = "scratch_array:hardwired textures";

static const char* const here = "HLutils/OOPS_cpp/tman";

namespace {

// Holds the tables for the length of a block. The section is recursive: a load may bind, and a bind may load.
class table_lock {
  public:
    table_lock() { UTL_critical_section_lock(section()); }
    ~table_lock() { UTL_critical_section_unlock(section()); }
    table_lock(const table_lock&) = delete;
    table_lock& operator=(const table_lock&) = delete;

  private:
    // Made at first use and never destroyed: `tman` is used before and after everything else.
    static UTL_critical_section* section() {
        static UTL_critical_section* const made = [] {
            UTL_critical_section* fresh = nullptr;
            UTL_critical_section_create(&fresh);
            return fresh;
        }();
        return made;
    }
};

// Off the card. What came from a file will come back with its next bind; what was drawn into the scratch buffer is
// lost.
void drop_texture(tman_class::ref_dat_struct& row) {
    if (row.tex_id) {
        glDeleteTextures(1, &row.tex_id);
        TEX_forget_bound(row.tex_id);
    }
    row.tex_id = 0;
    row.byte_count = 0;
    if (row.load_state == load_now) row.load_state = is_scratch_name(row.name) ? load_never : load_on_bind;
}

unsigned hash_of(const std::string& name) {
    unsigned h = 0;
    // Signed on every machine, so that the same name gives the same number everywhere.
    for (const char c : name)
        h = h * 5 + static_cast<unsigned>(static_cast<signed char>(c));
    return h;
}

void misuse(const char* what, const std::string& detail, const std::string& name, int line) {
    __MACIBM_alert(0, what, detail, name, "", t_exit, here, line);
}

void check_arguments(int manual_ref, int flags, int load_time, const std::string& name) {
    if (load_time < load_now || load_time > load_never)
        misuse("Trying to create an invalid texture load_time!", "load_time=" + std::to_string(load_time), name,
               __LINE__);
    if (manual_ref < 0 || manual_ref > tex_auto)
        misuse("Trying to bind too low or high a manual_ref!", "manual_ref=" + std::to_string(manual_ref), name,
               __LINE__);
    if (flags < 0 || flags >= 16384)
        misuse("Trying to bind an invalid filter type!", "flags=" + std::to_string(flags), name, __LINE__);
    if ((flags & tex_fmt_mask) == 0)
        misuse("BAD color enum for tman - see tman.h for valid colors!  We cannot pass 0.", "", name, __LINE__);
    if (const int bytes = tex_bytes_per_pixel(flags); bytes < 1 || bytes > 4)
        misuse("Trying to bind too low or high a number of bytes!", "bytes=" + std::to_string(bytes), name, __LINE__);
}

}  // namespace

const tman_class::ref_dat_struct* tman_class::record(int ref) const {
    const auto place = static_cast<std::size_t>(ref);  // below 0: past every end
    return place < ref_dat.size() ? &ref_dat[place] : nullptr;
}

tman_class::ref_dat_struct& tman_class::row_of(int ref) {
    if (!record(ref))
        __MACIBM_alert(
            0, "maybe we tried to load some texture thatis not avail, and we have not loaded the t_blank_gray yet?",
            "(manual_ref>=ref_dat.size()!", "ref=" + std::to_string(ref), "", t_exit, here, __LINE__);
    return ref_dat[static_cast<std::size_t>(ref)];
}

void tman_class::enter_name(int ref, const std::string& name) {
    leave_name(ref);
    row_of(ref).name = name;
    tex_hash.emplace(hash_of(name), ref);
}

void tman_class::leave_name(int ref) {
    const auto [begin, end] = tex_hash.equal_range(hash_of(row_of(ref).name));
    const auto found = std::find_if(begin, end, [ref](const auto& entry) { return entry.second == ref; });
    if (found != end) tex_hash.erase(found);
    row_of(ref).name = ref_dat_struct().name;
}

int tman_class::shared_ref(const std::string& name) {
    const auto [begin, end] = tex_hash.equal_range(hash_of(name));
    const auto found = std::find_if(begin, end, [&](const auto& entry) { return row_of(entry.second).name == name; });
    return found == end ? 0 : found->second;
}

int tman_class::place_for(int manual_ref) {
    // Every fixed number has its row from the start: one that nobody loaded is a missing picture, not misuse.
    if (ref_dat.empty()) ref_dat.resize(tex_auto);
    int ref = manual_ref;
    if (!ref) {
        const auto free = std::find_if(ref_dat.begin() + tex_auto, ref_dat.end(),
                                       [](const ref_dat_struct& row) { return row.name == ref_dat_struct().name; });
        ref = static_cast<int>(free - ref_dat.begin());
    }
    if (!record(ref)) ref_dat.resize(static_cast<std::size_t>(ref) + 1);
    return ref;
}

int tman_class::load_texture(int fail_mode, int manual_ref, int flags, int load_time, const std::string& name) {
    if (name.empty()) return 0;
    const table_lock lock;
    // A file that is known is shared. Scratch pixels are new each time, whatever their name.
    if (load_time != load_now && !is_scratch_name(name)) {
        if (const int ref = shared_ref(name)) {
            if (row_of(ref).use_count >= 0) ++row_of(ref).use_count;
            force_load_tex(ref);
            return ref;
        }
    }
    // A row of its own, which forgets what it held before; the texture on the card is written over.
    check_arguments(manual_ref, flags, load_time, name);
    const int ref = place_for(manual_ref);
    enter_name(ref, name);
    ref_dat_struct& row = row_of(ref);
    row.format = tex_gl_format(flags);
    row.load_state = load_time;
    row.flags = flags;
    row.fail_mode = fail_mode;
    row.use_count = manual_ref ? -1 : 1;
    row.miss_told = false;
    if (load_time == load_now) load_texture_int(ref);
    return ref;
}

tman_class::load_fail& tman_class::fail_of(int fail_mode) {
    return fail_mode == fail_is_fatal ? instl : fail_mode == fail_plane ? plane : scene;
}

int tman_class::load_texture_int(int ref) {
    ref_dat_struct& row = row_of(ref);
    tex_load_vars load;
    load.fail_mode = row.fail_mode;
    load.flags = row.flags;
    load.name = row.name;
    if (!load_texture_io(load)) {
        // Not tried again in every frame.
        row.load_state = load_never;
        row.miss_told = true;
        fail_of(row.fail_mode).failed |= !fail_of(row.fail_mode).muted;
        if (row.fail_mode == fail_is_fatal)
            __MACIBM_alert(
                0, "Trying to load a texture that you do not have!", "This smacks of a mis-installed copy of Velaris!",
                std::string("Please get a new download from ") + maker_site + ". This file is missing:", row.name,
                t_exit, here, __LINE__);
        xer << "WARNING: we are missing the texture: " << row.name << ".\n";
        return 0;
    }
    // `width` is the picture's own size; `tex_width` the texture's, in whose low corner it stands.
    row.width = static_cast<float>(load.desc.width);
    row.height = static_cast<float>(load.desc.height);
    TEX_get_scale(load);
    load_texture_ogl(load, row.tex_id);
    row.tex_width = static_cast<float>(load.tex_dx);
    row.tex_height = static_cast<float>(load.tex_dy);
    row.byte_count = load.tex_dx * load.tex_dy * tex_bytes_per_pixel(row.flags);
    // A quarter and a quarter of that and so on: a third.
    if (row.flags & tex_mipmap) row.byte_count += row.byte_count / 3;
    row.load_state = load_now;
    if ((row.flags & tex_keep_scratch) && load.pixels && load.pixels != scratch_array) {
        std::copy_n(load.pixels, TEX_bytes_needed_for_image(load.desc), scratch_array);
        scratch_dx = load.desc.width;
        scratch_dy = load.desc.height;
    }
    return 1;
}

void tman_class::bind_ref(int ref, int unit, int env) {
    const table_lock lock;
    if (row_of(ref).load_state == load_on_bind) load_texture_int(ref);
    const ref_dat_struct& row = row_of(ref);
    const unsigned tex_id = row.load_state == load_now ? row.tex_id : missing_texture(ref);
    TEX_bind_ref(static_cast<int>(tex_id), unit, env);
}

unsigned tman_class::missing_texture(int ref) {
    const unsigned gray = blank_texture();
    ref_dat_struct& row = row_of(ref);
    if (ref != 0 && ref != tex_blank && !row.miss_told) {
        row.miss_told = true;
        if (fail_of(row.fail_mode).muted) return gray;
        fail_of(row.fail_mode).failed = true;
        char text[40];
        std::snprintf(text, sizeof text, "ref=%6.0f", static_cast<double>(ref));
        __MACIBM_alert(0, "missing non-scenery texture - how?", text, std::string(row.name), "", t_alert, here,
                       __LINE__);
    }
    return gray;
}

// Made here and not by a load, so that a load that fails can always fall back on it.
unsigned tman_class::blank_texture() {
    static constexpr unsigned char gray[4] = {128, 128, 128, 255};
    ref_dat_struct& row = row_of(tex_blank);
    if (row.tex_id) return row.tex_id;
    glGenTextures(1, &row.tex_id);
    TEX_bind_ref(static_cast<int>(row.tex_id), 0, 0);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, gray);
    row.name = "scratch_array:blank gray";
    row.width = row.height = row.tex_width = row.tex_height = 1;
    row.byte_count = 4;
    row.load_state = load_now;
    row.use_count = -1;
    return row.tex_id;
}

void tman_class::unload_texture(int ref) {
    const table_lock lock;
    drop_texture(row_of(ref));
}

void tman_class::release_texture(int ref) {
    const table_lock lock;
    if (row_of(ref).use_count > 0) --row_of(ref).use_count;
}

void tman_class::purge_unused_texes() {
    const table_lock lock;
    for (int ref = tex_auto; record(ref); ++ref) {
        if (row_of(ref).use_count != 0) continue;
        drop_texture(row_of(ref));
        leave_name(ref);
        row_of(ref) = ref_dat_struct();
    }
}

void tman_class::force_load_tex(int ref) {
    const table_lock lock;
    if (row_of(ref).load_state != load_now) load_texture_int(ref);
}

int tman_class::total_texes() const {
    const table_lock lock;
    return static_cast<int>(std::count_if(ref_dat.begin(), ref_dat.end(),
                                          [](const ref_dat_struct& row) { return row.name != ref_dat_struct().name; }));
}

int tman_class::loaded_texes() const {
    const table_lock lock;
    return static_cast<int>(
        std::count_if(ref_dat.begin(), ref_dat.end(), [](const ref_dat_struct& row) { return row.tex_id != 0; }));
}

int tman_class::tot_vram() const {
    const table_lock lock;
    int bytes = 0;
    for (const ref_dat_struct& row : ref_dat)
        bytes += row.byte_count;
    return bytes;
}

void tman_class::forget_textures() {
    const table_lock lock;
    for (ref_dat_struct& row : ref_dat) {
        row.tex_id = 0;
        drop_texture(row);
    }
    reset_bind();
}
