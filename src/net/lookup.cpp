#include "net/lookup.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <system_error>
#include <thread>

// An eventfd; the threads that may still write to it keep it open.
struct lookup_class::wake_t {
    const int fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    ~wake_t() { close(fd); }
};

// One look-up. Until `ended` it belongs to its thread, from then on to the main one.
struct lookup_class::job_t {
    std::string host;
    std::vector<net_address> found;
    std::string why;
    std::atomic<bool> ended = false;
};

std::string net_address::text() const {
    char buffer[INET6_ADDRSTRLEN] = "";
    if (family() == AF_INET6)
        inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6&>(bytes).sin6_addr, buffer, sizeof buffer);
    else
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in&>(bytes).sin_addr, buffer, sizeof buffer);
    return buffer;
}

static void set_port(net_address& address, unsigned short port) {
    if (address.family() == AF_INET6)
        reinterpret_cast<sockaddr_in6&>(address.bytes).sin6_port = htons(port);
    else
        reinterpret_cast<sockaddr_in&>(address.bytes).sin_port = htons(port);
}

// The system's order is by what it can reach best. The families are taken in turn, so that a line on which one of them
// is dead costs one address and not all of them.
static void take_families_in_turn(std::vector<net_address>& found) {
    std::vector<net_address> first, second;
    for (const net_address& address : found)
        (address.family() == found.front().family() ? first : second).push_back(address);
    found.clear();
    for (std::size_t n = 0; n < first.size() || n < second.size(); ++n) {
        if (n < first.size()) found.push_back(first[n]);
        if (n < second.size()) found.push_back(second[n]);
    }
}

static std::string ask_system(const std::string& host, int flags, std::vector<net_address>& found) {
    addrinfo hints{}, *list = nullptr;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags;
    const int error = getaddrinfo(host.c_str(), nullptr, &hints, &list);
    for (const addrinfo* one = error == 0 ? list : nullptr; one; one = one->ai_next) {
        if (one->ai_family != AF_INET && one->ai_family != AF_INET6) continue;
        net_address& address = found.emplace_back();
        std::memcpy(&address.bytes, one->ai_addr, one->ai_addrlen);
        address.size = one->ai_addrlen;
    }
    if (list) freeaddrinfo(list);
    take_families_in_turn(found);
    if (error == EAI_AGAIN) return "host unknown, as no name service answers";
    return found.empty() ? "host unknown" : "";
}

static std::string ask_name_service(const std::string& host, std::vector<net_address>& found) {
    return ask_system(host, 0, found);
}

lookup_class::lookup_class(resolver given) : ask(given ? given : ask_name_service) {}

lookup_class::state lookup_class::find(const std::string& host, unsigned short port,
                                       std::vector<net_address>& addresses, std::string& why) {
    addresses.clear();
    if (ask_system(host, AI_NUMERICHOST, addresses).empty()) {
        for (net_address& address : addresses)
            set_port(address, port);
        return state::found;
    }
    std::shared_ptr<job_t>& job = jobs[host];
    if (!job) {
        if (!wake) wake = std::make_shared<wake_t>();
        job = std::make_shared<job_t>();
        job->host = host;
        // Signals are the main thread's: its handlers expect to interrupt it.
        sigset_t all, before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        try {
            std::thread([work = job, bell = wake, resolve = ask] {
                work->why = resolve(work->host, work->found);
                work->ended = true;
                const std::uint64_t one = 1;
                [[maybe_unused]] const ssize_t written = write(bell->fd, &one, sizeof one);
            }).detach();
        } catch (const std::system_error&) {
            job->why = "host not looked up, as no thread could be had";
            job->ended = true;
        }
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    if (!job->ended) return state::waiting;
    if (!job->why.empty()) {
        why = job->why;
        jobs.erase(host);
        return state::unknown;
    }
    addresses = job->found;
    for (net_address& address : addresses)
        set_port(address, port);
    return state::found;
}

void lookup_class::forget(const std::string& host) {
    const auto job = jobs.find(host);
    if (job != jobs.end() && job->second->ended) jobs.erase(job);
}

int lookup_class::wake_fd() const {
    return wake ? wake->fd : -1;
}

void lookup_class::quiet_wake() {
    std::uint64_t count;
    if (wake) [[maybe_unused]]
        const ssize_t n = read(wake->fd, &count, sizeof count);
}
