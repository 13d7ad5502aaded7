#include "gfx/builtin.h"

#include <cstddef>
#include <cstring>

#include "gfx/colr.h"
#include "gfx/images/tex.h"
#include "gfx/tman.h"

// Made at build time from the pictures in art/rendered.
extern "C" {
extern const unsigned char t_installer_dat[], t_ins_back_1_dat[], t_ins_back_2_dat[], t_interface_dat[];
}

static constexpr int atlas_side = 512;

const builtin_image builtin_images[4] = {
    {t_installer_dat, 1010, 764, tex_installer},
    {t_ins_back_1_dat, 1024, 768, tex_back_1},
    {t_ins_back_2_dat, 1024, 768, tex_back_2},
    {t_interface_dat, atlas_side, atlas_side, tex_atlas},
};

void recall_ins_texes() {
    for (const builtin_image& image : builtin_images) {
        scratch_dx = image.width;
        scratch_dy = image.height;
        std::memcpy(scratch_array, image.pixels, static_cast<std::size_t>(image.width * image.height) * 4);
        tman.load_texture(fail_is_fatal, image.reference, tex_fmt_rgba | tex_full | tex_no_effect, load_now,
                          scratch_name);
    }
}

void take_palette_from_atlas() {
    // The swatches from the top one down; each is read in its middle.
    static constexpr int swatches[] = {34, 35, 36, 37, 38, 40, 41, 42, 43, 45, 46, 47, 44};
    static constexpr int column = 319, top_row = 155, step = 8;
    int row = top_row;
    for (const int index : swatches) {
        const unsigned char* pixel = scratch_array + std::ptrdiff_t{row * atlas_side + column} * 4;
        const auto channel = [pixel](int i) { return static_cast<float>(pixel[i]) / 255; };
        colr.assign(index, channel(0), channel(1), channel(2));
        row -= step;
    }
    // 39 has no swatch: it is the mean of two.
    const float *a = colr.rgb(colour_menu), *b = colr.rgb(colour_groove);
    colr.assign(39, (a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2);
}
