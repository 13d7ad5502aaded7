// answer.h: reads the answers that come in sequence on one HTTP/1.1 connection, from bytes in whatever pieces.
// A body is framed by Content-Length or, where a server insists, in chunks. One that would end with the connection has
// no length that could be checked and is never complete.
// Errors: `broken`, with the words in why(); nothing behind it can be told apart any more.
// Threads: any; a reader touches nothing else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// All header blocks of one answer together. A peer that sends more has failed, or memory would grow with it.
constexpr std::size_t max_header_bytes = 65536;

struct answer_head {
    int status = 0;
    std::string reason;        // behind the number in the status line
    std::int64_t length = -1;  // of the body; -1 in chunks, or where none was told
    bool chunked = false;
    bool keeps = false;                                                // another answer may follow on the connection
    std::int64_t range_first = -1, range_last = -1, range_total = -1;  // of Content-Range; -1 for what it does not tell
    std::string etag;                                                  // a strong one, quotes included; empty for none
    std::string location;                                              // of a redirect, as it was sent
};

class answer_reader {
  public:
    enum class step {
        more,   // all bytes were taken and the answer goes on
        head,   // head() is that of a new answer
        body,   // bytes of its body
        end,    // the answer is over; what is left of the bytes belongs to the next
        broken  // this is no answer
    };
    // Takes what makes up the next step off the front of `bytes`. For `body` its bytes are in `piece`.
    step next(std::string_view& bytes, std::string_view& piece);
    const answer_head& head() const { return current; }
    const std::string& why() const { return problem; }
    bool in_head() const { return at == place::head; }  // or between two answers
    bool begun() const { return at != place::head || head_bytes > 0 || !line.empty(); }
    // The answer now expected has no body whatever its head says, as that to a CONNECT that was granted.
    void expect_no_body() { bodiless = true; }

  private:
    enum class place { head, counted, endless, chunk_size, chunk, chunk_end, trailer, over, broken };
    bool take_line(std::string_view& bytes);
    step head_line();
    void header(std::string_view name, std::string_view value);
    step end_of_head();
    step fail(const std::string& words);
    void start_over();

    place at = place::head;
    answer_head current;
    std::string line;            // of a head, as far as it has come
    std::size_t head_bytes = 0;  // of all lines of this answer so far
    std::int64_t left = 0;       // of the body or the chunk
    bool bodiless = false;
    bool has_closing_word = false, has_keeping_word = false;
    int minor = 0;  // of HTTP/1.x
    std::string problem;
};
