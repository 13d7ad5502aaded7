#include "net/proxy.h"

#include <openssl/evp.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

proxy_t proxy;

bool UseProxy(const char* host, unsigned short) {
    if (static_cast<std::uint16_t>(proxy.proxy_port) == 0 || proxy.proxy_host.empty()) return false;
    return std::none_of(proxy.gProxyExclude.begin(), proxy.gProxyExclude.end(),
                        [host](const std::string& ending) { return std::string_view(host).ends_with(ending); });
}

// The environment's word in either case. HTTP_PROXY alone is left: a web server sets it for what it starts, from a
// header that anyone may send.
static std::string from_environment(const char* lower, const char* upper) {
    const char* value = std::getenv(lower);
    if ((!value || !*value) && upper) value = std::getenv(upper);
    return value ? value : "";
}

// no_proxy: "*", or hosts and endings between commas or blanks; ".a.b" and "a.b" both hold for "a.b" and what ends in
// it.
static bool goes_direct(const std::string& host) {
    const std::string list = lower_case(from_environment("no_proxy", "NO_PROXY"));
    for (std::size_t at = 0; at < list.size();) {
        const std::size_t end = std::min(list.find_first_of(", ", at), list.size());
        std::string_view entry = std::string_view(list).substr(at, end - at);
        at = end + 1;
        if (entry == "*") return true;
        if (entry.starts_with("*.")) entry.remove_prefix(1);
        if (entry.starts_with('.')) entry.remove_prefix(1);
        if (entry.empty() || !std::string_view(host).ends_with(entry)) continue;
        if (host.size() == entry.size() || host[host.size() - entry.size() - 1] == '.') return true;
    }
    return false;
}

// "%40" and its like in a user or a password.
static std::string decoded(std::string_view text) {
    std::string plain;
    for (std::size_t n = 0; n < text.size(); ++n) {
        const auto digit = [&](std::size_t at) {
            return at < text.size() ? std::string_view("0123456789abcdef").find(lower_case(text.substr(at, 1)))
                                    : std::string_view::npos;
        };
        if (text[n] == '%' && digit(n + 1) < 16 && digit(n + 2) < 16) {
            plain += static_cast<char>(digit(n + 1) * 16 + digit(n + 2));
            n += 2;
        } else {
            plain += text[n];
        }
    }
    return plain;
}

static std::string basic_login(std::string_view user_and_password) {
    const std::size_t colon = std::min(user_and_password.find(':'), user_and_password.size());
    std::string plain = decoded(user_and_password.substr(0, colon)) + ":";
    if (colon < user_and_password.size()) plain += decoded(user_and_password.substr(colon + 1));
    std::vector<unsigned char> coded(4 * (plain.size() / 3 + 1) + 1);
    const int length = EVP_EncodeBlock(coded.data(), reinterpret_cast<const unsigned char*>(plain.data()),
                                       static_cast<int>(plain.size()));
    return "Basic " + std::string(coded.begin(), coded.begin() + length);
}

bool route_to(const server_address& server, route_t& route, std::string& why) {
    route = {server, server, false, ""};
    if (goes_direct(server.host)) return true;
    std::string text;
    if (UseProxy(server.host.c_str(), server.port))
        text = proxy.proxy_host + ":" + std::to_string(static_cast<std::uint16_t>(proxy.proxy_port));
    else if (proxy.proxy_host.empty())
        text = server.secure ? from_environment("https_proxy", "HTTPS_PROXY") : from_environment("http_proxy", nullptr);
    if (text.empty()) return true;
    // [SCHEME://][LOGIN@]HOST[:PORT][/]
    if (text.ends_with('/')) text.pop_back();
    const std::size_t scheme = text.find("://"), login = scheme == std::string::npos ? 0 : scheme + 3;
    if (const std::size_t at = text.rfind('@'); at != std::string::npos && at >= login) {
        route.login = basic_login(std::string_view(text).substr(login, at - login));
        text.erase(login, at + 1 - login);
    }
    why = read_server_address(text, route.peer);
    if (why.empty() && route.peer.secure) why = "is reached by https, which I do not do";
    if (!why.empty()) why = "the proxy " + text + " " + why;
    route.by_proxy = true;
    return why.empty();
}
