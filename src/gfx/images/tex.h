// tex.h: images in memory: read, write, flip, scale, convert. They know nothing of textures or of OpenGL but its format
// numbers.
// Shape: rows run from the bottom of the picture up, `pad` bytes behind each; with `mipmaps` every level down to 1 by 1
// follows. The caller owns the pixels.
// Errors: a file that cannot be read gives 0; misuse and a few kinds of bad file raise an alert, as told at each call.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "files/xmap.h"

// OpenGL's own numbers, so that this header needs no OpenGL.
enum : int {
    tex_format_alpha = 0x1906,
    tex_format_rgb = 0x1907,
    tex_format_rgba = 0x1908,
    tex_format_bgr = 0x80E0,
    tex_format_bgra = 0x80E1,
    tex_format_dxt1_rgb = 0x83F0,
    tex_format_dxt1 = 0x83F1,
    tex_format_dxt3 = 0x83F2,
    tex_format_dxt5 = 0x83F3
};

struct TEX_image_desc {
    int format = 0;
    int width = 0;
    int height = 0;
    int pad = 0;      // bytes at the end of each row
    int mipmaps = 0;  // 0: one level
};

// Total size in bytes, levels included; 0 for an unknown format or a size that no image has.
std::size_t TEX_bytes_needed_for_image(const TEX_image_desc& desc);

// Loaders point `file` at `path` and give 1, or 0 if the file cannot be read; then `desc` is as it was. `format` is the
// one wanted: RGBA, RGB or alpha (the brightness); any other is a fatal alert. Images of over 512 MB are refused.
// By signature and by the name's extension: PNG or BMP.
int TEX_load_any(const std::string& path, TEX_image_desc& desc, int format, std::vector<unsigned char>& pixels);
int TEX_load_any_ext(const std::string& path, TEX_image_desc& desc, int format, std::vector<unsigned char>& pixels);
// Level 1 alerts: "PING-FILE ERROR!" for a file that is no PNG or a damaged one; "Illegal bits per pixel" for 16 bits a
// channel, and for alpha wanted of a picture that has transparency of its own.
int TEX_load_png(const std::string& path, xmap_class& file, TEX_image_desc& desc, int format,
                 std::vector<unsigned char>& pixels);
// Level 1 alert "We need 24-bit color." for other depths and for compressed files.
int TEX_load_bmp(const std::string& path, xmap_class& file, TEX_image_desc& desc, int format,
                 std::vector<unsigned char>& pixels);
// The pixels stay among the file's bytes: `data` points there. Rows are top first; TEX_flip_y turns a copy. `mipmaps`
// is the number of levels, 0 where the file does not go down to 1 by 1. Never an alert.
int TEX_load_dds(const std::string& path, xmap_class& file, TEX_image_desc& desc, const unsigned char** data);

// A PNG in memory, of that size and no other: RGBA with 4 `channels`, with 1 the brightness alone. 0 if it is none.
int TEX_unpack_png(const unsigned char* file, std::size_t length, int width, int height, int channels,
                   unsigned char* pixels);

// 1 on success; 0 for a format that the file cannot hold, and where it cannot be written: then nothing stays of it. The
// file is the right way up.
int TEX_save_png(const std::string& path, const TEX_image_desc& desc, const unsigned char* pixels);
int TEX_save_dds(const std::string& path, const TEX_image_desc& desc, const unsigned char* pixels);
int write_png_to_disk(const std::string& path, int width, int height, int channels);  // of scratch_array

// Between a plain and a compressed image of one size. 0 where the formats do not fit, and where the second has levels
// that the first has not.
int TEX_encode_s3tc(const TEX_image_desc& src_desc, const TEX_image_desc& dst_desc, const unsigned char* src,
                    unsigned char* dst);
int TEX_decode_s3tc(const TEX_image_desc& src_desc, const TEX_image_desc& dst_desc, const unsigned char* src,
                    unsigned char* dst);
// The mean of each box, in place, and the new size to `desc`, which keeps one level. Factors are powers of two (else a
// fatal alert); a side never falls below 1. Compressed images stay as they are.
void TEX_downscale(TEX_image_desc& desc, unsigned char* pixels, int x_factor, int y_factor);
// Turns every level upside down. A compressed image turns by whole blocks: its height should be a multiple of 4, or 1
// or 2 pixels that are repeated over their block, as TEX_encode_s3tc does.
void TEX_flip_y(const TEX_image_desc& desc, unsigned char* pixels);
// Alpha 0 where the three differences from `rgb` sum up to less than `tolerance`. RGBA only; others stay as they are.
void TEX_chroma_key(const TEX_image_desc& desc, unsigned char* pixels, const unsigned char rgb[3], int tolerance);
// The two end colours of one block of colours, each channel by a table of 256. Their order stays, and so the block's
// mode.
void nv_gamma_correct(unsigned char* block, const unsigned char* table);

struct TEX_rect {
    int x, y, dx, dy;
};
// Copies `from` of one image to `to` of another (not the same memory), scaled, blended by the source's alpha times
// `alpha`. Both RGBA or RGB, and `from` inside its image, or a fatal alert; `to` is cut to its image.
void TEX_composite(const TEX_image_desc& in_desc, const unsigned char* in, const TEX_rect& from,
                   const TEX_image_desc& out_desc, unsigned char* out, const TEX_rect& to, float alpha);

// Two buffers of 2048 by 2048 pixels, aligned to 16 bytes, reused for every image.
constexpr int scratch_side = 2048;
extern unsigned char* scratch_array;
extern unsigned char* scratch_array_temp;
extern int scratch_dx, scratch_dy;  // size of the image in scratch_array
