#include "fuzz/picture.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    check_picture(TEX_load_bmp, data, size);
    return 0;
}
