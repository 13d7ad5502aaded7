// proxy.h: the web proxy that stands between this machine and every server, if the user gave one.
// With a proxy the socket goes to it, and the server's own name is not looked up here.
#pragma once

#include <string>
#include <vector>

struct proxy_t {
    std::string proxy_host;                  // empty for none
    std::string proxy_port_str;              // as typed
    int proxy_port = 0;                      // 0 for none; used as 16 bits
    std::vector<std::string> gProxyExclude;  // endings of hosts that are reached directly; empty here
};
extern proxy_t proxy;  // of the whole run; preferences fill it

bool UseProxy(const char* host, unsigned short port);
// The peer to connect to for a server: the proxy's, or else the server's own.
unsigned short ProxyPort(const char* host, unsigned short port);
std::string ProxyHost(const char* host, unsigned short port);
