#include <gmock/gmock.h>

#include <string>

#include "DaemonTest.h"
#include "ProgramTest.h"

namespace
{
std::string Uuid()
{
    return "/system/bootFsUUID: 5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11\n";
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
    const Ran ran = Run("", std::string(4096, 'x') + "\n");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.errors, "zelsh: 127.0.0.1: a request has at most 4095 bytes\n");
}
