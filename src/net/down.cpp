#include "net/down.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "files/error_str.h"
#include "runtime/product.h"
#include "runtime/xtim.h"

static constexpr int most_redirects = 5;
// A page that goes with a refusal is read to its end, so that the connection can be kept, up to this length.
static constexpr std::int64_t most_skipped_bytes = 1 << 16;

static std::string agent_text() {
    const std::string version = version_text;
    return "Installer-APL/" + version.substr(version.size() - 4);
}

// As it stands in a request. Blanks, control bytes and bytes beyond ASCII would break the line; "%", "?" and "#" of a
// file's name would be read as something else, while in a server's own Location they mean what they say.
static std::string encoded(std::string_view path, std::string_view reserved) {
    std::string sent;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > ' ' && byte < 127 && reserved.find(c) == std::string_view::npos) {
            sent += c;
            continue;
        }
        sent += '%';
        sent += "0123456789ABCDEF"[byte >> 4];
        sent += "0123456789ABCDEF"[byte & 15];
    }
    return sent;
}

down_class::down_class(const http_request& asked) : request(asked), last_data(xtim.real_time) {
    target = encoded(request.path, "%?#");
    const std::string wrong = read_server_address(request.server, server);
    if (!wrong.empty()) fail("this server " + wrong);
}

down_class::~down_class() {
    if (file) std::fclose(file);
}

void down_class::fail(const std::string& why) {
    fate = outcome::failed;
    stat = down_broken;
    problem = why;
    break_off();
}

void down_class::fail_on_disk(int error) {
    os_err = disk_err = error ? error : EIO;
    fail("cannot write " + request.local + ": " + error_str(os_err));
}

void down_class::break_off() {
    if (fate == outcome::running) stat = down_queued;
    used_for = use::nothing;
    last_data = xtim.real_time;
    if (file && std::fclose(file) != 0 && fate == outcome::running) {
        file = nullptr;
        fail_on_disk(errno);
    }
    file = nullptr;
}

void down_class::start_over() {
    received = 0;
    content_len = -1;
    body.clear();
    etag.clear();
    was_resumed = false;
    if (file) std::fclose(file);
    file = nullptr;
}

void down_class::go_on_from(down_class& broken) {
    const bool held = std::ssize(broken.body) == broken.received;
    if (broken.received == 0 || (!held && broken.request.local != request.local)) return;
    received = broken.received;
    content_len = broken.content_len;
    body = std::move(broken.body);
    etag = broken.etag;
    etag_server = broken.etag_server;
    was_resumed = broken.was_resumed;
    broken.start_over();
}

void down_class::go_on_from_file() {
    struct stat there;
    if (::stat((app_path + request.local).c_str(), &there) != 0 || !S_ISREG(there.st_mode)) return;
    if (!is_too_long(there.st_size)) received = there.st_size;
}

std::string down_class::request_text(const route_t& route, bool keeps) {
    const bool whole_address = route.by_proxy && !route.tunnels();
    std::string text = "GET " + (whole_address ? "http://" + server.authority() : "") + target + " HTTP/1.1\r\n";
    text += std::string("Connection: ") + (keeps ? "keep-alive" : "close") + "\r\n";
    text += "Host: " + server.authority() + "\r\n";
    text += "User-agent: " + agent_text() + "\r\n";
    if (request.fresh) text += "Cache-Control: no-cache\r\n";
    if (whole_address && !route.login.empty()) text += "Proxy-Authorization: " + route.login + "\r\n";
    asked_from = refuses_ranges ? 0 : received;
    if (asked_from > 0) {
        text += "Range: bytes=" + std::to_string(asked_from) + "-\r\n";
        // Another server's tag says nothing here; whether the parts fit, the signature decides.
        if (!etag.empty() && etag_server == server.origin()) text += "If-Range: " + etag + "\r\n";
    }
    used_for = use::nothing;
    skipped = 0;
    last_data = xtim.real_time;
    if (first_asked < 0) first_asked = last_data;
    return text + "\r\n";
}

// A 206 counts only if it starts where this side stopped and is of a file of the known length.
bool down_class::goes_on(const answer_head& head) {
    return asked_from > 0 && asked_from == received && head.range_first == received && head.range_total > received &&
           (content_len < 0 || head.range_total == content_len);
}

bool down_class::begin_answer(const answer_head& head) {
    status = head.status;
    reason = head.reason;
    stat = down_body;
    used_for = use::nothing;
    if (status == 206 && goes_on(head)) {
        used_for = use::file;
        was_resumed = true;
        content_len = head.range_total;
    } else if (status >= 200 && status <= 299 && status != 204 && status != 205 && status != 206) {
        start_over();
        used_for = use::file;
        content_len = head.length;
        etag = head.etag;
        etag_server = server.origin();
    } else if (status == 416 && asked_from > 0 && head.range_total == received) {
        content_len = received;  // all was here already
        was_resumed = true;
    } else if (asked_from > 0 && (status == 206 || status == 416)) {
        used_for = use::from_the_start;
    } else if (status >= 301 && status <= 308 && status != 304 && !head.location.empty()) {
        used_for = use::redirect;
        next_server_target = head.location;
    }
    if (used_for != use::file) {
        if (head.chunked || (head.length >= 0 && head.length <= most_skipped_bytes)) return true;
        end_answer();  // its head says all that matters
        return false;
    }
    if (is_too_long(content_len)) {
        fail("more than the " + std::to_string(request.most_bytes) + " bytes that it may send");
        return false;
    }
    return true;
}

bool down_class::open_file() {
    if (file || request.local.empty()) return true;
    file = std::fopen((app_path + request.local).c_str(), received > std::ssize(body) ? "abe" : "wbe");
    if (!file) {
        fail_on_disk(errno);
        return false;
    }
    // The bytes come in big pieces. Unbuffered, a full disk shows at the write and not at the close.
    std::setvbuf(file, nullptr, _IONBF, 0);
    return true;
}

bool down_class::take(std::string_view piece) {
    last_data = xtim.real_time;
    came += std::ssize(piece);
    if (used_for != use::file) {
        skipped += std::ssize(piece);
        if (skipped > most_skipped_bytes) end_answer();
        return skipped <= most_skipped_bytes;
    }
    if (is_too_long(received + std::ssize(piece))) {
        fail("more than the " + std::to_string(request.most_bytes) + " bytes that it may send");
        return false;
    }
    const bool held = std::ssize(body) == received;  // none of it has gone to the file
    if (request.local.empty() || (held && std::max(content_len, received + std::ssize(piece)) <= most_held_bytes)) {
        if (body.empty() && content_len > 0 && content_len <= most_held_bytes)
            body.reserve(static_cast<std::size_t>(content_len));
        body.insert(body.end(), piece.begin(), piece.end());
        received += std::ssize(piece);
        return true;
    }
    if (!open_file()) return false;
    errno = 0;
    if (std::fwrite(body.data(), 1, body.size(), file) != body.size() ||
        std::fwrite(piece.data(), 1, piece.size(), file) != piece.size()) {
        fail_on_disk(errno);
        return false;
    }
    body.clear();
    received += std::ssize(piece);
    return true;
}

void down_class::end_answer() {
    const use was = used_for;
    used_for = use::nothing;
    if (was == use::redirect) {
        if (!follow(next_server_target)) return;
        stat = down_queued;
    } else if (was == use::from_the_start && !refuses_ranges) {
        start_over();
        refuses_ranges = true;
        stat = down_queued;
    } else if (was == use::file && content_len >= 0 && received < content_len) {
        stat = down_queued;  // the server gave a part of the range; the next request is for the rest
    } else if (was == use::file || (status == 416 && content_len == received)) {
        content_len = received;
        fate = outcome::complete;
        stat = down_closed;
    } else {
        fail(std::to_string(status) + " " + reason);
        stat = down_closed;
    }
}

// A Location is a whole address, "//host/path", "/path", or a path beside the one that was asked for.
bool down_class::follow(const std::string& location) {
    if (++redirects > most_redirects) {
        fail("sent on more than " + std::to_string(most_redirects) + " times");
        return false;
    }
    std::string to = location.substr(0, location.find('#'));
    const bool was_secure = server.secure;
    if (to.starts_with("//")) to = (was_secure ? "https:" : "http:") + to;
    if (const std::size_t scheme = to.find("://"); scheme != std::string::npos && scheme < to.find('/')) {
        const std::size_t path = std::min(to.find_first_of("/?", scheme + 3), to.size());
        server_address next;
        const std::string wrong = read_server_address(to.substr(0, path), next);
        if (!wrong.empty()) {
            fail("sent on to " + encoded(to, "") + ", which " + wrong);
            return false;
        }
        if (was_secure && !next.secure) {
            fail("sent on from https to http, to " + next.origin());
            return false;
        }
        server = next;
        to.erase(0, path);
        if (!to.starts_with('/')) to = "/" + to;
    } else if (!to.starts_with('/')) {
        const std::string beside = target.substr(0, target.find('?'));
        to = beside.substr(0, beside.rfind('/') + 1) + to;
    }
    target = encoded(to, "");
    return true;
}

bool down_class::deliver() {
    if (fate != outcome::complete) return false;
    if (file) {
        const bool closed = std::fclose(file) == 0;
        file = nullptr;
        if (!closed) fail_on_disk(errno);
    } else if (std::ssize(body) == received && !request.in_memory && !request.local.empty()) {
        errno = 0;
        if (open_file() && std::fwrite(body.data(), 1, body.size(), file) != body.size()) fail_on_disk(errno);
        if (file && std::fclose(file) != 0 && fate == outcome::complete) {
            file = nullptr;
            fail_on_disk(errno);
        }
        file = nullptr;
    }
    return fate == outcome::complete;
}
