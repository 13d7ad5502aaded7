// bytes.h: numbers in the bytes of a file.
#pragma once

#include <cstdint>

// `count` bytes, the lowest first; as many as `word` has at most.
template <class word = std::uint32_t>
constexpr word little_word(const unsigned char* bytes, unsigned count) {
    word value = 0;
    for (unsigned i = 0; i < count; ++i)
        value |= word{bytes[i]} << (8 * i);
    return value;
}
