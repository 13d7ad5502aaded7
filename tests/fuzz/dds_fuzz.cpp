// DDS: the blocks are used where they lie in the file, and are unpacked into plain pixels.
#include "fuzz/fuzz.h"
#include "gfx/images/tex.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const memory_file picture(view_of(data, size));
    const bool alive = survives([&] {
        xmap_class file;
        TEX_image_desc desc;
        const unsigned char* blocks = nullptr;
        if (!TEX_load_dds(picture.path(), file, desc, &blocks)) return;
        const std::size_t bytes = TEX_bytes_needed_for_image(desc);
        must(blocks >= file.mem_start && bytes <= static_cast<std::size_t>(file.mem_end - blocks),
             "the blocks lie in the file");
        std::vector<unsigned char> copy(blocks, blocks + bytes);
        TEX_flip_y(desc, copy.data());
        const TEX_image_desc plain = {tex_format_rgba, desc.width, desc.height, 0, desc.mipmaps};
        std::vector<unsigned char> pixels(TEX_bytes_needed_for_image(plain));
        must(TEX_decode_s3tc(desc, plain, copy.data(), pixels.data()), "what was loaded can be unpacked");
    });
    must(alive, "no picture ends the run");
    return 0;
}
