#include <GL/gl.h>

#include <algorithm>
#include <cmath>

#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/scale.h"
#include "gfx/text.h"

// The digit of `scaled` that stands for 10 to the power `place`.
static int digit_at(double scaled, int place) {
    return static_cast<int>(std::fmod(std::floor(scaled / std::pow(10.0, place)), 10.0));
}

// Signs of a digit field stand in the gap behind their digit: 7 is half a cell.
static constexpr float half_cell = 7;
static constexpr int most_digits = 11;

// Every digit has a place of its own, so that it stands over the arrows that change it.
static void number_in_places(int color, float x, float y, float value, int digits, int decimals) {
    float s, t, dx, dy;
    const float advance = OGL_strtex(charset_digits, color, &s, &t, &dx, &dy);
    const float unrounded = std::fabs(value) * static_cast<float>(std::pow(10.0, decimals));
    const double scaled = std::floor(static_cast<double>(std::fabs(value)) * std::pow(10.0, decimals) + 0.5);
    const int whole = digits - decimals;
    const float base = on_pixel(x + mnw.wind_x) - advance, line = on_pixel(y + mnw.wind_y - 2);
    const auto put = [&](float at, int code) { OGL_char(at, line, s, t, dx, dy, code, charset_digits); };
    const auto behind = [&](int digit) { return base + advance * static_cast<float>(digit) + half_cell; };

    glBegin(GL_QUADS);
    if (value < 0 && unrounded > 0.1f) put(base + 1, '-');
    if (decimals > 0) put(behind(whole), '.');
    for (int third = 3; third <= 9 && third < whole; third += 3)
        put(behind(whole - third), ',');
    for (int digit = 1; digit <= std::min(digits, most_digits); ++digit)
        put(base + advance * static_cast<float>(digit), '0' + digit_at(scaled, digits - digit));
    glEnd();
}

// "1.23x5": three digits and the power of ten of the first.
static std::string scientific(double value) {
    int power = 2;
    for (; value >= 999; value /= 10)
        ++power;
    const int three = static_cast<int>(value);
    std::string text = {static_cast<char>('0' + three / 100), '.', static_cast<char>('0' + three / 10 % 10),
                        static_cast<char>('0' + three % 10), 'x'};
    return text + static_cast<char>('0' + (power > 9 ? 0 : power));
}

// All digits, with a comma at each thousand.
static std::string plain(double scaled, int decimals) {
    int most = decimals;
    while (scaled >= std::pow(10.0, most + 1))
        ++most;
    std::string text;
    for (int place = most; place >= 0; --place) {
        text += static_cast<char>('0' + digit_at(scaled, place));
        const int whole_digits_left = place - decimals;
        if (whole_digits_left == 0 && decimals > 0) text += '.';
        if (whole_digits_left == 3 || whole_digits_left == 6 || whole_digits_left == 9) text += ',';
    }
    return text;
}

void OGL_number(int color, float x, float y, float value, int digits, int decimals, int charset) {
    if (ren.hidden) return;
    if (!std::isfinite(value)) value = 0;
    decimals = std::max(decimals, 0);
    if (charset == charset_digits) return number_in_places(color, x, y, value, digits, decimals);
    const double size = std::fabs(static_cast<double>(value));
    const double scaled = std::floor(size * std::pow(10.0, decimals) + 0.5);
    const bool fits = scaled < std::pow(10.0, digits);
    std::string text = fits ? plain(scaled, decimals) : scientific(size);
    if (value < 0 && (scaled > 0 || !fits)) text.insert(0, "-");
    OGL_string(color, x, y, text, 0, charset, align_left);
}
