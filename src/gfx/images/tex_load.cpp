#include <png.h>

#include <algorithm>

#include "gfx/images/tex.h"
#include "gfx/images/tex_levels.h"

int TEX_load_any(const std::string& path, TEX_image_desc& desc, int format, std::vector<unsigned char>& pixels) {
    xmap_class file;
    const unsigned char* bytes = file.retry(path);
    if (!bytes || file.length() < 8) return 0;
    // What a file is stands in its first bytes; its name may lie.
    if (bytes[0] == 'B' && bytes[1] == 'M') return tex_bmp_from_map(path, file, desc, format, pixels);
    if (png_sig_cmp(bytes, 0, 8) == 0) return tex_png_from_map(path, file, desc, format, pixels);
    return 0;
}

static bool has_extension(const std::string& path, const char* lower_case) {
    const std::string wanted = lower_case;
    if (path.size() < wanted.size()) return false;
    return std::equal(wanted.begin(), wanted.end(), path.end() - static_cast<std::ptrdiff_t>(wanted.size()),
                      [](char w, char c) { return w == (c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c); });
}

int TEX_load_any_ext(const std::string& path, TEX_image_desc& desc, int format, std::vector<unsigned char>& pixels) {
    xmap_class file;
    if (has_extension(path, ".png")) return TEX_load_png(path, file, desc, format, pixels);
    if (has_extension(path, ".bmp")) return TEX_load_bmp(path, file, desc, format, pixels);
    return 0;
}
