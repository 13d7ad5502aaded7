#include "gfx/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "gfx/builtin.h"
#include "gfx/colr.h"
#include "gfx/gl_calls.h"
#include "gfx/gl_window.h"
#include "gfx/images/tex.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/scale.h"
#include "support/scratch.h"

// The glyphs as the artist's table lists them.
struct glyph {
    int x, y, code, advance;
};
static std::vector<glyph> glyphs_of_the_art() {
    const std::string table = scratch::read(VELARIS_ROOT_DIR "/art/regions.csv");
    const std::regex row("[^,\n]*,[^,\n]*,glyph,(\\d+),(\\d+),\\d*,\\d*,[^,\n]*,(\\d+),(\\d+)");
    std::vector<glyph> found;
    for (std::sregex_iterator at(table.begin(), table.end(), row), end; at != end; ++at)
        found.push_back({std::stoi((*at)[1]), std::stoi((*at)[2]), std::stoi((*at)[3]), std::stoi((*at)[4])});
    return found;
}

// What was drawn since the last look, as lines "x,y:text" with the pen's place of the first glyph.
static std::vector<std::string> drawn_lines() {
    static const std::vector<glyph> glyphs = glyphs_of_the_art();
    std::vector<std::string> lines;
    float y = -1000;
    for (std::size_t i = 0; i + 3 < gl_calls.vertices.size(); i += 4) {
        const drawn_vertex& corner = gl_calls.vertices[i];
        const auto at = std::find_if(glyphs.begin(), glyphs.end(), [&](const glyph& g) {
            return static_cast<float>(g.x) == corner.s * 512 && static_cast<float>(g.y) == corner.t * 512;
        });
        if (lines.empty() || corner.y != y)
            lines.push_back(std::to_string(static_cast<int>(corner.x)) + "," +
                            std::to_string(static_cast<int>(corner.y) + 4) + ":");
        y = corner.y;
        lines.back() += at == glyphs.end() ? '?' : static_cast<char>(at->code);
    }
    watch_anew();
    return lines;
}

using lines = std::vector<std::string>;
static lines draw(const std::string& text, float wrap_width, int align = align_left) {
    recall_ins_texes();
    watch_anew();
    OGL_string(46, 100, 52, text, wrap_width, charset_text, align);
    return drawn_lines();
}

TEST(text, glyphs_stand_and_measure_as_the_art_has_them) {
    gl_window window;
    recall_ins_texes();
    const std::vector<glyph> glyphs = glyphs_of_the_art();
    ASSERT_EQ(glyphs.size(), 105u);
    std::vector<int> widths(256, 0);
    for (const glyph& g : glyphs) {
        widths[static_cast<std::size_t>(g.code)] = g.advance;
        window.clear();
        OGL_string(49, 300, 202, std::string(1, static_cast<char>(g.code)), 0, charset_text, align_left);
        EXPECT_LE(window.grab().difference_from(builtin_images[3].pixels, 512, 4, g.x, g.y, 14, 15, 300, 196), 2)
            << "glyph " << g.code;
    }
    for (int code = 0; code < 256; ++code)
        EXPECT_EQ(char_width(static_cast<char>(code)), widths[static_cast<std::size_t>(code)]) << code;
}

// Pixel for pixel, and on a base line of whole pixels: what is filtered is never quite sharp.
TEST(text, letters_of_other_scales_are_the_sheets_own_pixels) {
    gl_window window;
    for (const auto& [scale, name] :
         {std::pair{1.5f, "1.5x"}, {2.0f, "2x"}, {3.0f, "3x"}, {0.75f, "0.75x"}, {2.0f, "2x"}}) {
        mnw.scale = scale;
        match_ins_texes();
        OGL_pix_specs(0);
        mnw.wind_x = mnw.wind_y = 0;
        TEX_image_desc desc;
        std::vector<unsigned char> ink;
        const std::string path = std::string(VELARIS_ROOT_DIR) + "/art/rendered/glyphs_" + name + ".png";
        ASSERT_EQ(TEX_load_any(path, desc, tex_format_alpha, ink), 1);
        window.clear();
        OGL_string(49, 100, 102, "F", 0, charset_text, align_left);
        const glyph_sheet_t& g = glyph_sheet;
        const int row_of_f = g.cell_dy + 3, low = static_cast<int>(102 * scale) - g.baseline;
        EXPECT_LE(
            window.grab().difference_from(ink.data(), g.dx, 1, 1, row_of_f, g.cell_dx, g.cell_dy, pixels_of(100), low),
            2)
            << name;
    }
    take_palette_from_atlas();  // the same from an atlas of twice the size
    EXPECT_NEAR(colr.rgb(colour_back)[2] * 255, 86, 0.5f);
}

TEST(text, lines_are_placed_by_their_alignment) {
    EXPECT_EQ(draw("Wim", 0), lines{"100,50:Wim"});
    EXPECT_EQ(draw("Wim", 0, align_right), lines{"76,50:Wim"});
    EXPECT_EQ(draw("Wim", 0, align_centre), lines{"88,50:Wim"});
    EXPECT_EQ(draw("W\ti\r\nm", 0), lines{"100,50:Wim"}) << "control bytes neither show nor move";
    mnw.wind_x = 10.5f;
    mnw.wind_y = 20;
    EXPECT_EQ(draw("W", 0), lines{"111,70:W"}) << "on whole pixels, half away from zero";
    mnw.wind_x = mnw.wind_y = 0;

    OGL_string(46, 100, 52, "12.5", 0, charset_digits, align_right);
    EXPECT_EQ(drawn_lines(), lines{"60,50:12.5"}) << "ten units a byte";
    EXPECT_EQ(draw("a\"{b", 0), lines{"100,50:a  b"}) << "no cell: the space's";
}

TEST(text, wrapping_breaks_behind_blanks_and_signs_by_the_estimate) {
    EXPECT_EQ(draw("one two", 9999), lines{"100,50:one two"});
    EXPECT_EQ(draw("a-b", 11), (lines{"100,50:a-", "100,40:b"}));
    // "one " measures 23 units and three more bytes are taken for 18, however wide they are.
    EXPECT_EQ(draw("one iii", 40), (lines{"100,50:one ", "100,40:iii"}));
    EXPECT_EQ(draw("one WWW", 41), lines{"100,50:one WWW"});
    EXPECT_EQ(draw("a mmmmmmmmm b", 30), (lines{"100,50:a ", "100,40:mmmmmmmmm ", "100,30:b"}))
        << "a word that fits nowhere stands alone";
    EXPECT_EQ(draw("one\ntwo", 500), (lines{"100,50:one", "100,40:two"}));

    const auto last_y = [](const std::string& text) { return OGL_string(46, 100, 52, text, 500, charset_text, 0); };
    EXPECT_EQ(last_y(""), 52.0f);
    EXPECT_EQ(last_y("one\n"), 52.0f) << "no empty line behind the last";
    EXPECT_EQ(last_y("one\n\ntwo\n"), 32.0f);
    mnw.wind_y = 7;
    EXPECT_EQ(last_y("one\ntwo"), 42.0f) << "in the window's own units";
}

TEST(text, numbers_are_rounded_and_keep_their_sign_and_their_room) {
    recall_ins_texes();
    watch_anew();
    const auto number = [](float value, int count, int decimals, int charset = charset_text) {
        OGL_number(46, 100, 52, value, count, decimals, charset);
        const lines drawn = drawn_lines();
        return drawn.empty() ? "" : drawn[0].substr(drawn[0].find(':') + 1);
    };
    EXPECT_EQ(number(0, 3, 0), "0");
    EXPECT_EQ(number(-7.25f, 5, 2), "-7.25");
    EXPECT_EQ(number(1234567, 7, 0), "1,234,567");
    EXPECT_EQ(number(123456, 5, 0), "1.23x5");
    EXPECT_EQ(number(3e12f, 5, 0), "3.00x0") << "an exponent past 9 has no digit";
    // In a field of digits the signs are drawn first: each stands at a place of its own.
    EXPECT_EQ(number(-12.345f, 4, 2, charset_digits), "-.1235");
    EXPECT_EQ(number(-0.001f, 3, 2, charset_digits), ".000") << "too small for its minus";
    EXPECT_EQ(number(0.996f, 3, 2, charset_digits), ".100") << "rounded over the point";
}

TEST(text, what_is_too_long_is_broken_and_then_loses_its_middle) {
    EXPECT_EQ(fit_text("short", 100, 1), "short");
    const std::string path = "/home/" + std::string(300, 'a') + "/end.txt";
    const std::string one_line = fit_text(path, 200, 1);
    EXPECT_LE(text_width(one_line), 200);
    EXPECT_GT(text_width(one_line), 180) << "more could be shown";
    EXPECT_TRUE(one_line.starts_with("/home/") && one_line.ends_with(".txt")) << one_line;
    EXPECT_EQ(fit_text("WWWW", 5, 1), "...");
    // A word that is wider than the line and longer than four lines hold.
    const std::string cut = fit_text(std::string(5000, 'a'), 100, 4);
    EXPECT_EQ(std::count(cut.begin(), cut.end(), '\n'), 3);
    EXPECT_EQ(std::count(cut.begin(), cut.end(), '.'), 3);
}

TEST(text, paths_are_shown_in_latin_1_and_broken_ones_do_not_overrun) {
    EXPECT_EQ(latin1_of_path("/home/jos\xC3\xA9/x"), "/home/jos\xE9/x");
    EXPECT_EQ(latin1_of_path("\xE2\x82\xAC \xF0\x9F\x98\x80 \xC4\x80"), "? ? ?");
    EXPECT_EQ(latin1_of_path("\xC3\xBC\n~"), "???") << "what has no glyph would vanish";
    EXPECT_EQ(latin1_of_path("a\x80\xE2\x82"), "a??");
}
