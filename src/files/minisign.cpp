#include "files/minisign.h"

#include <openssl/evp.h>

#include <algorithm>
#include <memory>

namespace {

constexpr std::string_view trusted = "trusted comment: ";

typedef std::string bytes_t;

// The bytes of base64 text, if they are `length`; else none.
bytes_t from_base64(std::string_view text, std::size_t length) {
    if (text.size() != (length + 2) / 3 * 4) return "";
    bytes_t bytes(text.size() / 4 * 3, '\0');
    const int got = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                    reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    if (got < 0) return "";
    bytes.resize(length);  // without what stands for the padding
    return bytes;
}

// Takes the first line off the text, without its end.
std::string_view take_line(std::string_view& text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

bool is_signed_by(const minisign_key& key, std::string_view signature, std::string_view bytes) {
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> point(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, key.point.data(), key.point.size()), EVP_PKEY_free);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    return point && context && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, point.get()) == 1 &&
           EVP_DigestVerify(context.get(), reinterpret_cast<const unsigned char*>(signature.data()), signature.size(),
                            reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()) == 1;
}

bytes_t blake2b(std::string_view bytes) {
    bytes_t digest(64, '\0');
    unsigned length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), reinterpret_cast<unsigned char*>(digest.data()), &length,
                   EVP_blake2b512(), nullptr) != 1 ||
        length != digest.size())
        return "";
    return digest;
}

}  // namespace

bool read_minisign_key(std::string_view text, minisign_key& key) {
    while (!text.empty()) {
        const bytes_t bytes = from_base64(take_line(text), 42);
        if (!bytes.starts_with("Ed")) continue;
        std::copy_n(bytes.begin() + 2, key.name.size(), key.name.begin());
        std::copy_n(bytes.begin() + 10, key.point.size(), key.point.begin());
        return true;
    }
    return false;
}

std::string minisign_key_name(const minisign_key& key) {
    std::string name;
    for (auto byte = key.name.rbegin(); byte != key.name.rend(); ++byte) {
        name += "0123456789ABCDEF"[*byte >> 4];
        name += "0123456789ABCDEF"[*byte & 15];
    }
    return name;
}

minisign_result check_minisign(std::string_view signature, std::string_view bytes,
                               const std::vector<minisign_key>& keys, std::string& trusted_comment) {
    take_line(signature);
    const bytes_t own = from_base64(take_line(signature), 74);
    const std::string_view comment = take_line(signature);
    const bytes_t whole = from_base64(take_line(signature), 64);
    const bool is_hashed = own.starts_with("ED");
    if ((!is_hashed && !own.starts_with("Ed")) || whole.empty() || !comment.starts_with(trusted))
        return minisign_result::no_signature;

    const auto key = std::find_if(keys.begin(), keys.end(), [&](const minisign_key& one) {
        return std::equal(one.name.begin(), one.name.end(), own.begin() + 2,
                          [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); });
    });
    if (key == keys.end()) return minisign_result::other_key;

    const bytes_t by_key = own.substr(10);
    const std::string_view text = comment.substr(trusted.size());
    const bytes_t digest = is_hashed ? blake2b(bytes) : "";
    if ((is_hashed && digest.empty()) || !is_signed_by(*key, by_key, is_hashed ? digest : bytes) ||
        !is_signed_by(*key, whole, by_key + std::string(text)))
        return minisign_result::false_signature;
    trusted_comment = text;
    return minisign_result::good;
}

std::string trusted_value(std::string_view trusted_comment, std::string_view name) {
    std::string value;
    for (std::size_t from = 0; from <= trusted_comment.size();) {
        const std::size_t tab = std::min(trusted_comment.find('\t', from), trusted_comment.size());
        const std::string_view entry = trusted_comment.substr(from, tab - from);
        if (entry.size() > name.size() && entry.starts_with(name) && entry[name.size()] == ':')
            value = entry.substr(name.size() + 1);
        from = tab + 1;
    }
    return value;
}
