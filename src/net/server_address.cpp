#include "net/server_address.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

static constexpr unsigned short http_port = 80, https_port = 443;

std::int64_t whole_number(std::string_view text, std::int64_t top) {
    std::int64_t value = -1;
    const char* end = text.data() + text.size();
    if (text.empty() || text[0] == '-') return -1;
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end && value <= top ? value : -1;
}

std::string lower_case(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

static std::string bracketed(const std::string& host) {
    return host.find(':') == std::string::npos ? host : "[" + host + "]";
}

std::string server_address::authority() const {
    if (port == (secure ? https_port : http_port)) return bracketed(host);
    return bracketed(host) + ":" + std::to_string(port);
}

std::string server_address::origin() const {
    return (secure ? "https://" : "http://") + bracketed(host) + ":" + std::to_string(port);
}

// Cuts "http://" or "https://" off.
static std::string read_scheme(std::string_view& text, bool& secure) {
    const std::size_t colon = text.find("://");
    if (colon == std::string_view::npos) return "";
    const std::string scheme = lower_case(text.substr(0, colon));
    if (scheme != "http" && scheme != "https") return "begins with \"" + scheme + "://\", which I do not speak";
    secure = scheme == "https";
    text.remove_prefix(colon + 3);
    return "";
}

// Letters of a name may be any but those that end a host in a URL, open a header line or a code, or cannot be seen.
static bool ends_a_name(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= ' ' || byte >= 127 || std::string_view("/\\?#@%[]<>\":").find(c) != std::string_view::npos;
}

std::string read_server_address(std::string_view text, server_address& address) {
    server_address read;
    if (std::string wrong = read_scheme(text, read.secure); !wrong.empty()) return wrong;
    read.port = read.secure ? https_port : http_port;

    std::string_view host = text, port;
    bool has_port = false;
    if (text.starts_with('[')) {
        const std::size_t end = text.find(']');
        if (end == std::string_view::npos) return "has a bracket that is not closed";
        host = text.substr(1, end - 1);
        port = text.substr(end + 1);
        has_port = !port.empty();
        if (has_port && port[0] != ':') return "goes on behind its bracket";
        in6_addr number;
        if (inet_pton(AF_INET6, std::string(host).c_str(), &number) != 1)
            return "holds no IPv6 address in its brackets";
        if (has_port) port.remove_prefix(1);
    } else if (const std::size_t colon = text.find(':'); colon != std::string_view::npos) {
        host = text.substr(0, colon);
        port = text.substr(colon + 1);
        has_port = true;
        if (port.find(':') != std::string_view::npos)
            return "has more than one colon; an IPv6 address stands in brackets";
    }
    if (!text.starts_with('[') && std::any_of(host.begin(), host.end(), ends_a_name))
        return host.find('/') == std::string_view::npos ? "holds a character that no host name has"
                                                        : "has a folder behind the host";
    if (host.empty()) return "names no host";
    if (has_port) {
        const std::int64_t number = whole_number(port, 65535);
        if (number < 1) return "has a port that is no number of 1 to 65535";
        read.port = static_cast<unsigned short>(number);
    }
    read.host = lower_case(host);
    address = read;
    return "";
}
