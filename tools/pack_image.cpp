// pack_image: turns a PNG into what the program is built with: RGBA bytes, rows from the bottom up, nothing else.
//
//     pack_image IN.png WIDTH HEIGHT OUT
//
// The size is told, since the program addresses the picture's regions by number: one that was drawn in another size must
// not get in.
#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

static int fail(const char* path, const char* what) {
    std::fprintf(stderr, "pack_image: %s: %s\n", path, what);
    return 1;
}

static bool write_file(const char* path, const std::vector<unsigned char>& bytes) {
    std::FILE* out = std::fopen(path, "wb");
    if (!out) return false;
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
    return std::fclose(out) == 0 && written;
}

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: pack_image IN.png WIDTH HEIGHT OUT\n");
        return 2;
    }
    const char *in = argv[1], *out = argv[4];
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, in)) return fail(in, image.message);
    if (image.width != std::strtoul(argv[2], nullptr, 10) || image.height != std::strtoul(argv[3], nullptr, 10))
        return fail(in, "not of the size told");
    image.format = PNG_FORMAT_RGBA;
    std::vector<unsigned char> pixels(PNG_IMAGE_SIZE(image));
    const auto row = static_cast<png_int_32>(PNG_IMAGE_ROW_STRIDE(image));
    // A negative step writes the last row first.
    if (!png_image_finish_read(&image, nullptr, pixels.data(), -row, nullptr)) return fail(in, image.message);
    if (!write_file(out, pixels)) return fail(out, "cannot be written");
    return 0;
}
