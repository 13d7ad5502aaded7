// DDS: the magic, a header of 124 bytes in little-endian words, then the blocks of all levels, top first.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "gfx/images/tex.h"
#include "gfx/images/tex_levels.h"
#include "runtime/bytes.h"
#include "runtime/product.h"

namespace {

constexpr std::size_t data_offset = 128;

// Words of the header, counted from the magic.
enum : std::size_t {
    word_length = 1,
    word_flags = 2,
    word_height = 3,
    word_width = 4,
    word_first_level_bytes = 5,
    word_mipmaps = 7,
    word_format_length = 19,
    word_format_flags = 20,
    word_four_cc = 21,
    word_caps = 27
};
constexpr std::uint32_t has_caps = 0x1, has_height = 0x2, has_width = 0x4, has_format = 0x1000, has_mipmaps = 0x20000,
                        has_first_level_bytes = 0x80000;
constexpr std::uint32_t format_has_four_cc = 0x4;
constexpr std::uint32_t caps_complex = 0x8, caps_texture = 0x1000, caps_mipmap = 0x400000;

std::uint32_t get_word(const unsigned char* file, std::size_t word) {
    return little_word(file + 4 * word, 4);
}

void put_word(unsigned char* file, std::size_t word, std::size_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        file[4 * word + i] = static_cast<unsigned char>(value >> (8 * i));
}

struct four_cc {
    char name[5];
    int format;
};
// Read by the first that fits: the file does not tell whether DXT1 has its clear colour, so it may have it.
constexpr four_cc four_ccs[] = {
    {"DXT1", tex_format_dxt1}, {"DXT3", tex_format_dxt3}, {"DXT5", tex_format_dxt5}, {"DXT1", tex_format_dxt1_rgb}};

int read_format(const unsigned char* file) {
    if (!(get_word(file, word_format_flags) & format_has_four_cc)) return 0;
    for (const four_cc& known : four_ccs)
        if (std::memcmp(file + 4 * word_four_cc, known.name, 4) == 0) return known.format;
    return 0;
}

int side(std::uint32_t value) {
    return value <= tex_max_side ? static_cast<int>(value) : 0;
}

// A chain that stops before 1 by 1 counts as none: `mipmaps` promises every level.
int read_mipmaps(const unsigned char* file, TEX_image_desc desc) {
    desc.mipmaps = 1;
    const std::size_t whole_chain = tex_levels(desc).size();
    return whole_chain > 1 && get_word(file, word_mipmaps) >= whole_chain ? static_cast<int>(whole_chain) : 0;
}

std::vector<unsigned char> header_of(const TEX_image_desc& desc, const char* format_name) {
    const std::vector<tex_level> levels = tex_levels(desc);
    std::vector<unsigned char> header(data_offset);
    const bool chain = levels.size() > 1;
    std::memcpy(header.data(), "DDS ", 4);
    put_word(header.data(), word_length, 124);
    put_word(header.data(), word_flags,
             has_caps | has_height | has_width | has_format | has_first_level_bytes | (chain ? has_mipmaps : 0));
    put_word(header.data(), word_height, static_cast<std::size_t>(desc.height));
    put_word(header.data(), word_width, static_cast<std::size_t>(desc.width));
    put_word(header.data(), word_first_level_bytes, levels[0].stride * levels[0].strides);
    put_word(header.data(), word_mipmaps, chain ? levels.size() : 0);
    put_word(header.data(), word_format_length, 32);
    put_word(header.data(), word_format_flags, format_has_four_cc);
    std::memcpy(header.data() + 4 * word_four_cc, format_name, 4);
    put_word(header.data(), word_caps, caps_texture | (chain ? caps_complex | caps_mipmap : 0));
    return header;
}

}  // namespace

int TEX_load_dds(const std::string& path, xmap_class& file, TEX_image_desc& desc, const unsigned char** data) {
    const unsigned char* bytes = file.retry(path);
    if (!bytes || static_cast<std::size_t>(file.length()) < data_offset || std::memcmp(bytes, "DDS ", 4) != 0) return 0;
    TEX_image_desc made = {read_format(bytes), side(get_word(bytes, word_width)), side(get_word(bytes, word_height)), 0,
                           0};
    made.mipmaps = read_mipmaps(bytes, made);
    const std::size_t needed = TEX_bytes_needed_for_image(made);
    // Every block that is promised has to be there.
    if (needed == 0 || needed > static_cast<std::size_t>(file.length()) - data_offset) return 0;
    desc = made;
    *data = bytes + data_offset;
    return 1;
}

int TEX_save_dds(const std::string& path, const TEX_image_desc& desc, const unsigned char* pixels) {
    const char* format_name = nullptr;
    for (const four_cc& known : four_ccs)
        if (known.format == desc.format) format_name = known.name;

    const std::size_t bytes = TEX_bytes_needed_for_image(desc);
    if (!format_name || bytes == 0) return 0;
    std::vector<unsigned char> image = header_of(desc, format_name);
    image.insert(image.end(), pixels, pixels + bytes);
    // Ours run from the bottom, the file from the top.
    TEX_flip_y(desc, image.data() + data_offset);

    const std::string full = app_path + path;
    std::FILE* out = std::fopen(full.c_str(), "wbe");
    if (!out) return 0;
    const bool written = std::fwrite(image.data(), 1, image.size(), out) == image.size();
    const bool closed = std::fclose(out) == 0;
    if (written && closed) return 1;
    std::remove(full.c_str());  // half an image would pass for one
    return 0;
}
