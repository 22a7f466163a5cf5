#pragma once

#include <sys/types.h>
#include <cstdint>
#include <string>
#include <vector>

#include "TestHost.h"

/// A daemon's client that exists for tests only: it knows bytes, not the shell.
class TestClient
{
public:
    explicit TestClient(std::uint16_t port);
    ~TestClient();
    TestClient(const TestClient&) = delete;
    TestClient& operator=(const TestClient&) = delete;

    void Send(const std::string& bytes) const;
    /// Without a failure of the test when the daemon no longer reads. False when nothing was sent.
    bool TrySend(const std::string& bytes) const;

    /// Reads until @p size bytes are there; fewer when the connection ended.
    std::string Receive(std::size_t size) const;
    /// Reads to the first "<EOM>" at the end of what was received.
    std::string ReceiveReply() const;
    std::string ReceiveToEnd() const;
    std::string Ask(const std::string& request) const;

    /// Half of the connection is closed: the daemon sees an end, and can still answer.
    void EndRequests() const;
    /// Closes with a reset instead of an orderly end.
    void Reset();
    int Socket() const { return socket_; }

private:
    int socket_;
};

/// One header of binary mode, taken apart byte by byte.
struct TestHeader
{
    explicit TestHeader(const std::string& bytes);

    unsigned kind;
    unsigned zero;
    unsigned length;
    std::uint64_t zeros;
    std::uint64_t seconds;
    std::uint64_t microseconds;
};

/// A daemon in a process of its own, on a free port of the loopback, for a throwaway host.
class DaemonTest : public HostTest
{
protected:
    DaemonTest();
    ~DaemonTest() override;

    std::uint16_t Port() const { return port_; }
    pid_t Daemon() const { return daemon_; }

    /// Ends the daemon with @p signal. @return its status as waitpid() gives it.
    int Stop(int signal);

    /// The exit status of another daemon on the same port; it writes its standard error to @p logFile.
    int StatusOfSecond(int verbosity, const std::string& logFile) const;

    /// What it wrote to its standard error.
    std::string Diagnostics() const { return Host().ReadFile("/daemon.log"); }
    /// Diagnostics, as soon as they hold @p text.
    std::string DiagnosticsWith(const std::string& text) const;

    std::size_t OpenDescriptors() const;
    std::size_t ResidentKiB() const;

    const TestHost& Host() const { return const_cast<DaemonTest*>(this)->HostTest::Host(); }
    using HostTest::Host;

private:
    bool Start();
    pid_t Launch(int verbosity, const std::string& logFile) const;

    std::uint16_t port_ = 0;
    pid_t daemon_ = -1;
};
