#include "gfx/scale.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "gfx/mnw.h"

// In sixteenths and eighths art and letters stay near whole pixels; between 1 and 2 a quarter is a step that one sees.
static constexpr float steps[] = {4, 3, 2.5f, 2, 1.75f, 1.5f, 1.25f, 1, 0.875f, 0.75f, 0.625f, 0.5f};

bool scale_of_text(const std::string& text, float& asked) {
    if (text == "auto") {
        asked = scale_auto;
        return true;
    }
    char* end = nullptr;
    const float number = std::strtof(text.c_str(), &end);
    // Written the other way round, a NaN would pass.
    const bool good = !text.empty() && *end == '\0' && number >= scale_least && number <= scale_most;
    if (good) asked = number;
    return good;
}

float scale_that_fits(float asked, const scale_room& room) {
    const float most = std::min(static_cast<float>(room.dx) / canvas_dx, static_cast<float>(room.dy) / canvas_dy);
    const float bearable = asked > 0 ? asked : std::max(1.0f, 1.5f * room.density);
    if (asked > 0 && asked <= most) return asked;
    for (const float step : steps)
        if (step <= most && step <= bearable) return step;
    return std::max(most, 1.0f / canvas_dy);
}

int pixels_of(float units) {
    return static_cast<int>(std::lround(units * mnw.scale));
}

float surface_dx() {
    return static_cast<float>(mnw.screen_dx) / mnw.scale;
}

float surface_dy() {
    return static_cast<float>(mnw.screen_dy) / mnw.scale;
}

float on_pixel(float units) {
    return std::round(units * mnw.scale) / mnw.scale;
}

float pixel_below(float units) {
    constexpr float slack = 1.0f / 64;  // what stands on a pixel may be a hair below it by now
    return std::floor(units * mnw.scale + slack) / mnw.scale;
}

float line_width() {
    return std::max(1.0f, std::round(mnw.scale)) / mnw.scale;
}

void scale_mouse(int x, int y) {
    mnw.mouse_x = static_cast<float>(x) / mnw.scale - mnw.wind_x;
    mnw.mouse_y = static_cast<float>(mnw.screen_dy - y) / mnw.scale - mnw.wind_y;
}

void centre_on_surface(float dx, float dy) {
    mnw.wind_x = std::max(on_pixel((surface_dx() - dx) / 2), 0.0f);
    mnw.wind_y = std::max(on_pixel((surface_dy() - dy) / 2), 0.0f);
}
