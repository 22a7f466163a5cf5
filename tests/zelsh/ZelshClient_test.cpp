#include <gmock/gmock.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "DaemonTest.h"
#include "ProgramTest.h"
#include "ZEL.h"

using ::testing::HasSubstr;

namespace
{
std::string Uuid()
{
    return "/system/bootFsUUID: 5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11\n";
}

std::string Header(unsigned char kind, std::uint16_t length)
{
    std::string header(24, '\0');
    header[0] = static_cast<char>(kind);
    std::memcpy(header.data() + 2, &length, sizeof length);
    return header;
}

/// A daemon that says what a test tells it to: for each connection a list of answers, one for each request; then it
/// closes.
class ScriptedDaemon
{
public:
    using Answer = std::function<std::string()>;

    explicit ScriptedDaemon(std::vector<std::vector<Answer>> connections);
    ~ScriptedDaemon() { thread_.join(); }
    ScriptedDaemon(const ScriptedDaemon&) = delete;
    ScriptedDaemon& operator=(const ScriptedDaemon&) = delete;

    std::uint16_t Port() const { return port_; }
    std::string Place() const { return "127.0.0.1:" + std::to_string(port_); }

private:
    void Serve() const;
    void Talk(int client, const std::vector<Answer>& answers) const;

    std::vector<std::vector<Answer>> connections_;
    int listener_;
    std::uint16_t port_ = 0;
    std::thread thread_;
};

ScriptedDaemon::ScriptedDaemon(std::vector<std::vector<Answer>> connections)
    : connections_(std::move(connections)), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(listener_, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(listen(listener_, 4), 0);
    EXPECT_EQ(getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size), 0);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread(&ScriptedDaemon::Serve, this);
}

void ScriptedDaemon::Serve() const
{
    for (const std::vector<Answer>& answers : connections_) {
        pollfd waiting = {listener_, POLLIN, 0};
        EXPECT_EQ(poll(&waiting, 1, 60000), 1);
        const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        EXPECT_GE(client, 0);
        Talk(client, answers);
        close(client);
    }
    close(listener_);
}

void ScriptedDaemon::Talk(int client, const std::vector<Answer>& answers) const
{
    char request[4096];
    for (const Answer& answer : answers) {
        EXPECT_GT(recv(client, request, sizeof request, 0), 0);
        const std::string text = answer();
        EXPECT_EQ(send(client, text.data(), text.size(), MSG_NOSIGNAL), static_cast<ssize_t>(text.size()));
    }
    shutdown(client, SHUT_WR);
    while (recv(client, request, sizeof request, 0) > 0) {
    }
}

ScriptedDaemon::Answer Say(const std::string& text)
{
    return [text] { return text; };
}

/// Whether a keep-alive timer runs for the connection to @p port, once what was sent is acknowledged.
bool IsKeptAlive(std::uint16_t port)
{
    char peer[32];
    std::snprintf(peer, sizeof peer, " 0100007F:%04X 01 ", static_cast<unsigned>(port));
    for (int tries = 0; tries < 60000; ++tries) {
        std::ifstream table("/proc/net/tcp");
        for (std::string line; std::getline(table, line);) {
            const std::size_t found = line.find(peer);
            if (found != std::string::npos && line.find(" 02:", found) != std::string::npos) {
                return true;
            }
        }
        (void)poll(nullptr, 0, 1);
    }
    return false;
}
}  // namespace

class ZelshClient : public DaemonTest
{
protected:
    ZelshClient() { Host().WithKernel({}); }

    Ran Run(const std::string& arguments, const std::string& input = "")
    {
        return RunZelsh(Host(), "--connect 127.0.0.1:" + std::to_string(Port()) + " " + arguments, input);
    }
};

TEST_F(ZelshClient, TextModePrintsRepliesAndTellsHowTheLastOneEnded)
{
    const Ran read = Run("-c 'get /system/bootFsUUID'");
    EXPECT_EQ(read.output, Uuid());
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(Run("-c 'get /none'").status, 2);
    EXPECT_EQ(Run("-c NONE").status, 1);
    EXPECT_EQ(Run("", "# comment\n\ncd /system\npwd\nexit\nNONE\n").output, "/system\n");
}

TEST_F(ZelshClient, BinaryModePrintsTheDataAndReportsErrors)
{
    const Ran read = Run("--binary", "cd /system\nget bootFsUUID\npwd\n");
    EXPECT_EQ(read.output, Uuid() + "/system\n");
    EXPECT_EQ(read.status, 0);
    const Ran failed = Run("--binary -c 'get /none'");
    EXPECT_EQ(failed.status, 2);
    EXPECT_EQ(failed.errors, "zelsh: the daemon reports an error; in text mode it says which\n");
}

TEST_F(ZelshClient, TheModeThatAnotherClientLeftBehindDoesNotMatter)
{
    Run("--binary -c pwd");
    {
        const TestClient client(Port());
        EXPECT_EQ(client.Ask("pwd"), "/\n<EOM>");  // left as it was found
        client.Send("bin");
        client.EndRequests();
        EXPECT_EQ(client.ReceiveToEnd(), "");
    }
    EXPECT_EQ(Run("--binary -c pwd").output, "/\n");
    EXPECT_EQ(Run("-c pwd").output, "/\n");
}

TEST_F(ZelshClient, ALongReplyArrivesWhole)
{
    Host().WithKernel({.bootCmdLine = std::string(300000, 'w')});
    const std::string line = "/system/bootCmdLine: " + std::string(300000, 'w') + "\n";
    EXPECT_EQ(Run("-c 'get /system/bootCmdLine'").output, line);
    EXPECT_EQ(Run("--binary -c 'get /system/bootCmdLine'").output, line);
}

TEST_F(ZelshClient, ARequestThatTheDaemonWouldCutIsRefused)
{
    EXPECT_EQ(Run("", "pwd" + std::string(4093, ' ') + "\n").output, "/\n");
    const Ran ran = Run("", std::string(4097, 'x') + "\n");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.errors, "zelsh: 127.0.0.1: a request has at most 4096 bytes\n");
}

TEST_F(ZelshClient, WhateverStandsBehindTheWordThatQuitsItQuits)
{
    for (const char* line : {"exit now", " exit", "\tquit\v", "q \"x\""}) {
        const Ran ran = Run("", std::string(line) + "\nNONE\n");
        EXPECT_EQ(ran.status, 0) << line;
        EXPECT_EQ(ran.errors, "") << line;
    }
    EXPECT_EQ(Run("", "exitnow\n").status, 1);
}

TEST_F(ZelshClient, ALineEndsAtANulByte)
{
    const Ran ran = Run("", std::string("bin\0\npwd\n", 9));
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.errors, "zelsh: bin: --binary chooses the mode\n");
    EXPECT_EQ(Run("", std::string("pwd\0CD\n", 7)).output, "/\n");
}

TEST_F(ZelshClient, AWrongSignatureFailsInBothModes)
{
    EXPECT_EQ(Run("-c 'md5chk 0123'").status, 2);
    EXPECT_EQ(Run("--binary -c 'md5chk 0123'").status, 2);
    const std::string right = std::string("-c 'md5chk ") + ZEL_DefsMD5Sum + "'";
    EXPECT_EQ(Run(right).status, 0);
    EXPECT_EQ(Run("--binary " + right).status, 0);
}

TEST_F(ZelshClient, AtATerminalCommandsAreCompletedAndCtrlCDropsTheLine)
{
    Terminal terminal({"--connect", "127.0.0.1:" + std::to_string(Port()), "--binary"}, "zelsh> ");
    terminal.Type("CD", "CD");
    terminal.Type("\x03", "\r\n");
    terminal.AwaitPrompt();
    terminal.Type("typeg\t/system/bootFsUUID\n", "UUID of the boot file system");
    terminal.AwaitPrompt();
    terminal.Type("get /sys\t\n", "\r\n");  // no path of this host's tree is offered
    terminal.AwaitPrompt();
    EXPECT_THAT(DiagnosticsWith("got \"get "), HasSubstr("got \"get /sys\"\n"));
    terminal.Type("exit\n", "");
    EXPECT_EQ(terminal.Wait(), 0);
}

class ZelshCutReply : public HostTest
{};

TEST_F(ZelshCutReply, DataThatDoesNotFollowItsHeaderIsAnError)
{
    for (const std::string data : {"", "12345678"}) {
        const ScriptedDaemon daemon({{Say(Header(1, 0))}, {Say(Header(1, 0)), Say(Header(0, 9) + data)}});
        const Ran ran = RunZelsh(Host(), "--connect " + daemon.Place() + " --binary -c pwd");
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.errors, "zelsh: 127.0.0.1: the daemon closed the connection in the middle of a reply\n");
    }
}

TEST_F(ZelshCutReply, TextWithoutItsMarkerIsAnError)
{
    const ScriptedDaemon daemon({{Say("Error\n<EOM>"), Say("/\n<EO")}});
    const Ran ran = RunZelsh(Host(), "--connect " + daemon.Place() + " -c pwd");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.output, "/\n<EO");
    EXPECT_EQ(ran.errors, "zelsh: 127.0.0.1: the daemon closed the connection\n");
}

TEST_F(ZelshCutReply, ADaemonWhoseHostGoesIsNoticed)
{
    std::uint16_t port = 0;
    bool isKeptAlive = false;
    const auto look = [&] {
        isKeptAlive = IsKeptAlive(port);
        return std::string("/\n<EOM>");
    };
    {
        const ScriptedDaemon daemon({{Say("Error\n<EOM>"), look}});
        port = daemon.Port();
        EXPECT_EQ(RunZelsh(Host(), "--connect " + daemon.Place() + " -c pwd").output, "/\n");
    }
    EXPECT_TRUE(isKeptAlive);
}
