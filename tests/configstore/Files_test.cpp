#include "Files.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

namespace
{
class FilesTest : public HostTest
{
protected:
    void Link(const std::string& target, const std::string& path)
    {
        std::filesystem::create_symlink(target, Host().Real(path));
    }
};

bool RunCommand(std::vector<const char*> words)
{
    words.push_back(nullptr);
    return ExecCommand(words.data());
}
}  // namespace

TEST_F(FilesTest, AFileOfAnyTypeExistsAndALinkToNothingDoesNot)
{
    Host().WriteFile("/etc/file", "");
    Link("/etc/file", "/etc/link");
    Link("/etc/nothing", "/etc/dangling");
    Link("/etc/loop", "/etc/loop");
    EXPECT_TRUE(FileExists("/etc/file"));
    EXPECT_TRUE(FileExists("/etc/talvor"));
    EXPECT_TRUE(FileExists("/etc/link"));
    EXPECT_FALSE(FileExists("/etc/dangling"));
    EXPECT_FALSE(FileExists("/etc/loop"));
    EXPECT_FALSE(FileExists("/etc/file/below"));
}

TEST_F(FilesTest, RemovingAFileIsLoggedAsAnErrorLine)
{
    Host().WriteFile("/etc/x.conf", "text");
    EXPECT_TRUE(RemoveFile("/etc/x.conf"));
    EXPECT_FALSE(Host().Exists("/etc/x.conf"));
    EXPECT_THAT(Host().Log(), ElementsAre("error [/etc/x.conf] file removed."));
}

TEST_F(FilesTest, RemovingAMissingFileFailsWithItsErrorNumber)
{
    EXPECT_FALSE(RemoveFile("/etc/x.conf"));
    EXPECT_THAT(Host().Log(), ElementsAre("error Failed to remove: /etc/x.conf, err: 2"));
}

TEST_F(FilesTest, OnlyAnEmptyFolderIsRemoved)
{
    Host().WriteFile("/etc/full/x", "");
    Host().MakeFolder("/etc/empty");
    EXPECT_FALSE(RemoveFile("/etc/full"));
    EXPECT_TRUE(RemoveFile("/etc/empty"));
    EXPECT_TRUE(Host().Exists("/etc/full/x"));
}

TEST_F(FilesTest, RemovingALinkLeavesWhatItLeadsTo)
{
    Host().WriteFile("/etc/target", "");
    Link("/etc/target", "/etc/link");
    EXPECT_TRUE(RemoveFile("/etc/link"));
    EXPECT_TRUE(Host().Exists("/etc/target"));
    EXPECT_FALSE(Host().Exists("/etc/link"));
}

TEST_F(FilesTest, ACommandThatSucceedsIsNotLogged)
{
    EXPECT_TRUE(RunCommand({"/bin/true"}));
    EXPECT_TRUE(RunCommand({"/bin/sh", "-c", "exit 0"}));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(FilesTest, ACommandThatCannotBeStartedIsLoggedWithTheSystemsReason)
{
    EXPECT_FALSE(RunCommand({"/bin/no-such-program"}));
    EXPECT_THAT(Host().Log(), ElementsAre(AllOf(HasSubstr("error"), HasSubstr("No such file or directory"))));
}

TEST_F(FilesTest, ACommandsExitStatusOrSignalIsLogged)
{
    EXPECT_FALSE(RunCommand({"/bin/sh", "-c", "exit 37"}));
    EXPECT_FALSE(RunCommand({"/bin/sh", "-c", "kill -TERM $$"}));
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("37"), HasSubstr("15")));
}

TEST_F(FilesTest, ACommandThatCannotBeWaitedForIsLoggedWithItsProcess)
{
    // The kernel then forgets children as they end.
    const auto previous = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_FALSE(RunCommand({"/bin/true"}));
    std::signal(SIGCHLD, previous);
    EXPECT_THAT(Host().Log(), ElementsAre(AllOf(HasSubstr("No child processes"), Not(HasSubstr("%")))));
}

TEST_F(FilesTest, ATreeIsRemovedWithoutFollowingLinks)
{
    Host().WriteFile("/var/tree/a/b", "").WriteFile("/etc/kept", "");
    Link("/etc", "/var/tree/link");
    RemoveTree("/var/tree");
    EXPECT_FALSE(Host().Exists("/var/tree"));
    EXPECT_TRUE(Host().Exists("/etc/kept"));
    EXPECT_EQ(ThrownBy([] { RemoveTree("/var/tree"); }), "nothing");
}

TEST_F(FilesTest, AFolderIsListedByName)
{
    Host().WriteFile("/var/list/one", "");
    Host().MakeFolder("/var/list/two");
    EXPECT_THAT(ListFolder("/var/list"), UnorderedElementsAre("one", "two"));
}

TEST_F(FilesTest, AFolderThatCannotBeListedIsNamedByItsLogicalPath)
{
    Host().WriteFile("/var/file", "");
    for (const char* path : {"/var/none", "/var/file"}) {
        EXPECT_THAT(ThrownBy([path] { ListFolder(path); }), AllOf(HasSubstr(path), Not(HasSubstr(Host().Root()))));
    }
}
