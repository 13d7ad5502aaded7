#include "net/lookup.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>

#include <atomic>
#include <cstring>
#include <string>

static std::atomic<int> asked = 0;

// Knows one host, and only the second time.
static std::string name_service(const std::string& host, std::vector<net_address>& found) {
    if (++asked == 1 || host != "mirror.example") return "host unknown";
    sockaddr_in6 a{};
    a.sin6_family = AF_INET6;
    a.sin6_addr = in6addr_loopback;
    net_address& address = found.emplace_back();
    std::memcpy(&address.bytes, &a, sizeof a);
    address.size = sizeof a;
    return "";
}

TEST(Lookup, FiguresNeedNoServiceAndANameIsAskedForOnceItIsFound) {
    lookup_class names(name_service);
    std::vector<net_address> found;
    std::string why;
    for (const char* figures : {"127.0.0.1", "::1"}) {
        EXPECT_EQ(names.find(figures, 80, found, why), lookup_class::state::found);
        ASSERT_EQ(found.size(), 1u);
        EXPECT_EQ(found[0].text(), figures);
    }
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(names.wake_fd(), -1);
    const auto ask = [&] {
        auto state = names.find("mirror.example", 8080, found, why);
        while (state == lookup_class::state::waiting) {
            pollfd p{names.wake_fd(), POLLIN, 0};
            EXPECT_EQ(poll(&p, 1, 10000), 1);
            names.quiet_wake();
            EXPECT_EQ(poll(&p, 1, 0), 0);
            state = names.find("mirror.example", 8080, found, why);
        }
        return state;
    };
    EXPECT_EQ(ask(), lookup_class::state::unknown);
    EXPECT_EQ(why, "host unknown");
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ(ask(), lookup_class::state::found) << "a failure is not remembered";
        ASSERT_EQ(found.size(), 1u);
        EXPECT_EQ(found[0].text(), "::1");
        EXPECT_EQ(ntohs(reinterpret_cast<const sockaddr_in6&>(found[0].bytes).sin6_port), 8080);
    }
    EXPECT_EQ(asked, 2);
    names.forget("mirror.example");
    EXPECT_EQ(ask(), lookup_class::state::found);
    EXPECT_EQ(asked, 3);
}
