#include "net/down.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <string_view>

#include "files/error_str.h"
#include "net/proxy.h"
#include "runtime/log.h"
#include "runtime/product.h"
#include "runtime/xtim.h"

static char read_block[65536];  // shared by all transfers: one of them at a time is at work

// The whole of `text` as a number without a sign, at most `top`; -1 for anything else.
static std::int64_t whole_number(std::string_view text, std::int64_t top) {
    std::int64_t value = -1;
    const char* end = text.data() + text.size();
    if (text.empty() || text[0] == '-') return -1;
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end && value <= top ? value : -1;
}

std::string split_host_port(const std::string& host, unsigned short& port) {
    const std::size_t colon = host.rfind(':');
    if (colon == std::string::npos) return host;
    const std::int64_t number = whole_number(std::string_view(host).substr(colon + 1), 65535);
    if (number < 1) return host;
    port = static_cast<unsigned short>(number);
    return host.substr(0, colon);
}

bool host_port_is_valid(const std::string& host) {
    for (const char c : host)
        if (static_cast<unsigned char>(c) <= 32 || c == 127 || c == '/') return false;
    unsigned short port = 0;
    const std::string name = split_host_port(host, port);
    return !name.empty() && name.find(':') == std::string::npos;
}

down_class::down_class(const char* host, unsigned short port, const char* path, bool post, const header_map& request,
                       const char* body, int body_len, const char* local)
    : last_data(xtim.real_time) {
    if (local && *local) out_path = app_path + local;
    const bool through_proxy = UseProxy(host, port);
    const std::string peer = ProxyHost(host, port);
    const unsigned short peer_port = ProxyPort(host, port);
    const std::uint32_t address = PCSBSocket::LookupAddress(peer.c_str());
    if (address == 0) {
        xer << "Translated server " << peer << " to IP addy: 0.0.0.0 and port = " << peer_port << std::endl;
        file_err = err_net_host;
        return;
    }
    status = -1;
    sock = std::make_unique<PCSBSocket>(0, false);
    sock->Connect(address, peer_port);
    build_request(path, post, request, body, body_len, through_proxy);
}

down_class::~down_class() {
    close_file();
}

void down_class::close_file() {
    if (!out_file) return;
    if (std::fclose(out_file) != 0 && file_err == 0) file_err = errno;
    out_file = nullptr;
}

void down_class::build_request(const char* path, bool post, const header_map& request, const char* body, int body_len,
                               bool through_proxy) {
    std::string text = post ? "POST " : "GET ";
    if (through_proxy) text += "http://" + request.at("Host");
    for (const char* p = path; *p; ++p) {
        if (*p == ' ')
            text += "%20";
        else
            text += *p;
    }
    text += " HTTP/1.1\r\n";
    for (const auto& [key, value] : request)
        text.append(key).append(": ").append(value).append("\r\n");
    if (body) text += "Content-Length: " + std::to_string(body_len) + "\r\n";
    text += "\r\n";
    out_buf.assign(text.begin(), text.end());
    if (body) out_buf.insert(out_buf.end(), body, body + body_len);
}

int down_class::GetStat() const {
    if (!sock) return down_no_socket;
    switch (sock->state_now()) {
        case sock_connecting:
            return down_connecting;
        case sock_error:
            return down_broken;
        case sock_closed:
            return down_closed;
        default:
            break;
    }
    if (!out_buf.empty()) return down_sending;
    return header_done ? down_body : down_waiting;
}

bool down_class::IsErr() const {
    return file_err != 0 || !sock || sock->state_now() == sock_error;
}

int down_class::GetOSErr() const {
    if (file_err != 0) return file_err;
    return sock ? sock->GetOSError() : err_net_alloc;
}

void down_class::DoProcessing() {
    if (!sock) return;
    const int state = sock->GetStatus();
    if (state == sock_closed || state == sock_error) close_file();
    if (state != sock_connected) return;
    send_request();
    if (!read_some()) return;
    if (!header_done && !parse_headers()) return;
    last_data = xtim.real_time;
    const std::int64_t have = received + static_cast<std::int64_t>(in_buf.size());
    if (most_bytes > 0 && std::max(content_len, have) > most_bytes) {
        file_err = EMSGSIZE;
        in_buf.clear();
        return;
    }
    if (content_len != -1 && have >= content_len) sock->Disconnect();
    write_body();
}

void down_class::send_request() {
    if (out_buf.empty()) return;
    const long taken = sock->http_WriteData(out_buf.data(), static_cast<long>(out_buf.size()));
    if (taken > 0) out_buf.erase(out_buf.begin(), out_buf.begin() + taken);
}

bool down_class::read_some() {
    const long n = sock->ReadData(read_block, sizeof read_block);
    if (n < 1) return false;
    in_buf.insert(in_buf.end(), read_block, read_block + n);
    return true;
}

// Takes whole lines off the front of in_buf; true once the headers of a final status are over. What was searched is not
// searched again, and what was taken is erased at once, so that neither bytes nor lines in great numbers cost more than
// their share.
bool down_class::parse_headers() {
    const std::string_view text(in_buf.data(), in_buf.size());
    std::size_t line = 0;  // where the line looked at begins
    while (!header_done) {
        const std::size_t end = text.find("\r\n", searched);
        if (end == std::string_view::npos) break;
        if (end != line)
            take_header_line(std::string(text.substr(line, end - line)));
        else if (status > 199)
            end_of_headers();  // below that it was an interim block, and the next status line follows
        line = searched = end + 2;
    }
    head_bytes += line;
    in_buf.erase(in_buf.begin(), in_buf.begin() + static_cast<std::ptrdiff_t>(line));
    // The last byte may be the first half of a line end.
    searched = in_buf.empty() ? 0 : in_buf.size() - 1;
    if (head_bytes + (header_done ? 0 : in_buf.size()) > max_header_bytes) {
        file_err = EMSGSIZE;
        in_buf.clear();
        searched = 0;
    }
    return header_done;
}

void down_class::take_header_line(const std::string& line) {
    if (line.starts_with("HTTP/") && line.size() > 13) {
        status = std::atoi(line.substr(9, 3).c_str());
        reason = line.substr(13);
        return;
    }
    const std::size_t colon = line.find(": ");
    if (colon != std::string::npos) headers.emplace(line.substr(0, colon), line.substr(colon + 2));
}

// A length in digits, blanks around it allowed. Anything else is no length at all, so that the transfer fails instead
// of being taken for complete at a wrong size.
static std::int64_t parse_length(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return -1;
    text = text.substr(first, text.find_last_not_of(" \t") - first + 1);
    return whole_number(text, INT64_MAX);
}

void down_class::end_of_headers() {
    header_done = true;
    if (!out_path.empty()) {
        out_file = std::fopen(out_path.c_str(), "wbe");
        if (!out_file) file_err = errno;
        // The bytes come in big pieces. Unbuffered, a full disk shows at the write and not at the close.
        if (out_file) std::setvbuf(out_file, nullptr, _IONBF, 0);
    }
    const auto length = headers.find("Content-Length");
    if (length != headers.end()) content_len = parse_length(length->second);
}

void down_class::write_body() {
    if (in_buf.empty() || (!out_file && file_err == 0)) return;
    received += static_cast<std::int64_t>(in_buf.size());
    errno = 0;
    if (file_err == 0 && std::fwrite(in_buf.data(), 1, in_buf.size(), out_file) != in_buf.size())
        file_err = errno != 0 ? errno : EIO;
    in_buf.clear();
}
