// md5.h: the MD5 digest of RFC 1321, and the signature of a file, by which the system knows its content.
// A signature is 32 lower-case hexadecimal digits: of a file's bytes, or of a symbolic link's target text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

struct MD5_CTX {
    std::uint32_t bits[2];  // count of bits, low word first
    std::uint32_t state[4];
    unsigned char in[64];
    unsigned char digest[16];  // valid after MD5Final
};

void MD5Init(MD5_CTX* context);
void MD5Update(MD5_CTX* context, const unsigned char* buffer, std::uint16_t length);
void MD5UpdateWide(MD5_CTX* context, const unsigned char* buffer, std::uint32_t length);
void MD5Final(MD5_CTX* context);
std::string md5_hex(const MD5_CTX& context);
std::string md5_of(std::string_view bytes);  // the signature of bytes in memory

// 0, or a code for error_str, and then `sig` stays as it was. 20006 (err_file_open) means that nothing is there, and
// that alone. Anything else is there: EISDIR a folder, err_no_file a pipe, socket or device, which is not opened; any
// other errno a file that cannot be read. A link is not followed. Exact spelling.
int calc_file_md5(const std::string& path, std::string& sig);
