#include "CSLogger.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "FileSizeLimit.h"
#include "HostUtil.h"
#include "TestHost.h"

namespace fs = std::filesystem;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

namespace
{
const char* const LOG_FILE = "/var/log/talvor/configstore.log";

class CSLoggerTest : public HostTest
{};

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The standard error stream is this file while it exists, as with "2>file" at a shell.
class StandardErrorFile
{
public:
    explicit StandardErrorFile(const std::string& path) : before_(dup(STDERR_FILENO))
    {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        dup2(file, STDERR_FILENO);
        close(file);
    }
    ~StandardErrorFile()
    {
        dup2(before_, STDERR_FILENO);
        close(before_);
    }
    StandardErrorFile(const StandardErrorFile&) = delete;
    StandardErrorFile& operator=(const StandardErrorFile&) = delete;

private:
    int before_;
};

// Runs @p work in a child process.
template <typename Work>
pid_t InChild(Work work)
{
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    return child;
}
}  // namespace

TEST_F(CSLoggerTest, ALineHoldsTimeLevelProcessAndText)
{
    CSLogger::Log(CSLogger::INFO, "%s of %d", "first", 2);
    EXPECT_THAT(Host().ReadFile(LOG_FILE),
                MatchesRegex("[0-9]{4}-[01][0-9]-[0-3][0-9]T[0-2][0-9]:[0-5][0-9]:[0-6][0-9]\\.[0-9]{3}Z info \\[" +
                             std::to_string(getpid()) + "\\] first of 2\n"));
}

TEST_F(CSLoggerTest, ALineThatDoesNotFitIsNotCutAndItsLossIsTold)
{
    CSLogger::Log(CSLogger::INFO, "first");
    const std::string first = Host().ReadFile(LOG_FILE);
    {
        const FileSizeLimit limit(first.size() + 10);
        CSLogger::Log(CSLogger::INFO, "second");
        CSLogger::Log(CSLogger::INFO, "third");
        EXPECT_EQ(Host().ReadFile(LOG_FILE), first);
    }
    CSLogger::Log(CSLogger::INFO, "fourth");
    CSLogger::Log(CSLogger::INFO, "fifth");
    EXPECT_THAT(Host().Log(), ElementsAre("info first", "warning 2 log lines were lost: File too large", "info fourth",
                                          "info fifth"));
}

TEST_F(CSLoggerTest, EachPriorityHasItsWord)
{
    CSLogger::Log(CSLogger::ERROR, "a");
    CSLogger::Log(CSLogger::WARNING, "b");
    CSLogger::Log(CSLogger::INFO, "c");
    CSLogger::Log(CSLogger::DEBUG, "d");
    CSLogger::Log(static_cast<CSLogger::log_priority>(7), "e");
    EXPECT_THAT(Host().Log(), ElementsAre("error a", "warning b", "info c", "debug d", "debug e"));
}

TEST_F(CSLoggerTest, ATextOfAnyLengthAndContentIsOneLine)
{
    const std::string text(100'000, 'x');
    CSLogger::Log(CSLogger::INFO, "%s", text.c_str());
    CSLogger::Log(CSLogger::INFO, "a\nb\tc\x01\x7f%% {} caf\xc3\xa9");
    EXPECT_THAT(Host().Log(), ElementsAre("info " + text, "info a\\nb\\tc\\x01\\x7f% {} caf\xc3\xa9"));
}

TEST_F(CSLoggerTest, AnErrorCodeIsLoggedByItsTemplate)
{
    CSLogger::LogErrCode(CSLogger::ERROR, NimbConfigStore::CS_ERROR_COMMAND_WAIT, 12, "No child processes");
    CSLogger::LogErrCode(CSLogger::ERROR, NimbConfigStore::CS_ERROR_VALIDATION, "/a/b", "too long");
    EXPECT_THAT(Host().Log(), ElementsAre("error Failed to wait for process 12: No child processes",
                                          "error Validation error at /a/b: too long"));
}

TEST_F(CSLoggerTest, AFileLoggerBeginsAnewAndCopiesUntilItIsRemoved)
{
    Host().WriteFile("/var/log/talvor/configstore-boot.log", "last boot\n");
    CSLogger::Log(CSLogger::INFO, "before");
    const CSLogger::FileLoggerHandle handle = CSLogger::AddFileLogger("configstore-boot");
    EXPECT_NE(handle, 0u);
    CSLogger::Log(CSLogger::INFO, "during");
    CSLogger::RemoveFileLogger(handle);
    CSLogger::Log(CSLogger::INFO, "after");
    EXPECT_THAT(Host().BootLog(), ElementsAre("info during"));
    EXPECT_THAT(Host().Log(), ElementsAre("info before", "info during", "info after"));
}

TEST_F(CSLoggerTest, FileLoggersAreIndependent)
{
    const CSLogger::FileLoggerHandle boot = CSLogger::AddFileLogger("configstore-boot");
    const CSLogger::FileLoggerHandle other = CSLogger::AddFileLogger("syslog");
    EXPECT_NE(boot, other);
    CSLogger::RemoveFileLogger(boot);
    CSLogger::RemoveFileLogger(boot);
    CSLogger::RemoveFileLogger(0);
    CSLogger::Log(CSLogger::INFO, "one");
    CSLogger::RemoveFileLogger(other);
    EXPECT_THAT(Host().BootLog(), IsEmpty());
    EXPECT_THAT(Host().Syslog(), ElementsAre("info one"));
}

TEST_F(CSLoggerTest, AFileLoggerReplacesTheOneOfTheSameName)
{
    const CSLogger::FileLoggerHandle failed = CSLogger::AddFileLogger("configstore-boot");
    CSLogger::Log(CSLogger::INFO, "first load");
    const CSLogger::FileLoggerHandle boot = CSLogger::AddFileLogger("configstore-boot");
    EXPECT_NE(boot, failed);
    CSLogger::RemoveFileLogger(failed);
    CSLogger::Log(CSLogger::INFO, "second load");
    CSLogger::RemoveFileLogger(boot);
    CSLogger::Log(CSLogger::INFO, "after");
    EXPECT_THAT(Host().BootLog(), ElementsAre("info second load"));
}

TEST_F(CSLoggerTest, ALogThatCannotBeOpenedIsSkippedAndTriedAgain)
{
    Host().MakeFolder(LOG_FILE);
    Host().MakeFolder("/var/log/talvor/configstore-boot.log");
    EXPECT_EQ(CSLogger::AddFileLogger("configstore-boot"), 0u);
    CSLogger::Log(CSLogger::INFO, "lost");
    Host().Remove(LOG_FILE);
    CSLogger::Log(CSLogger::INFO, "kept");
    EXPECT_THAT(Host().Log(), ElementsAre("info kept"));
}

TEST_F(CSLoggerTest, AMissingLogFolderIsCreated)
{
    Host().Remove("/var/log");
    CSLogger::Log(CSLogger::INFO, "first");
    EXPECT_THAT(Host().Log(), ElementsAre("info first"));
}

TEST_F(CSLoggerTest, TheLogFollowsTheHostRoot)
{
    CSLogger::Log(CSLogger::INFO, "here");
    {
        const TestHost other;
        CSLogger::Log(CSLogger::INFO, "there");
        EXPECT_THAT(other.Log(), ElementsAre("info there"));
    }
    SetHostRoot(Host().Root());
    CSLogger::Log(CSLogger::INFO, "here again");
    EXPECT_THAT(Host().Log(), ElementsAre("info here", "info here again"));
}

TEST_F(CSLoggerTest, VerboseLinesAlsoGoToStandardError)
{
    testing::internal::CaptureStderr();
    CSLogger::SetVerbose(true);
    CSLogger::Log(CSLogger::WARNING, "loud");
    CSLogger::SetVerbose(false);
    CSLogger::Log(CSLogger::WARNING, "quiet");
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_THAT(output, EndsWith("] loud\n"));
    EXPECT_THAT(output, HasSubstr(" warning ["));
}

TEST_F(CSLoggerTest, ALineThatDoesNotFitLeavesNoHoleInAStandardErrorThatDoesNotAppend)
{
    const StandardErrorFile file(Host().Real("/stderr"));
    CSLogger::SetVerbose(true);
    CSLogger::Log(CSLogger::INFO, "first");
    const std::string first = Host().ReadFile("/stderr");
    {
        const FileSizeLimit limit(first.size() + 10);
        CSLogger::Log(CSLogger::INFO, "second");
        EXPECT_EQ(Host().ReadFile("/stderr"), first);
    }
    CSLogger::Log(CSLogger::INFO, "third");
    CSLogger::SetVerbose(false);
    EXPECT_THAT(Lines(Host().ReadFile("/stderr")),
                ElementsAre(EndsWith("] first"), MatchesRegex("[0-9].*1 log lines were lost: File too large"),
                            MatchesRegex("[0-9].*third")));
}

TEST_F(CSLoggerTest, AForkedChildLogsItsOwnProcess)
{
    CSLogger::Log(CSLogger::INFO, "parent");
    const pid_t child = InChild([] { CSLogger::Log(CSLogger::INFO, "child"); });
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    const std::vector<std::string> lines = Lines(Host().ReadFile(LOG_FILE));
    EXPECT_THAT(lines, ElementsAre(EndsWith("[" + std::to_string(getpid()) + "] parent"),
                                   EndsWith("[" + std::to_string(child) + "] child")));
}

TEST_F(CSLoggerTest, LinesOfSeveralProcessesNeverMix)
{
    const std::string text(20'000, 'y');
    std::vector<pid_t> children;
    for (int i = 0; i < 4; ++i) {
        children.push_back(InChild([&text] {
            for (int line = 0; line < 25; ++line) {
                CSLogger::Log(CSLogger::INFO, "%s", text.c_str());
            }
        }));
    }
    for (const pid_t child : children) {
        EXPECT_EQ(waitpid(child, nullptr, 0), child);
    }
    const std::vector<std::string> log = Host().Log();
    EXPECT_EQ(log.size(), 100u);
    EXPECT_THAT(log, Each("info " + text));
}
