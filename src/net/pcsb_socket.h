// pcsb_socket.h: one non-blocking TCP socket behind a small state machine that is polled and never waits.
// GetStatus is the only place where a pending connect is resolved.
// Errors: nothing is raised; the state changes, GetOSError keeps errno, one line goes to standard error.
// A peer that closes does not move the state: watch ReceivedRelease, or time out.
// SIGPIPE must be ignored by the process.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "net/lookup.h"

enum : int {
    sock_idle = 1,        // not connected yet; of a listener: no one waits
    sock_connecting = 2,  // of a listener: someone waits
    sock_connected = 3,   // also while the peer has closed its side and this one has not
    sock_closed = 4,      // over, or lost; close_reason tells
    sock_error = 5        // a fault of this side; GetOSError tells
};

struct ConnectionData {  // host byte order
    std::uint32_t local_address, remote_address;
    std::uint16_t local_port, remote_port;
};

class PCSBSocket {
  public:
    PCSBSocket(unsigned short port, bool listen);  // bound to all addresses; port 0 lets the system choose
    explicit PCSBSocket(int fd);                   // adopts an accepted one
    virtual ~PCSBSocket();
    PCSBSocket(const PCSBSocket&) = delete;
    PCSBSocket& operator=(const PCSBSocket&) = delete;

    static int StartupNetworking(bool);
    static void ShutdownNetworking(bool);
    // One of the address's family, which has begun to connect. `most_unread`: bytes that the system may take in and
    // hold; 0 for what it finds best.
    static std::unique_ptr<PCSBSocket> to(const net_address& address, int most_unread = 0);

    void Connect(std::uint32_t address, unsigned short port);  // address in network byte order
    int GetStatus();
    int GetOSError() const { return os_err; }
    bool ReceivedRelease() const { return received_release; }
    long ReadData(void* buf, long len);              // 0: nothing there now; -1: closed or failed
    long http_WriteData(const void* buf, long len);  // 0: none can be taken now; -1: closed or failed
    void Disconnect();
    void Release();                        // ends the sending half
    std::unique_ptr<PCSBSocket> Accept();  // null when no one waits
    void GetAddresses(ConnectionData* data) const;

    int descriptor() const { return fd; }    // for a poll; -1 when there is none
    int state_now() const { return state; }  // without polling
    // errno of the loss that led to state 4, for the words of a failure; 0 for an ordinary end.
    int close_reason() const { return lost_err; }

  private:
    PCSBSocket() = default;
    bool open(int family, unsigned short port);
    void connect_to(const net_address& address);
    void fail(int error);
    bool bind_to(unsigned short port, bool listen);
    void resolve_connect();
    long after_error(int error, const char* doing);
    std::int32_t fd = -1;
    std::int32_t state = sock_idle;  // 4 and 5 are final
    std::int32_t os_err = 0;         // errno of the failure that led to state 5
    std::int32_t lost_err = 0;
    bool received_release = false;  // the peer has closed its side
    bool released = false;          // this side has ended its sending half
    bool listening = false;
};

// "connection refused": the system's words for an errno, to stand within a sentence.
std::string system_words(int error);
