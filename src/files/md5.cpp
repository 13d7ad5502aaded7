#include "files/md5.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <memory>

#include "files/error_str.h"
#include "files/file_reader.h"
#include "files/io_utils.h"
#include "files/md5_kernel.h"
#include "runtime/product.h"

namespace {

constexpr std::uint32_t swap_bytes(std::uint32_t v) {
    return v << 24 | (v & 0xff00) << 8 | (v >> 8 & 0xff00) | v >> 24;
}

// Words of the input and the digest are little-endian.
[[gnu::always_inline]] constexpr std::uint32_t little(std::uint32_t v) {
    return std::endian::native == std::endian::little ? v : swap_bytes(v);
}

}  // namespace

void md5_blocks(std::uint32_t* state, const unsigned char* data, std::size_t blocks) {
    std::uint32_t sum[4] = {state[0], state[1], state[2], state[3]};
    for (; blocks; --blocks, data += 64) {
        std::uint32_t x[16];
        std::memcpy(x, data, 64);
        for (std::uint32_t& w : x)
            w = little(w);
        std::uint32_t v[4] = {sum[0], sum[1], sum[2], sum[3]};
        md5_all_steps(v, x);
        for (unsigned i = 0; i < 4; ++i)
            sum[i] += v[i];
    }
    std::memcpy(state, sum, sizeof sum);
}

namespace {

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
        if (waiting + take == 64) md5_blocks(context->state, context->in, 1);
        buffer += take;
        left -= take;
        count_bits(context, static_cast<std::uint32_t>(take));
    }
    if (left == 0) return;
    md5_blocks(context->state, buffer, left / 64);
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

std::string md5_of(std::string_view bytes) {
    constexpr std::size_t piece = 1u << 26;  // a length is 32 bits, a file may be longer
    MD5_CTX context;
    MD5Init(&context);
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        const std::string_view part = bytes.substr(at, piece);
        MD5UpdateWide(&context, reinterpret_cast<const unsigned char*>(part.data()),
                      static_cast<std::uint32_t>(part.size()));
    }
    MD5Final(&context);
    return md5_hex(context);
}

int calc_file_md5(const std::string& path, std::string& sig) {
    std::string target;
    if (is_sim_link(path, &target)) {
        sig = md5_of(target);
        return 0;
    }
    file_reader file(app_path + path, file_reader::last_link::refused);
    constexpr std::size_t block_size = 256u << 10;
    const auto block = std::make_unique<unsigned char[]>(block_size);
    MD5_CTX context;
    MD5Init(&context);
    std::ptrdiff_t got = 0;
    while ((got = file.read(block.get(), block_size)) > 0)
        MD5UpdateWide(&context, block.get(), static_cast<std::uint32_t>(got));
    const int err = file.error();
    if (err) return err == ENOENT || err == ENOTDIR ? err_file_open : err;
    MD5Final(&context);
    sig = md5_hex(context);
    return 0;
}
