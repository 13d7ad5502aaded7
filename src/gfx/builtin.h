// builtin.h: the program's pictures, compiled in as raw pixels, so that it draws its whole interface from nothing but
// itself: RGBA bytes, rows from the bottom up.
#pragma once

struct builtin_image {
    const unsigned char* pixels;
    int width, height;
    int reference;
};
extern const builtin_image builtin_images[4];  // installer sheet, two backgrounds, atlas last

// Loads the four, at start-up and whenever the context has been made again. The atlas comes last and so stays in
// scratch_array.
void recall_ins_texes();
// Colours 34 to 47 from the atlas in scratch_array.
void take_palette_from_atlas();
