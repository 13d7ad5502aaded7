#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "gfx/fixtures/fixtures.h"
#include "gfx/images/tex.h"
#include "support/alerts.h"
#include "support/scratch.h"

// Writes the bytes and reads them by the name's extension. A new file each time: to write over one makes some file
// systems wait for the disk, and there are thousands.
static int load(const std::string& name, const std::string& content, TEX_image_desc& desc, bytes& pixels) {
    static const scratch folder;
    std::remove((folder / name).c_str());
    const std::string path = folder.write(name, content);
    if (!name.ends_with(".dds")) return TEX_load_any(path, desc, tex_format_rgba, pixels);
    xmap_class file;
    const unsigned char* data = nullptr;
    if (!TEX_load_dds(path, file, desc, &data)) return 0;
    pixels.assign(data, data + TEX_bytes_needed_for_image(desc));
    return 1;
}

TEST(tex_load, reads_each_kind_as_other_programs_do) {
    for (const std::string name :
         {"gray1.png", "gray2.png", "gray4.png", "gray8.png", "gray8_keyed.png", "gray_alpha.png", "palette2.png",
          "palette8.png", "palette2_keyed.png", "rgb8.png", "rgb8_gamma.png", "rgb8_keyed.png", "rgba8.png",
          "gray1_interlaced.png", "rgba8_interlaced.png", "rgb24.bmp", "core24.bmp"}) {
        SCOPED_TRACE(name);
        const alert_catcher alerts;
        const bytes rgba = expected_rgba(name, 5);
        TEX_image_desc desc;
        bytes pixels, rgb;
        ASSERT_EQ(TEX_load_any(fixture(name), desc, tex_format_rgba, pixels), 1);
        EXPECT_EQ(pixels, rgba);

        bool clear = false;
        for (std::size_t i = 0; i < rgba.size(); i += 4) {
            rgb.insert(rgb.end(), {rgba[i], rgba[i + 1], rgba[i + 2]});
            clear |= rgba[i + 3] < 255;
        }
        ASSERT_EQ(TEX_load_any_ext(fixture(name), desc, tex_format_rgb, pixels), 1);
        EXPECT_EQ(pixels, rgb);
        EXPECT_EQ(alerts.count(), 0u);

        // A picture with transparency of its own has one channel too many for alpha alone.
        ASSERT_EQ(TEX_load_any(fixture(name), desc, tex_format_alpha, pixels), clear ? 0 : 1);
        EXPECT_EQ(alerts.last().starts_with("Illegal bits per pixel"), clear);
        for (std::size_t i = 0; !clear && i < 35 && name != "rgb8_gamma.png"; ++i)
            EXPECT_NEAR(pixels[i], 0.2126 * rgb[3 * i] + 0.7152 * rgb[3 * i + 1] + 0.0722 * rgb[3 * i + 2], 1.0);
    }
}

TEST(tex_load, refuses_with_the_right_words) {
    const scratch folder;
    const struct {
        std::string path, words;  // no words: no alert
    } cases[] = {
        {fixture("gray16.png"), "Illegal bits per pixel\n\n"},
        {fixture("rgb16.png"), "Illegal bits per pixel\n\n"},
        {fixture("rgba32.bmp"), "We need 24-bit color.\nWrong bitmap color depth for texture!\n"},
        {fixture("rle8.bmp"), "We need 24-bit color.\nWrong bitmap color depth for texture!\n"},
        {folder.write("bare.png", "\x89PNG\r\n\x1a\n"),
         "PING-FILE ERROR!\nsetjmp(png_ptr->jmpbuf\nthe file ends too early\n"},
        {folder.write("empty", ""), ""},
        {folder.write("other", "neither of them"), ""},
        {folder / "missing.png", ""},
    };
    TEX_image_desc desc;
    bytes pixels;
    for (const auto& [path, words] : cases) {
        SCOPED_TRACE(path);
        const alert_catcher alerts;
        EXPECT_EQ(TEX_load_any(path, desc, tex_format_rgba, pixels), 0);
        EXPECT_EQ(alerts.last().substr(0, words.size()), words);
        ASSERT_EQ(alerts.count(), words.empty() ? 0u : 1u);
        if (words.empty()) continue;
        EXPECT_EQ(alerts.seen[0].level, t_alert);
        EXPECT_EQ(alerts.seen[0].line4, path);
    }
}

static void put_little(std::string& file, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        file[at + i] = static_cast<char>(value >> (8 * i));
}

TEST(tex_load, reads_bmp_from_the_top_and_in_either_byte_order) {
    const alert_catcher alerts;
    const bytes rgba = expected_rgba("rgb24.bmp", 5);
    const std::string plain = scratch::read(fixture("rgb24.bmp"));
    TEX_image_desc desc;
    bytes pixels;

    std::string from_the_top = plain;
    put_little(from_the_top, 22, static_cast<std::uint32_t>(-7));
    ASSERT_EQ(load("a.bmp", from_the_top, desc, pixels), 1);
    EXPECT_EQ(desc.height, 7);
    EXPECT_EQ(pixels, turned(rgba, 20));

    std::string swapped = plain;
    for (const auto& [at, size] : {std::pair{2, 4}, {10, 4}, {14, 4}, {18, 4}, {22, 4}, {26, 2}, {28, 2}, {30, 4}})
        std::reverse(swapped.begin() + at, swapped.begin() + at + size);
    ASSERT_EQ(load("a.bmp", swapped, desc, pixels), 1);
    EXPECT_EQ(pixels, rgba);

    std::string compressed = plain;
    put_little(compressed, 30, 1);
    EXPECT_EQ(load("a.bmp", compressed, desc, pixels), 0);
    EXPECT_EQ(alerts.seen.at(0).line2, "Bitmap is compressed!");
}

// Sizes at the edges of 16, 31 and 32 bits must neither wrap round to a small buffer nor take memory.
TEST(tex_load, refuses_sizes_that_the_file_cannot_hold) {
    const alert_catcher alerts;
    TEX_image_desc desc;
    bytes pixels;
    for (const std::uint32_t side : {0u, 100u, 11000u, 65536u, 1u << 20, 0x40000001u, 0x7fffffffu, 0x80000000u, ~0u}) {
        SCOPED_TRACE(side);
        std::string bmp = scratch::read(fixture("rgb24.bmp")), dds = scratch::read(fixture("dxt5.dds")),
                    png = scratch::read(fixture("rgb8.png"));
        for (const std::size_t place : {0u, 4u}) {
            put_little(bmp, 18 + place, side);
            put_little(dds, 12 + place, side);
            put_little(png, 16 + place, __builtin_bswap32(side));
        }
        const uLong crc = crc32(0, reinterpret_cast<const Bytef*>(png.data()) + 12, 17);
        put_little(png, 29, __builtin_bswap32(static_cast<std::uint32_t>(crc)));
        EXPECT_EQ(load("a.bmp", bmp, desc, pixels), 0);
        EXPECT_EQ(load("a.dds", dds, desc, pixels), 0);
        EXPECT_EQ(load("a.png", png, desc, pixels), 0);
        EXPECT_LT(pixels.capacity(), 100000u);
    }
}

TEST(tex_load, refuses_cut_files_and_survives_wrong_bytes) {
    const alert_catcher alerts;
    TEX_image_desc desc;
    bytes pixels;
    for (const std::string name :
         {"gray1_interlaced.png", "palette2_keyed.png", "rgb8_gamma.png", "core24.bmp", "rgb24.bmp", "dxt1.dds"}) {
        const std::string whole = scratch::read(fixture(name));
        ASSERT_EQ(load(name, whole, desc, pixels), 1);
        const bytes wrong = random_bytes(whole.size() * 2, 1);
        for (std::size_t at = 0; at < whole.size(); ++at) {
            EXPECT_EQ(load(name, whole.substr(0, at), desc, pixels), 0) << name << " cut to " << at;
            std::string broken = whole;
            for (const unsigned char byte : {wrong[2 * at], wrong[2 * at + 1]}) {
                broken[at] = static_cast<char>(byte);
                ASSERT_TRUE(!load(name, broken, desc, pixels) || pixels.size() == TEX_bytes_needed_for_image(desc))
                    << name << " byte " << at;
            }
        }
    }
    for (const exce_class& alert : alerts.seen)
        ASSERT_EQ(alert.level, t_alert) << alert.line1;
}
