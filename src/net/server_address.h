// server_address.h: how a server is written: [http://|https://]HOST[:PORT], HOST a name, an IPv4 address or an IPv6
// address in brackets. Without a scheme it is http.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct server_address {
    bool secure = false;       // https
    std::string host;          // in lower case, without brackets
    unsigned short port = 80;  // 443 where it is secure and none was written

    // As the Host header wants it: the port only where it is not the scheme's own.
    std::string authority() const;
    // The one spelling of this server, "http://host:80": equal for all ways to write it.
    std::string origin() const;
    bool operator==(const server_address&) const = default;
};

// What is wrong with `text`, to be read behind it ("has a port that is no number of 1 to 65535"); empty if nothing is.
// Only then `address` is filled in.
std::string read_server_address(std::string_view text, server_address& address);

// The whole of `text` as a number without a sign, at most `top`; -1 for anything else.
std::int64_t whole_number(std::string_view text, std::int64_t top);
// Of one ASCII alphabet: other bytes stay as they are, whatever the locale.
std::string lower_case(std::string_view text);
