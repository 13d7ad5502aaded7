#include "files/md5_lanes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>

#include "files/md5_kernel.h"

namespace {

constexpr std::size_t block = 64;
// Large enough that a read costs little beside its bytes, small enough that the buffers of all lanes stay in the cache.
constexpr std::size_t read_bytes = 32 << 10;
// A full set of lanes does four to seven times what a processor does alone: with fewer than these in use, alone is
// faster.
constexpr std::size_t fewest_lanes = 4;

// A message on its way. What was read of it waits in the buffer, from where whole blocks are taken.
struct lane {
    bool in_use = false, at_end = false, failed = false;
    std::size_t message = 0;
    std::uint64_t length = 0;     // bytes read so far
    std::size_t at = 0, end = 0;  // of what waits
    std::unique_ptr<unsigned char[]> buffer = std::make_unique<unsigned char[]>(read_bytes + 2 * block);

    std::size_t blocks_waiting() const { return (end - at) / block; }

    void begin(std::size_t which) {
        message = which;
        in_use = true;
        at_end = failed = false;
        length = at = end = 0;
    }

    // Reads until the buffer is full or the message ends. Its end is padded to whole blocks, with the count of its
    // bits.
    void fill(md5_messages& messages) {
        std::memmove(buffer.get(), buffer.get() + at, end - at);
        end -= at;
        at = 0;
        while (!at_end && end < read_bytes) {
            const std::ptrdiff_t got = messages.read(message, buffer.get() + end, read_bytes - end);
            at_end = got <= 0;
            failed = got < 0;
            if (got > 0) {
                end += static_cast<std::size_t>(got);
                length += static_cast<std::uint64_t>(got);
            }
        }
        if (!at_end) return;
        const std::size_t padding = (end % block < 56 ? 56 : 120) - end % block;
        std::memset(buffer.get() + end, 0, padding);
        buffer[end] = 0x80;
        end += padding;
        for (unsigned i = 0; i < 8; ++i)
            buffer[end++] = static_cast<unsigned char>(length * 8 >> 8 * i);
    }
};

class lane_set {
  public:
    lane_set(md5_messages& source, md5_means with) : messages(source), means(with) {}

    void run() {
        while (supply()) {
            const std::size_t in_use = static_cast<std::size_t>(
                std::count_if(lanes.begin(), lanes.end(), [](const lane& one) { return one.in_use; }));
            if (means == md5_means::alone || in_use < fewest_lanes)
                work_alone();
            else
                work_together();
        }
    }

  private:
    // Sees to it that every lane has blocks to take, from its message or the next one; false when all is through.
    bool supply() {
        bool any = false;
        for (std::size_t l = 0; l < md5_lane_count; ++l) {
            lane& one = lanes[l];
            while (!one.in_use || one.blocks_waiting() == 0) {
                if (one.in_use && one.at_end) end(l);
                if (!one.in_use && !begin(l)) break;
                one.fill(messages);
                if (one.failed) one.at = one.end;
            }
            any = any || one.in_use;
        }
        return any;
    }

    bool begin(std::size_t l) {
        constexpr std::uint32_t start[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
        std::size_t message = 0;
        if (at_end || (at_end = !messages.next(message))) return false;
        lanes[l].begin(message);
        for (std::size_t w = 0; w < 4; ++w)
            states.words[w][l] = start[w];
        return true;
    }

    void end(std::size_t l) {
        std::string signature;
        for (std::size_t byte = 0; byte < 16 && !lanes[l].failed; ++byte) {
            const unsigned value = states.words[byte / 4][l] >> 8 * (byte % 4) & 0xff;
            signature += "0123456789abcdef"[value >> 4];
            signature += "0123456789abcdef"[value & 15];
        }
        lanes[l].in_use = false;
        messages.signed_as(lanes[l].message, signature);
    }

    void work_alone() {
        for (std::size_t l = 0; l < md5_lane_count; ++l) {
            lane& one = lanes[l];
            if (!one.in_use) continue;
            std::uint32_t state[4];
            for (std::size_t w = 0; w < 4; ++w)
                state[w] = states.words[w][l];
            md5_blocks(state, one.buffer.get() + one.at, one.blocks_waiting());
            for (std::size_t w = 0; w < 4; ++w)
                states.words[w][l] = state[w];
            one.at += one.blocks_waiting() * block;
        }
    }

    // As many blocks as every lane in use has. A lane that is not in use works on the bytes of one that is, for
    // nothing.
    void work_together() {
        std::size_t blocks = read_bytes;
        const unsigned char* data[md5_lane_count];
        const lane* used = nullptr;
        for (const lane& one : lanes) {
            if (!one.in_use) continue;
            used = &one;
            blocks = std::min(blocks, one.blocks_waiting());
        }
        for (std::size_t l = 0; l < md5_lane_count; ++l) {
            const lane& one = lanes[l].in_use ? lanes[l] : *used;
            data[l] = one.buffer.get() + one.at;
        }
#ifdef __x86_64__
        (means == md5_means::avx512 ? md5_blocks_avx512 : md5_blocks_avx2)(states, data, blocks);
#endif
        for (lane& one : lanes)
            if (one.in_use) one.at += blocks * block;
    }

    md5_messages& messages;
    const md5_means means;
    bool at_end = false;  // of the messages
    std::array<lane, md5_lane_count> lanes;
    md5_lane_states states = {};
};

}  // namespace

md5_means best_md5_means() {
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx512f")) return md5_means::avx512;
    if (__builtin_cpu_supports("avx2")) return md5_means::avx2;
#endif
    return md5_means::alone;
}

void md5_sign_all(md5_messages& messages, md5_means means) {
    lane_set(messages, std::min(means, best_md5_means())).run();
}
