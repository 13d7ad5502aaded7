// md5_kernel.h: the 64 steps of MD5 (RFC 1321), written once for a single word and for a vector of words, and the
// functions made of them that take 16 messages a block at a time. For md5.cpp and the md5_lanes family alone.
// Each file that includes this is compiled for a processor of its own, so nothing here may have a name that the linker
// could share between them: all is local to the file, and no header with functions of its own is included.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

constexpr std::size_t md5_lane_count = 16;

// words[w][l]: word w of the state of lane l.
struct alignas(64) md5_lane_states {
    std::uint32_t words[4][md5_lane_count];
};
// One message: `blocks` blocks of 64 bytes.
void md5_blocks(std::uint32_t* state, const unsigned char* data, std::size_t blocks);
// 16 messages: as many blocks from each of `data`.
typedef void md5_lane_blocks(md5_lane_states& states, const unsigned char* const* data, std::size_t blocks);
md5_lane_blocks md5_blocks_avx2, md5_blocks_avx512;  // only on a processor that has it

namespace {

// floor(2^32 * |sin(i + 1)|), i in radians.
constexpr std::uint32_t md5_sine[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};
constexpr int md5_shift[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
constexpr unsigned md5_word_step[4] = {1, 5, 3, 7};
constexpr unsigned md5_word_start[4] = {0, 1, 5, 0};

// The four words take turns as a, b, c, d, so that no word moves. Everything that does not wait for b, the word made
// last, is added first: the chain through b is what the speed hangs on. In the second round the two halves of the
// choice never have a bit in common and may be added one by one.
template <unsigned i, class word>
[[gnu::always_inline]] inline void md5_step(word* v, const word* x) {
    constexpr unsigned round = i / 16;
    word a = v[(64 - i) % 4];
    const word &b = v[(65 - i) % 4], &c = v[(66 - i) % 4], &d = v[(67 - i) % 4];
    a += x[(md5_word_start[round] + md5_word_step[round] * i) % 16] + md5_sine[i];
    if constexpr (round == 0) {
        a += d ^ (b & (c ^ d));
    } else if constexpr (round == 1) {
        a += c & ~d;
        a += b & d;
    } else if constexpr (round == 2) {
        a += b ^ (c ^ d);
    } else {
        a += c ^ (b | ~d);
    }
    v[(64 - i) % 4] = (a << md5_shift[round][i % 4] | a >> (32 - md5_shift[round][i % 4])) + b;
}

template <class word>
[[gnu::always_inline]] inline void md5_all_steps(word* v, const word* x) {
    [&]<unsigned... i>(std::integer_sequence<unsigned, i...>) __attribute__((always_inline)) {
        (md5_step<i>(v, x), ...);
    }
    (std::make_integer_sequence<unsigned, 64>());
}

// Turns `n` rows of n words into columns, n being the words of a vector: in each pass the rows that lie `span` apart
// swap the squares that lie `span` off the diagonal.
template <unsigned span, class vector, unsigned... j>
[[gnu::always_inline]] inline void md5_swap_squares(vector* rows, std::integer_sequence<unsigned, j...>) {
    constexpr unsigned n = sizeof...(j);
    for (unsigned i = 0; i < n; ++i) {
        if (i & span) continue;
        const vector a = rows[i], b = rows[i + span];
        rows[i] = __builtin_shufflevector(a, b, ((j & span) ? n + j - span : j)...);
        rows[i + span] = __builtin_shufflevector(a, b, ((j & span) ? n + j : j + span)...);
    }
}

template <class vector>
[[gnu::always_inline]] inline void md5_transpose(vector* rows) {
    constexpr unsigned n = sizeof(vector) / 4;
    constexpr auto all = std::make_integer_sequence<unsigned, n>();
    md5_swap_squares<1>(rows, all);
    md5_swap_squares<2>(rows, all);
    md5_swap_squares<4>(rows, all);
    if constexpr (n > 8) md5_swap_squares<8>(rows, all);
}

// As many vectors side by side as 16 lanes take: while one waits for its last step, the next one is worked.
template <class vector>
[[gnu::always_inline]] inline void md5_blocks_of_lanes(md5_lane_states& states, const unsigned char* const* data,
                                                       std::size_t blocks) {
    constexpr unsigned n = sizeof(vector) / 4, sets = md5_lane_count / n;
    vector sum[sets][4];
    for (unsigned s = 0; s < sets; ++s)
        for (unsigned w = 0; w < 4; ++w)
            std::memcpy(&sum[s][w], &states.words[w][s * n], sizeof(vector));
    for (std::size_t at = 0; at < blocks * 64; at += 64) {
        vector x[sets][16], v[sets][4];
        for (unsigned s = 0; s < sets; ++s) {
            for (unsigned first = 0; first < 16; first += n) {
                for (unsigned lane = 0; lane < n; ++lane)
                    std::memcpy(&x[s][first + lane], data[s * n + lane] + at + first * 4, sizeof(vector));
                md5_transpose(&x[s][first]);
            }
            std::memcpy(v[s], sum[s], sizeof v[s]);
        }
        [&]<unsigned... i>(std::integer_sequence<unsigned, i...>) __attribute__((always_inline)) {
            const auto step = [&]<unsigned k>(std::integral_constant<unsigned, k>) __attribute__((always_inline)) {
                for (unsigned s = 0; s < sets; ++s)
                    md5_step<k>(v[s], x[s]);
            };
            (step(std::integral_constant<unsigned, i>()), ...);
        }
        (std::make_integer_sequence<unsigned, 64>());
        for (unsigned s = 0; s < sets; ++s)
            for (unsigned w = 0; w < 4; ++w)
                sum[s][w] += v[s][w];
    }
    for (unsigned s = 0; s < sets; ++s)
        for (unsigned w = 0; w < 4; ++w)
            std::memcpy(&states.words[w][s * n], &sum[s][w], sizeof(vector));
}

}  // namespace
