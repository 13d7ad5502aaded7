#include "gfx/builtin.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "gfx/colr.h"
#include "gfx/images/tex.h"
#include "gfx/mnw.h"
#include "gfx/tman.h"

// Made at build time from the pictures in art/rendered. A packed one ends where its `_end` stands.
#define PACKED(name) name[], name##_end[]
extern "C" {
extern const unsigned char t_installer_dat[], t_ins_back_1_dat[], t_ins_back_2_dat[], t_interface_dat[];
extern const unsigned char PACKED(t_installer_2x), PACKED(t_ins_back_1_2x), PACKED(t_interface_2x);
extern const unsigned char PACKED(t_glyphs_050), PACKED(t_glyphs_062), PACKED(t_glyphs_075), PACKED(t_glyphs_087);
extern const unsigned char PACKED(t_glyphs_125), PACKED(t_glyphs_150), PACKED(t_glyphs_175), PACKED(t_glyphs_200),
    PACKED(t_glyphs_250), PACKED(t_glyphs_300), PACKED(t_glyphs_400);
}
#undef PACKED

static constexpr int atlas_side = 512;

const builtin_image builtin_images[4] = {
    {t_installer_dat, 1010, 764, tex_installer},
    {t_ins_back_1_dat, 1024, 768, tex_back_1},
    {t_ins_back_2_dat, 1024, 768, tex_back_2},
    {t_interface_dat, atlas_side, atlas_side, tex_atlas},
};

struct packed_file {
    const unsigned char *begin, *end;
};
// Of builtin_images, twice as large. The spare background is never shown, and has none.
static const packed_file packed_images[4] = {
    {t_installer_2x, t_installer_2x_end},
    {t_ins_back_1_2x, t_ins_back_1_2x_end},
    {nullptr, nullptr},
    {t_interface_2x, t_interface_2x_end},
};
// At 1 the letters are those of the atlas.
static const struct {
    float scale;
    packed_file file;
} packed_glyphs[] = {
    {0.5f, {t_glyphs_050, t_glyphs_050_end}},
    {0.625f, {t_glyphs_062, t_glyphs_062_end}},
    {0.75f, {t_glyphs_075, t_glyphs_075_end}},
    {0.875f, {t_glyphs_087, t_glyphs_087_end}},
    {1, {nullptr, nullptr}},
    {1.25f, {t_glyphs_125, t_glyphs_125_end}},
    {1.5f, {t_glyphs_150, t_glyphs_150_end}},
    {1.75f, {t_glyphs_175, t_glyphs_175_end}},
    {2, {t_glyphs_200, t_glyphs_200_end}},
    {2.5f, {t_glyphs_250, t_glyphs_250_end}},
    {3, {t_glyphs_300, t_glyphs_300_end}},
    {4, {t_glyphs_400, t_glyphs_400_end}},
};

static constexpr glyph_sheet_t glyphs_of_atlas = {1, 14, 15, 0, 6, atlas_side, atlas_side, tex_atlas};
glyph_sheet_t glyph_sheet = glyphs_of_atlas;

static bool unpack(const packed_file& file, int width, int height, int channels) {
    scratch_dx = width;
    scratch_dy = height;
    return file.begin && TEX_unpack_png(file.begin, static_cast<std::size_t>(file.end - file.begin), width, height,
                                        channels, scratch_array) != 0;
}

// The sheet for a scale: the smallest that is as fine, else the finest.
static std::size_t glyphs_for(float scale) {
    std::size_t i = 0;
    while (i + 1 < std::size(packed_glyphs) && packed_glyphs[i].scale < scale)
        ++i;
    return i;
}

static void recall_glyphs() {
    static constexpr int columns = 21, rows = 5;
    glyph_sheet = glyphs_of_atlas;
    const auto& [scale, file] = packed_glyphs[glyphs_for(mnw.scale)];
    const auto pixels = [scale = scale](int units) {
        return static_cast<int>(std::ceil(static_cast<float>(units) * scale));
    };
    const int dx = pixels(14), dy = pixels(15), border = 1;
    const int sheet_dx = columns * (dx + 2 * border), sheet_dy = rows * (dy + 2 * border);
    if (!unpack(file, sheet_dx, sheet_dy, 1)) return;
    tman.load_texture(fail_is_fatal, tex_glyphs, tex_fmt_alpha | tex_full | tex_any_size, load_now, scratch_name);
    glyph_sheet = {scale, dx, dy, border, static_cast<int>(std::nearbyint(6 * scale)), sheet_dx, sheet_dy, tex_glyphs};
}

void recall_ins_texes() {
    recall_glyphs();
    for (std::size_t i = 0; i < std::size(builtin_images); ++i) {
        const builtin_image& image = builtin_images[i];
        if (mnw.scale <= 1 || !unpack(packed_images[i], 2 * image.width, 2 * image.height, 4)) {
            scratch_dx = image.width;
            scratch_dy = image.height;
            std::memcpy(scratch_array, image.pixels, static_cast<std::size_t>(image.width * image.height) * 4);
        }
        tman.load_texture(fail_is_fatal, image.reference, tex_fmt_rgba | tex_full | tex_no_effect, load_now,
                          scratch_name);
    }
}

void match_ins_texes() {
    if (packed_glyphs[glyphs_for(mnw.scale)].scale != glyph_sheet.scale) recall_ins_texes();
}

void take_palette_from_atlas() {
    // The swatches from the top one down; each is read in its middle.
    static constexpr int swatches[] = {34, 35, 36, 37, 38, 40, 41, 42, 43, 45, 46, 47, 44};
    static constexpr int column = 319, top_row = 155, step = 8;
    const int size = scratch_dx / atlas_side;  // of the atlas that is loaded
    int row = top_row;
    for (const int index : swatches) {
        const std::ptrdiff_t place = std::ptrdiff_t{row} * size * scratch_dx + std::ptrdiff_t{column} * size;
        const unsigned char* pixel = scratch_array + place * 4;
        const auto channel = [pixel](int i) { return static_cast<float>(pixel[i]) / 255; };
        colr.assign(index, channel(0), channel(1), channel(2));
        row -= step;
    }
    // 39 has no swatch: it is the mean of two.
    const float *a = colr.rgb(colour_menu), *b = colr.rgb(colour_groove);
    colr.assign(39, (a[0] + b[0]) / 2, (a[1] + b[1]) / 2, (a[2] + b[2]) / 2);
}
