#include "Program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "CommandTest.h"
#include "RealProgram.h"
#include "ZubEvents.h"

using ::testing::HasSubstr;

namespace
{
/// Runs the real program.
class ProgramTest : public CommandTest
{
protected:
    /// @param before, after  what the shell is told around the call.
    int Shell(const std::string& arguments, const std::string& after, const std::string& before = "")
    {
        const std::string command =
            before + "'" + PROGRAM + "' --root '" + Host().Root() + "' " + arguments + " " + after;
        std::array<const char*, 4> words{"/bin/sh", "-c", command.c_str(), nullptr};
        pid_t process = -1;
        EXPECT_EQ(posix_spawn(&process, words[0], nullptr, nullptr, const_cast<char**>(words.data()), environ), 0);
        return StatusOf(process);
    }

    /// Runs it with its outputs in /tmp/out and /tmp/err of the host.
    Ran RunProcess(const std::string& arguments)
    {
        Ran ran;
        ran.status = Shell(arguments, "> '" + Host().Real("/tmp/out") + "' 2> '" + Host().Real("/tmp/err") + "'");
        ran.output = Host().ReadFile("/tmp/out");
        ran.errors = Host().ReadFile("/tmp/err");
        return ran;
    }
};

/// "events --follow" of the real program, with a pipe from its output.
class FollowingProgram
{
public:
    explicit FollowingProgram(const std::string& root)
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        std::array<const char*, 7> words{PROGRAM.c_str(), "--root",   root.c_str(), "--json",
                                         "events",        "--follow", nullptr};
        EXPECT_EQ(posix_spawn(&process_, words[0], &actions, nullptr, const_cast<char**>(words.data()), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        output_ = fdopen(ends[0], "r");
    }
    ~FollowingProgram()
    {
        CloseOutput();
        if (process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
        }
    }
    FollowingProgram(const FollowingProgram&) = delete;
    FollowingProgram& operator=(const FollowingProgram&) = delete;

    std::string NextLine()
    {
        std::array<char, 1024> line{};
        return fgets(line.data(), static_cast<int>(line.size()), output_) != nullptr ? line.data() : "";
    }
    void CloseOutput()
    {
        if (output_ != nullptr) {
            fclose(std::exchange(output_, nullptr));
        }
    }
    void Send(int signal) const { kill(process_, signal); }
    int Status() { return StatusOf(std::exchange(process_, -1)); }

private:
    pid_t process_ = -1;
    FILE* output_ = nullptr;
};
}  // namespace

TEST_F(ProgramTest, ExitsWith0WhenDone1WhenItFailed2WhenTheCallWasWrong)
{
    FillStores();
    const Ran done = RunProcess("config list nimb/time");
    EXPECT_EQ(done.status, 0);
    EXPECT_THAT(done.output, HasSubstr("nimb/time/ntp"));
    EXPECT_EQ(done.errors, "");
    const Ran failed = RunProcess("config show a/b/c");
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.output, "");
    EXPECT_EQ(failed.errors, "configstorectl: config show: a/b/c: no such row in the config store\n");
    const Ran wrong = RunProcess("config show a/b");
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.output, "");
}

TEST_F(ProgramTest, PrintsHelpAndVersionAndExitsWith0)
{
    EXPECT_EQ(RunProcess("--help").status, 0);
    EXPECT_THAT(RunProcess("boot --help").output, HasSubstr("boot load"));
    EXPECT_THAT(RunProcess("config list --version").output, HasSubstr("configstorectl 1."));
}

TEST_F(ProgramTest, CopiesLogLinesToStandardErrorOnlyWhenVerbose)
{
    Host().WithStores();
    EXPECT_THAT(RunProcess("-v boot mode 1").errors, HasSubstr("Next boot mode set to 1"));
    EXPECT_EQ(RunProcess("boot mode 1").errors, "");
}

TEST_F(ProgramTest, FailsWhenItsOutputCannotBeWritten)
{
    FillStores();
    const std::string errors = " 2> '" + Host().Real("/tmp/err") + "'";
    EXPECT_EQ(Shell("config list", "> /dev/full" + errors), 1);
    EXPECT_EQ(Host().ReadFile("/tmp/err"),
              "configstorectl: standard output: cannot be written: No space left on device\n");
    EXPECT_EQ(Shell("--help", "> /dev/full" + errors), 1);
    EXPECT_EQ(Shell("config list", ">&-" + errors), 1);
    EXPECT_EQ(Host().ReadFile("/tmp/err"), "configstorectl: standard output: cannot be written: Bad file descriptor\n");
}

TEST_F(ProgramTest, NeverWritesItsOutputIntoAStoreWhenItsStreamsAreClosed)
{
    FillStores();
    EXPECT_EQ(Shell("boot mode 1", "<&- >&- 2>&-"), 1);
    EXPECT_EQ(Shell("config list", "<&- >&- 2>&-"), 1);
    EXPECT_TRUE(DBStore::Check("/etc/talvor/configstore/current-store-1"));
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM Config"), "4");
}

TEST_F(ProgramTest, EndsQuietlyWhenItsReaderHasGone)
{
    FillStores();
    Host().Sql(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) INSERT INTO Config "
        "(Component, ConfigGroup, Name, Identifier) SELECT 'big', 'group', 'key', i FROM n");
    const std::string status = "echo $? > '" + Host().Real("/tmp/status") + "'";
    EXPECT_EQ(Shell("config list", "2> '" + Host().Real("/tmp/err") + "'; " + status + "; } | true", "{ "), 0);
    EXPECT_EQ(Host().ReadFile("/tmp/status"), "1\n");
    EXPECT_EQ(Host().ReadFile("/tmp/err"), "");
}

TEST_F(ProgramTest, FollowsEventsUntilItIsToldToEnd)
{
    NimbConfigStore::DumpZub(NimbConfigStore::ZUB_SCHEMA_FILE_ERROR, 1, "first.json");
    FollowingProgram following(Host().Root());
    EXPECT_THAT(following.NextLine(), HasSubstr("first.json"));
    NimbConfigStore::DumpZub(NimbConfigStore::ZUB_SCHEMA_FILE_ERROR, 1, "second.json");
    EXPECT_THAT(following.NextLine(), HasSubstr("second.json"));
    following.Send(SIGTERM);
    EXPECT_EQ(following.Status(), 0);
}

TEST_F(ProgramTest, FollowsEventsUntilItsReaderHasGone)
{
    NimbConfigStore::RaiseSystemAlert("first");
    FollowingProgram following(Host().Root());
    EXPECT_THAT(following.NextLine(), HasSubstr("first"));
    following.CloseOutput();
    EXPECT_EQ(following.Status(), 0);
}
