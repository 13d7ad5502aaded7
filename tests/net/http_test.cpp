#include "net/http.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>

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
        for (const char* name : {"http_proxy", "https_proxy", "no_proxy", "HTTPS_PROXY", "NO_PROXY"})
            unsetenv(name);
        xer.open(dir / "Log.txt");
    }
    // `name` as an engine would give it: the same for one file on any server.
    int check(const std::string& server, const std::string& path = "/x.zip", int slot = 2) {
        xtim.xtim_update();
        return http.net_check(slot, {server, path, local, most_bytes, path.substr(path.rfind('/')), about_bytes, false,
                                     false, elsewhere});
    }
    // As if the peer had been silent for more than half a minute.
    void grow_old(int slot = 2) { http.slots[slot]->last_data = xtim.real_time - 31; }
    int fetch(const std::string& server, const std::string& path = "/x.zip", int slot = 2) {
        for (;;) {
            const int result = check(server, path, slot);
            if (result != net_running) return result;
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
    std::int64_t most_bytes = 0, about_bytes = -1;
    bool elsewhere = false;
};

// The value of a header of a request.
static std::string header(const std::string& request, const std::string& name) {
    const std::size_t at = request.find("\r\n" + name + ": ");
    if (at == std::string::npos) return "";
    const std::size_t value = at + name.size() + 4;
    return request.substr(value, request.find("\r\n", value) - value);
}

static std::string path_of(const std::string& request) {
    return request.substr(4, request.find(' ', 4) - 4);
}

TEST_F(Http, TheRequestIsExactAndTheConnectionIsKept) {
    scripted_peer peer(script().send(http_reply("200 OK", "body")));
    for (int time = 0; time < 3; ++time)
        EXPECT_EQ(fetch(peer.host(), "/a b#c/%d?\xc3\xbc.zip"), net_complete);
    EXPECT_EQ(peer.request(2), "GET /a%20b%23c/%25d%3F%C3%BC.zip HTTP/1.1\r\nConnection: keep-alive\r\nHost: " +
                                   peer.host() + "\r\nUser-agent: Installer-APL/a-19\r\n\r\n");
    EXPECT_EQ(peer.connection_count(), 1u);
    EXPECT_EQ(got(), "body");
    EXPECT_EQ(log(), "");
    EXPECT_TRUE(http.wait(0, -1)) << "the next file need not wait";
    EXPECT_FALSE(http.wait(0, -1));
    http.net_check(0, {peer.host(), "/list", local, 0, "", -1, true});
    EXPECT_EQ(header(peer.request(3), "Cache-Control"), "no-cache");
}

TEST_F(Http, AProxyIsForTheHostsThatAreNotExcluded) {
    const struct {
        std::string setting, environment, none;
        bool by_proxy;
        std::string wrong;
    } rows[] = {
        {"127.0.0.1", "", "other", true, ""},
        {"", "http://127.0.0.1:8080/", "irror...", true, ""},
        {"", "127.0.0.1:8080", "x, .mirror...", false, ""},
        {"127.0.0.1", "", "*", false, ""},
        {"", "gopher://x", "", true, "the proxy gopher://x begins with"},
    };
    for (const auto& row : rows) {
        proxy.proxy_host = row.setting;
        proxy.proxy_port = row.setting.empty() ? 0 : 8080;
        setenv("http_proxy", row.environment.c_str(), 1);
        setenv("no_proxy", row.none.c_str(), 1);
        server_address server;
        route_t way;
        std::string why;
        EXPECT_EQ(read_server_address("mirror...:8080", server), "");
        EXPECT_EQ(route_to(server, way, why), row.wrong.empty()) << why;
        EXPECT_EQ(way.by_proxy, row.by_proxy) << row.setting << " " << row.environment << " " << row.none;
        EXPECT_NE(why.find(row.wrong), std::string::npos) << why;
    }
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
        {ok + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n", 1, "abc", ""},
        {"HTTP/1.1 203 Other\r\n" + three, 1, "abc", ""},
        {ok + "\r\nabc", 2, "untouched", "closed early after 3 bytes of unknown length"},
        {ok + "Content-Length: 3x\r\n\r\nabc", 2, "untouched", "sent a length that is none"},
        {ok + "Content-Length: 10\r\n\r\nabc", 2, "untouched", "closed early after 3 of 10 bytes"},
        {ok + "Content-Length: 2\r\n\r\nabc", 2, "untouched", "sent more than the 2 bytes that it announced"},
        {"HTTP/1.1 206 Part\r\nContent-Range: bytes 0-2/3\r\n" + three, 2, "untouched", "206 Part"},
        {"HTTP/1.1 304 Same\r\n\r\n", 2, "untouched", "304 Same"},
        {"HTTP/1.1 301 Moved\r\n" + three, 2, "untouched", "301 Moved for /x.zip"},
        {"HTTP/1.0 407 Who are you?\r\n\r\npage", 2, "untouched", "407 Who are you? for /x.zip"},
        {"HTTP/1.1 404 Not Found\r\n" + three, 2, "untouched", "404 Not Found for /x.zip"},
        {"", 2, "untouched", "closed without an answer"},
    };
    int slot = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.answer.substr(0, 200));
        scripted_peer peer(script().send(row.answer).close());
        dir.write("got.zip", "untouched");
        slot = (slot + 1) % http_slot_count;  // a slot that fails again and again would pause
        EXPECT_EQ(fetch(peer.host(), "/x.zip", slot), row.result);
        EXPECT_EQ(got(), row.body);
        EXPECT_TRUE(row.result == net_complete || http.last_failure().find(row.reason) != std::string::npos)
            << http.last_failure();
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
                              "\n   file       =/first.zip\n   IsDone     =1\n   IsComplete =0\n   IsErr      =0\n"
                              "   GetStat    =3\n   GetOSErr   =0\n   response   =Not Found (#404)\n\n";
    EXPECT_EQ(log(), block);

    scripted_peer silent{script()};
    run_until(silent.host(), [](const down_class& d) { return d.GetStat() == down_waiting; });
    http.slots[2]->last_data -= 29;
    EXPECT_EQ(check(silent.host()), net_running);
    grow_old();
    EXPECT_EQ(fetch(silent.host()), net_failed);
    EXPECT_EQ(http.last_failure(), silent.host() + ": no answer for 30 seconds for /x.zip");

    scripted_peer drips(script().send("HTTP/1.1 200 OK\r\nContent-Length: 900000\r\n\r\n" + std::string(29'000, 'x')));
    for (const bool other : {false, true}) {
        elsewhere = other;
        local = dir / (other ? "b" : "a");
        const std::string path = other ? "/b" : "/a";
        while (check(drips.host(), path) == net_running && !(http.slots[2] && http.slots[2]->came >= 29'000))
            http.wait(5000, -1);
        http.slots[2]->watched_since -= 31;
        http.slots[2]->came_before = 0;
        if (other) {
            EXPECT_EQ(fetch(drips.host(), path), net_failed);
        } else {
            for (int look = 0; look < 3; ++look)
                EXPECT_EQ(check(drips.host(), path), net_running) << "the only server is better than none";
            http.slots[2].reset();
        }
    }
    EXPECT_NE(http.last_failure().find("slower than a kilobyte a second"), std::string::npos);
    EXPECT_EQ(log(), block);
}

TEST_F(Http, AHostThatIsUnknownOrRefusesFailsAtOnce) {
    EXPECT_EQ(fetch("..."), net_failed);
    EXPECT_EQ(http.last_failure(), "...: host unknown for /x.zip");
    EXPECT_NE(log().find("GetStat    =2\n   GetOSErr   =20011\n   response   = (#0)\n"), std::string::npos) << log();
    const refusing_port nobody;
    EXPECT_EQ(fetch(nobody.host()), net_failed);
    EXPECT_EQ(http.last_failure(), nobody.host() + ": connection refused for /x.zip");
    scripted_peer breaks_off(script().reset());
    EXPECT_EQ(fetch(breaks_off.host(), "/x.zip", 3), net_failed);
    EXPECT_EQ(http.last_failure(), breaks_off.host() + ": connection reset by peer for /x.zip");
    EXPECT_EQ(fetch("127.0.0.1:99999"), net_failed);
    EXPECT_EQ(http.last_failure(),
              "127.0.0.1:99999: this server has a port that is no number of 1 to 65535 for /x.zip");
}

TEST_F(Http, ContentThatIsRefusedCountsAsAFailureAndSoDoesMoreThanIsWanted) {
    scripted_peer peer(script().send(http_reply("200 OK", "a lie")).close());
    for (int failures = 1; failures < 4; ++failures) {
        EXPECT_EQ(fetch(peer.host()), net_complete);
        EXPECT_FALSE(http.reject(2, "a lie"));
        EXPECT_EQ(http.is_pausing(2), failures > 1);
        EXPECT_EQ(http.last_failure(), peer.host() + ": a lie for /x.zip");
    }
    most_bytes = 5;
    EXPECT_EQ(fetch(peer.host(), "/x.zip", 3), net_complete);
    most_bytes = 4;
    EXPECT_EQ(fetch(peer.host(), "/x.zip", 3), net_failed);
    scripted_peer endless(script().send("HTTP/1.1 200 OK\r\n\r\nmore").pause().send("!"));
    while (check(endless.host(), "/x.zip", 4) == net_running && http.slots[4]->received < 4)
        http.wait(5000, -1);
    endless.go_on();
    EXPECT_EQ(fetch(endless.host(), "/x.zip", 4), net_failed);
    EXPECT_NE(http.last_failure().find("more than the 4 bytes"), std::string::npos) << http.last_failure();
}

TEST_F(Http, ADiskThatTakesNothingFailsTheTransfer) {
    scripted_peer peer(script().send(http_reply("200 OK", "a short body")));
    scripted_peer large(script().send(http_reply("200 OK", std::string(most_held_bytes + 1, 'x'))));
    local = "/dev/full";
    for (const scripted_peer* server : {&peer, &large}) {
        EXPECT_EQ(fetch(server->host()), net_failed);
        EXPECT_NE(http.last_failure().find("cannot write /dev/full: No space left on device"), std::string::npos);
        EXPECT_EQ(http.last_disk_failure(), ENOSPC);
    }
    local = dir / "no such folder/x.zip";
    EXPECT_EQ(fetch(peer.host()), net_failed);
    EXPECT_NE(http.last_failure().find("/x.zip: No such file or directory"), std::string::npos);
}

TEST_F(Http, RedirectsAreFollowedAsFarAsIsSafe) {
    scripted_peer other(
        [](const std::string& request) { return script().send(http_reply("200 OK", "from " + path_of(request))); });
    const struct {
        std::string location, result;  // what came, or why nothing did
    } rows[] = {
        {"/y", "from /a/b/y"},  // by way of the peer itself
        {"z.zip?x=%20#part", "from /a/b/z.zip?x=%20"},
        {"http://" + other.host() + "/c d", "from /c%20d"},
        {"//" + other.host(), "from /"},
        {"/round", "sent on more than 5 times"},
        {"/y\r\nContent-Length: 10000000", "from /a/b/y"},
        {"ftp://x/y", "begins with \"ftp://\""},
        {"http://127.0.0.1:0/", "no number"},
    };
    int slot = 0;
    for (const auto& row : rows) {
        const std::string moved = "HTTP/1.1 302 Moved\r\nLocation: ";
        scripted_peer peer([&](const std::string& request) {
            const std::string path = path_of(request);
            const bool odd = row.location.find("Content") != std::string::npos;
            if (path == "/a/b/x.zip" || path == "/round")
                return script().send(moved + row.location + (odd ? "" : "\r\nContent-Length: 4") + "\r\n\r\npage");
            return script().send(http_reply("200 OK", "from " + (path == "/y" ? "/a/b/y" : path)));
        });
        slot = (slot + 1) % http_slot_count;
        if (fetch(peer.host(), "/a/b/x.zip", slot) == net_complete)
            EXPECT_EQ(got(), row.result);
        else
            EXPECT_NE(http.last_failure().find(row.result), std::string::npos) << http.last_failure();
    }
}

// What a server does with a transfer that broke off after "01234" of ten bytes.
TEST_F(Http, ABrokenTransferGoesOnWhereItStopped) {
    const std::string whole = "0123456789", head = "HTTP/1.1 206 Part\r\n", rest = "\r\n\r\n56789";
    const std::string fits = "Content-Range: bytes 5-9/10\r\nContent-Length: 5" + rest;
    const struct {
        const char* what;
        bool same_server;
        std::string answer;  // to the second request; the third gets the whole
        std::size_t requests;
        bool again;  // refused content is asked for once more
    } rows[] = {
        {"a range of the same server", true, head + fits, 2, true},
        {"a range of another server", false, head + fits, 2, true},
        {"the whole file", true, http_reply("200 OK", whole), 2, false},
        {"another range", true, head + "Content-Range: bytes 4-8/10\r\nContent-Length: 5" + rest, 3, false},
        {"another length", true, head + "Content-Range: bytes 5-9/11\r\nContent-Length: 5" + rest, 3, false},
        {"no such range", true, "HTTP/1.1 416 No\r\nContent-Range: bytes */10\r\nContent-Length: 0\r\n\r\n", 3, false},
        {"a range in two parts", true, head + "Content-Range: bytes 5-6/10\r\nContent-Length: 2\r\n\r\n56", 3, true},
    };
    int slot = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto first = script().send("HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: 10\r\n\r\n01234").close();
        int asked = 0;
        const auto answer = [&](const std::string& request) {
            switch (++asked) {
                case 1:
                    return first;
                case 2:
                    return script().send(row.answer);
                default:
                    if (header(request, "Range") == "bytes=7-")
                        return script().send(head + "Content-Range: bytes 7-9/10\r\nContent-Length: 3\r\n\r\n789");
                    return script().send(http_reply("200 OK", whole));
            }
        };
        scripted_peer one(answer), two(answer);
        slot = (slot + 1) % http_slot_count;
        EXPECT_EQ(fetch(one.host(), "/x.zip", slot), net_failed);
        scripted_peer& next = row.same_server ? one : two;
        EXPECT_EQ(fetch(next.host(), "/" + std::to_string(slot) + "/x.zip", slot), net_complete);
        EXPECT_EQ(got(), whole);
        EXPECT_EQ(asked, static_cast<int>(row.requests));
        const std::string second = next.request(row.same_server ? 1 : 0);
        EXPECT_EQ(header(second, "Range"), "bytes=5-");
        EXPECT_EQ(header(second, "If-Range"), row.same_server ? "\"v1\"" : "") << "a tag is its server's own";
        EXPECT_EQ(http.reject(slot, "wrong"), row.again) << "what was put together is fetched once more";
        if (!row.again) continue;
        EXPECT_EQ(fetch(next.host(), "/x.zip", slot), net_complete);
        EXPECT_EQ(header(next.request(next.request_count() - 1), "Range"), "");
        EXPECT_FALSE(http.reject(slot, "wrong"));
    }
}

TEST_F(Http, ALargeFileGoesOnInItsFile) {
    const std::string whole = std::string(most_held_bytes, 'a') + std::string(most_held_bytes, 'b');
    int breaks = 10;
    scripted_peer peer([&](const std::string& request) {
        const std::string range = header(request, "Range");
        const std::size_t from = range.empty() ? 0 : std::stoul(range.substr(6)), end = whole.size();
        const std::string part = "206 Part\r\nContent-Range: bytes " + std::to_string(from) + "-" +
                                 std::to_string(end - 1) + "/" + std::to_string(end);
        const std::string reply = http_reply(from ? part : "200 OK", whole.substr(from));
        if (breaks-- <= 0) return script().send(reply);
        return script().send(reply.substr(0, reply.size() - (end - from) * 4 / 5)).close();
    });
    int failures = 0;
    while (fetch(peer.host(), "/x.zip", failures % http_slot_count) == net_failed)
        ++failures;
    EXPECT_EQ(failures, 10);
    EXPECT_EQ(got(), whole);
    EXPECT_EQ(http.bytes_in(), std::ssize(whole)) << "nothing came twice";
    // Another file in its place does not go on with what lies there.
    breaks = 2;  // the first on a kept connection, which is no failure yet
    EXPECT_EQ(fetch(peer.host()), net_failed);
    EXPECT_EQ(fetch(peer.host(), "/other.zip"), net_complete);
    EXPECT_EQ(header(peer.request(peer.request_count() - 1), "Range"), "");
    EXPECT_EQ(got(), whole);
}

TEST_F(Http, WaitWakesForWhatHasToBeDoneAndForNothingElse) {
    EXPECT_FALSE(http.wait(1, -1));
    const std::string reply = http_reply("200 OK", std::string(900000, 'b'));
    scripted_peer peer(script().pause().send(reply.substr(0, 800000)).pause().send(reply.substr(800000)));
    run_until(peer.host(), [](const down_class& d) { return d.GetStat() == down_waiting; });
    const down_class& d = *http.slots[2];
    peer.request(0);
    EXPECT_FALSE(http.wait(20, -1));
    peer.go_on();
    while (d.received < 799000) {
        const auto before = d.received;
        ASSERT_TRUE(http.wait(5000, -1));
        ASSERT_EQ(check(peer.host()), net_running);
        ASSERT_TRUE(d.received > before || d.GetStat() == down_body) << "woken for nothing";
    }
    EXPECT_FALSE(http.wait(20, -1));
    int wake[2];
    ASSERT_EQ(pipe(wake), 0);
    ASSERT_EQ(write(wake[1], "!", 1), 1);
    EXPECT_TRUE(http.wait(5000, wake[0]));
    close(wake[0]);
    close(wake[1]);
    peer.go_on();
    EXPECT_EQ(fetch(peer.host()), net_complete);
    // A kept connection that its server ends does not wake a pool that has nothing to do again and again.
    http.wait(0, -1);
    EXPECT_FALSE(http.wait(20, -1));
}

TEST_F(Http, MistakenCallsAreFatal) {
    alert_catcher alerts;
    EXPECT_THROW(check("a", "/x", -1), left);
    EXPECT_THROW(check("a", "/x", http_slot_count), left);
    EXPECT_THROW(check("host/"), left);
    EXPECT_THROW(http.net_check(2, {"host", "x", local}), left);
}
