// PNG through libpng. libpng reports a failure by a jump to the last setjmp. The functions that call setjmp hold
// nothing but plain pointers, and all that owns memory lives in their callers, above the jump. Alerts wait until
// libpng's records are freed, as a fatal one does not come back.
#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "gfx/images/tex.h"
#include "gfx/images/tex_levels.h"
#include "runtime/oops.h"
#include "runtime/product.h"

namespace {

constexpr std::size_t signature_length = 8;

struct png_reading {
    png_structp png = nullptr;
    png_infop info = nullptr;
    const unsigned char* at = nullptr;  // next byte of the file
    const unsigned char* end = nullptr;
    std::size_t file_length = 0;
    int format = 0;  // wanted
    int width = 0, height = 0;
    unsigned depth = 0;   // bits of a pixel as it comes out
    char words[64] = "";  // libpng's own, on failure

    png_reading() = default;
    png_reading(const png_reading&) = delete;
    png_reading& operator=(const png_reading&) = delete;
    ~png_reading() { png_destroy_read_struct(&png, &info, nullptr); }
};

void my_error(png_structp png, png_const_charp words) {
    if (auto* out = static_cast<char*>(png_get_error_ptr(png))) std::snprintf(out, 64, "%s", words);
    png_longjmp(png, 1);
}

void my_warning(png_structp, png_const_charp) {}

png_voidp my_malloc(png_structp, png_alloc_size_t size) {
    return std::malloc(size);
}

void my_free(png_structp, png_voidp block) {
    std::free(block);
}

void my_readbuf(png_structp png, png_bytep to, std::size_t length) {
    auto* job = static_cast<png_reading*>(png_get_io_ptr(png));
    if (length > static_cast<std::size_t>(job->end - job->at)) png_error(png, "the file ends too early");
    std::copy_n(job->at, length, to);
    job->at += length;
}

// A few bytes may claim any size. Deflate packs at most 1032 to 1, so a larger claim cannot be true.
void check_claimed_size(const png_reading* job) {
    const std::uint64_t width = png_get_image_width(job->png, job->info);
    const std::uint64_t height = png_get_image_height(job->png, job->info);
    if (width * height * 4 > tex_max_bytes) png_error(job->png, "the image is too large");
    if (std::uint64_t{png_get_rowbytes(job->png, job->info)} * height > std::uint64_t{job->file_length} * 1032)
        png_error(job->png, "the file is too short for its size in pixels");
}

void set_transforms(const png_reading* job) {
    // Both ends of the correction are the file's own, so that no value changes.
    png_fixed_point gamma = 0;
    if (png_get_gAMA_fixed(job->png, job->info, &gamma) && gamma > 0) {
        const std::int64_t inverse = (std::int64_t{10000000000} + gamma / 2) / gamma;
        png_set_gamma_fixed(job->png, static_cast<png_fixed_point>(inverse), gamma);
    }
    const int colour = png_get_color_type(job->png, job->info);
    const bool keyed = png_get_valid(job->png, job->info, PNG_INFO_tRNS) != 0;
    if (colour == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(job->png);
    if (colour == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(job->png, job->info) < 8)
        png_set_expand_gray_1_2_4_to_8(job->png);
    if (keyed) png_set_tRNS_to_alpha(job->png);
    png_set_packing(job->png);

    const bool has_colour = (colour & PNG_COLOR_MASK_COLOR) != 0;
    const bool has_alpha = (colour & PNG_COLOR_MASK_ALPHA) != 0 || keyed;
    if (job->format == tex_format_rgba && !has_alpha) png_set_filler(job->png, 255, PNG_FILLER_AFTER);
    if (job->format == tex_format_rgb) png_set_strip_alpha(job->png);
    if (job->format == tex_format_alpha) {
        if (has_colour) png_set_rgb_to_gray_fixed(job->png, PNG_ERROR_ACTION_NONE, -1, -1);
    } else if (!has_colour) {
        png_set_gray_to_rgb(job->png);
    }
}

bool read_header(png_reading* job) {
    if (setjmp(png_jmpbuf(job->png))) return false;
    png_set_read_fn(job->png, job, my_readbuf);
    png_set_sig_bytes(job->png, signature_length);
    png_read_info(job->png, job->info);
    check_claimed_size(job);
    set_transforms(job);
    png_set_interlace_handling(job->png);
    png_read_update_info(job->png, job->info);
    job->width = static_cast<int>(png_get_image_width(job->png, job->info));
    job->height = static_cast<int>(png_get_image_height(job->png, job->info));
    job->depth = unsigned{png_get_channels(job->png, job->info)} * png_get_bit_depth(job->png, job->info);
    return true;
}

// To the end of the file, as only that proves the checksum of the pixels.
bool read_rows(png_reading* job, png_bytepp rows) {
    if (setjmp(png_jmpbuf(job->png))) return false;
    png_read_image(job->png, rows);
    png_read_end(job->png, nullptr);
    return true;
}

// Rows of an image without pad, last row first: PNG runs from the top, an image from the bottom.
std::vector<png_bytep> rows_from_the_top(unsigned char* pixels, int height, std::size_t stride) {
    std::vector<png_bytep> rows(static_cast<std::size_t>(height));
    for (auto row = rows.rbegin(); row != rows.rend(); ++row, pixels += stride)
        *row = pixels;
    return rows;
}

constexpr const char* bad_depth = "Illegal bits per pixel";
constexpr const char* jumped = "setjmp(png_ptr->jmpbuf";

// Returns what failed, null on success.
const char* decode(png_reading* job, const tex_layout& wanted, std::vector<unsigned char>& pixels) {
    if (job->file_length < signature_length || png_sig_cmp(job->at, 0, signature_length))
        return "is_png=!png_sig_cmp(png_io_buf,0,8)";
    job->png =
        png_create_read_struct_2(PNG_LIBPNG_VER_STRING, job->words, my_error, my_warning, nullptr, my_malloc, my_free);
    if (!job->png) return "!png_ptr";
    job->info = png_create_info_struct(job->png);
    if (!job->info) return "!info_ptr";
    job->at += signature_length;
    if (!read_header(job)) return jumped;
    if (job->depth != wanted.bytes * 8) return bad_depth;

    const std::size_t stride = static_cast<std::size_t>(job->width) * wanted.bytes;
    pixels.resize(stride * static_cast<std::size_t>(job->height));
    std::vector<png_bytep> rows = rows_from_the_top(pixels.data(), job->height, stride);
    return read_rows(job, rows.data()) ? nullptr : jumped;
}

const tex_layout* wanted_layout(int format) {
    const bool loadable = format == tex_format_rgba || format == tex_format_rgb || format == tex_format_alpha;
    return loadable ? tex_layout_of(format) : nullptr;
}

}  // namespace

int tex_png_from_map(const std::string& path, const xmap_class& file, TEX_image_desc& desc, int format,
                     std::vector<unsigned char>& pixels) {
    const tex_layout* wanted = wanted_layout(format);
    if (!wanted)
        __MACIBM_alert(0, bad_depth, "format=" + std::to_string(format), "", path, t_exit, "HLutils/TEX/TEX_png",
                       __LINE__);
    const char* failure = nullptr;
    std::string words;
    {
        png_reading job;
        job.at = file.mem_start;
        job.end = file.mem_end;
        job.file_length = static_cast<std::size_t>(file.length());
        job.format = format;
        failure = decode(&job, *wanted, pixels);
        words = job.words;
        if (!failure) desc = {format, job.width, job.height, 0, 0};
    }
    if (!failure) return 1;
    pixels.clear();
    const bool depth = failure == bad_depth;
    __MACIBM_alert(0, depth ? bad_depth : "PING-FILE ERROR!", depth ? "" : failure, words, path, t_alert,
                   "HLutils/TEX/TEX_png", __LINE__);
    return 0;
}

int TEX_load_png(const std::string& path, xmap_class& file, TEX_image_desc& desc, int format,
                 std::vector<unsigned char>& pixels) {
    return file.retry(path) ? tex_png_from_map(path, file, desc, format, pixels) : 0;
}

int TEX_unpack_png(const unsigned char* file, std::size_t length, int width, int height, int channels,
                   unsigned char* pixels) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, file, length)) return 0;
    image.format = channels == 1 ? PNG_FORMAT_GRAY : PNG_FORMAT_RGBA;
    const bool of_the_size = static_cast<int>(image.width) == width && static_cast<int>(image.height) == height;
    // A negative step writes the last row first.
    const bool read = of_the_size && png_image_finish_read(&image, nullptr, pixels, -width * channels, nullptr);
    png_image_free(&image);
    return read;
}

namespace {

struct png_writing {
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::FILE* out = nullptr;

    png_writing() = default;
    png_writing(const png_writing&) = delete;
    png_writing& operator=(const png_writing&) = delete;
    ~png_writing() {
        png_destroy_write_struct(&png, &info);
        if (out) std::fclose(out);
    }
};

int png_colour_type(int format) {
    switch (format) {
        case tex_format_alpha:
            return PNG_COLOR_TYPE_GRAY;
        case tex_format_rgb:
        case tex_format_bgr:
            return PNG_COLOR_TYPE_RGB;
        default:
            return PNG_COLOR_TYPE_RGB_ALPHA;
    }
}

bool write_rows(png_writing* job, const TEX_image_desc* desc, png_bytepp rows) {
    if (setjmp(png_jmpbuf(job->png))) return false;
    png_init_io(job->png, job->out);
    png_set_filter(job->png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_set_compression_level(job->png, 9);
    png_set_compression_mem_level(job->png, 8);
    png_set_compression_strategy(job->png, 0);
    png_set_compression_window_bits(job->png, 15);
    png_set_compression_method(job->png, 8);
    png_set_compression_buffer_size(job->png, 8192);
    png_set_IHDR(job->png, job->info, static_cast<png_uint_32>(desc->width), static_cast<png_uint_32>(desc->height), 8,
                 png_colour_type(desc->format), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(job->png, job->info);
    if (desc->format == tex_format_bgr || desc->format == tex_format_bgra) png_set_bgr(job->png);
    png_write_image(job->png, rows);
    png_write_end(job->png, job->info);
    return true;
}

}  // namespace

int TEX_save_png(const std::string& path, const TEX_image_desc& desc, const unsigned char* pixels) {
    const std::vector<tex_level> levels = tex_levels(desc);
    if (levels.empty() || !tex_layout_of(desc.format)) return 0;
    png_writing job;
    job.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, my_error, my_warning);
    if (job.png) job.info = png_create_info_struct(job.png);
    if (!job.info) return 0;
    const std::string full = app_path + path;
    job.out = std::fopen(full.c_str(), "wbe");
    if (!job.out) return 0;
    // libpng takes rows that it could write to, and only reads them.
    std::vector<png_bytep> rows = rows_from_the_top(const_cast<unsigned char*>(pixels), desc.height, levels[0].stride);
    const bool written = write_rows(&job, &desc, rows.data());
    const bool closed = std::fclose(std::exchange(job.out, nullptr)) == 0;
    if (written && closed) return 1;
    std::remove(full.c_str());  // half an image would pass for one
    return 0;
}

int write_png_to_disk(const std::string& path, int width, int height, int channels) {
    if (width > scratch_side || height > scratch_side) return 0;
    return TEX_save_png(path, {channels == 4 ? tex_format_rgba : tex_format_rgb, width, height, 0, 0}, scratch_array);
}
