// Text as it is laid out and drawn: every byte that is to be seen is drawn, once, in its order. Three bytes of the
// input choose the width, the characters and the side.
#include <algorithm>
#include <cmath>

#include "fuzz/fuzz.h"
#include "gfx/gl_calls.h"
#include "gfx/images/tex.h"
#include "gfx/text.h"
#include "gfx/tman.h"

static bool is_drawn(char c) {
    return c != '\r' && c != '\n' && c != '\t';
}

static void check_drawing(const std::string& text, float top, float last) {
    const auto wanted = std::count_if(text.begin(), text.end(), is_drawn);
    must(static_cast<long>(gl_calls.vertices.size()) == 4 * wanted, "every byte is drawn once");
    float y = top + 1;
    for (const drawn_vertex& v : gl_calls.vertices) {
        must(std::isfinite(v.x) && std::isfinite(v.s) && v.s >= 0 && v.s <= 1 && v.t >= 0 && v.t <= 1,
             "a cell is drawn");
        y = std::min(y, v.y);
    }
    must(gl_calls.vertices.empty() || y >= last - 12, "no line stands below the last");
    must(last <= top, "lines go down");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool made = [] {
        for (const int atlas : {static_cast<int>(tex_atlas), tex_atlas + 4}) {
            scratch_dx = scratch_dy = 16;
            tman.load_texture(0, atlas, tex_fmt_rgba, load_never, scratch_name);
        }
        return true;
    }();
    if (!made || size < 3) return 0;
    const float wrap = data[0] < 250 ? static_cast<float>(data[0]) * 3 : 9999;
    const int charset = data[1] % 3 == 1 ? 102 : charset_text;
    const int align = data[2] % 3;
    const std::string text(view_of(data + 3, size - 3));
    survives([&] {
        gl_calls.watching = true;
        watch_anew();
        const float last = OGL_string(0, 500, 400, text, wrap, charset, align);
        check_drawing(text, 400, last);
        gl_calls.watching = false;
        OGL_boxed_string(0, 500, 400, text, wrap, charset, align);
        OGL_gray_string(0, 500, 400, text, wrap, charset, align);
        must(latin1_of_path(text).size() <= text.size(), "a path is shown in no more characters than it has bytes");
        must(text_width(text) >= 0 && std::isfinite(text_width(text)), "text has a width");
    });
    return 0;
}
