#include <gmock/gmock.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "HostUtil.h"
#include "TestHost.h"

namespace fs = std::filesystem;
using testing::StartsWith;

namespace
{
class HostRootTest : public HostTest
{
protected:
    void Link(const std::string& path, const std::string& target) { fs::create_symlink(target, Host().Real(path)); }
};
}  // namespace

TEST_F(HostRootTest, ALogicalPathLiesUnderTheRoot)
{
    EXPECT_EQ(HostPath("/etc/talvor"), Host().Real("/etc/talvor"));
    EXPECT_EQ(HostPath("/"), Host().Real("/"));
    EXPECT_FALSE(IsRealHost());
}

TEST_F(HostRootTest, OnTheRealHostAPathIsItself)
{
    SetHostRoot("/");
    EXPECT_TRUE(IsRealHost());
    EXPECT_EQ(HostPath("/proc/self/status"), "/proc/self/status");
    EXPECT_EQ(HostRealPath("/proc/self/.."), "/proc");
    EXPECT_EQ(HostRealPath("/proc/no such thing"), std::nullopt);
    SetHostRoot(Host().Root());
}

TEST_F(HostRootTest, ARootIsKeptAbsoluteAndWithoutTrailingSlash)
{
    SetHostRoot(Host().Root() + "/etc/./talvor/../");
    EXPECT_EQ(HostRoot(), Host().Real("/etc"));
    EXPECT_THROW(SetHostRoot(""), fs::filesystem_error);
    SetHostRoot("relative");
    EXPECT_EQ(HostRoot(), (fs::current_path() / "relative").string());
    SetHostRoot(Host().Root());
}

TEST_F(HostRootTest, DotDotStopsAtTheRoot)
{
    EXPECT_EQ(HostPath("/../../etc/passwd"), Host().Real("/etc/passwd"));
    EXPECT_EQ(HostPath("/etc/../../.."), Host().Real("/"));
}

TEST_F(HostRootTest, AnAbsoluteLinkIsFollowedInsideTheRoot)
{
    Host().WriteFile("/etc/real.conf", "inside");
    Link("/etc/link.conf", "/etc/real.conf");
    EXPECT_EQ(HostPath("/etc/link.conf"), Host().Real("/etc/real.conf"));
    EXPECT_EQ(HostRealPath("/etc/link.conf"), "/etc/real.conf");
}

TEST_F(HostRootTest, ARelativeLinkCannotClimbOutOfTheRoot)
{
    Link("/etc/up", "../../../../../../../etc");
    EXPECT_EQ(HostPath("/etc/up/passwd"), Host().Real("/etc/passwd"));
}

TEST_F(HostRootTest, ALinkToAFolderIsFollowedInTheMiddleOfAPath)
{
    Link("/var/conf", "/etc/talvor");
    EXPECT_EQ(HostPath("/var/conf/platform"), Host().Real("/etc/talvor/platform"));
    EXPECT_EQ(HostPath("/var/conf/../x"), Host().Real("/etc/x"));
}

TEST_F(HostRootTest, TheLastComponentsNeedNotExist)
{
    Link("/var/dangling", "/etc/new/place");
    EXPECT_EQ(HostPath("/no/such/folder/file"), Host().Real("/no/such/folder/file"));
    EXPECT_EQ(HostPath("/var/dangling"), Host().Real("/etc/new/place"));
    EXPECT_EQ(HostRealPath("/var/dangling"), std::nullopt);
}

TEST_F(HostRootTest, ALinkInTheLastComponentCanBeLeftUnfollowed)
{
    Link("/var/conf", "/etc/talvor");
    Link("/etc/talvor/link", "/etc/passwd");
    EXPECT_EQ(HostPathNoFollow("/var/conf/link"), Host().Real("/etc/talvor/link"));
    EXPECT_EQ(HostPathNoFollow("/var/conf"), Host().Real("/var/conf"));
}

TEST_F(HostRootTest, ALinkLoopLeadsNowhere)
{
    Link("/etc/a", "/etc/b");
    Link("/etc/b", "/etc/a");
    EXPECT_FALSE(File_Exists("/etc/a"));
    EXPECT_EQ(HostRealPath("/etc/a"), std::nullopt);
    EXPECT_THAT(HostPath("/etc/a"), StartsWith("/dev/null/"));
    EXPECT_NE(HostReplaceFile("/etc/a/file", "x"), 0);
    EXPECT_EQ(HostPathNoFollow("/etc/a"), Host().Real("/etc/a"));
}

TEST_F(HostRootTest, FortyLinksAreFollowedAndNoMore)
{
    Host().WriteFile("/etc/link0", "");
    for (int i = 1; i <= 41; ++i) {
        Link("/etc/link" + std::to_string(i), "link" + std::to_string(i - 1));
    }
    EXPECT_TRUE(File_Exists("/etc/link40"));
    EXPECT_FALSE(File_Exists("/etc/link41"));
}

TEST_F(HostRootTest, ARealPathNeedsEveryComponent)
{
    Host().WriteFile("/etc/file", "");
    EXPECT_EQ(HostRealPath("/etc//./talvor/"), "/etc/talvor");
    EXPECT_EQ(HostRealPath("/"), "/");
    EXPECT_EQ(HostRealPath("/etc/missing/.."), std::nullopt);
    EXPECT_EQ(HostRealPath("/etc/file/.."), std::nullopt);
    EXPECT_EQ(HostRealPath(""), std::nullopt);
}

TEST_F(HostRootTest, AnyFileTypeExists)
{
    Host().WriteFile("/etc/file", "");
    EXPECT_TRUE(File_Exists("/etc/file"));
    EXPECT_TRUE(File_Exists("/etc/talvor"));
    EXPECT_FALSE(File_Exists("/etc/missing"));
    EXPECT_FALSE(File_Exists(nullptr));
}

TEST_F(HostRootTest, AnswersFollowTheFileSystem)
{
    EXPECT_EQ(HostPath("/etc/later"), Host().Real("/etc/later"));
    Link("/etc/later", "/var");
    EXPECT_EQ(HostPath("/etc/later"), Host().Real("/var"));
}
