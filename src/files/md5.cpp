#include "files/md5.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/xmap.h"

namespace {

// floor(2^32 * |sin(i + 1)|), i in radians.
constexpr std::uint32_t sine[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};
constexpr int shift[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
constexpr unsigned word_step[4] = {1, 5, 3, 7};
constexpr unsigned word_start[4] = {0, 1, 5, 0};

constexpr std::uint32_t swap_bytes(std::uint32_t v) {
    return v << 24 | (v & 0xff00) << 8 | (v >> 8 & 0xff00) | v >> 24;
}

// Words of the input and the digest are little-endian.
[[gnu::always_inline]] constexpr std::uint32_t little(std::uint32_t v) {
    return std::endian::native == std::endian::little ? v : swap_bytes(v);
}

// The four words take turns as a, b, c, d, so that no word moves. Everything that does not wait for b, the word made
// last, is added first: the chain through b is what the speed hangs on. In the second round the two halves of the choice
// never have a bit in common and may be added one by one.
template <unsigned i>
[[gnu::always_inline]] inline void step(std::uint32_t (&v)[4], const std::uint32_t (&x)[16]) {
    constexpr unsigned round = i / 16;
    std::uint32_t a = v[(64 - i) % 4];
    const std::uint32_t b = v[(65 - i) % 4], c = v[(66 - i) % 4], d = v[(67 - i) % 4];
    a += x[(word_start[round] + word_step[round] * i) % 16] + sine[i];
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
    v[(64 - i) % 4] = (a << shift[round][i % 4] | a >> (32 - shift[round][i % 4])) + b;
}

template <unsigned... i>
[[gnu::always_inline]] inline void all_steps(std::uint32_t (&v)[4], const std::uint32_t (&x)[16],
                                             std::integer_sequence<unsigned, i...>) {
    (step<i>(v, x), ...);
}

// Works whole blocks straight from the caller's bytes.
void Transform(std::uint32_t* state, const unsigned char* data, std::size_t blocks) {
    std::uint32_t sum[4] = {state[0], state[1], state[2], state[3]};
    for (; blocks; --blocks, data += 64) {
        std::uint32_t x[16];
        std::memcpy(x, data, 64);
        for (std::uint32_t& w : x)
            w = little(w);
        std::uint32_t v[4] = {sum[0], sum[1], sum[2], sum[3]};
        all_steps(v, x, std::make_integer_sequence<unsigned, 64>());
        for (unsigned i = 0; i < 4; ++i)
            sum[i] += v[i];
    }
    std::memcpy(state, sum, sizeof sum);
}

std::size_t bytes_waiting(const MD5_CTX* context) {
    return context->bits[0] / 8 % 64;
}

void count_bits(MD5_CTX* context, std::uint32_t length) {
    const std::uint64_t before = std::uint64_t{context->bits[1]} << 32 | context->bits[0];
    const std::uint64_t after = before + std::uint64_t{length} * 8;
    context->bits[0] = static_cast<std::uint32_t>(after);
    context->bits[1] = static_cast<std::uint32_t>(after >> 32);
}

}  // namespace

void MD5Init(MD5_CTX* context) {
    *context = {{0, 0}, {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476}, {}, {}};
}

void MD5UpdateWide(MD5_CTX* context, const unsigned char* buffer, std::uint32_t length) {
    if (length == 0) return;
    std::size_t left = length;
    if (const std::size_t waiting = bytes_waiting(context)) {
        const std::size_t take = std::min(left, 64 - waiting);
        std::memcpy(context->in + waiting, buffer, take);
        if (waiting + take == 64) Transform(context->state, context->in, 1);
        buffer += take;
        left -= take;
        count_bits(context, static_cast<std::uint32_t>(take));
    }
    if (left == 0) return;
    Transform(context->state, buffer, left / 64);
    std::memcpy(context->in, buffer + left / 64 * 64, left % 64);
    count_bits(context, static_cast<std::uint32_t>(left));
}

void MD5Update(MD5_CTX* context, const unsigned char* buffer, std::uint16_t length) {
    MD5UpdateWide(context, buffer, length);
}

void MD5Final(MD5_CTX* context) {
    const std::uint32_t bits[2] = {little(context->bits[0]), little(context->bits[1])};
    const std::size_t waiting = bytes_waiting(context);
    static constexpr unsigned char padding[64] = {0x80};
    MD5UpdateWide(context, padding, static_cast<std::uint32_t>((waiting < 56 ? 56 : 120) - waiting));
    unsigned char count[8];
    std::memcpy(count, bits, 8);
    MD5UpdateWide(context, count, 8);
    for (std::size_t i = 0; i < 4; ++i) {
        const std::uint32_t word = little(context->state[i]);
        std::memcpy(context->digest + 4 * i, &word, 4);
    }
}

std::string md5_hex(const MD5_CTX& context) {
    std::string hex;
    for (const unsigned char byte : context.digest) {
        hex += "0123456789abcdef"[byte >> 4];
        hex += "0123456789abcdef"[byte & 15];
    }
    return hex;
}

static std::string signature(const unsigned char* bytes, std::size_t length) {
    constexpr std::size_t piece = 1u << 26;  // a length is 32 bits, a file may be longer
    MD5_CTX context;
    MD5Init(&context);
    for (std::size_t at = 0; at < length; at += piece)
        MD5UpdateWide(&context, bytes + at, static_cast<std::uint32_t>(std::min(piece, length - at)));
    MD5Final(&context);
    return md5_hex(context);
}

int calc_file_md5(const std::string& path, std::string& sig) {
    std::string target;
    if (is_sim_link(path, &target)) {
        sig = signature(reinterpret_cast<const unsigned char*>(target.data()), target.size());
        return 0;
    }
    xmap_class file;
    if (!file.retry_exact(path)) return err_file_open;
    sig = signature(file.mem_start, static_cast<std::size_t>(file.length()));
    return 0;
}
