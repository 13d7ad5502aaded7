#include "gfx/tex_bind.h"

#include <GL/gl.h>

#include <algorithm>
#include <iterator>

namespace {

constexpr int units_remembered = 8;
struct bound_texture {
    int tex_id = -1, env = -1;  // -1: not known
};
bound_texture bound[units_remembered];

}  // namespace

void TEX_bind_ref(int tex_id, int unit, int env) {
    const bool remembered = unit >= 0 && unit < units_remembered;
    if (remembered && bound[unit].tex_id == tex_id && bound[unit].env == env) return;
    if (unit > 0) glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    if (!remembered || bound[unit].tex_id != tex_id) glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(tex_id));
    if (!remembered || bound[unit].env != env) glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    if (unit > 0) glActiveTexture(GL_TEXTURE0);
    if (remembered) bound[unit] = {tex_id, env};
}

void TEX_forget_bound() {
    std::fill(std::begin(bound), std::end(bound), bound_texture());
}

void TEX_forget_bound(unsigned tex_id) {
    for (bound_texture& unit : bound)
        if (unit.tex_id == static_cast<int>(tex_id)) unit = {};
}

void TEX_set_blend_level(int unit, float level) {
    const float colour[4] = {level, level, level, level};
    if (unit > 0) glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    glTexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, colour);
    if (unit > 0) glActiveTexture(GL_TEXTURE0);
}
