// shapes.h: rounded faces and lines, drawn by code, so that they are crisp at every scale. Edges are feathered by a pixel.
// Units: canvas units relative to the logical window. Colours are 0xRRGGBB and take no tint.
#pragma once

struct box_place {
    float left, bottom, right, top;
};
constexpr box_place grown(const box_place& box, float by) {
    return {box.left - by, box.bottom - by, box.right + by, box.top + by};
}

// What the look is made of; a role or a state has its tones here and nowhere else.
enum : unsigned {
    tone_blue = 0x1F62AE,  // primary faces, marks, the ring around the focus, links
    tone_blue_hover = 0x2872C6,
    tone_blue_down = 0x164A88,
    tone_bar_blue = 0x2878D0,
    tone_bar_green = 0x228C54,
    tone_bar_red = 0xCE3E34,
    tone_good = 0x187A42,
    tone_bad = 0xC42B24,
    tone_ask = 0xD68E14,
    tone_danger_face = 0xFFF6F5,
    tone_danger_hover = 0xFFE8E5,
    tone_danger_line = 0xCD5C54,
    tone_danger_ink = 0xA01C1A,
    tone_off_face = 0xE0E6ED,
    tone_off_line = 0xB0BDCC,
    tone_off_ink = 0x4E5A6B,
    tone_plain_hover = 0xEAF3FF,
    tone_down_face = 0xD2DAE5,
    tone_stroke = 0x70839B,
    tone_ink = 0x222935,
    tone_white = 0xFFFFFF,
    tone_dim = 0x0E1B32  // over the main screen below a dialog
};
constexpr float dim_alpha = 0.68f;

void fill_rounded(const box_place& box, float radius, unsigned rgb, float alpha);
// A line of `width` whose outer edge is the box.
void line_rounded(const box_place& box, float radius, float width, unsigned rgb, float alpha);
void stroke(float x1, float y1, float x2, float y2, float width, unsigned rgb, float alpha);
// The colour slot of what has a colour of its own, set to this one until it is asked for again.
int colour_of(unsigned rgb);
