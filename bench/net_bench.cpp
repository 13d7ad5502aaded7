// net_bench.cpp: what the pool of transfers can carry on the loopback: bytes a second of one big file, and files a second
// of small ones over four streams, as an install of many files has them.
//   net_bench [MEGABYTES [FILES]]
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "net/http.h"
#include "runtime/xtim.h"
#include "support/scratch.h"
#include "support/scripted_peer.h"

static double seconds_since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Fetches `files` files over `streams` slots; returns how often the pool was polled, or -1 when a transfer failed.
static long fetch_all(const std::string& host, const std::string& folder, int files, int streams) {
    long polls = 0;
    for (int left = files; left > 0;) {
        xtim.xtim_update();
        for (int slot = 0; slot < streams && left > 0; ++slot, ++polls) {
            const int result = http.net_check(slot, {host, "/file.zip", folder + std::to_string(slot) + ".zip"});
            if (result == net_failed) {
                std::fprintf(stderr, "%s\n", http.last_failure().c_str());
                return -1;
            }
            left -= result;
        }
        http.wait(left > 0 ? 1000 : 0, -1);
    }
    return polls;
}

static bool measure(const char* what, std::size_t size, int files, int streams) {
    const scratch dir;
    scripted_peer peer(script().send(http_reply("200 OK", std::string(size, 'x'))).close());
    const auto start = std::chrono::steady_clock::now();
    const long polls = fetch_all(peer.host(), dir.path(), files, streams);
    if (polls < 0) return false;
    const double seconds = seconds_since(start), megabytes = 1e-6 * static_cast<double>(size) * files;
    std::printf("%-12s %6.0f MB in %6.2f s: %8.1f MB/s %9.1f files/s %9ld polls\n", what, megabytes, seconds,
                megabytes / seconds, files / seconds, polls);
    return true;
}

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    const int megabytes = argc > 1 ? std::atoi(argv[1]) : 500;
    const int files = argc > 2 ? std::atoi(argv[2]) : 5000;
    return measure("one file", static_cast<std::size_t>(megabytes) * 1000000, 1, 1) &&
                   measure("small files", 2000, files, 4)
               ? 0
               : 1;
}
