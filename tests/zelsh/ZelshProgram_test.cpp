#include <gmock/gmock.h>

#include <cstdlib>
#include <string>

#include "ProgramTest.h"

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace
{
std::string Uuid()
{
    return "/system/bootFsUUID: 5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11\n";
}
}  // namespace

class ZelshProgram : public HostTest
{
protected:
    ZelshProgram() { Host().WithKernel({}); }

    Ran Run(const std::string& arguments, const std::string& input = "")
    {
        return RunZelsh(Host(), "--root '" + Host().Root() + "' " + arguments, input);
    }

    /// What it reports when its output goes to @p place.
    Ran RunInto(const std::string& place, const std::string& line)
    {
        const std::string status = Host().Real("/status");
        const std::string command = "{ '" + BuiltZelsh() + "' --root '" + Host().Root() + "' -c '" + line + "' 2>'" +
                                    Host().Real("/errors") + "'; echo $? >'" + status + "'; } " + place;
        EXPECT_NE(std::system(command.c_str()), -1);
        return {std::stoi(Host().ReadFile("/status")), "", Host().ReadFile("/errors")};
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
    for (const char* call : {"--format xml", "--nothing", "-c pwd -f x", "--listen 127.0.0.1", "--binary",
                             "--daemon --connect localhost", "--daemon --listen localhost", "--daemon --listen ''",
                             "--daemon --listen :1", "--root /nonexistent", "--root ''", "--format ''", "word"}) {
        const Ran ran = Run(call);
        EXPECT_EQ(ran.status, 2) << call;
        EXPECT_EQ(ran.output, "") << call;
        EXPECT_THAT(ran.errors, StartsWith("zelsh: ")) << call;
    }
}

TEST_F(ZelshProgram, ADaemonsAddressThatIsNoneIsAWrongCall)
{
    for (const char* address : {"''", ":1", "localhost:0", "localhost:", "localhost:65536"}) {
        const Ran ran = RunZelsh(Host(), std::string("--connect ") + address + " -c pwd");
        EXPECT_EQ(ran.status, 2) << address;
        EXPECT_EQ(ran.output, "") << address;
        EXPECT_THAT(ran.errors, StartsWith("zelsh: --connect: ")) << address;
    }
}

TEST_F(ZelshProgram, AnEmptyLineIsALineAndAnEmptyNameAName)
{
    const Ran line = Run("-c ''", "PWD\n");
    EXPECT_EQ(line.status, 0);
    EXPECT_EQ(line.errors, "");
    EXPECT_EQ(Run("-f ''", "pwd\n").status, 1);
}

TEST_F(ZelshProgram, WhatCannotBeReadOrReachedExitsWithOne)
{
    const Ran file = Run("-f '" + Host().Real("/none") + "'");
    EXPECT_EQ(file.status, 1);
    EXPECT_THAT(file.errors, HasSubstr("/none: No such file or directory\n"));
    EXPECT_EQ(Run("-f /").status, 1);
    EXPECT_EQ(RunZelsh(Host(), "--connect 127.0.0.1:1 -c pwd", "").status, 1);
}

TEST_F(ZelshProgram, AFullDiskIsReported)
{
    const Ran little = RunInto(">/dev/full", "help");
    EXPECT_EQ(little.status, 1);
    EXPECT_EQ(little.errors, "zelsh: standard output: No space left on device\n");
    Host().WithKernel({.bootCmdLine = std::string(1 << 20, 'w')});
    const Ran much = RunInto(">/dev/full", "get /system/bootCmdLine");
    EXPECT_EQ(much.status, 1);
    EXPECT_EQ(much.errors, "zelsh: standard output: cannot be written\n");
}

TEST_F(ZelshProgram, AReaderThatHasGoneIsNot)
{
    Host().WithKernel({.bootCmdLine = std::string(1 << 20, 'w')});  // more than a pipe holds
    const Ran ran = RunInto("| true", "get /system/bootCmdLine");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.errors, "");
}

TEST_F(ZelshProgram, WhoeverDrivesItByPipesReadsEachReplyBeforeTheNextLine)
{
    Coprocess zelsh({"--root", Host().Root()});
    zelsh.Write("cd /system\npwd\n");
    EXPECT_EQ(zelsh.ReadLine(), "/system\n");
    zelsh.Write("get bootFsUUID\n");
    EXPECT_EQ(zelsh.ReadLine(), Uuid());
    zelsh.EndInput();
    EXPECT_EQ(zelsh.Wait(), 0);
}

TEST_F(ZelshProgram, ATerminalCompletesCommandsAndPaths)
{
    Terminal terminal({"--root", Host().Root()}, "zelsh:/> ");
    terminal.Type("typeg\t/sys\tbootF\t\n", "UUID of the boot file system");
    terminal.Type("cd /system/q\t\n", "zelsh:/system/quenfs> ");
    terminal.Type("ls \t\t", "inodes/  ramdisks/");
    terminal.Type("in\t\n", "zelsh:/system/quenfs> ");
    terminal.Type("exit\n", "");
    EXPECT_EQ(terminal.Wait(), 0);
}

TEST_F(ZelshProgram, ATerminalHasHistoryAndEditing)
{
    Terminal terminal({"--root", Host().Root()}, "zelsh:/> ");
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

TEST_F(ZelshProgram, CandidatesOfQuotedNamesAreShownWhole)
{
    Host().WriteFile("/etc/talvor/platform/kernel.json", R"({"capturedKernel": true})");
    Host().WriteFile("/proc/self/mountinfo",
                     "20 1 8:1 / /boot/efi rw - vfat /dev/sda1 rw\n"
                     "21 1 8:2 / /boot/efi\\040old rw - vfat /dev/sda2 rw\n");
    Terminal terminal({"--root", Host().Root()}, "zelsh:/> ");
    terminal.Type("ls /storage/mounts/\t\t", "\"/boot/efi\"/  \"/boot/efi old\"/  ");
}

TEST_F(ZelshProgram, CtrlCDropsTheLineAndTheShellGoesOn)
{
    Terminal terminal({"--root", Host().Root()}, "zelsh:/> ");
    terminal.Type("CD", "CD");
    terminal.Type("\x03", "\r\n");
    terminal.AwaitPrompt();
    terminal.Type("\x03", "\r\n");  // nothing to drop is no end of the input
    terminal.AwaitPrompt();
    EXPECT_EQ(terminal.Type("pwd\n", "/\r\n"), "pwd\r\n/\r\n");
    terminal.AwaitPrompt();
    terminal.Type("\x1b[A\x1b[A\n", "/\r\n");  // what was dropped is not in the history
    terminal.AwaitPrompt();
    terminal.Type("exit\n", "");
    EXPECT_EQ(terminal.Wait(), 0);
}
