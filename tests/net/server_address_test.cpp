#include "net/server_address.h"

#include <gtest/gtest.h>

TEST(ServerAddress, IsReadOrRefusedInWords) {
    const struct {
        std::string text, origin, authority;
    } good[] = {
        {"host", "http://host:80", "host"},
        {"Host:8080", "http://host:8080", "host:8080"},
        {"http://host:443", "http://host:443", "host:443"},
        {"HTTPS://host", "https://host:443", "host"},
        {"https://host:80", "https://host:80", "host:80"},
        {"[::1]", "http://[::1]:80", "[::1]"},
        {"https://[2001:DB8::1]:65535", "https://[2001:db8::1]:65535", "[2001:db8::1]:65535"},
    };
    for (const auto& row : good) {
        server_address address;
        EXPECT_EQ(read_server_address(row.text, address), "") << row.text;
        EXPECT_EQ(address.origin(), row.origin);
        EXPECT_EQ(address.authority(), row.authority) << row.text;
    }
    const struct {
        std::string text, wrong;
    } bad[] = {
        {"", "no host"},
        {":80", "no host"},
        {"https://", "no host"},
        {"host:", "no number"},
        {"host:0", "no number"},
        {"host:65536", "no number"},
        {"host:+8", "no number"},
        {"[::1]:", "no number"},
        {"host/", "a folder"},
        {"a b", "no host name"},
        {"a\rb", "no host name"},
        {"me@host", "no host name"},
        {"h\xc3\xb6st", "no host name"},
        {"ftp://host", "which I do not speak"},
        {"::1", "in brackets"},
        {"[::1", "not closed"},
        {"[::1]80", "behind its bracket"},
        {"[host]", "no IPv6"},
        {"[127.0.0.1]", "no IPv6"},
        {"[fe80::1%eth0]", "no IPv6"},
    };
    for (const auto& row : bad) {
        server_address address;
        address.host = "untouched";
        EXPECT_NE(read_server_address(row.text, address).find(row.wrong), std::string::npos)
            << row.text << ": " << read_server_address(row.text, address);
        EXPECT_EQ(address.host, "untouched");
    }
}
