#include <gmock/gmock.h>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <cstdlib>
#include <string>
#include <utility>

#include "DaemonTest.h"

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace
{
const std::string PROGRAM = std::string(BINARY_DIR) + "/apps/zelsh";

std::string Uuid()
{
    return "/system/bootFsUUID: 5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11\n";
}

struct Ran
{
    int status;
    std::string output;
    std::string errors;
};

Ran RunProgram(TestHost& host, const std::string& arguments, const std::string& input)
{
    host.WriteFile("/input", input);
    const std::string command = "\"" + PROGRAM + "\" " + arguments + " <'" + host.Real("/input") + "' >'" +
                                host.Real("/output") + "' 2>'" + host.Real("/errors") + "'";
    const int status = std::system(command.c_str());
    return {WEXITSTATUS(status), host.ReadFile("/output"), host.ReadFile("/errors")};
}

/// The program at a terminal, as a person sits at it.
class Terminal
{
public:
    explicit Terminal(const std::string& root)
    {
        program_ = forkpty(&side_, nullptr, nullptr, nullptr);
        if (program_ == 0) {
            setenv("TERM", "vt100", 1);
            setenv("HOME", "/nonexistent", 1);
            execl(PROGRAM.c_str(), "zelsh", "--root", root.c_str(), nullptr);
            _exit(99);
        }
        Read("zelsh:/> ");
    }
    ~Terminal()
    {
        close(side_);  // hangs up
        if (program_ > 0) {
            EXPECT_EQ(waitpid(program_, nullptr, 0), program_);
        }
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Types, and reads until @p awaited is seen.
    std::string Type(const std::string& keys, const std::string& awaited)
    {
        EXPECT_EQ(write(side_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
        return Read(awaited);
    }

    /// Reads the next prompt and lets the program take the terminal over: until then Ctrl-D is the terminal's own.
    void AwaitPrompt()
    {
        Read("zelsh:/> ");
        termios mode = {};
        int tries = 60000;
        while (--tries > 0 && tcgetattr(side_, &mode) == 0 && (mode.c_lflag & ICANON) != 0) {
            (void)poll(nullptr, 0, 1);
        }
        EXPECT_GT(tries, 0);
    }

    int Wait()
    {
        int status = -1;
        Read("");
        EXPECT_EQ(waitpid(program_, &status, 0), program_);
        program_ = -1;
        return WEXITSTATUS(status);
    }

private:
    /// Takes what the program wrote up to the end of @p awaited; all of it when that is empty.
    std::string Read(const std::string& awaited)
    {
        pollfd readable = {side_, POLLIN, 0};
        char bytes[4096];
        while (awaited.empty() || unread_.find(awaited) == std::string::npos) {
            ssize_t length = 0;
            if (poll(&readable, 1, 60000) != 1 || (length = read(side_, bytes, sizeof bytes)) <= 0) {
                EXPECT_EQ(awaited, "") << "after: " << unread_;
                return std::exchange(unread_, {});
            }
            unread_.append(bytes, static_cast<std::size_t>(length));
        }
        const std::size_t end = unread_.find(awaited) + awaited.size();
        const std::string seen = unread_.substr(0, end);
        unread_.erase(0, end);
        return seen;
    }

    std::string unread_;
    int side_ = -1;
    pid_t program_ = -1;
};
}  // namespace

class ZelshProgram : public HostTest
{
protected:
    ZelshProgram() { Host().WithKernel({}); }

    Ran Run(const std::string& arguments, const std::string& input = "")
    {
        return RunProgram(Host(), "--root '" + Host().Root() + "' " + arguments, input);
    }
};

TEST_F(ZelshProgram, OneLineAFileAndThePipeRunTheSame)
{
    Host().WriteFile("/script", "# comment\n\ncd /system\nget bootFsUUID");
    EXPECT_EQ(Run("-c 'get /system/bootFsUUID'").output, Uuid());
    EXPECT_EQ(Run("-f '" + Host().Real("/script") + "'").output, Uuid());
    EXPECT_EQ(Run("", "cd /system\nget bootFsUUID\n").output, Uuid());
}

TEST_F(ZelshProgram, TheExitStatusIsThatOfTheLastCommand)
{
    EXPECT_EQ(Run("-c pwd").status, 0);
    EXPECT_EQ(Run("-c PWD").status, 1);
    EXPECT_EQ(Run("-c 'get /none'").status, 2);
    EXPECT_EQ(Run("", "get /none\npwd\n").status, 0);
    EXPECT_EQ(Run("", "pwd\nget /none\nexit\nPWD\n").status, 0);
    EXPECT_EQ(Run("", "").status, 0);
}

TEST_F(ZelshProgram, TheFormatIsChosen)
{
    EXPECT_EQ(Run("--format raw -c pwd").output, "pwd=/\n");
    EXPECT_EQ(Run("--format python -c pwd").output, "'/'\n");
    EXPECT_EQ(Run("--format default -c pwd").output, "/\n");
}

TEST_F(ZelshProgram, AWrongCallExitsWithTwoAndPrintsNothing)
{
    for (const char* call :
         {"--format xml", "--nothing", "-c pwd -f x", "--listen 127.0.0.1", "--binary", "--daemon --connect localhost",
          "--connect localhost:0", "--connect :1", "--daemon --listen localhost", "--root /nonexistent", "word"}) {
        const Ran ran = Run(call);
        EXPECT_EQ(ran.status, 2) << call;
        EXPECT_EQ(ran.output, "") << call;
        EXPECT_THAT(ran.errors, StartsWith("zelsh: ")) << call;
    }
}

TEST_F(ZelshProgram, WhatCannotBeReadOrReachedExitsWithOne)
{
    const Ran file = Run("-f '" + Host().Real("/none") + "'");
    EXPECT_EQ(file.status, 1);
    EXPECT_THAT(file.errors, HasSubstr("/none: No such file or directory\n"));
    EXPECT_EQ(Run("-f /").status, 1);
    EXPECT_EQ(RunProgram(Host(), "--connect 127.0.0.1:1 -c pwd", "").status, 1);
    EXPECT_EQ(WEXITSTATUS(std::system(("\"" + PROGRAM + "\" -c help >/dev/full 2>/dev/null").c_str())), 1);
}

TEST_F(ZelshProgram, ATerminalCompletesCommandsAndPaths)
{
    Terminal terminal(Host().Root());
    terminal.Type("typeg\t/sys\tbootF\t\n", "UUID of the boot file system");
    terminal.Type("cd /system/q\t\n", "zelsh:/system/quenfs> ");
    terminal.Type("ls \t\t", "inodes/  ramdisks/");
    terminal.Type("in\t\n", "zelsh:/system/quenfs> ");
    terminal.Type("exit\n", "");
    EXPECT_EQ(terminal.Wait(), 0);
}

TEST_F(ZelshProgram, ATerminalHasHistoryAndEditing)
{
    Terminal terminal(Host().Root());
    terminal.Type("get /system/bootFsUUID\n", "0c3a5b1f2a11");
    terminal.AwaitPrompt();
    terminal.Type("pwd\n", "zelsh:/> ");
    terminal.Type("\x1b[A\x1b[A\n", "0c3a5b1f2a11");  // two up
    terminal.Type("", "zelsh:/> ");                   // before it the terminal takes Ctrl-D for itself
    terminal.Type("pWd\x1b[D\x1b[D\x1b[3~\x04w\n", "zelsh:/> ");
    terminal.Type(
        "\x15"
        "CD\n",
        "Command not found.");
    terminal.AwaitPrompt();
    terminal.Type("\x04", "");
    EXPECT_EQ(terminal.Wait(), 1);
}

class ZelshClient : public DaemonTest
{
protected:
    ZelshClient() { Host().WithKernel({}); }

    Ran Run(const std::string& arguments, const std::string& input = "")
    {
        return RunProgram(Host(), "--connect 127.0.0.1:" + std::to_string(Port()) + " " + arguments, input);
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
    const Ran ran = Run("", std::string(4096, 'x') + "\n");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.errors, "zelsh: 127.0.0.1: a request has at most 4095 bytes\n");
}
