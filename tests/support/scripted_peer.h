// scripted_peer.h: an HTTP peer on a free port of 127.0.0.1 that does exactly what a test says, however wrong. For
// every connection it reads a request up to the blank line and plays a script, again and again.
// Nothing is timed: where order matters a script pauses until the test calls go_on.
// Threads: one for each connection; the destructor breaks off what is under way and joins them all.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// A script that runs out keeps its connection open for the next request.
class script {
  public:
    script& send(const std::string& bytes) { return add('s', bytes); }
    script& pause() { return add('p'); }  // until one go_on
    script& close() { return add('c'); }
    script& reset() { return add('r'); }

  private:
    friend class scripted_peer;
    struct step {
        char what;
        std::string bytes;
    };
    script& add(char what, const std::string& bytes = {}) {
        steps.push_back({what, bytes});
        return *this;
    }
    std::vector<step> steps;
};

// A whole answer: status line, Content-Length, blank line, body.
std::string http_reply(const std::string& status, const std::string& body);

class scripted_peer {
  public:
    // Called on the connections' threads, one at a time.
    explicit scripted_peer(std::function<script(const std::string& request)> answer);
    explicit scripted_peer(const script& always);
    ~scripted_peer();
    scripted_peer(const scripted_peer&) = delete;
    scripted_peer& operator=(const scripted_peer&) = delete;

    unsigned short port() const { return number; }
    std::string host() const;            // "127.0.0.1:PORT"
    std::string request(std::size_t n);  // the n-th request, from 0; waits for it
    std::size_t request_count();
    std::size_t connection_count();  // so far
    void go_on();

  private:
    struct connection {
        int fd;
        std::thread thread;
    };
    void accept_all();
    void serve(connection& c);
    bool play(connection& c, const script::step& s);
    void end(connection& c, bool with_reset);

    std::function<script(const std::string&)> answer;
    int listener = -1;
    unsigned short number = 0;
    std::mutex mutex;  // guards all that follows
    std::condition_variable changed;
    std::deque<connection> connections;
    std::vector<std::string> requests;
    int permits = 0;
    bool stopping = false;
    std::thread acceptor;
};

// A port of 127.0.0.1 that refuses connections for as long as this lives.
class refusing_port {
  public:
    refusing_port();
    ~refusing_port();
    refusing_port(const refusing_port&) = delete;
    refusing_port& operator=(const refusing_port&) = delete;
    unsigned short port() const { return number; }
    std::string host() const;

  private:
    unsigned short number = 0;
    int fd;
};
