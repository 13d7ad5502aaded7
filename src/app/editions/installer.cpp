// The network installer's edition.
#include "runtime/product.h"

const int is_net = 1;
const int is_dvd = 0;
const int is_build = 0;
const int install_type = 0;
