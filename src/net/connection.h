// connection.h: one connection to a server, plain or by TLS, directly or through a proxy, that is polled and never
// waits.
// Opening looks the name up, tries the addresses in turn, asks a proxy for a tunnel where one is needed, and shakes
// hands.
// Errors: `over`, with the words in why(); no words where the peer closed.
// Threads: main thread only.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "net/answer.h"
#include "net/lookup.h"
#include "net/pcsb_socket.h"
#include "net/proxy.h"
#include "net/tls.h"

class connection_class {
  public:
    enum class state {
        looking_up,  // the peer's name is with the name service
        connecting,  // one of its addresses has not answered yet
        tunnelling,  // the proxy has been asked for a tunnel
        shaking,     // TLS is being agreed on
        open,        // requests can be sent
        over         // closed or failed
    };
    connection_class(const route_t& route, lookup_class& names);

    state advance();                           // goes on with opening, as far as it goes now
    long read(char* bytes, long size);         // 0: nothing there now; -1: over
    long write(const char* bytes, long size);  // the same
    state now() const { return current; }
    const route_t& route() const { return way; }
    const std::string& why() const { return problem; }
    int os_error() const { return error; }  // errno of a lost connection; 0 for anything else

    // For a poll: -1 where only the look-up's end is waited for. Once open, reading is up to the caller.
    int descriptor() const { return sock && current != state::over ? sock->descriptor() : -1; }
    short events() const;
    // What the system may take in that was not read yet, for connections that begin from now on; 0: what it finds best.
    static int most_unread;
    float next_look = 0;  // real time at which opening goes on without an event: the next address; 0 for none

  private:
    void try_next_address();
    void after_connect();
    void ask_for_tunnel();
    void end(const std::string& words);
    long raw_read(char* bytes, long size);

    route_t way;
    lookup_class& names;
    state current = state::looking_up;
    std::vector<net_address> addresses;  // not tried yet, the next one last
    std::unique_ptr<PCSBSocket> sock;
    std::unique_ptr<tls_class> tls;  // ends before its socket
    std::string request;             // to the proxy, not yet sent
    answer_reader proxy_answer;
    std::string problem;
    int error = 0;
};
