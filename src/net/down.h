// down.h: one HTTP/1.1 transfer of one file over a non-blocking socket, advanced only by being polled.
// One request a connection, a body framed by Content-Length; no chunks, redirects, resuming or keep-alive.
// Units: sizes in bytes, times in seconds of xtim.real_time.
// Errors: nothing throws; IsErr and GetOSErr tell, error_str gives the words.
// Ownership: the pool owns every transfer; a transfer owns its socket and its file.
// Threads: main thread only; all transfers share one read buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "net/pcsb_socket.h"

// All header blocks of one answer together. A peer that sends more has failed (EMSGSIZE), or memory would grow with it.
constexpr std::size_t max_header_bytes = 65536;

// Where a transfer stands.
enum down_stat : int {
    down_no_socket = 0,   // the name could not be resolved
    down_connecting = 1,  // the peer has not answered yet
    down_broken = 2,      // a fault of this side; the socket knows its code
    down_closed = 3,      // all is here, or the peer has gone
    down_sending = 4,     // part of the request is still to be sent
    down_body = 5,        // the headers are through
    down_waiting = 6      // all is sent and the headers are not through
};

class down_class {
  public:
    typedef std::map<std::string, std::string> header_map;

    // `host` is resolved (or the proxy, where there is one); `headers` must hold "Host"; `local` null for no file.
    down_class(const char* host, unsigned short port, const char* path, bool post, const header_map& headers,
               const char* body, int body_len, const char* local);
    ~down_class();
    down_class(const down_class&) = delete;
    down_class& operator=(const down_class&) = delete;

    void DoProcessing();
    void close_file();  // the bytes are on their way to the disk after it; a failure sets file_err

    int GetStat() const;  // one of down_stat
    bool IsDone() const { return GetStat() == down_closed; }
    bool IsComplete() const { return content_len == received; }
    bool IsErr() const;
    int GetOSErr() const;  // 20009 with no socket and no other code
    const std::string& response() const { return reason; }

    std::unique_ptr<PCSBSocket> sock;  // null when the name could not be resolved
    std::vector<char> out_buf;         // request not yet sent
    std::vector<char> in_buf;          // received and not yet used; without a local path the body stays here
    bool header_done = false;
    int status = 0;  // 0 at first, -1 once connecting, then the number of the status line
    std::string reason;
    header_map headers;  // of the response; the first value of a key stays
    std::FILE* out_file = nullptr;
    std::string out_path;
    int file_err = 0;               // errno of the local file, or 20011 for an unknown host
    std::int64_t content_len = -1;  // -1: not known
    std::int64_t most_bytes = 0;    // that the body may have; beyond them the transfer has failed (EMSGSIZE); 0: any
    std::int64_t received = 0;      // body bytes taken; counted before the write, so look at IsErr too
    float last_data = 0;            // real time of the last body data

  private:
    void build_request(const char* path, bool post, const header_map& request, const char* body, int body_len,
                       bool through_proxy);
    void send_request();
    bool read_some();
    bool parse_headers();
    void take_header_line(const std::string& line);
    void end_of_headers();
    void write_body();

    std::size_t searched = 0;    // in in_buf, where the search for the next line end goes on
    std::size_t head_bytes = 0;  // of all header lines taken so far
};

// Cuts ":port" off into `port`. A text without one, or with one that is no port, comes back whole and leaves `port`
// alone: a look-up of the whole text then fails and names it, where another port would go unnoticed.
std::string split_host_port(const std::string& host, unsigned short& port);
// False for an empty host, a port that is no number of 1 to 65535, or a "/", blank or control character in the text.
bool host_port_is_valid(const std::string& host);
