#include "net/answer.h"

#include <gtest/gtest.h>

// What a connection's bytes are read as, in one line: "200 OK [body] |" for each answer, with what else its head tells.
static std::string read_all(std::string_view bytes, std::size_t cut, bool bodiless = false) {
    answer_reader reader;
    if (bodiless) reader.expect_no_body();
    std::string seen;
    bool in_body = false;
    std::string_view parts[] = {bytes.substr(0, cut), bytes.substr(cut)}, piece;
    for (std::string_view& part : parts) {
        for (auto step = answer_reader::step::head; step != answer_reader::step::more;) {
            step = reader.next(part, piece);
            if (step == answer_reader::step::head) {
                const answer_head& head = reader.head();
                seen += std::to_string(head.status) + " " + head.reason + (head.keeps ? " keeps" : "");
                if (head.range_first >= 0 || head.range_total >= 0)
                    seen += " " + std::to_string(head.range_first) + "-" + std::to_string(head.range_last) + "/" +
                            std::to_string(head.range_total);
                seen += head.etag + head.location + " [";
                in_body = true;
            } else if (step == answer_reader::step::body) {
                seen += piece;
            } else if (step == answer_reader::step::end) {
                seen += "] | ";
                in_body = false;
            } else if (step == answer_reader::step::broken) {
                return seen + "broken: " + reader.why();
            }
        }
    }
    return seen + (in_body || reader.begun() ? "..." : "");
}

TEST(Answer, SequencesReadTheSameHoweverTheyAreCut) {
    const std::string ok = "HTTP/1.1 200 OK\r\n", three = "Content-Length: 3\r\n\r\nabc",
                      in_chunks = ok + "Transfer-Encoding: chunked\r\n\r\n";
    const struct {
        std::string bytes, seen;
    } rows[] = {
        {ok + three + ok + "content-LENGTH:\t4 \r\n\r\nmore", "200 OK keeps [abc] | 200 OK keeps [more] | "},
        {ok + "Content-Length: 0\r\n\r\n\r\nHTTP/1.1 404\r\n" + three, "200 OK keeps [] | 404  keeps [abc] | "},
        {ok + "Connection: x, Close\r\n" + three, "200 OK [abc] | "},
        {"HTTP/1.0 200 OK\r\n" + three, "200 OK [abc] | "},
        {"HTTP/1.0 200 OK\r\nConnection: Keep-Alive\r\n" + three, "200 OK keeps [abc] | "},
        {"HTTP/1.1 100 Continue\r\nConnection: close\r\n\r\n" + ok + three, "200 OK keeps [abc] | "},
        {"HTTP/1.1 204 None\r\nContent-Length: 3\r\n\r\n" + ok + three, "204 None keeps [] | 200 OK keeps [abc] | "},
        {"HTTP/1.1 200 OK\n"
         "Content-Length: 3\n\nabc",
         "200 OK keeps [abc] | "},
        // What only the end of the connection would end is never whole.
        {ok + "\r\nabc", "200 OK [abc..."},
        {ok + "Content-Length: 5\r\n\r\nabc", "200 OK keeps [abc..."},
        {in_chunks + "3;x=y\r\nabc\r\n0A\r\n0123456789\r\n0\r\nTrailer: x\r\n\r\n" + ok + three,
         "200 OK keeps [abc0123456789] | 200 OK keeps [abc] | "},
        {ok + "Content-Length: 9\r\nTransfer-Encoding: chunked\r\n\r\n1\r\nx\r\n0\r\n\r\n", "200 OK [x] | "},
        {in_chunks + "ffffffffffffffff\r\n", "200 OK keeps [broken: a chunk without a length"},
        {in_chunks + "-1\r\n", "200 OK keeps [broken: a chunk without a length"},
        {in_chunks + "1\r\nxy\r\n", "200 OK keeps [xbroken: a chunk that does not end"},
        {ok + "Transfer-Encoding: gzip\r\n\r\n", "broken: a transfer coding that I did not ask for"},
        {ok + "Content-Length: 3\r\nContent-Length: 4\r\n\r\nabc", "broken: a length that is none"},
        {ok + "Content-Length: -3\r\n\r\nabc", "broken: a length that is none"},
        {ok + "Content-Length: 18446744073709551619\r\n\r\nabc", "broken: a length that is none"},
        {"SSH-2.0-x\r\n", "broken: something that is no answer"},
        {"HTTP/2 200 OK\r\n", "broken: something that is no answer"},
        {"HTTP/1.1 2000 OK\r\n", "broken: something that is no answer"},
        {"HTTP/1.1 101 Switching\r\n\r\n", "broken: another protocol"},
        {"HTTP/1.1 206 Part\r\nContent-Range: bytes 5-7/12\r\nETag: \"a\"\r\n" + three,
         "206 Part keeps 5-7/12\"a\" [abc] | "},
        {"HTTP/1.1 206 Part\r\nContent-Range: bytes 5-7/*\r\nETag: W/\"a\"\r\n" + three,
         "206 Part keeps 5-7/-1 [abc] | "},
        {"HTTP/1.1 416 No\r\nContent-Range: bytes */12\r\n" + three, "416 No keeps -1--1/12 [abc] | "},
        {"HTTP/1.1 302 Go\r\nLocation: http://b/c d\r\nContent-Length: 0\r\n\r\n", "302 Go keepshttp://b/c d [] | "},
    };
    for (const auto& row : rows)
        for (std::size_t cut = 0; cut <= row.bytes.size(); ++cut)
            ASSERT_EQ(read_all(row.bytes, cut), row.seen) << row.bytes << " cut at " << cut;
    EXPECT_EQ(read_all("HTTP/1.1 200 Go\r\nContent-Length: 9\r\n\r\n", 0, true), "200 Go keeps [] | ");
}

TEST(Answer, HeadsHaveAnEnd) {
    const std::string ok = "HTTP/1.1 200 OK\r\n", endless = "broken: endless headers";
    std::string lines = ok;
    while (lines.size() <= max_header_bytes)
        lines += "A: b\r\n";
    EXPECT_EQ(read_all(lines, 1000), endless);
    EXPECT_EQ(read_all(ok + std::string(max_header_bytes, 'x'), 1000), endless);
    EXPECT_EQ(read_all(std::string(max_header_bytes + 3, '\n'), 1000), endless);
    EXPECT_EQ(read_all(ok + "Transfer-Encoding: chunked\r\n\r\n0\r\n" + lines, 1000), "200 OK keeps [" + endless);
}
