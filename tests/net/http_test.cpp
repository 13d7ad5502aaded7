#include "net/http.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <tuple>

#include "net/proxy.h"
#include "runtime/log.h"
#include "runtime/xtim.h"
#include "support/alerts.h"
#include "support/scratch.h"
#include "support/scripted_peer.h"

class Http : public testing::Test {
  protected:
    void SetUp() override {
        signal(SIGPIPE, SIG_IGN);
        xer.open(dir / "Log.txt");
    }
    int check(const std::string& server, const std::string& path = "/x.zip", int slot = 2) {
        xtim.xtim_update();
        return http.net_check(slot, {server, path, local, most_bytes});
    }
    // As if the peer had been silent for more than half a minute.
    void grow_old(int slot = 2) { http.slots[slot]->last_data = xtim.real_time - 31; }
    // Until the result is final. A peer that has closed cannot send any more, so its silence is cut short.
    int fetch(const std::string& server, const std::string& path = "/x.zip", int slot = 2) {
        for (;;) {
            const int result = check(server, path, slot);
            if (result != net_running) return result;
            if (http.slots[slot] && http.slots[slot]->sock->ReceivedRelease())
                grow_old(slot);
            else
                http.wait(5000, -1);
        }
    }
    // Polls the running transfer of slot 2 until `there` holds.
    template <class condition>
    void run_until(const std::string& server, condition there) {
        for (;;) {
            ASSERT_EQ(check(server), net_running);
            if (http.slots[2] && there(*http.slots[2])) return;
            http.wait(5000, -1);
        }
    }
    std::string log() { return scratch::read(dir / "Log.txt"); }
    std::string got() { return scratch::read(local); }

    scratch dir;
    std::string local = dir / "got.zip";
    std::int64_t most_bytes = 0;
};

TEST_F(Http, TheRequestIsExact) {
    scripted_peer peer(script().send(http_reply("200 OK", "body")));
    EXPECT_EQ(fetch(peer.host(), "/a b#c/d.zip"), net_complete);
    EXPECT_EQ(peer.request(0), "GET /a%20b#c/d.zip HTTP/1.1\r\nConnection: close\r\nHost: " + peer.host() +
                                   "\r\nUser-agent: Installer-APL/a-19\r\n\r\n");
    EXPECT_EQ(got(), "body");
    EXPECT_EQ(log(), "");
    EXPECT_TRUE(http.wait(0, -1)) << "the next file need not wait";
    EXPECT_FALSE(http.wait(0, -1));
}

TEST_F(Http, AProxyTakesTheRequestAndTheHostIsNotLookedUp) {
    scripted_peer peer(script().send(http_reply("200 OK", "by proxy")));
    proxy.proxy_host = "127.0.0.1";
    proxy.proxy_port = peer.port();
    EXPECT_EQ(fetch("mirror...:8080"), net_complete);
    EXPECT_TRUE(
        peer.request(0).starts_with("GET http://mirror...:8080/x.zip HTTP/1.1\r\nConnection: close\r\nHost: "
                                    "mirror...:8080\r\n"));
    proxy.gProxyExclude = {"a longer text than the host...", "r..."};
    EXPECT_EQ(check("mirror...:8080"), net_failed);
    EXPECT_EQ(http.last_failure(), "mirror...:8080: host unknown for /x.zip");
    EXPECT_EQ(peer.request_count(), 1u);
}

TEST_F(Http, AnAnswerIsJudgedByStatusAndLength) {
    const std::string ok = "HTTP/1.1 200 OK\r\n", three = "Content-Length: 3\r\n\r\nabc";
    const struct {
        std::string answer;
        int result;
        std::string body, reason;  // what lies at the local path, what the failure says
    } rows[] = {
        {ok + three, 1, "abc", ""},
        {ok + "Content-Length: 0\r\n\r\n", 1, "", ""},
        {ok + "Content-Length: 3 \r\n\r\nabc", 1, "abc", ""},
        {ok + "Empty: \r\nNo colon\r\nContent-Length: 3\r\nContent-Length: 9\r\n\r\nabc", 1, "abc", ""},
        {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 206 Part\r\n" + three, 1, "abc", ""},
        {ok + "content-length: 3\r\n\r\nabc", 2, "abc", "closed early after 3 bytes of unknown length"},
        {ok + "Content-Length: 3x\r\n\r\nabc", 2, "abc", "closed early after 3 bytes of unknown length"},
        {ok + "Content-Length: -3\r\n\r\nabc", 2, "abc", "closed early after 3 bytes of unknown length"},
        {ok + "Content-Length: 18446744073709551619\r\n\r\nabc", 2, "abc", "closed early after 3 bytes of unknown"},
        {ok + "Content-Length: 10\r\n\r\nabc", 2, "abc", "closed early after 3 of 10 bytes"},
        {ok + "Content-Length: 2\r\n\r\nabc", 2, "abc", "sent 3 bytes where 2 were announced"},
        {"HTTP/1.1 204 No Content\r\n\r\n", 2, "", "closed early after 0 bytes"},
        {"HTTP/1.1 301 Moved\r\nLocation: /y\r\n" + three, 2, "abc", "301 Moved for /x.zip"},
        {"HTTP/1.1 404 Not Found\r\n" + three, 2, "abc", "404 Not Found for /x.zip"},
        {"HTTP/1.1 199 Odd\r\n" + three, 2, "untouched", "closed without an answer"},
        {"HTTP/1.1 200 \r\n" + three, 2, "untouched", "closed without an answer"},
        {"", 2, "untouched", "closed without an answer"},
        {ok + "Endless: " + std::string(100000, 'x'), 2, "untouched", "endless headers"},
    };
    int slot = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.answer.substr(0, 200));
        scripted_peer peer(script().send(row.answer).close());
        dir.write("got.zip", "untouched");
        slot = (slot + 1) % http_slot_count;  // a slot that fails again and again would pause
        EXPECT_EQ(fetch(peer.host(), "/x.zip", slot), row.result);
        EXPECT_EQ(got(), row.body);
        EXPECT_TRUE(row.result == net_complete || http.last_failure().find(row.reason) != std::string::npos);
        EXPECT_EQ(http.slots[slot], nullptr);
    }
}

TEST_F(Http, AFailureIsLoggedWithAllThatIsKnownAndSilenceIsNot) {
    scripted_peer peer(script().pause().send(http_reply("404 Not Found", "gone")));
    EXPECT_EQ(check(peer.host(), "/first.zip"), net_running);
    peer.go_on();
    // A caller that has moved on to another server still gets, and is told of, the transfer that it began.
    EXPECT_EQ(fetch("other", "/second.zip"), net_failed);
    EXPECT_EQ(http.last_failure(), peer.host() + ": 404 Not Found for /first.zip");
    const std::string block = "HTTP Error for " + local + "\n   server     =" + peer.host() +
                              "\n   file       =/first.zip\n   IsDone     =1\n   IsComplete =1\n   IsErr      =0\n"
                              "   GetStat    =3\n   GetOSErr   =0\n   response   =Not Found (#404)\n\n";
    EXPECT_EQ(log(), block);

    scripted_peer silent{script()};
    run_until(silent.host(), [](const down_class& d) { return d.GetStat() == 6; });
    http.slots[2]->last_data -= 29;
    EXPECT_EQ(check(silent.host()), net_running);
    grow_old();
    EXPECT_EQ(check(silent.host()), net_failed);
    EXPECT_EQ(http.last_failure(), silent.host() + ": no answer for 30 seconds for /x.zip");
    EXPECT_EQ(log(), block);
}

TEST_F(Http, AHostThatIsUnknownOrRefusesFailsAtOnce) {
    EXPECT_EQ(check("..."), net_failed);
    EXPECT_EQ(log().find("Translated server ... to IP addy: 0.0.0.0 and port = 80\nHTTP Error for "), 0u);
    EXPECT_NE(log().find("IsErr      =1\n   GetStat    =0\n   GetOSErr   =20011\n   response   = (#0)\n"),
              std::string::npos);
    const refusing_port nobody;
    EXPECT_EQ(fetch(nobody.host()), net_failed);
    EXPECT_EQ(http.last_failure(), nobody.host() + ": connection refused for /x.zip");
    EXPECT_EQ(fetch("127.0.0.1:99999"), net_failed);
    EXPECT_EQ(http.last_failure(), "127.0.0.1:99999: host unknown for /x.zip");
}

TEST_F(Http, AServerThatFailsAtOnceIsNotHammered) {
    const refusing_port nobody;
    int failures = 0;
    for (int hundredth = 0; hundredth < 1000; ++hundredth) {
        xtim.real_time = static_cast<float>(hundredth) * 0.01f;
        if (http.net_check(2, {nobody.host(), "/x.zip", local}) != net_failed) continue;
        ++failures;
        EXPECT_EQ(http.is_pausing(2), failures > 1) << "the first failure is tried again at once";
    }
    EXPECT_GE(failures, 10) << "ten seconds without a try a second";
    EXPECT_LE(failures, 16);
}

TEST_F(Http, ContentThatIsRefusedCountsAsAFailureAndSoDoesMoreThanIsWanted) {
    scripted_peer peer(script().send(http_reply("200 OK", "a lie")).close());
    for (int failures = 1; failures < 4; ++failures) {
        EXPECT_EQ(fetch(peer.host()), net_complete);
        http.reject(2, "a lie");
        EXPECT_EQ(http.is_pausing(2), failures > 1);
        EXPECT_EQ(http.last_failure(), peer.host() + ": a lie for /x.zip");
    }
    most_bytes = 5;
    EXPECT_EQ(fetch(peer.host(), "/x.zip", 3), net_complete);
    most_bytes = 4;
    EXPECT_EQ(fetch(peer.host(), "/x.zip", 3), net_failed);
    scripted_peer endless(script().send("HTTP/1.1 200 OK\r\n\r\nmore").pause().send("!"));
    most_bytes = 4;
    while (check(endless.host(), "/x.zip", 4) == net_running && http.slots[4]->received < 4)
        http.wait(5000, -1);
    endless.go_on();
    EXPECT_EQ(fetch(endless.host(), "/x.zip", 4), net_failed);
    EXPECT_NE(http.last_failure().find("more than the 4 bytes"), std::string::npos) << http.last_failure();
    EXPECT_EQ(got(), "more");
}

TEST_F(Http, AnAnswerCutAnywhereReadsTheSame) {
    const std::string answer =
        "HTTP/1.1 100 Continue\r\nA: b\r\n\r\nHTTP/1.1 200 OK\r\nEmpty: \r\nContent-Length: 4\r\n\r\nbody";
    for (std::size_t n = 1; n < answer.size(); ++n) {
        scripted_peer peer(script().send(answer.substr(0, n)).pause().send(answer.substr(n)));
        run_until(peer.host(), [](const down_class& d) { return !d.in_buf.empty() || d.status != -1; });
        peer.go_on();
        ASSERT_EQ(fetch(peer.host()), net_complete) << n;
        ASSERT_EQ(got(), "body") << n;
    }
}

TEST_F(Http, ATransferGoesThroughItsStatesUntilItIsReset) {
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 5000000000\r\nEmpty: \r\n\r\n";
    scripted_peer peer(script().pause().send(head + "some").pause().reset());
    const down_class fresh("127.0.0.1", peer.port(), "/x", true, {{"Host", peer.host()}}, "posted", 6, nullptr);
    EXPECT_EQ(fresh.GetStat(), 1);
    EXPECT_EQ(fresh.status, -1);
    EXPECT_EQ(std::string(fresh.out_buf.begin(), fresh.out_buf.end()),
              "POST /x HTTP/1.1\r\nHost: " + peer.host() + "\r\nContent-Length: 6\r\n\r\nposted");

    run_until(peer.host(), [](const down_class& d) { return d.GetStat() == 6; });
    peer.go_on();
    run_until(peer.host(), [](const down_class& d) { return d.GetStat() == 5; });
    const down_class& d = *http.slots[2];
    EXPECT_EQ(d.content_len, 5000000000);
    EXPECT_EQ(d.received, 4);
    EXPECT_EQ(d.headers.at("Empty"), "");
    EXPECT_EQ(got(), "some");
    EXPECT_FALSE(d.IsDone() || d.IsComplete() || d.IsErr());
    peer.go_on();
    EXPECT_EQ(fetch(peer.host()), net_failed);
    EXPECT_EQ(http.last_failure(), peer.host() + ": connection reset by peer after 4 of 5000000000 bytes for /x.zip");
}

TEST_F(Http, ADiskThatTakesNothingFailsTheTransfer) {
    scripted_peer peer(script().send(http_reply("200 OK", "a short body")));
    local = "/dev/full";
    EXPECT_EQ(fetch(peer.host()), net_failed);
    EXPECT_NE(http.last_failure().find("cannot write /dev/full: No space left on device"), std::string::npos);
    local = dir / "no such folder/x.zip";
    EXPECT_EQ(fetch(peer.host()), net_failed);
    EXPECT_NE(http.last_failure().find("/x.zip: No such file or directory"), std::string::npos);
}

TEST_F(Http, SixTransfersAtOnceDoNotMix) {
    const auto body = [](int slot) {
        return std::string(100000 + static_cast<std::size_t>(slot), static_cast<char>('a' + slot));
    };
    scripted_peer peer(
        [&](const std::string& request) { return script().send(http_reply("200 OK", body(request[5] - '0'))); });
    bool done[http_slot_count] = {};
    for (int open = http_slot_count; open > 0; http.wait(open > 0 ? 5000 : 0, -1)) {
        for (int slot = 0; slot < http_slot_count; ++slot) {
            if (done[slot]) continue;
            local = dir / std::to_string(slot);
            const int result = check(peer.host(), "/" + std::to_string(slot), slot);
            ASSERT_NE(result, net_failed);
            done[slot] = result == net_complete;
            open -= result;
        }
    }
    for (int slot = 0; slot < http_slot_count; ++slot)
        EXPECT_EQ(scratch::read(dir / std::to_string(slot)), body(slot));
    EXPECT_EQ(http.bytes_in(), 6 * 100000 + 15);
}

TEST_F(Http, WaitWakesForWhatHasToBeDoneAndForNothingElse) {
    EXPECT_FALSE(http.wait(1, -1));
    const std::string reply = http_reply("200 OK", std::string(1000000, 'b'));
    scripted_peer peer(script().pause().send(reply.substr(0, 900000)).close());
    run_until(peer.host(), [](const down_class& d) { return d.GetStat() == 6; });
    const down_class& d = *http.slots[2];
    const auto look = [&d] {
        return std::make_tuple(d.GetStat(), d.in_buf.size(), d.received, d.sock->ReceivedRelease());
    };
    peer.request(0);
    EXPECT_FALSE(http.wait(20, -1));
    peer.go_on();
    while (!d.sock->ReceivedRelease()) {
        const auto before = look();
        ASSERT_TRUE(http.wait(5000, -1));
        ASSERT_EQ(check(peer.host()), net_running);
        ASSERT_NE(look(), before) << "woken for nothing";
    }
    EXPECT_FALSE(http.wait(20, -1));
    int wake[2];
    ASSERT_EQ(pipe(wake), 0);
    ASSERT_EQ(write(wake[1], "!", 1), 1);
    EXPECT_TRUE(http.wait(5000, wake[0]));
    close(wake[0]);
    close(wake[1]);
}

TEST_F(Http, MistakenCallsAreFatal) {
    alert_catcher alerts;
    for (const int slot : {-1, 6}) {
        EXPECT_THROW(check("a", "/x", slot), left);
        EXPECT_EQ(alerts.last().find("Too many download objects requested!\n\n\n\n"), 0u);
    }
    EXPECT_THROW(check("host/"), left);
    EXPECT_NE(alerts.last().find("a server name is simply a server name... with no slash!\nhost/"), std::string::npos);
    EXPECT_THROW(check("host", "x"), left);
    EXPECT_NE(alerts.last().find("hard drive,which is a dir char on unix!\nx"), std::string::npos);
}

TEST(HostPort, IsSplitOnlyWhereItIsAPort) {
    const struct {
        std::string text, name;
        int port;
        bool valid;
    } rows[] = {
        {"host", "host", 80, true},      {"host:8080", "host", 8080, true},       {":80", "", 80, false},
        {"host:0", "host:0", 80, false}, {"host:65536", "host:65536", 80, false}, {"host:+8", "host:+8", 80, false},
        {"host:", "host:", 80, false},   {"host/x", "host/x", 80, false},         {"a b", "a b", 80, false},
    };
    for (const auto& row : rows) {
        unsigned short port = 80;
        EXPECT_EQ(split_host_port(row.text, port), row.name);
        EXPECT_EQ(port, row.port) << row.text;
        EXPECT_EQ(host_port_is_valid(row.text), row.valid) << row.text;
    }
}
