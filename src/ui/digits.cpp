#include "ui/digits.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "display/virtual_keys.h"
#include "gfx/colr.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "ui/butn.h"
#include "ui/focus.h"
#include "ui/frames.h"

namespace {

constexpr int most_columns = 10;  // that have working arrows
constexpr int cursor_up = 13, cursor_down = 14;

// The keyboard's queue and place, shared by all fields: only the one that has the keyboard uses them.
key_slots slots;
int hot_digit = 0;

double ten_to(int power) {
    return std::pow(10.0, power);
}

// One field during its call. Worked on as a double, so that a step of 0.1 stays one.
struct field {
    float x, y;
    int digits, decimals;
    double min, max, value;

    double step_of(int column) const { return ten_to(digits - 1 - decimals - column); }
    float right() const { return x + static_cast<float>(10 * digits); }
};

void put_digit(field& f, int digit) {
    const double scaled = std::round(std::fabs(f.value) * ten_to(f.decimals));
    const double unit = ten_to(f.digits - 1 - hot_digit);
    const double old = std::fmod(std::floor(scaled / unit), 10.0);
    const double changed = (scaled + (digit - old) * unit) / ten_to(f.decimals);
    f.value = f.value < 0 ? -changed : changed;
}

void move_hot(const field& f, int by) {
    hot_digit = (hot_digit + by + f.digits) % f.digits;
}

void use_key(field& f, int c, int vkey) {
    hot_digit = std::clamp(hot_digit, 0, f.digits - 1);
    switch (vkey) {
        case vk_left:
            move_hot(f, -1);
            return;
        case vk_right:
            move_hot(f, 1);
            return;
        case vk_up:
            f.value += f.step_of(hot_digit);
            return;
        case vk_down:
            f.value -= f.step_of(hot_digit);
            return;
    }
    if (c >= '0' && c <= '9') {
        put_digit(f, c - '0');
        move_hot(f, 1);
    }
    if (c == '+' && f.min < 0) f.value = std::fabs(f.value);
    if (c == '-' && f.max >= 0) f.value = -std::fabs(f.value);
}

void use_arrows(field& f) {
    const float middle = f.y + 3;
    if (mnw.menu_open != -1 || !mouse_in(f.x, f.y - 18, f.right(), f.y + 24)) return;
    const bool up = mnw.mouse_y > middle;
    mnw.cursor_code = up ? cursor_up : cursor_down;
    const int column = std::min(static_cast<int>((mnw.mouse_x - f.x) / 10), f.digits - 1);
    if (mnw.mouse_down && column < most_columns) f.value += up ? f.step_of(column) : -f.step_of(column);
}

float held_and_rounded(const field& f) {
    const double held = std::max(f.min, std::min(f.max, f.value));
    return static_cast<float>(std::round(held * ten_to(f.decimals)) / ten_to(f.decimals));
}

void draw_box(float x, float y, int digits, const label_parts& parts) {
    const auto width = static_cast<float>(10 * digits);
    BTN_frame1(bar_field, x + width / 2 - 1, y + 3, width + 15, 0);
    draw_side_labels(x - 12, x + width + 12, y, parts);
}

void draw_arrows(const field& f) {
    for (int i = 0; i < f.digits; ++i) {
        const float middle = f.x + 6 + static_cast<float>(10 * i);
        BTN_util_element(middle, f.y - 10, 90, 187, 7, 9, 0);
        BTN_util_element(middle, f.y + 18, 90, 206, 7, 9, 0);
    }
}

int to_int(float value) {
    using limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<double>(static_cast<double>(value), limits::min(), limits::max()));
}

float largest(int digits, int decimals) {
    const double nines = 10 - ten_to(1 - std::min(digits, 10));
    return static_cast<float>(ten_to(digits - 1) / ten_to(decimals) * nines);
}

}  // namespace

int BTN_flt_range(float x, float y, float* value, int digits, int decimals, float min, float max,
                  const std::string& label) {
    const label_parts parts = expand_label(label);
    field f = {x, y, digits, decimals, static_cast<double>(min), static_cast<double>(max), static_cast<double>(*value)};
    const int id = widget_id(x, y);
    help_in(x, y - 2, f.right(), y + 8, parts.help);
    const int take = pressed_in(x, y - 2, f.right(), y + 8);
    if (take) hot_digit = static_cast<int>((mnw.mouse_x - 2 - x) / 10);
    const bool focused = slots.join_ring(id, accept_moves | accept_digits | accept_signs, take);
    BTN_focus_place(id, {x - 7, y - 6, f.right() + 5, y + 12}, look_inside);
    if (focused) hot_digit = std::clamp(hot_digit, 0, digits - 1);
    slots.drain(id, [&f](int c, int vkey, int) { use_key(f, c, vkey); });
    use_arrows(f);
    const float before = *value;
    *value = held_and_rounded(f);

    draw_box(x, y, digits, parts);
    draw_arrows(f);
    if (focused) OGL_fillrect(colour_selection, 1, x + 2 + static_cast<float>(10 * hot_digit), y - 2, 9, 11);
    OGL_number(colour_field, x + 3, y, *value, digits, decimals, charset_digits);
    return *value != before;
}

int BTN_int_range(float x, float y, int* value, int digits, int min, int max, const std::string& label) {
    auto number = static_cast<float>(*value);
    const int changed =
        BTN_flt_range(x, y, &number, digits, 0, static_cast<float>(min), static_cast<float>(max), label);
    *value = to_int(number);
    return changed;
}

int BTN_dob_range(float x, float y, double* value, int digits, int decimals, double min, double max,
                  const std::string& label) {
    auto number = static_cast<float>(*value);
    const int changed =
        BTN_flt_range(x, y, &number, digits, decimals, static_cast<float>(min), static_cast<float>(max), label);
    *value = static_cast<double>(number);
    return changed;
}

int BTN_flt(float x, float y, float* value, int digits, int decimals, int is_signed, const std::string& label) {
    const float limit = largest(digits, decimals);
    return BTN_flt_range(x, y, value, digits, decimals, is_signed ? -limit : 0, limit, label);
}

int BTN_int(float x, float y, int* value, int digits, int is_signed, const std::string& label) {
    auto number = static_cast<float>(*value);
    const int changed = BTN_flt(x, y, &number, digits, 0, is_signed, label);
    *value = to_int(std::round(number));
    return changed;
}

int BTN_flt_rangeij(int i, int j, float* value, int digits, int decimals, float min, float max,
                    const std::string& label) {
    const auto x = static_cast<float>(i * 75 + 75 - 10 * digits), y = static_cast<float>(j * 50 + 25);
    return BTN_flt_range(x, y, value, digits, decimals, min, max, label);
}

int BTN_fltij(int i, int j, float* value, int digits, int decimals, int is_signed, const std::string& label) {
    const float limit = largest(digits, decimals);
    return BTN_flt_rangeij(i, j, value, digits, decimals, is_signed ? -limit : 0, limit, label);
}

void BTN_display_number(float x, float y, float value, int digits, int decimals, const std::string& label) {
    draw_box(x, y, digits, expand_label(label));
    OGL_number(colour_field, x + 4, y, value, digits, decimals, charset_digits);
}
