#include "gfx/gl_calls.h"

#include <GL/gl.h>
#include <dlfcn.h>

#include <cstdlib>

gl_calls_t gl_calls;
static float pen_s, pen_t;

int gl_calls_t::total() const {
    int sum = 0;
    for (const auto& [name, times] : count)
        sum += times;
    return sum;
}

void watch_anew() {
    gl_calls.count.clear();
    gl_calls.vertices.clear();
}

static void* next_of(const char* name) {
    void* const next = dlsym(RTLD_NEXT, name);
    if (!next) std::abort();
    return next;
}
#define HAND_ON(name, ...)                                                              \
    static auto* const next_##name = reinterpret_cast<decltype(&name)>(next_of(#name)); \
    if (gl_calls.watching) ++gl_calls.count[#name];                                     \
    return next_##name(__VA_ARGS__)

extern "C" {

// clang-format off
void glEnable(GLenum what) { HAND_ON(glEnable, what); }
void glDisable(GLenum what) { HAND_ON(glDisable, what); }
void glDepthMask(GLboolean on) { HAND_ON(glDepthMask, on); }
void glActiveTexture(GLenum unit) { HAND_ON(glActiveTexture, unit); }
void glBindTexture(GLenum target, GLuint id) { HAND_ON(glBindTexture, target, id); }
void glTexEnvi(GLenum target, GLenum name, GLint value) { HAND_ON(glTexEnvi, target, name, value); }
void glBegin(GLenum mode) { HAND_ON(glBegin, mode); }
void glEnd() { HAND_ON(glEnd); }
// clang-format on

void glTexCoord2f(GLfloat s, GLfloat t) {
    pen_s = s;
    pen_t = t;
    HAND_ON(glTexCoord2f, s, t);
}

void glVertex2f(GLfloat x, GLfloat y) {
    if (gl_calls.watching) gl_calls.vertices.push_back({x, y, pen_s, pen_t});
    HAND_ON(glVertex2f, x, y);
}

const GLubyte* glGetString(GLenum which) {
    if (gl_calls.pretended.contains(which)) return reinterpret_cast<const GLubyte*>(gl_calls.pretended[which]);
    HAND_ON(glGetString, which);
}

}  // extern "C"
