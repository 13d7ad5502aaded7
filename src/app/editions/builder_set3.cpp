// The builder's edition for set 3.
#include "runtime/product.h"

const int is_net = 0;
const int is_dvd = 3;
const int is_build = 1;
const int install_type = 0;
