// md5_lanes.h: signatures of many messages at once. One MD5 is a chain in which every step waits for the one before it,
// so a processor that works on one message idles most of the time. Here each lane of a vector register works on a
// message of its own, 16 at a time, by AVX2 or AVX-512 as the processor that runs this has it. Where there is neither,
// and where too few messages are left to fill the lanes, each is worked alone. The signatures are the same.
// Threads: nothing is shared; any number of threads may sign at the same time, each its own messages.
#pragma once

#include <cstddef>
#include <string>

enum class md5_means { alone, avx2, avx512 };
md5_means best_md5_means();  // of this processor

class md5_messages {
  public:
    virtual ~md5_messages() = default;
    // Names the message that is begun next; false when there is none. Long ones first keep the lanes full to the end.
    virtual bool next(std::size_t& message) = 0;
    // Writes the next bytes of a message to `to`: how many, at most `room`; 0 at its end, below 0 where it cannot be
    // read. Up to 16 messages are read in turn, each from start to end, once.
    virtual std::ptrdiff_t read(std::size_t message, unsigned char* to, std::size_t room) = 0;
    // Once for each message, in the order in which they end: its signature, or "" if a read failed.
    virtual void signed_as(std::size_t message, const std::string& signature) = 0;
};

// Signs messages until there is none. "Alone" is taken where the processor has not what `means` asks for.
void md5_sign_all(md5_messages& messages, md5_means means = best_md5_means());
