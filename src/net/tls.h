// tls.h: TLS over a socket that is polled: 1.2 and up, the host's name and its certificate checked against the system's
// certificates (or those of SSL_CERT_FILE and SSL_CERT_DIR). There is no way to pass over a certificate that does not
// hold.
// What a server gave for the next connection is remembered for the run; what TLS 1.3 gave is used once.
// Errors: `over`, with the words in why(); no words where the peer closed in order.
// Ownership: the socket belongs to the caller and outlives this.
// Threads: main thread only.
#pragma once

#include <memory>
#include <string>

#include "net/server_address.h"

struct ssl_st;

class tls_class {
  public:
    enum class state { shaking, open, over };
    tls_class(int fd, const server_address& server);
    ~tls_class();
    tls_class(const tls_class&) = delete;
    tls_class& operator=(const tls_class&) = delete;

    state shake_hands();                             // as far as it goes now
    bool wants_to_write() const { return writing; }  // else to read, while shaking hands
    long read(char* bytes, long size);               // 0: nothing there now; -1: over
    long write(const char* bytes, long size);        // the same; what was not taken is offered again first
    const std::string& why() const { return problem; }

    // For what OpenSSL calls back.
    const server_address& server() const { return peer; }
    void explain(const std::string& words);  // the first explanation stays

  private:
    long after(int result);
    server_address peer;
    std::unique_ptr<ssl_st, void (*)(ssl_st*)> ssl;
    state now = state::shaking;
    bool writing = false;
    std::string problem;
};
