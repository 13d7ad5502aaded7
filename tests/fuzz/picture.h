// What every reader of pictures must hold to, in each of the three forms that a picture is loaded in.
#pragma once

#include "fuzz/fuzz.h"
#include "gfx/images/tex.h"

template <class reader>
void check_picture(reader load, const std::uint8_t* data, std::size_t size) {
    const memory_file picture(view_of(data, size));
    for (const int format : {tex_format_rgba, tex_format_rgb, tex_format_alpha}) {
        const bool alive = survives([&] {
            xmap_class file;
            TEX_image_desc desc;
            std::vector<unsigned char> pixels;
            const int loaded = load(picture.path(), file, desc, format, pixels);
            must(!loaded || (pixels.size() == TEX_bytes_needed_for_image(desc) && desc.format == format),
                 "there are as many pixels as the image needs");
            if (loaded) TEX_flip_y(desc, pixels.data());
        });
        must(alive, "no picture ends the run");
    }
}
