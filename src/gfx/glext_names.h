// glext_names.h: the entry points that an extension brings, by name. Private to glext*.cpp.
#pragma once

#include <span>

#include "gfx/glext.h"

struct glext_group {
    std::span<const char* const> names;
    int OGL_extensions::*flags[2];  // the features that need them; the second may be null
};
constexpr int glext_group_count = 9;
extern const glext_group glext_groups[glext_group_count];
