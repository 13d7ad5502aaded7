#include "net/pcsb_socket.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <csignal>
#include <memory>

static const std::uint32_t loopback = inet_addr("127.0.0.1");

static int settle(PCSBSocket& s, short events) {
    pollfd p{s.descriptor(), events, 0};
    poll(&p, 1, 10000);
    return s.GetStatus();
}

static unsigned short port_of(const PCSBSocket& s) {
    ConnectionData d;
    s.GetAddresses(&d);
    return d.local_port;
}

// Both ends of one connection, made with the class itself.
class Connected : public testing::Test {
  protected:
    void SetUp() override {
        signal(SIGPIPE, SIG_IGN);
        EXPECT_EQ(listener.GetStatus(), sock_idle);
        client.Connect(loopback, port_of(listener));
        ASSERT_EQ(settle(listener, POLLIN), sock_connecting);
        server = listener.Accept();
        ASSERT_TRUE(server);
        ASSERT_EQ(settle(client, POLLOUT), sock_connected);
        EXPECT_EQ(listener.GetStatus(), sock_idle);
    }
    PCSBSocket listener{0, true};
    PCSBSocket client{0, false};
    std::unique_ptr<PCSBSocket> server;
    char buf[65536];
};

TEST_F(Connected, TheEndsOfAConnectionAreToldApart) {
    EXPECT_EQ(client.ReadData(buf, sizeof buf), 0) << "an idle peer";
    ASSERT_EQ(server->http_WriteData("hello", 5), 5);
    settle(client, POLLIN);
    EXPECT_EQ(client.ReadData(buf, 0), 0);
    EXPECT_FALSE(client.ReceivedRelease());
    server->Release();
    EXPECT_EQ(client.ReadData(buf, sizeof buf), 5);
    settle(client, POLLIN);
    EXPECT_EQ(client.ReadData(buf, sizeof buf), 0);
    EXPECT_TRUE(client.ReceivedRelease());
    EXPECT_EQ(client.GetStatus(), sock_connected);
    client.Release();
    EXPECT_EQ(client.ReadData(buf, sizeof buf), -1);
    EXPECT_EQ(client.GetStatus(), sock_closed);

    EXPECT_EQ(server->http_WriteData("x", 1), -1) << "behind the end of the sending half";
    server->Disconnect();
    EXPECT_EQ(server->GetStatus(), sock_error);
    EXPECT_EQ(server->GetOSError(), EPIPE);
    PCSBSocket second(port_of(listener), true);
    EXPECT_EQ(second.GetOSError(), EADDRINUSE);
    EXPECT_EQ(second.Accept(), nullptr);
}

TEST_F(Connected, AFullSendBufferTakesNothingAndLosesNothing) {
    long sent = 0, n;
    while ((n = client.http_WriteData(buf, sizeof buf)) > 0)
        sent += n;
    ASSERT_EQ(n, 0);
    EXPECT_EQ(client.GetStatus(), sock_connected);
    for (; sent > 0; sent -= n) {
        settle(*server, POLLIN);
        n = server->ReadData(buf, sizeof buf);
        ASSERT_GT(n, 0);
    }
    EXPECT_EQ(server->ReadData(buf, sizeof buf), 0);
}
