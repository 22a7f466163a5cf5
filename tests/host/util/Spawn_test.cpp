#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>

#include "HostUtil.h"

namespace
{
int StatusOf(pid_t child)
{
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}
}  // namespace

TEST(HostSpawn, RunsAProgramWithItsArguments)
{
    const char* const argv[] = {"/bin/sh", "-c", "[ \"$1\" = 'a b;c' ] && exit 7", "name", "a b;c", nullptr};
    const int status = StatusOf(HostSpawn(argv));
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(HostSpawn, TellsASignalFromAnExit)
{
    const char* const argv[] = {"/bin/sh", "-c", "kill -9 $$", nullptr};
    const int status = StatusOf(HostSpawn(argv));
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), 9);
}

TEST(HostSpawn, AProgramThatCannotBeExecutedIsAFailedStart)
{
    const char* const missing[] = {"/no/such/program", nullptr};
    EXPECT_EQ(HostSpawn(missing), -1);
    EXPECT_EQ(errno, ENOENT);
    const char* const folder[] = {"/tmp", nullptr};
    EXPECT_EQ(HostSpawn(folder), -1);
    EXPECT_EQ(errno, EACCES);
}

TEST(HostSpawn, NoProgramIsAFailedStart)
{
    const char* const none[] = {nullptr};
    EXPECT_EQ(HostSpawn(none), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(HostSpawn(nullptr), -1);
}
