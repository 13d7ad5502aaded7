// A full screen of 400 pictures and 2,000 glyphs, drawn by the primitives and by a peer that draws the same the plain way:
// every state set for every picture, every glyph in a glBegin and glEnd of its own. Processor time of all threads (so
// the software renderer's own work counts, the same on both sides) and of the main thread alone, and OpenGL calls.
#include <GL/gl.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "gfx/builtin.h"
#include "gfx/gl_calls.h"
#include "gfx/gl_window.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "gfx/tman.h"

namespace {

constexpr int columns = 20, rows = 20, text_lines = 40;
constexpr float tile_dx = 51, tile_dy = 38;
const std::string line = "The quick brown fox jumps over the lazy dog, twice";  // 50 bytes

struct tile {
    float x1, y1, x2, y2, s1, t1, s2, t2;
};
tile tile_of(int column, int row) {
    const float x = static_cast<float>(column) * tile_dx, y = static_cast<float>(row) * tile_dy;
    return {x, y, x + tile_dx, y + tile_dy, x / 1024, y / 1024, (x + tile_dx) / 1024, (y + tile_dy) / 1024};
}

void frame_of_ours() {
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const tile q = tile_of(column, row);
            OGL_2dquad(tex_back_1, 49, 1, q.x1, q.y1, q.s1, q.t1, q.x1, q.y2, q.s1, q.t2, q.x2, q.y2, q.s2, q.t2, q.x2,
                       q.y1, q.s2, q.t1, 1, alpha_blend);
        }
    for (int i = 0; i < text_lines; ++i)
        OGL_string(49, 20, static_cast<float>(20 + 18 * i), line, 0, charset_text, align_left);
}

void set_every_state(int ref) {
    glDisable(GL_FOG);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_LIGHTING);
    glDisable(GL_ALPHA_TEST);
    glEnable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    glBindTexture(GL_TEXTURE_2D, tman.record(ref)->tex_id);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glColor4f(1, 1, 1, 1);
}

void frame_of_the_peer() {
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const tile q = tile_of(column, row);
            set_every_state(tex_back_1);
            glBegin(GL_QUADS);
            glTexCoord2f(q.s1, q.t1);
            glVertex2f(q.x1, q.y1);
            glTexCoord2f(q.s1, q.t2);
            glVertex2f(q.x1, q.y2);
            glTexCoord2f(q.s2, q.t2);
            glVertex2f(q.x2, q.y2);
            glTexCoord2f(q.s2, q.t1);
            glVertex2f(q.x2, q.y1);
            glEnd();
        }
    for (int i = 0; i < text_lines; ++i) {
        float x = 20;
        for (const char c : line) {
            set_every_state(tex_atlas);
            glBegin(GL_QUADS);
            OGL_char(x, static_cast<float>(18 + 18 * i), 0, 0, 14, 15, c, charset_text);
            glEnd();
            x += static_cast<float>(char_width(static_cast<unsigned char>(c)));
        }
    }
}

double seconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct cost {
    std::vector<double> process_ms, thread_ms;  // a frame, one entry a round
    int calls = 0;
    static double median(std::vector<double> values) {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    }
};

void run_round(void (*frame)(), cost& into) {
    constexpr int frames = 40;
    const double process = seconds(CLOCK_PROCESS_CPUTIME_ID), thread = seconds(CLOCK_THREAD_CPUTIME_ID);
    for (int i = 0; i < frames; ++i) {
        frame();
        glFinish();
    }
    into.process_ms.push_back((seconds(CLOCK_PROCESS_CPUTIME_ID) - process) * 1000 / frames);
    into.thread_ms.push_back((seconds(CLOCK_THREAD_CPUTIME_ID) - thread) * 1000 / frames);
}

int calls_of(void (*frame)()) {
    gl_calls.watching = true;
    watch_anew();
    frame();
    gl_calls.watching = false;
    return gl_calls.total();
}

}  // namespace

int main() {
    gl_window window;
    recall_ins_texes();
    cost ours, peer;
    ours.calls = calls_of(frame_of_ours);
    const picture drawn = window.grab();
    window.clear();
    OGL_forget_state();  // the peer does not tell the cache what it does
    tman.reset_bind();
    peer.calls = calls_of(frame_of_the_peer);
    if (drawn.bytes != window.grab().bytes) {
        std::fprintf(stderr, "The two draw different pictures.\n");
        return 1;
    }
    for (int round = 0; round < 7; ++round) {
        OGL_forget_state();
        tman.reset_bind();
        run_round(frame_of_ours, ours);
        run_round(frame_of_the_peer, peer);
    }
    const auto print = [](const char* name, const cost& c) {
        std::printf("%-5s %8.3f ms a frame in all threads, %8.3f ms in the main thread, %6d calls\n", name,
                    cost::median(c.process_ms), cost::median(c.thread_ms), c.calls);
    };
    print("ours", ours);
    print("peer", peer);
    std::printf("peer / ours: %.2f of all processor time, %.2f of the main thread's, %.2f of the calls\n",
                cost::median(peer.process_ms) / cost::median(ours.process_ms),
                cost::median(peer.thread_ms) / cost::median(ours.thread_ms),
                static_cast<double>(peer.calls) / ours.calls);
    return 0;
}
