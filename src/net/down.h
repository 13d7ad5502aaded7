// down.h: one transfer of one file by HTTP/1.1: what is asked, what of it has come, and how it ended. It knows no
// connection: a line (line.h) sends its request and hands it the answer, possibly more than once: a redirect is
// followed, and what broke off goes on where it stopped.
// Units: sizes in bytes, times in seconds of xtim.real_time.
// Errors: nothing throws; `fate` tells how it ended, why() in words.
// Ownership: the pool and the line that it was asked on share it. It owns its file.
// Threads: main thread only.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "net/answer.h"
#include "net/proxy.h"
#include "net/server_address.h"

struct http_request {
    std::string server;           // as server_address.h has it
    std::string path;             // starts with "/"; encoded only when it is sent
    std::string local;            // file that is written
    std::int64_t most_bytes = 0;  // that the body may have; one that announces or sends more has failed; 0: any
    // By which what broke off is known again, whichever server goes on with it: requests of one name are for one file.
    std::string name = {};
    std::int64_t about_bytes = -1;  // what the body is expected to have, give or take a thousand; -1: no idea
    bool fresh = false;             // nothing that is kept on the way may answer
    bool in_memory = false;         // the body is taken from the pool, and the file is not written
    bool elsewhere = false;         // another server has it too: one that drips is as good as silent
    int mark = 0;                   // the caller's own
    bool outlasts = false;          // what lies at `local` from an earlier run is gone on with
};

// A larger body goes to its file as it comes; a smaller one is held in memory until it is whole.
constexpr std::int64_t most_held_bytes = 1 << 20;

// Where a transfer stands.
enum down_stat : int {
    down_queued = 0,      // no connection for it yet
    down_connecting = 1,  // the peer has not answered yet
    down_broken = 2,      // it has failed
    down_closed = 3,      // all is here
    down_sending = 4,     // part of the request is still to be sent
    down_body = 5,        // the headers are through
    down_waiting = 6      // all is sent and the headers are not through
};

class down_class {
  public:
    enum class outcome { running, complete, failed };
    explicit down_class(const http_request& request);
    ~down_class();
    down_class(const down_class&) = delete;
    down_class& operator=(const down_class&) = delete;

    // The request for what is still missing, over a connection of this route. It settles what the answer is held
    // against.
    std::string request_text(const route_t& route, bool keeps);
    // The answer. False once no more of it is wanted: then it counts as ended, and its connection cannot be used any
    // more.
    bool begin_answer(const answer_head& head);
    bool take(std::string_view piece);
    void end_answer();  // it was whole; the transfer is over then, or queued again
    // The connection ended or was left in the middle of the answer or before it; what has come stays.
    void break_off();
    void fail(const std::string& why);
    void fail_on_disk(int error);
    // Of a complete transfer: the held body goes to the local file, or what went there is closed. False if the disk
    // refused: the transfer has failed then.
    bool deliver();
    // Takes over what a transfer of the same file had got before it broke off.
    void go_on_from(down_class& broken);
    // Goes on with what lies at the local path, whoever left it.
    void go_on_from_file();
    // What has come is no good, or belongs to another file: from the first byte.
    void start_over();

    bool IsDone() const { return stat == down_closed; }
    bool IsComplete() const { return content_len == received; }
    bool IsErr() const { return os_err != 0; }
    int GetStat() const { return stat; }
    int GetOSErr() const { return os_err; }
    const std::string& response() const { return reason; }
    const std::string& why() const { return problem; }
    bool is_large() const { return request.about_bytes < 0 || request.about_bytes > most_held_bytes / 2; }

    http_request request;
    server_address server;  // that is asked next: the request's, or the one that a redirect led to
    std::string target;     // the path as it is sent
    outcome fate = outcome::running;
    int stat = down_queued;
    int status = 0;  // of the last answer; 0 before the first
    std::string reason;
    std::int64_t content_len = -1;  // of the whole file; -1: not known
    std::int64_t received = 0;      // of it, without a gap from its first byte
    std::vector<char> body;         // what is held in memory of that
    int os_err = 0;                 // errno of the local file or of the connection
    int disk_err = 0;               // the same, of the local file alone
    float last_data = 0;            // real time of the last byte, or of asking
    float first_asked = -1;         // real time; -1: not yet
    std::int64_t came = 0;          // body bytes of all answers, those that were thrown away too
    bool was_resumed = false;       // it is put together from several answers
    bool was_asked_ahead = false;   // its last answer stood in a row with others
    bool was_silent = false;        // it failed because nothing came, or next to nothing
    float watched_since = 0;        // real time from which its speed is looked at
    std::int64_t came_before = -1;  // `came` at that time; -1: its turn has not come yet
    std::string key;                // of the route that it was last asked by

  private:
    enum class use { file, nothing, redirect, from_the_start };  // of the answer's body
    void set_server(const std::string& text);
    bool follow(const std::string& location);
    bool goes_on(const answer_head& head);
    bool open_file();
    bool is_too_long(std::int64_t bytes) const { return request.most_bytes > 0 && bytes > request.most_bytes; }

    use used_for = use::nothing;
    std::int64_t asked_from = 0;     // offset of the running request; 0: the whole file
    std::int64_t skipped = 0;        // of a body that is of no use
    std::string etag, etag_server;   // strong, of the bytes so far, and who gave it
    std::string next_server_target;  // where a redirect leads
    int redirects = 0;
    bool refuses_ranges = false;  // one start over is enough
    std::FILE* file = nullptr;
    std::string problem;
};
