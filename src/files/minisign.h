// minisign.h: checks signatures in the format of minisign, so that the maker of a release signs it with that program
// and needs no tool of ours. Ed25519 (RFC 8032) by OpenSSL, over BLAKE2b-512 of the bytes, or in the older form over
// the bytes themselves.
//
// A key: "RW" and more, 42 bytes in base64: "Ed", 8 bytes that name the key, 32 of the key; in a file a comment line
// stands before it. A signature file is four lines: a comment; 74 bytes in base64 ("ED" or, in the older form, "Ed",
// the key's name, 64 bytes of signature); "trusted comment: " and a text; 64 bytes in base64 that sign the signature
// and that text.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

struct minisign_key {
    std::array<unsigned char, 8> name;
    std::array<unsigned char, 32> point;
};

// From its line alone or from the text of its file. False if there is no key in it.
bool read_minisign_key(std::string_view text, minisign_key& key);
// As minisign prints it, 16 hexadecimal digits.
std::string minisign_key_name(const minisign_key& key);

enum class minisign_result { good, no_signature, other_key, false_signature };

// `signature` is the text of the signature file. `trusted_comment` is filled where the result is good, and only then
// may be believed.
minisign_result check_minisign(std::string_view signature, std::string_view bytes,
                               const std::vector<minisign_key>& keys, std::string& trusted_comment);

// The value of one tab-separated "name:value" of a trusted comment; "" if it has none. The last of a name counts: what
// a release says stands behind what minisign itself writes.
std::string trusted_value(std::string_view trusted_comment, std::string_view name);
