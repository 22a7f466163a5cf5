#include <gmock/gmock.h>

#include <poll.h>
#include <sys/socket.h>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <random>
#include <string>

#include "DaemonTest.h"

/// Clients that mean no good, or just went away. After each the next one is served as if nothing had happened.
class ZelshAbuse : public DaemonTest
{
protected:
    ~ZelshAbuse() override
    {
        const TestClient client(Port());
        EXPECT_EQ(client.Ask("cd /"), "<EOM>");
        EXPECT_EQ(client.Ask("pwd"), "/\n<EOM>");
    }
};

namespace
{
#ifdef SANITIZED
constexpr std::size_t GIGABYTE = 1 << 26;  // instrumented, the whole would take minutes
#else
constexpr std::size_t GIGABYTE = 1 << 30;
#endif

/// Reads away what is there.
void Drain(const TestClient& client)
{
    static char bytes[1 << 16];
    while (recv(client.Socket(), bytes, sizeof bytes, MSG_DONTWAIT) > 0) {
    }
}

/// Sends @p total bytes of @p block, and reads what comes back meanwhile.
void Flood(const TestClient& client, const std::string& block, std::size_t total)
{
    for (std::size_t sent = 0; sent < total;) {
        pollfd ready = {client.Socket(), POLLIN | POLLOUT, 0};
        ASSERT_EQ(poll(&ready, 1, 60000), 1);
        Drain(client);
        const ssize_t length = send(client.Socket(), block.data(), block.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        ASSERT_TRUE(length > 0 || errno == EAGAIN) << errno;
        sent += length > 0 ? static_cast<std::size_t>(length) : 0;
    }
}
}  // namespace

TEST_F(ZelshAbuse, AClientThatOnlyConnects)
{
    const TestClient client(Port());
}

TEST_F(ZelshAbuse, AClientThatResetsTheConnection)
{
    TestClient client(Port());
    client.Send("get /");
    client.Reset();
}

TEST_F(ZelshAbuse, AClientThatClosesInTheMiddleOfItsOutput)
{
    Host().WithKernel({.bootCmdLine = std::string(4 << 20, 'w')});
    TestClient client(Port());
    client.Send("get /");
    EXPECT_EQ(client.Receive(1000).size(), 1000U);
    client.Reset();
}

TEST_F(ZelshAbuse, AClientThatSendsOneByteAtATime)
{
    const TestClient client(Port());
    for (const char byte : std::string("get /system")) {
        EXPECT_THAT(client.Ask(std::string(1, byte)), testing::EndsWith("<EOM>"));
    }
}

TEST_F(ZelshAbuse, AHalfClosedClientStillGetsItsAnswer)
{
    const TestClient client(Port());
    client.Send("pwd");
    client.EndRequests();
    EXPECT_EQ(client.ReceiveToEnd(), "/\n<EOM>");
}

TEST_F(ZelshAbuse, ALineOfAGigabyteTakesNoMemory)
{
    {
        const TestClient client(Port());
        EXPECT_EQ(client.Ask("loglevel -1"), "<EOM>");
        const std::size_t before = ResidentKiB();
        Flood(client, std::string(1 << 20, 'x'), GIGABYTE);
        // A sanitizer keeps freed memory back to catch its use.
        EXPECT_LT(ResidentKiB(), before + (GIGABYTE < (1 << 30) ? GIGABYTE / 1024 * 2 : 8192));
    }
    EXPECT_EQ(kill(Daemon(), 0), 0);
}

TEST_F(ZelshAbuse, BinaryNoiseIsNoCommand)
{
    std::mt19937 random(56303);
    std::string noise(1 << 20, '\0');
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(random()); });
    std::replace(noise.begin(), noise.end(), 'q', 'r');  // a lone "q" is a command that quits
    const TestClient client(Port());
    EXPECT_EQ(client.Ask("loglevel -1"), "<EOM>");
    const std::size_t before = ResidentKiB();
    Flood(client, noise, std::size_t{16} << 20);
    EXPECT_LT(ResidentKiB(), before + 8192);
}

TEST_F(ZelshAbuse, AThousandConnectionsLeakNoDescriptor)
{
    const std::size_t before = [this] {
        const TestClient client(Port());
        EXPECT_EQ(client.Ask("loglevel -1"), "<EOM>");
        return OpenDescriptors();
    }();
    for (int i = 0; i < 1000; ++i) {
        TestClient client(Port());
        if (i % 2 == 0) {
            EXPECT_EQ(client.Ask("pwd"), "/\n<EOM>");
        } else {
            client.Reset();
        }
    }
    const TestClient client(Port());
    EXPECT_EQ(client.Ask("pwd"), "/\n<EOM>");
    EXPECT_EQ(OpenDescriptors(), before);
}
