#include "net/http.h"

#include <poll.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <utility>

#include "files/error_str.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/xtim.h"

http_class http;

static const unsigned short http_port = 80;

std::string agent_text() {
    const std::string version = version_text;
    return "Installer-APL/" + version.substr(version.size() - 4);
}

static bool is_over(const PCSBSocket& s) {
    return s.state_now() == sock_closed || s.state_now() == sock_error;
}

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
    if (!slots[slot] && !start(slot, request)) return net_failed;

    down_class& d = *slots[slot];
    d.DoProcessing();
    if (!d.sock || is_over(*d.sock) || d.file_err != 0 || d.content_len == d.received) return judge(slot);
    if (xtim.real_time > d.last_data + http_silence_seconds) return fail(slot, true);
    return net_running;
}

bool http_class::start(int slot, const http_request& request) {
    const auto& [server, path, local, most_bytes] = request;
    if (server.ends_with('/')) {
        __MACIBM_alert(0, "net_check error! You have a dirchar at the end of the server name!", "You should not!",
                       "Our convention is that a server name is simply a server name... with no slash!", server, t_exit,
                       OOPS_PLACE);
        return false;
    }
    if (!path.starts_with('/')) {
        __MACIBM_alert(0, "net_check error! You do not have a dirchar at the beginning of the directory name!",
                       "You should!",
                       "Our convention is that a directory name does start with a slash because it must include the "
                       "hard drive,which is a dir char on unix!",
                       path, t_exit, OOPS_PLACE);
        return false;
    }
    const down_class::header_map headers = {{"Host", server}, {"User-agent", agent_text()}, {"Connection", "close"}};
    unsigned short port = http_port;
    const std::string host = split_host_port(server, port);
    slots[slot] =
        std::make_unique<down_class>(host.c_str(), port, path.c_str(), false, headers, nullptr, 0, local.c_str());
    slots[slot]->most_bytes = most_bytes;
    requests[slot] = request;
    return true;
}

// The file is closed first: what the disk refuses at the end counts as a failed transfer, and after "complete" the
// caller reads the file.
int http_class::judge(int slot) {
    down_class& d = *slots[slot];
    d.close_file();
    if (d.status >= 200 && d.status <= 299 && d.IsComplete() && !d.IsErr()) return finish(slot, net_complete);
    return fail(slot, false);
}

int http_class::finish(int slot, int result) {
    finished_bytes += slots[slot]->received;
    slots[slot].reset();
    if (result == net_complete) slot_freed = true;
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

void http_class::reject(int slot, const std::string& why) {
    note_failure(slot, why);
    xer << "Refused: " << failure << std::endl;
    pauses[slot].failures = pauses[slot].before;
    note_outcome(slot, net_failed);
}

static std::string system_words(int error) {
    std::string words = std::strerror(error);
    words[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(words[0])));
    return words;
}

static std::string byte_count(const down_class& d) {
    if (d.content_len < 0) return std::to_string(d.received) + " bytes of unknown length";
    return std::to_string(d.received) + " of " + std::to_string(d.content_len) + " bytes";
}

static std::string why_silent(const down_class& d) {
    if (d.sock->state_now() == sock_connecting) return "no connection for 30 seconds";
    if (d.sock->ReceivedRelease())
        return d.header_done ? "closed early after " + byte_count(d) : std::string("closed without an answer");
    return d.header_done ? "silent for 30 seconds after " + byte_count(d) : std::string("no answer for 30 seconds");
}

static std::string why_failed(const down_class& d, const std::string& local) {
    if (d.file_err == err_net_host) return "host unknown";
    if (d.file_err == EMSGSIZE && !d.header_done) return "endless headers";
    if (d.file_err == EMSGSIZE) return "more than the " + std::to_string(d.most_bytes) + " bytes that it may send";
    if (d.file_err != 0) return "cannot write " + local + ": " + error_str(d.file_err);
    if (d.sock->state_now() == sock_error) return system_words(d.sock->GetOSError());
    if (d.header_done && (d.status < 200 || d.status > 299)) return std::to_string(d.status) + " " + d.reason;
    const int lost = d.sock->close_reason();
    if (lost != 0) return system_words(lost) + (d.header_done ? " after " + byte_count(d) : "");
    return "sent " + std::to_string(d.received) + " bytes where " + std::to_string(d.content_len) + " were announced";
}

static void log_failure(const down_class& d, const http_request& asked) {
    xer << "HTTP Error for " << asked.local << '\n'
        << "   server     =" << asked.server << '\n'
        << "   file       =" << asked.path << '\n'
        << "   IsDone     =" << d.IsDone() << '\n'
        << "   IsComplete =" << d.IsComplete() << '\n'
        << "   IsErr      =" << d.IsErr() << '\n'
        << "   GetStat    =" << d.GetStat() << '\n'
        << "   GetOSErr   =" << d.GetOSErr() << '\n'
        << "   response   =" << d.response() << " (#" << d.status << ")\n"
        << std::endl;
}

void http_class::note_failure(int slot, const std::string& why) {
    failure = requests[slot].server + ": " + why + " for " + requests[slot].path;
}

// Silence is an everyday event on a busy mirror and does not go to the log.
int http_class::fail(int slot, bool silent) {
    const down_class& d = *slots[slot];
    note_failure(slot, silent ? why_silent(d) : why_failed(d, requests[slot].local));
    if (!silent) log_failure(d, requests[slot]);
    return finish(slot, net_failed);
}

bool http_class::wait(int timeout_ms, int wake_fd) {
    for (const pause& p : pauses)
        if (p.not_before > xtim.real_time)
            timeout_ms = std::min(timeout_ms, static_cast<int>((p.not_before - xtim.real_time) * 1000) + 1);
    if (std::exchange(slot_freed, false)) return true;
    pollfd polled[http_slot_count + 1];
    nfds_t count = 0;
    if (wake_fd >= 0) polled[count++] = {wake_fd, POLLIN, 0};
    for (const auto& d : slots) {
        if (!d) continue;
        if (!d->sock || is_over(*d->sock)) return true;
        if (d->sock->ReceivedRelease()) continue;  // always readable from here on, with nothing to read
        const bool connecting = d->sock->state_now() == sock_connecting;
        int events = connecting ? 0 : POLLIN;
        if (connecting || !d->out_buf.empty()) events |= POLLOUT;
        polled[count++] = {d->sock->descriptor(), static_cast<short>(events), 0};
    }
    return poll(polled, count, timeout_ms) > 0;
}

std::int64_t http_class::bytes_in() const {
    std::int64_t sum = finished_bytes;
    for (const auto& d : slots)
        if (d) sum += d->received;
    return sum;
}
