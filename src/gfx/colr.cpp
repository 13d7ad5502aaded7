#include "gfx/colr.h"

#include <algorithm>
#include <cmath>

#include "runtime/oops.h"

namespace {

struct fixed_colour {
    int index;
    float r, g, b;
};

// clang-format off
constexpr fixed_colour fixed_colours[] = {
    {0, 1, 1, 1},               {1, 1, 0.2f, 0.2f},         {2, 1, 1, 0.2f},            {3, 0.7f, 0.7f, 0.7f},
    {4, 0.8f, 0, 0},            {5, 1, 1, 0},               {6, 0.3f, 0.3f, 0.3f},      {7, 0.2f, 0, 0},
    {8, 1, 0.8f, 0.2f},         {9, 0.1f, 0.1f, 0.1f},      {10, 0, 0.8f, 0},           {13, 0, 0.4f, 0},
    {15, 0.4f, 0.4f, 1},        {17, 0, 0, 0.6f},           {18, 0.9f, 0.9f, 0.9f},     {19, 0.8f, 0.1f, 0.1f},
    {20, 0.9f, 0.9f, 1},        {21, 0.9f, 0.9f, 0.9f},     {22, 0.1f, 0.1f, 0.1f},     {24, 1, 1, 0},
    {26, 1, 1, 1},              {27, 1, 1, 1},              {28, 1, 1, 1},              {29, 1, 1, 0},
    {31, 1, 1, 1},              {32, 1, 1, 1},              {33, 1, 1, 1},              {49, 1, 1, 1},
    {50, 0.4f, 1, 0.4f},        {51, 1, 0.4f, 0.4f},        {52, 1, 1, 0.6f},           {53, 0.7f, 0.7f, 1},
    {54, 1, 0.5f, 0},           {55, 0.8f, 0.8f, 0.8f},     {56, 0, 1, 0},              {57, 1, 0.2f, 0.2f},
    {58, 1, 1, 0.2f},           {59, 0.4f, 0.4f, 1},        {60, 0.5f, 0.3f, 0},        {61, 0.5f, 0.5f, 0.5f},
    {62, 0, 0.6f, 0},           {63, 0.6f, 0.2f, 0},        {64, 1, 1, 0},              {65, 0.2f, 0.2f, 0.8f},
    {66, 1, 0.2f, 1},           {67, 0.2f, 0.2f, 0.2f},     {68, 0, 0.2f, 0},           {69, 1, 0, 0},
    {70, 0.6f, 0.6f, 0},        {71, 0.15f, 0.15f, 0.6f},   {72, 0.49f, 0.43f, 0.24f},  {74, 0, 0.1f, 0},
    {75, 1, 0, 1},              {76, 0, 1, 1},              {77, 0.44f, 0.53f, 0.54f},  {84, 1, 0, 1},
    {86, 1, 0, 1},              {87, 1, 1, 1},              {96, 0.5f, 0.5f, 0.4f},     {97, 1, 0.3f, 0},
    {98, 0.5f, 0.5f, 0.4f},     {99, 0.8f, 0.8f, 0.7f},     {100, 0, 0.6f, 0.2f},       {101, 1, 1, 0.9f},
    {104, 1, 1, 1},
};
// clang-format on

constexpr double gamma_exponent = 1.0;

}  // namespace

colr_class colr;

colr_class::colr_class() : gamma(), table() {
    for (const fixed_colour& c : fixed_colours)
        assign(c.index, c.r, c.g, c.b);
    for (int i = 0; i < 256; ++i)
        gamma[i] = static_cast<unsigned char>(std::lround(255 * std::pow(i / 255.0, gamma_exponent)));
}

void colr_class::assign(int index, float r, float g, float b) {
    if (index < 0 || index >= colour_count)
        __MACIBM_alert(0, "There is no such color!", "index=" + std::to_string(index), "", "", t_exit, OOPS_PLACE);
    table[index][0] = r;
    table[index][1] = g;
    table[index][2] = b;
}

void colr_class::set_lit_col(int col_type) {
    static constexpr float lights[][3] = {{1, 1, 1}, {0.5f, 0.5f, 0.5f}, {1, 0.3f, 0.3f}};
    if (col_type < 0 || col_type > 2)
        __MACIBM_alert(0, "bad col_type!", "col_type=" + std::to_string(col_type), "", "", t_exit, OOPS_PLACE);
    std::copy_n(lights[col_type], 3, tint);
}

void colr_class::set_lites_for_interface() {
    for (float& channel : tint)
        channel = std::max(channel, 0.75f);
}

void colr_class::pulse(double seconds) {
    const float p = static_cast<float>(0.7 + 0.3 * std::sin(20 * seconds));
    assign(78, p, p, p);
    assign(79, p, 0.5f * p, 0);
    assign(80, p, 0.3f * p, 0.3f * p);
    assign(81, 0.3f * p, 0.3f * p, p);
    assign(82, 0.2f * p, 0.8f * p, 0.2f * p);
    assign(83, 0.7f * p, 0.7f * p, 0.2f * p);
    blink = p;
}
