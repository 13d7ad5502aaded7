// What a web server answers. It reaches a transfer once in one piece and once in many: that must make no difference.
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "fuzz/fuzz.h"
#include "net/down.h"
#include "net/http.h"

namespace {

struct outcome {
    int status, file_err;
    bool header_done, has_length_bytes;
    std::string reason, body;
    down_class::header_map headers;
    std::int64_t content_len;
    bool operator==(const outcome&) const = default;
};

// A transfer whose connection is one end of a pair; nothing is looked up.
class transfer {
  public:
    explicit transfer(const char* local) : d("", 80, "/", false, {{"Host", "a"}}, nullptr, 0, local) {
        int ends[2];
        must(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "a pair of sockets can be had");
        peer = ends[0];
        d.sock = std::make_unique<PCSBSocket>(ends[1]);
        d.file_err = 0;
        d.status = -1;
    }
    ~transfer() { close(peer); }
    transfer(const transfer&) = delete;
    transfer& operator=(const transfer&) = delete;

    void bring(std::string_view piece) {
        if (d.IsErr() || d.sock->state_now() != sock_connected) return;
        must(send(peer, piece.data(), piece.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(piece.size()),
             "it can be sent");
        d.DoProcessing();
        must(d.header_done || d.in_buf.size() <= max_header_bytes + 65536, "headers do not grow without end");
        must(d.received >= 0 && d.GetStat() >= 2, "the transfer knows where it stands");
    }
    down_class d;

  private:
    int peer;
};

// The body as far as it was announced: what comes behind it depends on when it comes.
outcome run(std::string_view answer, choices* cuts) {
    const memory_file local("");
    outcome seen;
    {
        transfer t(local.path().c_str());
        while (!answer.empty()) {
            const std::size_t longest = std::min<std::size_t>(answer.size(), 60000);
            const std::size_t piece =
                cuts ? 1 + cuts->below(1 + cuts->below(static_cast<std::uint32_t>(longest))) : longest;
            t.bring(answer.substr(0, std::min(piece, longest)));
            answer.remove_prefix(std::min(piece, longest));
        }
        t.d.close_file();
        const down_class& d = t.d;
        const bool whole = d.content_len >= 0 && d.received >= d.content_len;
        seen = {d.status, d.file_err, d.header_done, whole, d.reason, "", d.headers, d.content_len};
    }
    seen.body = local.read();
    if (seen.has_length_bytes) seen.body.resize(static_cast<std::size_t>(seen.content_len));
    return seen;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view answer = view_of(data, size);
    survives([&] {
        const outcome at_once = run(answer, nullptr);
        choices cuts(answer);
        const outcome in_pieces = run(answer, &cuts);
        must(at_once == in_pieces, "an answer means the same in whatever pieces it comes");
    });
    return 0;
}
