#include "DaemonTest.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "ZELSH.h"

namespace
{
sockaddr_in Loopback(std::uint16_t port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

std::uint16_t FreePort()
{
    const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(probe, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size), 0);
    close(probe);
    return ntohs(address.sin_port);
}

/// Polls a condition of the outside world, with a generous deadline.
template <typename Condition>
bool Eventually(Condition condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        (void)poll(nullptr, 0, 5);
    }
    return true;
}

int Connect(std::uint16_t port)
{
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = Loopback(port);
    if (connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return client;
    }
    close(client);
    return -1;
}

/// A child of this process beside @p other; it has none but daemons.
pid_t ChildBeside(pid_t other)
{
    const std::string self = std::to_string(getpid());
    std::ifstream children("/proc/" + self + "/task/" + self + "/children");
    pid_t child = -1;
    while (children >> child && child == other) {
    }
    return child != other ? child : -1;
}

std::uint64_t Number(const std::string& bytes, std::size_t offset)
{
    std::uint64_t number = 0;
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}
}  // namespace

TestClient::TestClient(std::uint16_t port) : socket_(Connect(port))
{
    EXPECT_GE(socket_, 0) << std::strerror(errno);
    const int on = 1;
    EXPECT_EQ(setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on), 0);
    const timeval patience = {60, 0};  // a test that waits in vain fails
    EXPECT_EQ(setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience), 0);
}

TestClient::~TestClient()
{
    close(socket_);
}

bool TestClient::TrySend(const std::string& bytes) const
{
    return send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0;
}

void TestClient::Send(const std::string& bytes) const
{
    EXPECT_EQ(send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
}

std::string TestClient::Receive(std::size_t size) const
{
    std::string bytes(size, '\0');
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t length = recv(socket_, bytes.data() + filled, size - filled, 0);
        if (length <= 0) {
            break;
        }
        filled += static_cast<std::size_t>(length);
    }
    bytes.resize(filled);
    return bytes;
}

std::string TestClient::ReceiveReply() const
{
    std::string reply;
    while (!reply.ends_with("<EOM>")) {
        const std::string byte = Receive(1);
        if (byte.empty()) {
            break;
        }
        reply += byte;
    }
    return reply;
}

std::string TestClient::ReceiveToEnd() const
{
    std::string all;
    for (std::string byte = Receive(1); !byte.empty(); byte = Receive(1)) {
        all += byte;
    }
    return all;
}

std::string TestClient::Ask(const std::string& request) const
{
    Send(request);
    return ReceiveReply();
}

void TestClient::EndRequests() const
{
    EXPECT_EQ(shutdown(socket_, SHUT_WR), 0);
}

void TestClient::Reset()
{
    const linger now = {1, 0};
    EXPECT_EQ(setsockopt(socket_, SOL_SOCKET, SO_LINGER, &now, sizeof now), 0);
    close(socket_);
    socket_ = -1;
}

TestHeader::TestHeader(const std::string& bytes)
{
    const std::string whole = bytes + std::string(24 - std::min<std::size_t>(bytes.size(), 24), '\xee');
    kind = static_cast<unsigned char>(whole[0]);
    zero = static_cast<unsigned char>(whole[1]);
    length = static_cast<unsigned>(Number(whole, 0) >> 16 & 0xFFFF);
    zeros = Number(whole, 0) >> 32;
    seconds = Number(whole, 8);
    microseconds = Number(whole, 16);
}

DaemonTest::DaemonTest()
{
    // The daemon leaves its parent; this process takes it in.
    EXPECT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    for (int attempt = 0; attempt < 20 && daemon_ < 0; ++attempt) {
        port_ = FreePort();
        if (!Start()) {
            daemon_ = -1;  // somebody else took the port in between
        }
    }
    EXPECT_GT(daemon_, 0) << Diagnostics();
}

DaemonTest::~DaemonTest()
{
    if (daemon_ > 0) {
        Stop(SIGTERM);
    }
}

pid_t DaemonTest::Launch(int verbosity, const std::string& logFile) const
{
    const pid_t starter = fork();
    if (starter == 0) {
        const int log = open(Host().Real(logFile).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(log, STDERR_FILENO);
        close(log);
        options = {0, 0, verbosity, 1, zelshDefaultOutputPtr};
        zelshListenAddress = "127.0.0.1";
        zelshListenPort = port_;
        ZELSH_Init();
        ZELSHDaemon();
        _exit(99);  // not reached
    }
    int status = -1;
    EXPECT_EQ(waitpid(starter, &status, 0), starter);
    EXPECT_EQ(status, 0);
    return ChildBeside(daemon_);
}

int DaemonTest::StatusOfSecond(int verbosity, const std::string& logFile) const
{
    const pid_t second = Launch(verbosity, logFile);
    int status = -1;
    EXPECT_EQ(waitpid(second, &status, 0), second);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status);
}

bool DaemonTest::Start()
{
    daemon_ = Launch(2, "/daemon.log");
    return Eventually([this] {
               return Diagnostics().find("Waiting for client connection") != std::string::npos ||
                      waitpid(daemon_, nullptr, WNOHANG) == daemon_;
           }) &&
           Diagnostics().find("Waiting for client connection") != std::string::npos;
}

int DaemonTest::Stop(int signal)
{
    int status = -1;
    EXPECT_EQ(kill(daemon_, signal), 0);
    EXPECT_EQ(waitpid(daemon_, &status, 0), daemon_);
    daemon_ = -1;
    return status;
}

std::string DaemonTest::DiagnosticsWith(const std::string& text) const
{
    EXPECT_TRUE(Eventually([&] { return Diagnostics().find(text) != std::string::npos; })) << text;
    return Diagnostics();
}

std::size_t DaemonTest::OpenDescriptors() const
{
    const std::filesystem::directory_iterator descriptors("/proc/" + std::to_string(daemon_) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

std::size_t DaemonTest::ResidentKiB() const
{
    std::ifstream status("/proc/" + std::to_string(daemon_) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) {
            return std::stoul(line.substr(6));
        }
    }
    return 0;
}
