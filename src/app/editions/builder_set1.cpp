// The builder's edition for set 1.
#include "runtime/product.h"

const int is_net = 0;
const int is_dvd = 1;
const int is_build = 1;
const int install_type = 0;
