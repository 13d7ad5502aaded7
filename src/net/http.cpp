#include "net/http.h"

#include <poll.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "net/pcsb_socket.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/xtim.h"

http_class http;

// What may be outstanding on one connection. Sixteen requests fill a line of 100 ms with small files; the bytes bound
// what is thrown away when a connection breaks or a user quits, and keep a large file from standing in the way of
// others.
static constexpr std::size_t most_outstanding = 16;
static constexpr std::int64_t most_bytes_ahead = 512 * 1024;
// Of what is announced and not yet taken: it lies in memory.
static constexpr std::size_t most_announced = 96;
static constexpr std::int64_t most_announced_bytes = 4 << 20;
// A server that has swallowed one of several requests leaves the next answer to be waited for without end.
static constexpr float row_silence_seconds = 4.0f;
static constexpr float idle_seconds = 30.0f;
static constexpr std::size_t most_broken_off = 8;

int http_class::net_check(int slot, const http_request& request) {
    if (slot < 0 || slot >= http_slot_count) {
        __MACIBM_alert(0, "Too many download objects requested!", "", "", "", t_exit, OOPS_PLACE);
        return net_failed;
    }
    if (!started) {
        PCSBSocket::StartupNetworking(true);
        started = true;
    }
    if (is_pausing(slot)) return net_running;
    if (!slots[slot]) {
        if (!start(slot, request)) return net_failed;
        dispatch();
    }
    // One turn of the connections for each round over the slots.
    if (looked_at[slot]) turn(0, -1);
    looked_at[slot] = true;
    return slots[slot]->fate == down_class::outcome::running ? net_running : judge(slot);
}

bool http_class::start(int slot, const http_request& request) {
    if (request.server.ends_with('/')) {
        __MACIBM_alert(0, "net_check error! You have a dirchar at the end of the server name!", "You should not!",
                       "Our convention is that a server name is simply a server name... with no slash!", request.server,
                       t_exit, OOPS_PLACE);
        return false;
    }
    if (!request.path.starts_with('/')) {
        __MACIBM_alert(0, "net_check error! You do not have a dirchar at the beginning of the directory name!",
                       "You should!",
                       "Our convention is that a directory name does start with a slash because it must include the "
                       "hard drive,which is a dir char on unix!",
                       request.path, t_exit, OOPS_PLACE);
        return false;
    }
    delivered[slot].reset();
    // What another file left where this one will lie cannot be gone on with.
    std::erase_if(broken_off, [&](const auto& one) {
        return one.first != request.name && one.second->request.local == request.local;
    });
    const down_ptr here = find_announced(request.name);
    if (here) std::erase(ahead, here);
    if (here && here->request.server == request.server && here->request.path == request.path) {
        here->request = request;
        slots[slot] = here;
        return true;
    }
    slots[slot] = std::make_shared<down_class>(request);
    if (const auto part = broken_off.find(request.name); part != broken_off.end()) {
        slots[slot]->go_on_from(*part->second);
        broken_off.erase(part);
    } else if (request.outlasts) {
        slots[slot]->go_on_from_file();
    }
    return true;
}

static void log_failure(const down_class& d) {
    xer << "HTTP Error for " << d.request.local << '\n'
        << "   server     =" << d.request.server << '\n'
        << "   file       =" << d.request.path << '\n'
        << "   IsDone     =" << d.IsDone() << '\n'
        << "   IsComplete =" << d.IsComplete() << '\n'
        << "   IsErr      =" << d.IsErr() << '\n'
        << "   GetStat    =" << d.GetStat() << '\n'
        << "   GetOSErr   =" << d.GetOSErr() << '\n'
        << "   response   =" << d.response() << " (#" << d.status << ")\n"
        << std::endl;
}

// The file is written or closed first: what the disk refuses at the end counts as a failed transfer, and after
// "complete" the caller reads the file. Silence is an everyday event on a busy mirror and does not go to the log.
int http_class::judge(int slot) {
    down_class& d = *slots[slot];
    if (d.deliver()) return finish(slot, net_complete);
    note_failure(slot, d.why());
    disk_failure = d.disk_err;
    if (!d.was_silent) log_failure(d);
    return finish(slot, net_failed);
}

int http_class::finish(int slot, int result) {
    const down_ptr over = last[slot] = std::exchange(slots[slot], nullptr);
    if (result == net_complete) {
        slot_freed = true;
        delivered[slot] = over;
        if (!over->request.in_memory) over->body = {};
    } else if (over->received > 0 && !over->request.name.empty()) {
        if (broken_off.size() >= most_broken_off) broken_off.erase(broken_off.begin());
        broken_off[over->request.name] = over;
    }
    note_outcome(slot, result);
    return result;
}

void http_class::note_outcome(int slot, int result) {
    constexpr float first_pause = 0.1f, longest_pause = 1.0f;
    pause& p = pauses[slot];
    p.before = p.failures;
    p.failures = result == net_failed ? p.failures + 1 : 0;
    p.not_before = 0;
    if (p.failures > 1)
        p.not_before = xtim.real_time + std::min(std::ldexp(first_pause, std::min(p.failures, 10) - 2), longest_pause);
}

void http_class::note_failure(int slot, const std::string& why) {
    const down_class& d = slots[slot] ? *slots[slot] : *delivered[slot];
    failure = d.request.server + ": " + why + " for " + d.request.path;
}

bool http_class::reject(int slot, const std::string& why) {
    if (!delivered[slot]) return false;
    const down_class& d = *delivered[slot];
    note_failure(slot, why);
    xer << "Refused: " << failure << std::endl;
    bool again = d.was_resumed;
    if (!again) again = note_wrong_file(host_of(d), d.request.path, !d.was_asked_ahead);
    if (again && d.was_asked_ahead) doubt(d.key);
    pauses[slot].failures = pauses[slot].before;
    if (!again) note_outcome(slot, net_failed);
    return again;
}

std::vector<char> http_class::take_body(int slot) {
    return delivered[slot] ? std::move(delivered[slot]->body) : std::vector<char>();
}

// ---- What is announced

down_ptr http_class::find_announced(const std::string& name) const {
    if (name.empty()) return nullptr;
    const auto found =
        std::find_if(ahead.begin(), ahead.end(), [&](const down_ptr& t) { return t->request.name == name; });
    return found == ahead.end() ? nullptr : *found;
}

bool http_class::wants_announcements() const {
    std::int64_t bytes = 0;
    for (const down_ptr& t : ahead)
        bytes += std::max<std::int64_t>(t->request.about_bytes, 0);
    return ahead.size() < most_announced && bytes < most_announced_bytes;
}

void http_class::announce(const http_request& request) {
    if (request.name.empty() || request.most_bytes <= 0 || find_announced(request.name)) return;
    const down_ptr made = std::make_shared<down_class>(request);
    made->request.local.clear();
    if (!made->is_large() && !broken_off.contains(request.name)) ahead.push_back(made);
}

const http_request* http_class::announced(const std::string& name) const {
    const down_ptr found = find_announced(name);
    return found && found->first_asked >= 0 ? &found->request : nullptr;
}

void http_class::forget_announced(bool all) {
    std::erase_if(ahead, [all](const down_ptr& t) { return all || t->first_asked < 0; });
}

// ---- The connections

host_traits& http_class::host_of(const down_class& d) {
    return hosts[d.key];
}

static bool may_stand_behind(const down_class& wanted, const line_class& line) {
    if (wanted.is_large() || line.asked.size() >= most_outstanding) return false;
    std::int64_t bytes = wanted.request.about_bytes;
    for (const down_ptr& t : line.asked) {
        if (t->is_large()) return false;
        bytes += t->request.about_bytes;
    }
    return bytes <= most_bytes_ahead;
}

// Asks for it on the connection that has the least to do; opens one where all have something and there may be more.
// `slot` -1 for what is only announced. False if it has to wait.
bool http_class::place(const down_ptr& wanted, int slot) {
    route_t route;
    std::string why;
    if (!route_to(wanted->server, route, why)) {
        wanted->fail(why);
        return false;
    }
    wanted->key = route.key();
    const host_traits& host = hosts[wanted->key];
    if (slot < 0 && host.shaky) return false;
    line_class* best = nullptr;
    int busy = 0;
    for (const auto& line : lines) {
        if (!line->asked.empty() && !line->is_over()) ++busy;
        if (!line->takes_more() || line->connection().route().key() != wanted->key) continue;
        if (line->asked.empty() ? host.no_reuse && line->answers > 0
                                : !host.bears_asking_ahead() || !may_stand_behind(*wanted, *line))
            continue;
        if (!best || line->asked.size() < best->asked.size()) best = line.get();
    }
    const bool is_file = slot < 0 || slot >= slot_first_stream;
    if ((!best || !best->asked.empty()) && (!is_file || busy < most_lines)) {
        // Else what may not be read yet comes all the same, into the buffers of the system. Without a limit their size is
        // left to the system: every fixed one was slower.
        connection_class::most_unread = limit.now() > 0 ? std::clamp(limit.now() / 8, 4096, 1 << 20) : 0;
        best = lines.emplace_back(std::make_unique<line_class>(route, names)).get();
    }
    if (!best) return false;
    best->ask(wanted, !host.no_reuse);
    return true;
}

void http_class::dispatch() {
    const auto waits = [](const down_ptr& t) {
        return t && t->fate == down_class::outcome::running && t->stat == down_queued;
    };
    for (int slot = 0; slot < http_slot_count; ++slot)
        if (waits(slots[slot])) place(slots[slot], slot);
    for (const down_ptr& t : ahead)
        if (waits(t) && !place(t, -1) && t->fate == down_class::outcome::running) break;
    std::int64_t nothing = 0;  // is read here
    for (const auto& line : lines)
        if (line->sends()) line->turn(nothing);
}

static std::string byte_count(const down_class& d) {
    if (d.content_len < 0) return std::to_string(d.received) + " bytes of unknown length";
    return std::to_string(d.received) + " of " + std::to_string(d.content_len) + " bytes";
}

static std::string why_lost(const down_class& d, const line_class& line) {
    const bool in_body = d.stat == down_body;
    if (line.why().empty()) return in_body ? "closed early after " + byte_count(d) : "closed without an answer";
    return line.why() + (in_body ? " after " + byte_count(d) : "");
}

static std::string why_silent(const down_class& d) {
    if (d.stat == down_connecting) return "no connection for 30 seconds";
    if (d.stat == down_body) return "silent for 30 seconds after " + byte_count(d);
    return "no answer for 30 seconds";
}

// What was answered is over, or goes back to be asked for again.
void http_class::take_ended(line_class& line) {
    const std::vector<down_ptr> ended = std::exchange(line.ended, {});
    for (const down_ptr& t : ended) {
        host_traits& host = hosts[line.connection().route().key()];
        note_answer(host, line.answers, t->fate != down_class::outcome::failed);
        if (t->fate != down_class::outcome::complete || t->request.about_bytes < 0) continue;
        // A file of another length is most likely another file: the server has dropped a request and its answers have
        // shifted. A release's mirror may have packed it in another way, which shows when it is asked for alone.
        const bool fits = std::abs(t->received - t->request.about_bytes) < 2000;
        if (fits || host.packs_otherwise) continue;
        if (t->was_asked_ahead) {
            note_wrong_file(host, t->request.path, false);
            t->fate = down_class::outcome::running;
            t->stat = down_queued;
            t->start_over();
            doubt(line.connection().route().key());
        } else if (host.suspect == t->request.path) {
            note_wrong_file(host, t->request.path, true);
            host.packs_otherwise = true;
        }
    }
}

// A connection has ended with requests unanswered. They are asked again on another one, which costs them nothing as
// long as connections give answers; the first alone has failed where its connection gave none.
void http_class::take_lost(line_class& line) {
    if (line.asked.empty()) return;
    host_traits& host = hosts[line.connection().route().key()];
    note_lost(host, line.answers, line.asked_ahead, line.announced_end());
    const std::deque<down_ptr> left = std::exchange(line.asked, {});
    for (const down_ptr& t : left) {
        if (t->fate != down_class::outcome::running) continue;
        if (t == left.front() && line.answers == 0) {
            t->os_err = line.os_error();
            t->fail(why_lost(*t, line));
        } else {
            t->break_off();
        }
    }
}

static constexpr float least_bytes_s = 1000;

void http_class::watch_silence(line_class& line) {
    if (line.asked.empty() || line.is_over()) return;
    const down_ptr first = line.asked.front();
    if (first->came_before < 0 || xtim.real_time > first->watched_since + http_silence_seconds) {
        const auto drips = static_cast<std::int64_t>(http_silence_seconds * least_bytes_s);
        const bool too_slow = first->came_before >= 0 && first->came - first->came_before < drips;
        first->watched_since = xtim.real_time;
        first->came_before = first->came;
        if (too_slow && first->request.elsewhere) {
            first->was_silent = true;
            first->fail("slower than a kilobyte a second for 30 seconds");
            line.close("");
            return;
        }
    }
    if (xtim.real_time > first->last_data + http_silence_seconds) {
        first->was_silent = true;
        first->fail(why_silent(*first));
        line.close("");
    } else if (line.asked.size() > 1 && line.is_open() && xtim.real_time > line.last_bytes + row_silence_seconds) {
        note_silence(hosts[line.connection().route().key()]);
        line.answers = std::max(line.answers, 1);  // its silence is the fault of the row and not of the first
        line.close("");
    }
}

// A server may have lost count: nothing that came or is to come from it in a row is taken on trust.
void http_class::doubt(const std::string& key) {
    for (const down_ptr& t : ahead) {
        if (t->key != key || !t->was_asked_ahead || t->fate != down_class::outcome::complete) continue;
        t->fate = down_class::outcome::running;
        t->stat = down_queued;
        t->start_over();
    }
    for (const auto& line : lines) {
        if (line->connection().route().key() != key || !line->asked_ahead || line->is_over()) continue;
        line->close("");
        for (const down_ptr& t : std::exchange(line->asked, {})) {
            t->break_off();
            t->start_over();
        }
    }
}

void http_class::collect() {
    for (std::size_t n = 0; n < lines.size(); ++n) {
        line_class& line = *lines[n];
        take_ended(line);
        watch_silence(line);
        if (line.is_over()) take_lost(line);
        if (line.asked.empty() && xtim.real_time > line.last_bytes + idle_seconds) line.close("");
    }
    std::erase_if(lines, [this](const auto& line) {
        if (line->is_over()) finished_bytes += line->bytes_in;
        return line->is_over();
    });
}

// Every connection goes as far as it goes now and as the limit of the rate lets it. Returns how many things were ready.
int http_class::turn(int timeout_ms, int wake_fd) {
    std::fill(std::begin(looked_at), std::end(looked_at), false);
    const auto polled_lines = [&](short mask) {
        std::vector<pollfd> polled = {{wake_fd, POLLIN, 0}, {names.wake_fd(), POLLIN, 0}};  // -1 is passed over
        for (const auto& line : lines)
            polled.push_back({line->connection().descriptor(), static_cast<short>(line->events() & mask), 0});
        return polled;
    };
    for (const auto& line : lines)
        if (const float look = line->connection().next_look; look > 0)
            timeout_ms = std::min(timeout_ms, std::max(0, static_cast<int>((look - xtim.real_time) * 1000) + 1));
    // While nothing may be read, what could be read does not wake.
    if (limit.allowance(xtim_class::seconds()) == 0 && timeout_ms > 0) {
        const int pause_ms = static_cast<int>(limit.next_allowance(xtim_class::seconds()) * 1000) + 1;
        std::vector<pollfd> polled = polled_lines(POLLOUT);
        poll(polled.data(), polled.size(), std::min(pause_ms, timeout_ms));
        timeout_ms = 0;
    }
    std::vector<pollfd> polled = polled_lines(POLLIN | POLLOUT);
    const int ready = std::max(poll(polled.data(), polled.size(), timeout_ms), 0);
    if (polled[1].revents) names.quiet_wake();
    // Each gets its share of what may be read, and the first is another one each time.
    const std::int64_t allowance = limit.allowance(xtim_class::seconds());
    std::int64_t left = allowance;
    const std::size_t count = lines.size();
    ++turns;
    for (std::size_t n = 0; n < count; ++n) {
        const std::size_t at = (turns + n) % count;
        line_class& line = *lines[at];
        if (!polled[at + 2].revents && line.is_open()) continue;
        line.turn(left);
        // It is not its silence if nobody listens.
        if (allowance == 0 || left <= 0) line.spoke();
    }
    limit.spend(allowance - left);
    collect();
    dispatch();
    return ready;
}

bool http_class::wait(int timeout_ms, int wake_fd) {
    for (const pause& p : pauses)
        if (p.not_before > xtim.real_time)
            timeout_ms = std::min(timeout_ms, static_cast<int>((p.not_before - xtim.real_time) * 1000) + 1);
    if (std::exchange(slot_freed, false)) return true;
    for (const down_ptr& t : slots)
        if (t && t->fate != down_class::outcome::running) return true;
    return turn(timeout_ms, wake_fd) > 0;
}

std::int64_t http_class::bytes_in() const {
    std::int64_t sum = finished_bytes;
    for (const auto& line : lines)
        sum += line->bytes_in;
    return sum;
}
