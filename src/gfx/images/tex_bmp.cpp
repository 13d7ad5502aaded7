// BMP: 24 bits a pixel, not compressed. Rows are padded to four bytes and run from the bottom unless the height is
// negative; bytes come as blue, green, red.
#include <cstdint>
#include <cstdlib>

#include "gfx/images/tex.h"
#include "gfx/images/tex_levels.h"
#include "runtime/oops.h"

namespace {

constexpr std::uint32_t file_header_length = 14, core_header_length = 12, info_header_length = 40;

struct bmp_header {
    std::uint32_t data_offset;
    std::int64_t width, height;  // height below 0: rows run from the top
    std::uint32_t depth, compression;
};

// Fields in a row, each of which may stand in either byte order.
struct field_reader {
    const unsigned char* at;
    bool big_endian;

    std::uint32_t take(unsigned bytes) {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < bytes; ++i)
            value |= std::uint32_t{at[big_endian ? bytes - 1 - i : i]} << (8 * i);
        at += bytes;
        return value;
    }
    std::int32_t take_signed() { return static_cast<std::int32_t>(take(4)); }
};

bool is_header_length(std::uint32_t length) {
    return length == core_header_length || (length >= info_header_length && length <= 1024);
}

// The header's own length tells the order in which its writer put bytes: it is small in one of the two only.
bool read_header(const xmap_class& file, bmp_header& header) {
    if (file.length() < file_header_length + core_header_length) return false;
    field_reader field = {file.mem_start + file_header_length, false};
    if (!is_header_length(field.take(4))) field.big_endian = true;

    field.at = file.mem_start + 10;
    header.data_offset = field.take(4);
    const std::uint32_t length = field.take(4);
    if (!is_header_length(length) || file.length() < file_header_length + length) return false;
    const bool core = length == core_header_length;
    header.width = core ? static_cast<std::int64_t>(field.take(2)) : field.take_signed();
    header.height = core ? static_cast<std::int64_t>(field.take(2)) : field.take_signed();
    field.take(2);  // planes, always 1
    header.depth = field.take(2);
    header.compression = core ? 0 : field.take(4);
    return true;
}

void convert_row(const unsigned char* bgr, int width, const tex_layout& wanted, unsigned char* to) {
    for (int x = 0; x < width; ++x, bgr += 3, to += wanted.bytes) {
        if (wanted.format == tex_format_alpha)
            // What the eye makes of a colour, in the weights that the PNG decoder takes.
            *to = static_cast<unsigned char>((6968 * bgr[2] + 23434 * bgr[1] + 2366 * bgr[0] + 16384) >> 15);
        else
            tex_put(wanted, to, {bgr[2], bgr[1], bgr[0], 255});
    }
}

}  // namespace

int tex_bmp_from_map(const std::string& path, const xmap_class& file, TEX_image_desc& desc, int format,
                     std::vector<unsigned char>& pixels) {
    if (format != tex_format_rgb && format != tex_format_rgba && format != tex_format_alpha)
        __MACIBM_alert(0, "Illegal desired format for bmp.", "format=" + std::to_string(format), "", path, t_exit,
                       "HLutils/TEX/TEX_bmp", __LINE__);
    const tex_layout* wanted = tex_layout_of(format);
    bmp_header header;
    if (!read_header(file, header)) return 0;
    if (header.depth != 24 || header.compression != 0) {
        const char* what = header.depth != 24 ? "Wrong bitmap color depth for texture!" : "Bitmap is compressed!";
        __MACIBM_alert(0, "We need 24-bit color.", what, "", path, t_alert, "HLutils/TEX/TEX_bmp", __LINE__);
        return 0;
    }
    const std::int64_t rows = std::abs(header.height);
    if (header.width < 1 || header.width > tex_max_side || rows < 1 || rows > tex_max_side) return 0;
    // In 64 bits: a header may claim what it likes. The file has to hold every row, and the image has to be bearable.
    const std::int64_t stride = (header.width * 3 + 3) & ~std::int64_t{3};
    if (header.data_offset + stride * rows > file.length()) return 0;
    const TEX_image_desc made = {format, static_cast<int>(header.width), static_cast<int>(rows), 0, 0};
    const std::size_t bytes = TEX_bytes_needed_for_image(made);
    if (bytes > tex_max_bytes) return 0;

    pixels.resize(bytes);
    unsigned char* to = pixels.data();
    for (std::int64_t y = 0; y < rows; ++y, to += static_cast<std::size_t>(header.width) * wanted->bytes) {
        const std::int64_t row = header.height < 0 ? rows - 1 - y : y;
        convert_row(file.mem_start + header.data_offset + row * stride, made.width, *wanted, to);
    }
    desc = made;
    return 1;
}

int TEX_load_bmp(const std::string& path, xmap_class& file, TEX_image_desc& desc, int format,
                 std::vector<unsigned char>& pixels) {
    const unsigned char* bytes = file.retry(path);
    if (!bytes || file.length() < 2 || bytes[0] != 'B' || bytes[1] != 'M') return 0;
    return tex_bmp_from_map(path, file, desc, format, pixels);
}
