#include "gfx/ren.h"

ren_t ren;
