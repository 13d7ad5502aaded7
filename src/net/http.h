// http.h: the pool of transfers. All fetching goes through one polled call: the caller names a slot, a server, a path
// and a local file, and calls again until the answer is final.
// Threads: main thread only. A name look-up alone blocks, inside the first call for a slot.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "net/down.h"
#include "runtime/xtim.h"

enum : int { net_running = 0, net_complete = 1, net_failed = 2 };

// What each slot of the pool is for.
enum http_slot : int {
    slot_list = 0,          // the server list
    slot_directory = 1,     // the catalogue
    slot_first_stream = 2,  // and three more: the files
    http_slot_count = 6
};

struct http_request {
    std::string server;  // a host, with ":port" if not 80
    std::string path;    // starts with "/"
    std::string local;
    std::int64_t most_bytes = 0;  // that the body may have; one that announces or sends more has failed; 0: any
};

constexpr float http_silence_seconds = 30.0f;  // without body data a transfer has failed

class http_class {
  public:
    // The request counts only while the slot is empty.
    int net_check(int slot, const http_request& request);

    // Sleeps until a transfer of the pool can go on, `wake_fd` is readable (-1 for none), or the time is over. Returns
    // true if something is ready, and at once where a transfer was completed since the last call, as its slot can take
    // the next one. A transfer that can only time out does not wake it; one that is over does until net_check is called
    // for it.
    bool wait(int timeout_ms, int wake_fd);

    // A transfer is in the slot, or its pause after a failure: nothing starts there before data comes in or it is over.
    bool is_under_way(int slot) const { return slots[slot] || is_pausing(slot); }
    // A failed slot is having its pause: net_check would only say that it is at work.
    bool is_pausing(int slot) const { return !slots[slot] && xtim.real_time < pauses[slot].not_before; }

    // What the last completed transfer of the slot brought turned out to be no good: it counts as a failure after all,
    // with its pause, and `why` goes to the log and to last_failure.
    void reject(int slot, const std::string& why);

    // Body bytes that have come in over all transfers of the run.
    std::int64_t bytes_in() const;
    const std::string& last_failure() const { return failure; }  // why the last transfer failed, in plain words

    std::unique_ptr<down_class> slots[http_slot_count];  // null: nothing under way

  private:
    bool start(int slot, const http_request& request);
    int judge(int slot);
    int fail(int slot, bool silent);
    void note_failure(int slot, const std::string& why);
    int finish(int slot, int result);

    // A server that fails at once must not be asked without end. The first failure in a slot is tried again at once,
    // the next ones after a pause that doubles up to a second.
    struct pause {
        int failures = 0;      // in a row
        int before = 0;        // the same before the last outcome
        float not_before = 0;  // real time; until then net_check only says that it is at work
    };
    void note_outcome(int slot, int result);

    http_request requests[http_slot_count];  // what the transfer in the slot was started for
    pause pauses[http_slot_count];
    bool started = false;
    bool slot_freed = false;  // by a completed transfer, since the last wait; a failure is to be slept on
    std::int64_t finished_bytes = 0;
    std::string failure;
};

extern http_class http;

std::string agent_text();  // the User-agent header's value
