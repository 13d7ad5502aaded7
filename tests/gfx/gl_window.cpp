#include "gfx/gl_window.h"

#include <GL/gl.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "display/display.h"
#include "gfx/mnw.h"
#include "gfx/oglp.h"
#include "gfx/tman.h"

// Read by the leak checker of a build that has one: what the window's libraries keep for themselves is not ours.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libdbus\n";
}

void need_test_display() {
    static std::FILE* server = nullptr;
    if (server) return;
    server = popen(
        "exec setpriv --pdeathsig TERM Xvfb -displayfd 1 -screen 0 2304x1200x24 -nolisten tcp -noreset "
        "</dev/null 2>/dev/null",
        "r");
    int number = -1;  // told once the server is ready
    if (!server || std::fscanf(server, "%d", &number) != 1) throw std::runtime_error("Xvfb does not start");
    setenv("DISPLAY", (":" + std::to_string(number)).c_str(), 1);
    setenv("SDL_VIDEODRIVER", "x11", 1);
    unsetenv("WAYLAND_DISPLAY");
}

std::ostream& operator<<(std::ostream& out, const rgb& c) {
    return out << "(" << c.r << " " << c.g << " " << c.b << ")";
}

int difference(const rgb& a, const rgb& b) {
    return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
}

rgb picture::at(int x, int y) const {
    const unsigned char* pixel = &bytes.at(static_cast<std::size_t>(y * dx + x) * 3);
    return {pixel[0], pixel[1], pixel[2]};
}

int picture::difference_from(const unsigned char* image, int image_dx, int channels, int x, int y, int dx_of, int dy_of,
                             int left, int low) const {
    int worst = 0;
    for (int i = 0; i < dx_of * dy_of; ++i) {
        const unsigned char* p = image + ((y + i / dx_of) * image_dx + x + i % dx_of) * channels;
        const rgb wanted =
            channels == 1 ? rgb{p[0], p[0], p[0]} : rgb{p[0] * p[3] / 255, p[1] * p[3] / 255, p[2] * p[3] / 255};
        worst = std::max(worst, difference(at(left + i % dx_of, low + i / dx_of), wanted));
    }
    return worst;
}

std::vector<int> picture::extent(const rgb& back) const {
    std::vector<int> found = {dx, dy, 0, 0};
    for (int y = 0; y < dy; ++y)
        for (int x = 0; x < dx; ++x)
            if (at(x, y) != back)
                found = {std::min(found[0], x), std::min(found[1], y), std::max(found[2], x + 1),
                         std::max(found[3], y + 1)};
    return found;
}

gl_window::gl_window(int dx, int dy) {
    need_test_display();
    mnw.screen_dx = dx;
    mnw.screen_dy = dy;
    if (!display_start() || !display_open_window("test", dx, dy, true)) throw std::runtime_error(display_error());
    make_context();
}

gl_window::~gl_window() {
    display_close_window();
}

void gl_window::make_context() {
    context_facts facts;
    if (!display_make_context(0, facts)) throw std::runtime_error(display_error());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glAlphaFunc(GL_GREATER, 0);
    glFrontFace(GL_CW);
    glEnable(GL_CULL_FACE);
    glDepthMask(GL_FALSE);
    OGL_forget_state();
    tman.forget_textures();
    OGL_pix_specs(0);
    clear();
}

void gl_window::clear() {
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
}

picture gl_window::grab() const {
    picture taken(mnw.screen_dx, mnw.screen_dy);
    glReadPixels(0, 0, taken.dx, taken.dy, GL_RGB, GL_UNSIGNED_BYTE, taken.bytes.data());
    return taken;
}
