#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "ShellTest.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using ZelshCore = ShellTest;

namespace
{
std::vector<std::string> Arguments(const char* text)
{
    std::vector<std::string> arguments;
    const char* start = nullptr;
    const char* end = nullptr;
    while ((text = ZELSHParseArgument(text, &start, &end)) != nullptr) {
        EXPECT_EQ(text, end);
        arguments.emplace_back(start, end);
    }
    return arguments;
}
}  // namespace

TEST_F(ZelshCore, ArgumentsRunToTheNextWhiteSpace)
{
    EXPECT_THAT(Arguments("get  /system\t-x\nlast "), ElementsAre("get", "/system", "-x", "last"));
    EXPECT_THAT(Arguments(""), IsEmpty());
    EXPECT_THAT(Arguments(" \t\v\f\r\n"), IsEmpty());
}

TEST_F(ZelshCore, AQuotedStretchKeepsItsBlanks)
{
    EXPECT_THAT(Arguments("a\"b c\"d"), ElementsAre("a\"b c\"d"));
    EXPECT_THAT(Arguments("\"\" \"a\"\"b \" c"), ElementsAre("\"\"", "\"a\"\"b \"", "c"));
}

TEST_F(ZelshCore, AQuoteThatIsNeverClosedIsReportedAndEndsTheText)
{
    testing::internal::CaptureStderr();
    EXPECT_THAT(Arguments("get a\"b c d"), ElementsAre("get", "a\"b c d"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Invalid argument: \"a\"b c d\": unterminated quotation.\n");
}

TEST_F(ZelshCore, EmptyLinesCommentsAndBlanksDoNothing)
{
    for (const char* line : {"", "# get /", "#", "   ", "\t\n"}) {
        EXPECT_EQ(Output(line), "") << line;
    }
    EXPECT_EQ(ZELSH_ParseAndExecCmd(nullptr), 0);
}

TEST_F(ZelshCore, NamesAreCaseSensitiveAndWhole)
{
    for (const char* line : {"CD", "gets /", "hel", "\"help\""}) {
        const ShellRun run = Run(line);
        EXPECT_EQ(run.status, 1) << line;
        EXPECT_EQ(run.errors, "Command not found.\n");
        EXPECT_EQ(run.output, "");
    }
}

TEST_F(ZelshCore, HelpPrintsEveryRowInTheTablesOrder)
{
    EXPECT_EQ(Output("help"),
              "\tcd\t - change working directory\n\tls\t - list nodes\n\tdir\t - list nodes\n"
              "\tpwd\t - print working directory\n\tget\t - perform GET operation\n\tcat\t - synonym for GET\n"
              "\tset\t - perform SET operation\n\ttypeget\t - get type information\n"
              "\ttypels\t - list type-level nodes\n\tloglevel\t - set debugging log level\n\texit\t - quit shell\n"
              "\tquit\t - quit shell\n\tq\t - quit shell\n\thelp\t - print help\n");
}

TEST_F(ZelshCore, AFailedCommandSaysItsStatusInWords)
{
    const ShellRun run = Run("cat /system/sysAlert");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errors, "Error in command cat: Not supported\n");
}

TEST_F(ZelshCore, TheWordsThatQuitEndTheShell)
{
    for (const char* line : {"exit", "quit", "q"}) {
        shellTerminate = 0;
        EXPECT_EQ(Output(line), "");
        EXPECT_EQ(shellTerminate, 1) << line;
    }
}

TEST_F(ZelshCore, TheLogLevelIsADecimalNumber)
{
    EXPECT_EQ(Output("loglevel 7"), "");
    EXPECT_EQ(options.verbosity, 7);
    EXPECT_EQ(Output("loglevel -1"), "");
    EXPECT_EQ(options.verbosity, -1);
    EXPECT_EQ(Refusal("loglevel 0x5", "Bad parameter"),
              "loglevel: expected a number, found \"0x5\"; the level is -1\n");
    EXPECT_EQ(options.verbosity, -1);
}

TEST_F(ZelshCore, WithoutALevelTheLevelStaysAndAnErrorIsReported)
{
    options.verbosity = 3;
    const ShellRun run = Run("loglevel");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "loglevel: expected a number; the level is 3\n");
    EXPECT_EQ(options.verbosity, 3);
}

TEST_F(ZelshCore, AboveLevelSevenTheLookupIsShownAndAboveNineEachArgument)
{
    options.verbosity = 7;
    EXPECT_EQ(Run("pwd \"a b\"").errors, "");
    options.verbosity = 8;
    EXPECT_EQ(Run("pwd \"a b\"").errors, "Looking for pwd\n");
    options.verbosity = 10;
    EXPECT_EQ(Run("pwd \"a b\"").errors, "Got argument #0: \"pwd\"\nGot argument #1: \"\"a b\"\"\nLooking for pwd\n");
}

TEST_F(ZelshCore, WhatIsShownOfARequestCannotSteerATerminal)
{
    options.verbosity = 10;
    EXPECT_EQ(Run("pwd a\x1b[2J").errors,
              "Got argument #0: \"pwd\"\nGot argument #1: \"a\\x1b[2J\"\nLooking for pwd\n");
    options.verbosity = 8;
    EXPECT_EQ(Run("\x1b]0;x\a").errors, "Looking for \\x1b]0;x\\x07\nCommand not found.\n");
}

TEST_F(ZelshCore, ACommandCanBeRunWithoutALine)
{
    char name[] = "pwd";
    char unknown[] = "PWD";
    char get[] = "get";
    char path[] = "/no \"such\" node";  // an argument as it stands: nothing is parsed again
    char* there[] = {name};
    char* none[] = {unknown};
    char* failing[] = {get, path};
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(ZELSH_ExecCmd(1, there), 0);
    EXPECT_EQ(ZELSH_ExecCmd(1, none), 1);
    EXPECT_EQ(ZELSH_ExecCmd(2, failing), 2);
    EXPECT_EQ(ZELSH_ExecCmd(0, there), 0);
    EXPECT_EQ(ZELSH_ExecCmd(1, nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "/\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Command not found.\nget: /no \"such\" node: no such node\nError in command get: Not found\n");
}

TEST_F(ZelshCore, ManyArgumentsAreAllHandedOver)
{
    std::string line = "get";
    for (int i = 0; i < 100; ++i) {
        line += " /system/bootFsUUID";
    }
    const std::string output = Output(line);
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 100);
}

#ifndef SANITIZED  // a sanitizer's own bookkeeping needs the memory that is taken away here
namespace
{
/// Takes what earlier tests have freed: where memory is to be short, it must not be of use.
void TakeFreeMemory()
{
    for (std::size_t size = 1 << 24; size >= 1 << 12; size /= 2) {
        void* volatile block = nullptr;
        do {
            block = std::malloc(size);
        } while (block != nullptr);
    }
}

/// What a child process, which has little memory left, reports for a line as long as that.
std::string ReportWithoutMemory(const std::string& line)
{
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDERR_FILENO);
        const rlimit nothing = {1, 1};
        setrlimit(RLIMIT_DATA, &nothing);
        setrlimit(RLIMIT_AS, &nothing);
        TakeFreeMemory();
        _exit(ZELSH_ParseAndExecCmd(line.c_str()));
    }
    close(ends[1]);
    std::string report;
    char bytes[512];
    for (ssize_t length; (length = read(ends[0], bytes, sizeof bytes)) > 0;) {
        report.append(bytes, static_cast<std::size_t>(length));
    }
    close(ends[0]);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 2);
    return report;
}
}  // namespace

TEST_F(ZelshCore, AnArgumentThatMemoryDoesNotHoldIsReported)
{
    EXPECT_THAT(ReportWithoutMemory(std::string(64 << 20, 'x')), HasSubstr("Failed to allocate argument string\n"));
}

TEST_F(ZelshCore, AnArrayThatMemoryDoesNotHoldIsReported)
{
    std::string line;
    for (int i = 0; i < 1 << 20; ++i) {
        line += "x ";
    }
    EXPECT_THAT(ReportWithoutMemory(line), HasSubstr("Failed to "));
}
#endif

TEST_F(ZelshCore, TheOptionsHaveTheirFields)
{
    EXPECT_EQ(offsetof(ZELSHOptions, verbosity), 8U);
    EXPECT_EQ(offsetof(ZELSHOptions, sorted), 12U);
    EXPECT_EQ(options.verbosity, 0);
    EXPECT_EQ(options.sorted, 1);
}

TEST_F(ZelshCore, ErrorsCannotSteerATerminal)
{
    EXPECT_EQ(Refusal("cd /\x1b[2J\xff", "Not found"), "cd: /\\x1b[2J\\xff: no such node\n");
}
