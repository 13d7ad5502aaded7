// line.h: a kept connection and the transfers that were asked on it, in the order of their requests, which is that of
// their answers. Several may be outstanding; what another transfer is for is the pool's to know.
// Errors: is_over, with the words in why(); what is still in `asked` then has got no answer, or the first a part of
// one.
// Threads: main thread only; all lines share one read buffer.
#pragma once

#include <poll.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "net/answer.h"
#include "net/connection.h"
#include "net/down.h"

typedef std::shared_ptr<down_class> down_ptr;

class line_class {
  public:
    line_class(const route_t& route, lookup_class& names) : link(route, names) {}

    // `keeps`: another request may follow this one's answer.
    void ask(const down_ptr& next, bool keeps);
    // Sends and reads as far as it goes now, and at most `allowance` bytes, which it lessens. What is answered moves
    // from `asked` to `ended`.
    void turn(std::int64_t& allowance);
    void close(const std::string& words);  // from this side
    void spoke();                          // there is something to read, so it is not silent

    bool is_over() const { return over || link.now() == connection_class::state::over; }
    bool is_open() const { return !is_over() && link.now() == connection_class::state::open; }
    bool takes_more() const { return !is_over() && keeping; }
    const std::string& why() const { return over ? problem : link.why(); }
    int os_error() const { return over ? 0 : link.os_error(); }
    const connection_class& connection() const { return link; }
    short events() const { return static_cast<short>(link.events() | (sends() ? POLLOUT : 0)); }
    bool sends() const { return is_open() && !out.empty(); }
    bool announced_end() const { return !keeping; }

    std::deque<down_ptr> asked;
    std::vector<down_ptr> ended;
    int answers = 0;            // whole ones
    bool asked_ahead = false;   // more than one was outstanding at some time
    float last_bytes = 0;       // real time: something came, or the first of a row was asked
    std::int64_t bytes_in = 0;  // of bodies

  private:
    void read_some(std::int64_t& allowance);
    void take(std::string_view bytes);
    void end_first();

    connection_class link;
    answer_reader reader;
    std::string out;      // requests not yet sent
    bool keeping = true;  // as far as either side has said
    bool over = false;    // closed from this side
    std::string problem;
};
