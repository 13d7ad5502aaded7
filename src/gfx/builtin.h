// builtin.h: the program's pictures, compiled in, so that it draws its whole interface from nothing but itself.
// Those of scale 1 are raw pixels; for scales above it there are pictures of twice the size, and a sheet of letters for
// each step but 1, packed.
#pragma once

// RGBA bytes, rows from the bottom up.
struct builtin_image {
    const unsigned char* pixels;
    int width, height;
    int reference;
};
extern const builtin_image builtin_images[4];  // installer sheet, two backgrounds, atlas last

// The sheet of letters that belongs to what is loaded: 21 cells in a row, 5 rows.
struct glyph_sheet_t {
    float scale;           // pixels of the sheet for one unit
    int cell_dx, cell_dy;  // pixels
    int border;            // free pixels round each cell
    int baseline;          // pixels from the cell's lower edge
    int dx, dy;            // of the whole texture
    int reference;
};
extern glyph_sheet_t glyph_sheet;

// Loads all, as mnw.scale wants them, at start-up and whenever the context has been made again. The atlas comes last
// and so stays in scratch_array.
void recall_ins_texes();
void match_ins_texes();  // the same, if mnw.scale wants others than are loaded
// Colours 34 to 47 from the atlas in scratch_array.
void take_palette_from_atlas();
