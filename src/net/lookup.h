// lookup.h: names of hosts turned into addresses, off the main thread, since a name service may take seconds.
// What was found is remembered until it is forgotten; what was not is told once and looked up anew the next time.
// Errors: `unknown`, with the words in why().
// Ownership: a look-up under way outlives this object, and the process may end before it: neither waits for it.
// Threads: main thread only; each look-up has a thread of its own, which touches nothing else.
#pragma once

#include <sys/socket.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

// Where a socket connects to.
struct net_address {
    sockaddr_storage bytes{};
    socklen_t size = 0;
    int family() const { return bytes.ss_family; }
    std::string text() const;  // "127.0.0.1" or "::1"
};

class lookup_class {
  public:
    enum class state { waiting, found, unknown };
    // What asks the name service: fills in the addresses in the order in which they are to be tried and returns an
    // empty text, or why there are none. It blocks. A test brings its own.
    typedef std::string (*resolver)(const std::string& host, std::vector<net_address>& found);
    explicit lookup_class(resolver given = nullptr);

    // Starts a look-up where none is under way; addresses in figures are found at once. For `unknown` the words are put
    // into `why`.
    state find(const std::string& host, unsigned short port, std::vector<net_address>& addresses, std::string& why);
    void forget(const std::string& host);
    int wake_fd() const;  // readable once a look-up has ended, until quiet_wake; -1 before the first
    void quiet_wake();

  private:
    struct wake_t;
    struct job_t;
    resolver ask;
    std::shared_ptr<wake_t> wake;
    std::map<std::string, std::shared_ptr<job_t>> jobs;  // by host: under way, or ended and remembered
};
