// proxy.h: the web proxy that stands between this machine and the servers, if there is one, and by it the way to each.
// The user's setting wins over http_proxy and https_proxy of the environment; no_proxy (names, endings, "*") holds for
// both. Through a proxy, http is asked with the whole address and https through a tunnel; the server's own name is not
// looked up here.
#pragma once

#include <string>
#include <vector>

#include "net/server_address.h"

struct proxy_t {
    std::string proxy_host;                  // [USER[:PASSWORD]@]HOST; empty for none
    std::string proxy_port_str;              // as typed
    int proxy_port = 0;                      // 0 for none; used as 16 bits
    std::vector<std::string> gProxyExclude;  // endings of hosts that are reached directly; empty here
};
extern proxy_t proxy;  // of the whole run; preferences fill it

// The way to a server.
struct route_t {
    server_address server;
    server_address peer;  // to connect to: the proxy, or the server itself
    bool by_proxy = false;
    std::string login;  // value of Proxy-Authorization; empty for none
    bool tunnels() const { return by_proxy && server.secure; }
    // Equal for servers that one connection can serve.
    std::string key() const { return by_proxy && !server.secure ? peer.origin() + " " + login : server.origin(); }
};

// False, with the words in `why`, where a proxy is told that cannot be used.
bool route_to(const server_address& server, route_t& route, std::string& why);
// The setting is used for this host.
bool UseProxy(const char* host, unsigned short port);
