#pragma once

#include <gmock/gmock.h>

#include <string>

#include "TestHost.h"
#include "ZELSH.h"

/// What a line left behind.
struct ShellRun
{
    int status;
    std::string output;
    std::string errors;
};

/// A shell in its first state, on a throwaway host.
class ShellTest : public HostTest
{
protected:
    ShellTest()
    {
        options = {0, 0, 0, 1, zelshDefaultOutputPtr};
        shellTerminate = 0;
        EXPECT_EQ(ZELSH_Init(), ORV_OK);
    }
    ~ShellTest() override { options = {0, 0, 0, 1, zelshDefaultOutputPtr}; }

    static ShellRun Run(const std::string& line)
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = ZELSH_ParseAndExecCmd(line.c_str());
        const std::string output = testing::internal::GetCapturedStdout();
        return {status, output, testing::internal::GetCapturedStderr()};
    }

    static std::string Output(const std::string& line)
    {
        const ShellRun run = Run(line);
        EXPECT_EQ(run.status, 0) << line;
        EXPECT_EQ(run.errors, "") << line;
        return run.output;
    }

    /// What the failed line reports before the shell's own last line.
    static std::string Refusal(const std::string& line, const std::string& status)
    {
        const ShellRun run = Run(line);
        EXPECT_EQ(run.status, 2) << line;
        const std::string last = "Error in command " + line.substr(0, line.find(' ')) + ": " + status + "\n";
        EXPECT_TRUE(run.errors.ends_with(last)) << run.errors;
        return run.errors.substr(0, run.errors.size() - last.size());
    }
};
