#include "net/proxy.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

proxy_t proxy;

bool UseProxy(const char* host, unsigned short) {
    if (static_cast<std::uint16_t>(proxy.proxy_port) == 0 || proxy.proxy_host.empty()) return false;
    return std::none_of(proxy.gProxyExclude.begin(), proxy.gProxyExclude.end(),
                        [host](const std::string& ending) { return std::string_view(host).ends_with(ending); });
}

unsigned short ProxyPort(const char* host, unsigned short port) {
    return UseProxy(host, port) ? static_cast<unsigned short>(proxy.proxy_port) : port;
}

std::string ProxyHost(const char* host, unsigned short port) {
    return UseProxy(host, port) ? proxy.proxy_host : host;
}
