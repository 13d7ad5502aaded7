#include "net/pcsb_socket.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <string>

#include "support/scripted_peer.h"

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

TEST_F(Connected, AnIdlePeerAndAClosedPeerAreToldApart) {
    EXPECT_EQ(client.ReadData(buf, sizeof buf), 0);
    EXPECT_FALSE(client.ReceivedRelease());

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
}

TEST_F(Connected, AFullSendBufferTakesNothingAndLosesNothing) {
    long sent = 0, got = 0, n;
    while ((n = client.http_WriteData(buf, sizeof buf)) > 0)
        sent += n;
    ASSERT_EQ(n, 0);
    EXPECT_EQ(client.GetStatus(), sock_connected);
    while (got < sent) {
        settle(*server, POLLIN);
        n = server->ReadData(buf, sizeof buf);
        ASSERT_GT(n, 0);
        got += n;
    }
    EXPECT_EQ(got, sent);
    EXPECT_EQ(server->ReadData(buf, sizeof buf), 0);
}

TEST_F(Connected, AResetIsClosedForGood) {
    const sockaddr nowhere{};  // a connect to no address breaks the connection off with a reset
    ASSERT_EQ(connect(server->descriptor(), &nowhere, sizeof nowhere), 0);
    settle(client, POLLIN);
    EXPECT_EQ(client.ReadData(buf, sizeof buf), -1);
    EXPECT_EQ(client.GetStatus(), sock_closed);
    EXPECT_EQ(client.GetOSError(), 0);
    EXPECT_EQ(client.close_reason(), ECONNRESET);
    client.Connect(loopback, port_of(listener));
    EXPECT_EQ(client.http_WriteData("x", 1), -1);
    EXPECT_EQ(client.GetStatus(), sock_closed);
}

TEST_F(Connected, WritingAfterTheEndOfTheSendingHalfIsAnErrorWithItsCode) {
    client.Release();
    testing::internal::CaptureStderr();
    EXPECT_EQ(client.http_WriteData("x", 1), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "LINUX: NET: Some sort of error while sending! " + std::to_string(EPIPE) + "\n");
    EXPECT_EQ(client.GetStatus(), sock_error);
    EXPECT_EQ(client.GetOSError(), EPIPE);
    client.Disconnect();
    EXPECT_EQ(client.GetStatus(), sock_error);
}

TEST(Socket, ARefusedConnectIsClosedAndNotAnError) {
    const refusing_port nobody;
    PCSBSocket s(0, false);
    s.Connect(loopback, nobody.port());
    EXPECT_EQ(settle(s, POLLOUT), sock_closed);
    EXPECT_EQ(s.GetOSError(), 0);
    EXPECT_EQ(s.close_reason(), ECONNREFUSED);
}

TEST(Socket, APortThatIsTakenIsAnErrorAndStaysOne) {
    PCSBSocket first(0, true);
    testing::internal::CaptureStderr();
    PCSBSocket second(port_of(first), true);
    second.Connect(loopback, port_of(first));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "LINUX: NET: I could not even bind the socket! Uh-oh!\n");
    EXPECT_EQ(second.GetStatus(), sock_error);
    EXPECT_EQ(second.GetOSError(), EADDRINUSE);
    EXPECT_EQ(second.Accept(), nullptr);
}
