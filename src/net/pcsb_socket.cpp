#include "net/pcsb_socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

static const int accept_backlog = 128;

std::string system_words(int error) {
    std::string words = std::strerror(error);
    words[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(words[0])));
    return words;
}

static sockaddr_in make_address(std::uint32_t address, unsigned short port) {
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = address;
    a.sin_port = htons(port);
    return a;
}

static void make_non_blocking(int fd) {
    int on = 1;
    ioctl(fd, FIONBIO, &on);
}

// What poll sees at this instant: 0 for nothing or an interruption, -1 for a failure with its errno.
static int poll_now(int fd, short events) {
    pollfd p{fd, events, 0};
    if (poll(&p, 1, 0) < 0) return errno == EINTR ? 0 : -1;
    if (p.revents & POLLNVAL) {
        errno = EBADF;
        return -1;
    }
    return p.revents;
}

bool PCSBSocket::open(int family, unsigned short port) {
    fd = socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0 && errno == EAFNOSUPPORT && family == AF_INET6) {  // an everyday lack: another address may do
        state = sock_closed;
        lost_err = EAFNOSUPPORT;
        return false;
    }
    if (fd < 0) {
        fail(errno);
        std::fputs("LINUX: NET: I could not even create the socket! Uh-oh!\n", stderr);
        return false;
    }
    int on = 1;
    if (setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) != 0)
        std::fprintf(stderr, "-----------------------Could not set TCP_NODELAY on port %d-------------\n", port);
    make_non_blocking(fd);
    return true;
}

PCSBSocket::PCSBSocket(unsigned short port, bool listen) {
    if (!open(AF_INET, port) || !bind_to(port, listen) || !listen) return;
    listening = true;
    if (::listen(fd, accept_backlog) != 0) {
        fail(errno);
        std::fputs("LINUX: NET: I could not start listening! Uh-oh!\n", stderr);
    }
}

bool PCSBSocket::bind_to(unsigned short port, bool listen) {
    // A port bound here is unusable for a minute after the connection, and a release has more files than there are
    // ports. Left to the connect, the port need only be free towards that one server.
    int on = 1;
    if (port == 0 && !listen) setsockopt(fd, IPPROTO_IP, IP_BIND_ADDRESS_NO_PORT, &on, sizeof on);
    const sockaddr_in local = make_address(htonl(INADDR_ANY), port);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0) return true;
    fail(errno);
    std::fputs("LINUX: NET: I could not even bind the socket! Uh-oh!\n", stderr);
    return false;
}

PCSBSocket::PCSBSocket(int adopted) : fd(adopted), state(sock_connected) {
    make_non_blocking(fd);
}

PCSBSocket::~PCSBSocket() {
    if (fd < 0) return;
    shutdown(fd, SHUT_RDWR);
    close(fd);
}

int PCSBSocket::StartupNetworking(bool) {
    return 1;
}

void PCSBSocket::ShutdownNetworking(bool) {}

std::unique_ptr<PCSBSocket> PCSBSocket::to(const net_address& address, int most_unread) {
    std::unique_ptr<PCSBSocket> made(new PCSBSocket);
    if (!made->open(address.family(), 0)) return made;
    if (most_unread > 0) setsockopt(made->fd, SOL_SOCKET, SO_RCVBUF, &most_unread, sizeof most_unread);
    made->connect_to(address);
    return made;
}

void PCSBSocket::fail(int error) {
    state = sock_error;
    os_err = error;
}

// The peer or the way to it is gone, as opposed to a fault on this side.
static bool connection_lost(int error) {
    switch (error) {
        case ECONNABORTED:
        case ECONNREFUSED:
        case ECONNRESET:
        case EHOSTUNREACH:
        case ENETDOWN:
        case ENETRESET:
        case ENETUNREACH:
        case ETIMEDOUT:
            return true;
        default:
            return false;
    }
}

void PCSBSocket::Connect(std::uint32_t address, unsigned short port) {
    net_address remote;
    const sockaddr_in bytes = make_address(address, port);
    std::memcpy(&remote.bytes, &bytes, sizeof bytes);
    remote.size = sizeof bytes;
    connect_to(remote);
}

void PCSBSocket::connect_to(const net_address& address) {
    if (state == sock_closed || state == sock_error) return;
    state = sock_connecting;
    if (connect(fd, reinterpret_cast<const sockaddr*>(&address.bytes), address.size) == 0) {
        state = sock_connected;
        return;
    }
    const int error = errno;
    if (error == EAGAIN || error == EINPROGRESS || error == EINTR) return;
    if (connection_lost(error) || error == EADDRNOTAVAIL) {
        // No way to there, as where a machine has no IPv6: another address may do.
        state = sock_closed;
        lost_err = error;
        return;
    }
    std::fprintf(stderr, "LINUX: NET: Some sort of connect error! %d\n", error);
    fail(error);
}

int PCSBSocket::GetStatus() {
    if (state == sock_connecting) resolve_connect();
    if (state != sock_idle || !listening) return state;
    const int seen = poll_now(fd, POLLIN);
    if (seen < 0) {
        fail(errno);
        std::fprintf(stderr, "LINUX: NET: Some sort of socket error! %d\n", os_err);
    } else if (seen != 0) {
        state = sock_connecting;  // someone waits; Accept takes the state back
    }
    return state;
}

void PCSBSocket::resolve_connect() {
    const int seen = poll_now(fd, POLLOUT);
    if (seen < 0) {
        fail(errno);
        std::fprintf(stderr, "LINUX: NET: Some sort of socket error while connecting! %d (errno=%d sock=%d)\n", seen,
                     os_err, fd);
        return;
    }
    if (seen == 0) return;
    // A refused socket is writable too, and only SO_ERROR tells. Reading it clears it, so this is the one place.
    int error = 0;
    socklen_t size = sizeof error;
    if (getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) != 0) error = errno;
    if (error == 0 && (seen & POLLOUT) && !(seen & POLLHUP)) {
        state = sock_connected;
        return;
    }
    state = sock_closed;  // a peer that does not want us is no error of ours
    lost_err = error;
}

long PCSBSocket::after_error(int error, const char* doing) {
    if (error == EAGAIN || error == EINTR) return 0;
    if (connection_lost(error)) {
        state = sock_closed;
        lost_err = error;
        return -1;
    }
    std::fprintf(stderr, "LINUX: NET: Some sort of error while %s! %d\n", doing, error);
    fail(error);
    return -1;
}

long PCSBSocket::ReadData(void* buf, long len) {
    if (state == sock_closed || state == sock_error) return -1;
    if (len <= 0) return 0;  // recv would answer 0, which here means that the peer has closed
    const long n = recv(fd, buf, static_cast<std::size_t>(len), 0);
    if (n > 0) return n;
    if (n < 0) return after_error(errno, "recving");
    received_release = true;
    if (!released) return 0;
    state = sock_closed;
    return -1;
}

long PCSBSocket::http_WriteData(const void* buf, long len) {
    if (state == sock_closed || state == sock_error) return -1;
    if (len <= 0) return 0;
    const long n = send(fd, buf, static_cast<std::size_t>(len), 0);
    return n < 0 ? after_error(errno, "sending") : n;
}

void PCSBSocket::Disconnect() {
    if (fd >= 0) shutdown(fd, SHUT_RDWR);
    if (state != sock_error) state = sock_closed;
}

void PCSBSocket::Release() {
    if (state == sock_closed || state == sock_error) return;
    if (shutdown(fd, SHUT_WR) == 0)
        released = true;
    else
        fail(errno);
}

std::unique_ptr<PCSBSocket> PCSBSocket::Accept() {
    if (!listening || state == sock_closed || state == sock_error) return nullptr;
    state = sock_idle;
    const int taken = accept4(fd, nullptr, nullptr, SOCK_CLOEXEC);
    return taken < 0 ? nullptr : std::make_unique<PCSBSocket>(taken);
}

void PCSBSocket::GetAddresses(ConnectionData* data) const {
    sockaddr_in local{}, remote{};
    socklen_t size = sizeof local;
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&local), &size) != 0) local = {};
    size = sizeof remote;
    if (getpeername(fd, reinterpret_cast<sockaddr*>(&remote), &size) != 0) remote = {};
    data->local_address = ntohl(local.sin_addr.s_addr);
    data->remote_address = ntohl(remote.sin_addr.s_addr);
    data->local_port = ntohs(local.sin_port);
    data->remote_port = ntohs(remote.sin_port);
}
