#include "ui/shapes.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

#include "gfx/colr.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"

namespace {

constexpr int steps = 6;  // of a corner
constexpr int points = 4 * (steps + 1);

struct place {
    float x, y;
};

// Around the box, clockwise from the left end of the upper edge; `outline` has `points` entries.
void outline_of(const box_place& box, float radius, place* outline) {
    constexpr float quarter = 1.57079633f;
    const float most = std::min(box.right - box.left, box.top - box.bottom) / 2;
    const float r = std::clamp(radius, 0.0f, std::max(most, 0.0f));
    const place centres[4] = {{box.left + r, box.top - r},
                              {box.right - r, box.top - r},
                              {box.right - r, box.bottom + r},
                              {box.left + r, box.bottom + r}};
    for (int corner = 0; corner < 4; ++corner)
        for (int i = 0; i <= steps; ++i) {
            const float angle = quarter * (2.0f - static_cast<float>(corner) - static_cast<float>(i) / steps);
            *outline++ = {mnw.wind_x + centres[corner].x + r * std::cos(angle),
                          mnw.wind_y + centres[corner].y + r * std::sin(angle)};
        }
}

// Always with four parts: some drivers lose a batch in which colours of three and of four take turns.
void set_colour(unsigned rgb, float alpha) {
    const auto share = [rgb](int shift) { return static_cast<float>(rgb >> shift & 255) / 255; };
    glColor4f(share(16), share(8), share(0), alpha * ren.alpha_scale);
}

// Between two outlines, from one opacity to another. Counted clockwise, the outer one first.
void strip(const place* outer, float outer_alpha, const place* inner, float inner_alpha, unsigned rgb) {
    glBegin(GL_QUADS);
    for (int i = 0; i < points; ++i) {
        const int next = (i + 1) % points;
        set_colour(rgb, inner_alpha);
        glVertex2f(inner[i].x, inner[i].y);
        set_colour(rgb, outer_alpha);
        glVertex2f(outer[i].x, outer[i].y);
        glVertex2f(outer[next].x, outer[next].y);
        set_colour(rgb, inner_alpha);
        glVertex2f(inner[next].x, inner[next].y);
    }
    glEnd();
}

// Half of a pixel to either side of an edge is faded.
float feather() {
    return 0.5f / mnw.scale;
}

void flat_state() {
    OGL_setstate(fog_off, 0, lit_off, alpha_blend, depth_read_off, depth_write_off);
}

}  // namespace

int colour_of(unsigned rgb) {
    const auto share = [rgb](int shift) { return static_cast<float>(rgb >> shift & 255) / 255; };
    colr.assign(colour_sprite, share(16), share(8), share(0));
    return colour_sprite;
}

void fill_rounded(const box_place& box, float radius, unsigned rgb, float alpha) {
    const float soft = feather();
    place outer[points], inner[points];
    outline_of(grown(box, soft), radius + soft, outer);
    outline_of(grown(box, -soft), radius - soft, inner);
    flat_state();
    set_colour(rgb, alpha);
    // In slabs from the top down: a point of the left side goes with the one across.
    glBegin(GL_QUADS);
    for (int i = points / 4 - 1; i > -points / 4; --i) {
        const place &upper_left = inner[(i + points) % points], &upper_right = inner[points / 2 - 1 - i];
        const place &lower_left = inner[(i - 1 + points) % points], &lower_right = inner[points / 2 - i];
        glVertex2f(lower_left.x, lower_left.y);
        glVertex2f(upper_left.x, upper_left.y);
        glVertex2f(upper_right.x, upper_right.y);
        glVertex2f(lower_right.x, lower_right.y);
    }
    glEnd();
    strip(outer, 0, inner, alpha, rgb);
}

void line_rounded(const box_place& box, float radius, float width, unsigned rgb, float alpha) {
    const float soft = feather();
    place rings[4][points];
    const float inwards[4] = {-soft, soft, width - soft, width + soft};
    for (int i = 0; i < 4; ++i)
        outline_of(grown(box, -inwards[i]), radius - inwards[i], rings[i]);
    flat_state();
    strip(rings[0], 0, rings[1], alpha, rgb);
    strip(rings[1], alpha, rings[2], alpha, rgb);
    strip(rings[2], alpha, rings[3], 0, rgb);
}

void stroke(float x1, float y1, float x2, float y2, float width, unsigned rgb, float alpha) {
    const float length = std::hypot(x2 - x1, y2 - y1);
    if (length == 0) return;
    const float left_x = (y1 - y2) / length, left_y = (x2 - x1) / length;  // one unit to the left of the way
    const float inside = width / 2 - feather(), outside = width / 2 + feather();
    const struct {
        float right, right_alpha, left, left_alpha;  // how far from the middle, to the left
    } bands[] = {{-outside, 0, -inside, alpha}, {-inside, alpha, inside, alpha}, {inside, alpha, outside, 0}};
    flat_state();
    glBegin(GL_QUADS);
    for (const auto& band : bands) {
        const auto put = [&](float x, float y, float off, float seen) {
            set_colour(rgb, seen);
            glVertex2f(mnw.wind_x + x + off * left_x, mnw.wind_y + y + off * left_y);
        };
        put(x1, y1, band.right, band.right_alpha);
        put(x1, y1, band.left, band.left_alpha);
        put(x2, y2, band.left, band.left_alpha);
        put(x2, y2, band.right, band.right_alpha);
    }
    glEnd();
}
