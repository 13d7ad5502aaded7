#include "gfx/mnw.h"

mnw_t mnw;
