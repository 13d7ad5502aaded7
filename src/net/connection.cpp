#include "net/connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>

#include "files/error_str.h"
#include "runtime/xtim.h"

// While there are other addresses, one that says nothing is left for the next.
static constexpr float address_seconds = 3.0f;

int connection_class::most_unread = 0;

connection_class::connection_class(const route_t& route, lookup_class& service) : way(route), names(service) {
    advance();
}

void connection_class::end(const std::string& words) {
    current = state::over;
    problem = words;
    tls.reset();
    sock.reset();
}

connection_class::state connection_class::advance() {
    if (current == state::looking_up) {
        std::string why;
        switch (names.find(way.peer.host, way.peer.port, addresses, why)) {
            case lookup_class::state::waiting:
                break;
            case lookup_class::state::found:
                std::reverse(addresses.begin(), addresses.end());
                try_next_address();
                break;
            case lookup_class::state::unknown:
                end(way.by_proxy ? "the proxy " + way.peer.host + " is unknown" : why);
                error = err_net_host;
                break;
        }
    }
    if (current == state::connecting) after_connect();
    if (current == state::tunnelling) ask_for_tunnel();
    if (current == state::shaking) {
        const tls_class::state shaken = tls->shake_hands();
        if (shaken == tls_class::state::open) current = state::open;
        if (shaken == tls_class::state::over) end(std::string(tls->why()));
    }
    return current;
}

// Tries the addresses that are left until one does not fail at once.
void connection_class::try_next_address() {
    int lost = sock ? sock->close_reason() : 0;
    while (!addresses.empty()) {
        const net_address address = addresses.back();
        addresses.pop_back();
        sock = PCSBSocket::to(address, most_unread);
        next_look = addresses.empty() ? 0 : xtim.real_time + address_seconds;
        current = state::connecting;
        const int state_now = sock->state_now();
        if (state_now == sock_connecting || state_now == sock_connected) return;
        lost = sock->close_reason() ? sock->close_reason() : sock->GetOSError();
    }
    next_look = 0;
    // The host may have moved.
    names.forget(way.peer.host);
    end((way.by_proxy ? "the proxy " + way.peer.authority() + ": " : "") +
        (lost ? system_words(lost) : "connection closed"));
    error = lost;
}

void connection_class::after_connect() {
    const int seen = sock->GetStatus();
    if (seen == sock_connecting) {
        if (next_look > 0 && xtim.real_time >= next_look) try_next_address();
        return;
    }
    if (seen != sock_connected) {
        try_next_address();
        return;
    }
    next_look = 0;
    if (way.tunnels()) {
        const std::string host =
            way.server.host.find(':') == std::string::npos ? way.server.host : "[" + way.server.host + "]";
        const std::string target = host + ":" + std::to_string(way.server.port);
        request = "CONNECT " + target + " HTTP/1.1\r\nHost: " + target + "\r\n";
        if (!way.login.empty()) request += "Proxy-Authorization: " + way.login + "\r\n";
        request += "\r\n";
        proxy_answer.expect_no_body();
        current = state::tunnelling;
    } else if (way.server.secure) {
        tls = std::make_unique<tls_class>(sock->descriptor(), way.server);
        current = state::shaking;
    } else {
        current = state::open;
    }
}

void connection_class::ask_for_tunnel() {
    const std::string who = "the proxy " + way.peer.authority();
    const long taken = sock->http_WriteData(request.data(), std::ssize(request));
    if (taken > 0) request.erase(0, static_cast<std::size_t>(taken));
    // Nothing but the head of an answer comes before this side speaks.
    char block[4096];
    const long size = raw_read(block, sizeof block);
    if (size < 0) {
        end(who + " closed without an answer");
        return;
    }
    std::string_view bytes(block, static_cast<std::size_t>(size)), piece;
    switch (proxy_answer.next(bytes, piece)) {
        case answer_reader::step::more:
            return;
        case answer_reader::step::head:
            break;
        default:
            end(who + " sent " + proxy_answer.why());
            return;
    }
    const answer_head& head = proxy_answer.head();
    if (head.status < 200 || head.status > 299) {
        end(who + " refuses: " + std::to_string(head.status) + " " + head.reason);
    } else if (!bytes.empty()) {
        end(who + " sent more than an answer");
    } else {
        tls = std::make_unique<tls_class>(sock->descriptor(), way.server);
        current = state::shaking;
    }
}

long connection_class::raw_read(char* bytes, long size) {
    const long n = sock->ReadData(bytes, size);
    // Put off, an acknowledgement holds up the tail of what was asked ahead by 40 ms. It is the system's habit that is
    // turned off, and it comes back by itself.
    const int on = 1;
    if (n > 0) setsockopt(sock->descriptor(), IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
    return n == 0 && sock->ReceivedRelease() ? -1 : n;
}

long connection_class::read(char* bytes, long size) {
    if (current != state::open) return -1;
    const long n = tls ? tls->read(bytes, size) : raw_read(bytes, size);
    if (tls && n > 0) {
        const int on = 1;
        setsockopt(sock->descriptor(), IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
    }
    if (n >= 0) return n;
    error = sock->close_reason() ? sock->close_reason() : sock->GetOSError();
    end(tls ? std::string(tls->why()) : error ? system_words(error) : "");
    return -1;
}

long connection_class::write(const char* bytes, long size) {
    if (current != state::open) return -1;
    const long n = tls ? tls->write(bytes, size) : sock->http_WriteData(bytes, size);
    // What came before the peer went is still to be read, and reading tells that it went.
    return std::max(n, 0L);
}

short connection_class::events() const {
    switch (current) {
        case state::connecting:
            return POLLOUT;
        case state::tunnelling:
            return static_cast<short>(request.empty() ? POLLIN : POLLIN | POLLOUT);
        case state::shaking:
            return tls->wants_to_write() ? POLLOUT : POLLIN;
        default:
            return POLLIN;
    }
}
