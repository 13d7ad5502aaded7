#include "support/scripted_peer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

static std::string host_text(unsigned short port) {
    return "127.0.0.1:" + std::to_string(port);
}

// A socket bound to a free port of the loopback.
static int bound_socket(unsigned short& port) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof a;
    sockaddr* any = reinterpret_cast<sockaddr*>(&a);
    if (bind(fd, any, size) != 0 || getsockname(fd, any, &size) != 0) throw std::runtime_error("no free port");
    port = ntohs(a.sin_port);
    return fd;
}

refusing_port::refusing_port() : fd(bound_socket(number)) {}
refusing_port::~refusing_port() {
    close(fd);
}
std::string refusing_port::host() const {
    return host_text(number);
}

std::string http_reply(const std::string& status, const std::string& body) {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

scripted_peer::scripted_peer(std::function<script(const std::string&)> given) : answer(std::move(given)) {
    listener = bound_socket(number);
    if (listen(listener, 64) != 0) throw std::runtime_error("cannot listen");
    acceptor = std::thread([this] { accept_all(); });
}

scripted_peer::scripted_peer(const script& always) : scripted_peer([always](const std::string&) { return always; }) {}

scripted_peer::~scripted_peer() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
        shutdown(listener, SHUT_RDWR);
        for (const connection& c : connections)
            shutdown(c.fd, SHUT_RDWR);
    }
    changed.notify_all();
    acceptor.join();
    for (connection& c : connections) {
        c.thread.join();
        end(c, false);
    }
    close(listener);
}

std::string scripted_peer::host() const {
    return host_text(number);
}

std::string scripted_peer::request(std::size_t n) {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [&] { return requests.size() > n; });
    return requests[n];
}

std::size_t scripted_peer::connection_count() {
    const std::lock_guard<std::mutex> lock(mutex);
    return connections.size();
}

std::size_t scripted_peer::request_count() {
    const std::lock_guard<std::mutex> lock(mutex);
    return requests.size();
}

void scripted_peer::go_on() {
    const std::lock_guard<std::mutex> lock(mutex);
    ++permits;
    changed.notify_all();
}

void scripted_peer::accept_all() {
    for (int fd; (fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        const int on = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        const std::lock_guard<std::mutex> lock(mutex);
        connection& c = connections.emplace_back();
        c.fd = fd;
        if (stopping) shutdown(fd, SHUT_RDWR);
        c.thread = std::thread([this, &c] { serve(c); });
    }
}

void scripted_peer::serve(connection& c) {
    std::string unread;
    char block[4096];
    for (;;) {
        std::size_t end;
        while ((end = unread.find("\r\n\r\n")) == std::string::npos) {
            const ssize_t n = recv(c.fd, block, sizeof block, 0);
            if (n <= 0) return;
            unread.append(block, static_cast<std::size_t>(n));
        }
        const std::string request = unread.substr(0, end + 4);
        unread.erase(0, end + 4);
        std::vector<script::step> steps;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            requests.push_back(request);
            steps = answer(request).steps;
            changed.notify_all();
        }
        for (const script::step& s : steps)
            if (!play(c, s)) return;
    }
}

// False once the connection or the peer has ended.
bool scripted_peer::play(connection& c, const script::step& s) {
    if (s.what == 'p') {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return permits > 0 || stopping; });
        --permits;
        return !stopping;
    }
    if (s.what == 'c' || s.what == 'r') {
        end(c, s.what == 'r');
        return false;
    }
    for (std::size_t sent = 0; sent < s.bytes.size();) {
        const ssize_t n = send(c.fd, s.bytes.data() + sent, s.bytes.size() - sent, MSG_NOSIGNAL);
        if (n <= 0) return false;
        sent += static_cast<std::size_t>(n);
    }
    return true;
}

void scripted_peer::end(connection& c, bool with_reset) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (c.fd < 0) return;
    const linger at_once{1, 0};  // a close with nothing left to send becomes a reset
    if (with_reset) setsockopt(c.fd, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    close(c.fd);
    c.fd = -1;
}
