// http.h: the pool of transfers. All fetching goes through one polled call: the caller names a slot, a server, a path
// and a local file, and calls again until the answer is final. What it will want next it may announce: that is asked
// for ahead, over the same few connections, and is there or on its way when a slot asks for it. Ownership: the pool
// owns the connections, and shares each transfer with the one it was asked on. Threads: main thread only; nothing waits
// but wait().
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "net/down.h"
#include "net/host_traits.h"
#include "net/line.h"
#include "net/lookup.h"
#include "net/rate.h"
#include "runtime/xtim.h"

enum : int { net_running = 0, net_complete = 1, net_failed = 2 };

// What each slot of the pool is for.
enum http_slot : int {
    slot_list = 0,          // the server list
    slot_directory = 1,     // the catalogue
    slot_first_stream = 2,  // and three more: the files
    http_slot_count = 6
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

    // What the last completed transfer of the slot brought turned out to be no good, and `why` goes to the log and to
    // last_failure. True where that may come from the way it was fetched (put together from parts, or asked ahead of a
    // server that loses count): the same server is to be asked once more. Else it counts as a failure after all, with
    // its pause.
    bool reject(int slot, const std::string& why);
    // The body of the last completed transfer of the slot, if its request was `in_memory`.
    std::vector<char> take_body(int slot);

    // Announces a file that a slot will ask for, with all of its request but `local`. Its name is what it is known by.
    void announce(const http_request& request);
    bool wants_announcements() const;
    // The request under which an announced file is asked for or here already; null for none. A slot that wants the file
    // had better ask in the same words.
    const http_request* announced(const std::string& name) const;
    // Forgets what was announced: all of it, or only what nobody was asked for yet.
    void forget_announced(bool all);
    int most_lines = 4;  // connections for files

    rate_limit limit;  // of all transfers together

    // Body bytes that have come in over all transfers of the run.
    std::int64_t bytes_in() const;
    const std::string& last_failure() const { return failure; }  // why the last down_ptr failed, in plain words
    // errno where the last transfer that failed did so because its file could not be written here; 0: a server's or the
    // net's fault.
    int last_disk_failure() const { return disk_failure; }

    down_ptr slots[http_slot_count];  // null: nothing under way
    down_ptr last[http_slot_count];   // the last one that ended there, well or not; null: none yet

  private:
    bool start(int slot, const http_request& request);
    int judge(int slot);
    int finish(int slot, int result);
    void note_failure(int slot, const std::string& why);

    int turn(int timeout_ms, int wake_fd);
    void dispatch();
    bool place(const down_ptr& wanted, int slot);
    void collect();
    void take_ended(line_class& line);
    void take_lost(line_class& line);
    void watch_silence(line_class& line);
    void doubt(const std::string& key);
    host_traits& host_of(const down_class& d);
    down_ptr find_announced(const std::string& name) const;

    // A server that fails at once must not be asked without end. The first failure in a slot is tried again at once,
    // the next ones after a pause that doubles up to a second.
    struct pause {
        int failures = 0;      // in a row
        int before = 0;        // the same before the last outcome
        float not_before = 0;  // real time; until then net_check only says that it is at work
    };
    void note_outcome(int slot, int result);

    lookup_class names;
    std::vector<std::unique_ptr<line_class>> lines;
    std::deque<down_ptr> ahead;                  // announced and not yet asked for by a slot, in their order
    std::map<std::string, down_ptr> broken_off;  // failed with a part of the file, by name
    std::map<std::string, host_traits> hosts;    // by key of the route; of the whole run
    down_ptr delivered[http_slot_count];         // the last completed one
    pause pauses[http_slot_count];
    bool looked_at[http_slot_count] = {};  // since the connections last had their turn
    std::size_t turns = 0;
    bool started = false;
    bool slot_freed = false;          // by a completed transfer, since the last wait; a failure is to be slept on
    std::int64_t finished_bytes = 0;  // of lines that are gone
    std::string failure;
    int disk_failure = 0;
};

extern http_class http;
