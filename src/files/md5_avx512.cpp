// Compiled for processors with AVX-512; called only on those.
#ifdef __x86_64__

#include "files/md5_kernel.h"

typedef std::uint32_t words __attribute__((vector_size(64)));

void md5_blocks_avx512(md5_lane_states& states, const unsigned char* const* data, std::size_t blocks) {
    md5_blocks_of_lanes<words>(states, data, blocks);
}

#endif
