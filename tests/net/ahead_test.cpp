// What is asked ahead on kept connections, of servers that bear it and of those that do not.
#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <set>

#include "net/http.h"
#include "runtime/log.h"
#include "runtime/xtim.h"
#include "support/scratch.h"
#include "support/scripted_peer.h"

class Ahead : public testing::Test {
  protected:
    void SetUp() override {
        signal(SIGPIPE, SIG_IGN);
        unsetenv("http_proxy");
        xer.open(dir / "Log.txt");
    }
    static std::string path(int file) { return "/" + std::to_string(file) + ".zip"; }
    // Of a length of its own, so that one file can be told from another by it.
    static std::string content(int file) {
        return std::to_string(file) + ":" + std::string(static_cast<std::size_t>(2500 * (file % 7)), 'x');
    }
    static int file_of(const std::string& request) { return std::stoi(request.substr(5)); }
    static std::string answer(const std::string& request) { return http_reply("200 OK", content(file_of(request))); }
    http_request wanted(const std::string& server, int file) const {
        return {server, path(file), "", 100'000, path(file), std::ssize(content(file))};
    }
    // Two answers on one connection, as a list and a catalogue give.
    void prove(const std::string& server) {
        for (int slot : {0, 1})
            while (http.net_check(slot, {server, path(slot), dir / "proof", 0}) == net_running)
                http.wait(5000, -1);
    }
    // As an engine does: four slots walk through the files, and what comes next is announced. What comes and is not the
    // file counts as refused. `tick`: seconds that pass at every look, where it is not the clock's own time.
    void fetch_all(const std::string& server, int files, float tick = 0) {
        int next = 2, announced = 2, at[4] = {-1, -1, -1, -1};
        for (int done = 2; done < files; http.wait(tick > 0 ? 20 : 1000, -1)) {
            tick > 0 ? void(xtim.real_time += tick) : xtim.xtim_update();
            for (; announced < files && http.wants_announcements(); ++announced)
                http.announce(wanted(server, announced));
            for (int s = 0; s < 4; ++s) {
                if (at[s] < 0 && next < files) at[s] = next++;
                if (at[s] < 0) continue;
                http_request request = wanted(server, at[s]);
                request.local = dir / std::to_string(s);
                const int result = http.net_check(slot_first_stream + s, request);
                if (result == net_failed) ++failed;
                if (result != net_complete) continue;
                if (scratch::read(request.local) == content(at[s])) {
                    ++done;
                    at[s] = -1;
                } else if (!http.reject(slot_first_stream + s, "wrong")) {
                    ++refused;
                }
            }
            ASSERT_LT(failed + refused, 50) << http.last_failure();
        }
    }
    int failed = 0, refused = 0;
    scratch dir;
};

TEST_F(Ahead, ManyFilesTakeFewConnectionsAndNoAnswerIsWaitedFor) {
    // Answers only once eight requests are there: whoever asks one by one waits for ever.
    int waiting = 0;
    std::string held;
    scripted_peer peer([&](const std::string& request) {
        if (file_of(request) < 2) return script().send(answer(request));
        held += answer(request);
        if (++waiting % 8 != 0) return script();
        return script().send(std::exchange(held, {}));
    });
    prove(peer.host());
    http.most_lines = 1;
    fetch_all(peer.host(), 2 + 64);
    EXPECT_EQ(failed + refused, 0);
    EXPECT_EQ(peer.connection_count(), 1u);
    EXPECT_EQ(peer.request_count(), 66u);
}

TEST_F(Ahead, NoServerIsAskedAheadBeforeItGaveTwoAnswersOnAConnection) {
    scripted_peer peer([&](const std::string&) { return script(); });
    for (int file = 0; file < 20; ++file)
        http.announce(wanted(peer.host(), file));
    http_request first = wanted(peer.host(), 0);
    first.local = dir / "0";
    http.net_check(2, first);
    peer.request(0);
    for (int look = 0; look < 20; ++look)
        http.wait(2, -1);
    EXPECT_EQ(peer.request_count(), peer.connection_count());
    EXPECT_LE(peer.connection_count(), 4u);
    EXPECT_EQ(http.announced(path(19)), nullptr);
    http.forget_announced(true);
    EXPECT_EQ(http.announced(path(1)), nullptr);
}

TEST_F(Ahead, WhatServersDoToARowOfRequestsCostsNoFile) {
    std::map<int, int> asked;  // by file
    int on_connection = 0;     // answers since the last close
    const struct {
        const char* what;
        std::function<script(const std::string&)> answers;
        float tick;
        std::size_t most_requests;  // for 60 files
    } servers[] = {
        {"closes after every answer, once it is asked ahead",
         [&](const std::string& request) {
             script played = script().send(answer(request));
             return ++on_connection > 2 ? played.close() : played;
         },
         0, 160},
        {"swallows what is behind the first request",
         [&](const std::string& request) {
             // As an old proxy does, which forgets what it has read beyond a request's end.
             return ++on_connection > 6 && ++asked[file_of(request)] == 1 && on_connection < 40
                        ? script()
                        : script().send(answer(request));
         },
         1.5f, 250},
    };
    for (const auto& server : servers) {
        SCOPED_TRACE(server.what);
        asked.clear();
        on_connection = failed = refused = 0;
        scripted_peer peer(server.answers);
        prove(peer.host());
        fetch_all(peer.host(), 62, server.tick);
        EXPECT_LE(failed + refused, 3) << http.last_failure();
        EXPECT_LE(peer.request_count(), server.most_requests);
        http.forget_announced(true);
    }
}

TEST_F(Ahead, AFileThatIsWrongHoweverItIsAskedForEndsNoAskingAhead) {
    host_traits host;
    host.proven = true;
    EXPECT_TRUE(note_wrong_file(host, "/9", false)) << "the server may have lost count";
    EXPECT_FALSE(host.bears_asking_ahead());
    EXPECT_FALSE(note_wrong_file(host, "/8", true)) << "another file proves nothing";
    EXPECT_FALSE(host.bears_asking_ahead());
    EXPECT_TRUE(note_wrong_file(host, "/9", false));
    EXPECT_FALSE(note_wrong_file(host, "/9", true)) << "it has not";
    EXPECT_TRUE(host.bears_asking_ahead());
}
