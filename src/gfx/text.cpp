#include "gfx/text.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "gfx/builtin.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/scale.h"
#include "gfx/tman.h"
#include "runtime/oops.h"
#include "runtime/utf8.h"

namespace {

// Cells of the atlas: 21 in a row of the letters, 40 in a row of the table of pictographs.
constexpr int grid_columns = 21, table_columns = 40;

// The cells as they stand in the atlas, the lowest row first. The last 14 bytes are Latin-1: u with a circumflex, the
// vowels with acute accents, the enye, the inverted question mark.
constexpr std::string_view glyph_rows[] = {
    " 0123456789AaBbCcDdEe",
    "FfGgHhIiJjKkLlMmNnOoP",
    "pQqRrSsTtUuVvWwXxYyZz",
    "!@#$%^&*()-_+=[]|\\':;",
    "<.>,?/`\xFB\xC1\xE1\xC9\xE9\xCD\xED\xD3\xF3\xDA\xFA\xD1\xF1\xBF",
};

struct glyph_cells {
    unsigned char of[256] = {};  // 0, the space, for a byte without a cell
};

constexpr glyph_cells make_cells() {
    glyph_cells cells;
    int cell = 0;
    for (const std::string_view row : glyph_rows)
        for (const char c : row)
            cells.of[static_cast<unsigned char>(c)] = static_cast<unsigned char>(cell++);
    return cells;
}

constexpr glyph_cells cells = make_cells();
static_assert(cells.of[0xBF] == 5 * grid_columns - 1, "every row fills the grid");

// How far the pen moves behind each character, in units. The plain sum is the width of a text: nothing is kerned.
struct width_row {
    unsigned char width;
    std::string_view characters;
};
constexpr width_row width_rows[] = {
    {2, ".,"},
    {3, " ijlI':;/\\|`\xFB"},
    {4, "-!()[]Jfrst"},
    {5, "c"},
    {6, "0123456789aekvxyzEFLPSTZ*?^_#$\xC1\xE1\xC9\xE9\xCD\xED\xD3\xF3\xDA\xFA\xD1\xF1\xBF"},
    {7, "bdghnopquBCKRVXY+<=>"},
    {8, "ADGHNU&"},
    {9, "wOQ@"},
    {10, "mM"},
    {11, "W%"},
};

struct byte_widths {
    unsigned char of[256] = {};  // 0 for what is in no row
};

constexpr byte_widths make_widths() {
    byte_widths table;
    for (const width_row& row : width_rows)
        for (const char c : row.characters)
            table.of[static_cast<unsigned char>(c)] = row.width;
    return table;
}

constexpr byte_widths widths = make_widths();

struct charset_row {
    int charset, tex_ref;
    float dx, dy, advance;
};
// `dx` and `dy` of a cell; `advance` 0: by the widths above.
constexpr charset_row charsets[] = {
    {charset_text, tex_atlas, 14, 15, 0},
    {charset_digits, tex_atlas, 14, 15, 10},
    {charset_table, tex_atlas + 4, 13, 13, 15},
};

const charset_row& find_charset(int charset) {
    for (const charset_row& row : charsets)
        if (row.charset == charset) return row;
    __MACIBM_alert(0, "String proc with bad charset!", "", "", "", t_exit, "HLutils/OOPS_cpp/oglp", 495);
    return charsets[0];
}

float advance_of(char c, float fixed) {
    return fixed > 0 ? fixed : static_cast<float>(char_width(c));
}

bool takes_no_room(char c) {
    return c == 13 || c == 10 || c == 9;
}

float width_drawn(std::string_view text, float fixed) {
    if (fixed <= 0) return text_width(text);
    return fixed *
           static_cast<float>(std::count_if(text.begin(), text.end(), [](char c) { return !takes_no_room(c); }));
}

bool may_break_behind(char c) {
    return c == ' ' || c == '-' || c == '/';
}

// Room that the word at the head of `text` may need: deliberately a guess of 6 units a byte and not its real width.
float estimate_of_word(std::string_view text) {
    const auto end = std::find_if(text.begin(), text.end(), may_break_behind);
    return 6.0f * static_cast<float>(end - text.begin());
}

// Calls `line(y, text)` for each line and returns the y of the last one.
template <typename line_function>
float for_each_line(float y, std::string_view text, float wrap_width, float fixed, line_function line) {
    if (wrap_width <= 0 || wrap_width >= 9999) {
        line(y, text);
        return y;
    }
    std::size_t start = 0;
    // A line ends at a line end, at the text's end, or behind a blank, hyphen or slash where the next word may not fit.
    float pen = 0, last_y = y;
    for (std::size_t i = 0; i < text.size(); ++i) {
        pen += advance_of(text[i], fixed);
        bool ends = text[i] == 10 || i + 1 == text.size();
        if (!ends && may_break_behind(text[i])) ends = pen + estimate_of_word(text.substr(i + 1)) > wrap_width;
        if (!ends) continue;
        line(y, text.substr(start, i + 1 - start));
        last_y = y;
        y -= line_height;
        start = i + 1;
        pen = 0;
    }
    return last_y;
}

struct text_box {
    float x1, y1, x2, y2;
};

// What the text covers, with a little air around it.
text_box box_around(float x, float y, std::string_view text, float wrap_width, int charset, int align) {
    static constexpr float air = 3, below = 2, above = 8;
    const float fixed = find_charset(charset).advance;
    float width = 0;
    const float last_y = for_each_line(y, text, wrap_width, fixed, [&](float, std::string_view line) {
        width = std::max(width, width_drawn(line, fixed));
    });
    const float left = align == align_centre ? x - width / 2 : align == align_right ? x - width : x;
    return {left - air, last_y - below - air, left + width + air, y + above + air};
}

}  // namespace

int char_width(char c) {
    return widths.of[static_cast<unsigned char>(c)];
}

float text_width(std::string_view text) {
    int width = 0;
    for (const char c : text)
        width += char_width(c);
    return static_cast<float>(width);
}

float OGL_strtex(int charset, int color, float* s, float* t, float* dx, float* dy) {
    const charset_row& row = find_charset(charset);
    const bool letters = charset != charset_table;
    tman.bind_ref(letters ? glyph_sheet.reference : row.tex_ref, 0, 0);
    OGL_setstate(fog_off, 1, lit_off, alpha_blend, depth_read_off, depth_write_off);
    OGL_set_color(color, 1.0f);
    *s = *t = letters ? static_cast<float>(glyph_sheet.border) : 0;
    *dx = letters ? static_cast<float>(glyph_sheet.cell_dx) : row.dx;
    *dy = letters ? static_cast<float>(glyph_sheet.cell_dy) : row.dy;
    return row.advance;
}

void OGL_char(float x, float y, float s, float t, float dx, float dy, int code, int charset) {
    const bool letters = charset != charset_table;
    const glyph_sheet_t sheet = letters ? glyph_sheet : glyph_sheet_t{1, 13, 13, 0, 6, 512, 512, tex_atlas};
    const auto byte = static_cast<unsigned char>(code);
    const int columns = letters ? grid_columns : table_columns, cell = letters ? cells.of[byte] : byte;
    const int column = cell % columns, row = cell / columns, around = 2 * sheet.border;
    // Half a texel is left out all round where cells that touch are filtered, or the neighbour's ink shows at the edge.
    const float edge = sheet.border || mnw.scale == sheet.scale ? 0.0f : 0.5f;
    const float s1 = s + static_cast<float>(column * (sheet.cell_dx + around)) + edge, s2 = s1 + dx - 2 * edge;
    const float t1 = t + static_cast<float>(row * (sheet.cell_dy + around)) + edge, t2 = t1 + dy - 2 * edge;
    // From whole pixels, or the letters blur. The base of the letters is 2 above the line.
    const float left = pixel_below(x) + edge / sheet.scale;
    const float bottom = pixel_below(y + 2) + (edge - static_cast<float>(sheet.baseline)) / sheet.scale;
    const float right = left + (s2 - s1) / sheet.scale, top = bottom + (t2 - t1) / sheet.scale;
    const float sheet_dx = static_cast<float>(sheet.dx), sheet_dy = static_cast<float>(sheet.dy);
    glTexCoord2f(s1 / sheet_dx, t1 / sheet_dy);
    glVertex2f(left, bottom);
    glTexCoord2f(s1 / sheet_dx, t2 / sheet_dy);
    glVertex2f(left, top);
    glTexCoord2f(s2 / sheet_dx, t2 / sheet_dy);
    glVertex2f(right, top);
    glTexCoord2f(s2 / sheet_dx, t1 / sheet_dy);
    glVertex2f(right, bottom);
}

void str_one_line(int color, float x, float y, std::string_view text, int charset, int align) {
    if (ren.hidden) return;
    float s, t, dx, dy;
    const float fixed = OGL_strtex(charset, color, &s, &t, &dx, &dy);
    if (align == align_centre) x -= width_drawn(text, fixed) / 2;
    if (align == align_right) x -= width_drawn(text, fixed);
    glBegin(GL_QUADS);
    for (const char c : text) {
        if (takes_no_room(c)) continue;
        OGL_char(x, y, s, t, dx, dy, static_cast<unsigned char>(c), charset);
        x += advance_of(c, fixed);
    }
    glEnd();
}

float OGL_string(int color, float x, float y, const std::string& text, float wrap_width, int charset, int align) {
    if (text.empty()) return y;
    const float left = on_pixel(x + mnw.wind_x), base = on_pixel(y + mnw.wind_y - 2);
    const float fixed = find_charset(charset).advance;
    const float last = for_each_line(base, text, wrap_width, fixed, [&](float line_y, std::string_view line) {
        str_one_line(color, left, line_y, line, charset, align);
    });
    return last - mnw.wind_y + 2;
}

void OGL_gray_string(int color, float x, float y, const std::string& text, float wrap_width, int charset, int align) {
    const text_box box = box_around(x, y, text, wrap_width, charset, align);
    OGL_grayrect(box.x1, box.y1, box.x2, box.y2, 0.5f);
    OGL_string(color, x, y, text, wrap_width, charset, align);
}

void OGL_boxed_string(int color, float x, float y, const std::string& text, float wrap_width, int charset, int align) {
    const text_box box = box_around(x, y, text, wrap_width, charset, align);
    OGL_framerect(color, 1.0f, box.x1, box.y1, box.x2 - box.x1, box.y2 - box.y1);
    OGL_string(color, x, y, text, wrap_width, charset, align);
}

// Breaks words that OGL_string would let run over the edge.
static std::string break_wide_words(const std::string& text, float width) {
    std::string broken;
    float pen = 0;  // since the last place where a line may end
    for (const char c : text) {
        const float advance = advance_of(c, 0);
        if (pen + advance > width) {
            broken += '\n';
            pen = 0;
        }
        broken += c;
        pen = may_break_behind(c) || c == '\n' ? 0 : pen + advance;
    }
    return broken;
}

static int line_count(const std::string& text, float width) {
    int lines = 0;
    for_each_line(0, text, width, 0, [&](float, std::string_view) { ++lines; });
    return lines;
}

std::string fit_text(const std::string& text, float wrap_width, int max_lines) {
    const auto fits = [&](const std::string& shown) {
        if (max_lines == 1) return text_width(shown) <= wrap_width;
        return line_count(shown, wrap_width) <= max_lines;
    };
    const auto broken = [&](const std::string& shown) {
        return max_lines == 1 ? shown : break_wide_words(shown, wrap_width);
    };
    std::string shown = broken(text);
    if (fits(shown)) return shown;
    // The longest that fits, by halving: texts may be thousands of bytes long, and this runs in every frame.
    std::size_t fitting = 0, too_long = text.size();
    while (too_long - fitting > 1) {
        const std::size_t kept = (fitting + too_long) / 2;
        std::string tried = broken(text.substr(0, kept / 2) + "..." + text.substr(text.size() - (kept - kept / 2)));
        if (fits(tried)) {
            fitting = kept;
            shown = std::move(tried);
        } else {
            too_long = kept;
        }
    }
    return fitting ? shown : "...";
}

std::string latin1_of_path(const std::string& path) {
    std::string shown;
    for (std::size_t i = 0; i < path.size();) {
        const auto code = static_cast<char>(utf8_take_latin1(path, i));
        // What has no glyph would vanish, and a line end in a name would break the line.
        shown += char_width(code) > 0 ? code : '?';
    }
    return shown;
}
