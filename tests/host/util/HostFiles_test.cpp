#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

#include "CSLogger.h"
#include "FileSizeLimit.h"
#include "HostUtil.h"
#include "TestHost.h"

namespace fs = std::filesystem;
using testing::ElementsAre;

namespace
{
class HostFilesTest : public HostTest
{
protected:
    void Link(const std::string& path, const std::string& target) { fs::create_symlink(target, Host().Real(path)); }

    void MakeWorldWritable(const std::string& path) { chmod(Host().Real(path).c_str(), 01777); }

    mode_t Mode(const std::string& path)
    {
        struct stat status = {};
        EXPECT_EQ(stat(Host().Real(path).c_str(), &status), 0);
        return status.st_mode & 07777;
    }

    std::vector<std::string> Names(const std::string& folder)
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(Host().Real(folder))) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
};

// Opens and closes; the errno of a refused opening.
int Opening(const std::string& path, int flags)
{
    const int file = HostOpen(path, flags);
    if (file < 0) {
        return errno;
    }
    close(file);
    return 0;
}

// No more than @p more files can be opened.
class OpenFileLimit
{
public:
    explicit OpenFileLimit(rlim_t more)
    {
        getrlimit(RLIMIT_NOFILE, &before_);
        const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
        close(next);
        const struct rlimit limit = {static_cast<rlim_t>(next) + more, before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~OpenFileLimit() { setrlimit(RLIMIT_NOFILE, &before_); }

private:
    struct rlimit before_ = {};
};
}  // namespace

TEST_F(HostFilesTest, ACopyHasTheContentAndTheModeOfItsSource)
{
    const std::string content(3'000'000, 'c');
    Host().WriteFile("/etc/from", content);
    chmod(Host().Real("/etc/from").c_str(), 0600);
    EXPECT_EQ(HostCopyFile("/etc/from", "/var/to"), 0);
    EXPECT_TRUE(Host().ReadFile("/var/to") == content);
    EXPECT_EQ(Mode("/var/to"), 0600u);
}

TEST_F(HostFilesTest, AReplacedFileKeepsItsMode)
{
    Host().WriteFile("/etc/file", "old");
    chmod(Host().Real("/etc/file").c_str(), 0640);
    EXPECT_EQ(HostReplaceFile("/etc/file", "new"), 0);
    EXPECT_EQ(Host().ReadFile("/etc/file"), "new");
    EXPECT_EQ(Mode("/etc/file"), 0640u);
    EXPECT_EQ(HostReplaceFile("/etc/fresh", ""), 0);
    EXPECT_EQ(Mode("/etc/fresh"), 0644u);
}

TEST_F(HostFilesTest, AReaderOfTheReplacedFileKeepsTheOldContent)
{
    Host().WriteFile("/etc/file", "old");
    const int reader = HostOpen("/etc/file", O_RDONLY);
    EXPECT_EQ(HostReplaceFile("/etc/file", "newer"), 0);
    char content[8] = {};
    EXPECT_EQ(read(reader, content, sizeof content), 3);
    EXPECT_STREQ(content, "old");
    close(reader);
}

TEST_F(HostFilesTest, WhatAKilledProcessLeftBehindGoesWithTheNextReplacementInItsFolder)
{
    Host().WriteFile("/data/.new-Ab3dE9", "half").WriteFile("/other/.new-Ab3dE9", "half");
    Host().WriteFile("/data/.new-Ab3dE9x", "").WriteFile("/data/new-Ab3dE9", "").MakeFolder("/data/.new-folder");
    EXPECT_EQ(HostReplaceFile("/data/file", ""), 0);
    EXPECT_THAT(Names("/data"), ElementsAre(".new-Ab3dE9x", ".new-folder", "file", "new-Ab3dE9"));
    EXPECT_THAT(Names("/other"), ElementsAre(".new-Ab3dE9"));
    EXPECT_EQ(HostCopyFile("/data/file", "/other/file"), 0);
    EXPECT_THAT(Names("/other"), ElementsAre("file"));
}

TEST_F(HostFilesTest, AFileThatIsAtWorkIsNotTakenForALeftover)
{
    Host().WriteFile("/data/.new-Ab3dE9", "half");
    const int atWork = HostOpen("/data/.new-Ab3dE9", O_RDWR);
    ASSERT_EQ(flock(atWork, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(HostReplaceFile("/data/file", ""), 0);
    EXPECT_THAT(Names("/data"), ElementsAre(".new-Ab3dE9", "file"));
    close(atWork);
    EXPECT_EQ(HostReplaceFile("/data/file", ""), 0);
    EXPECT_THAT(Names("/data"), ElementsAre("file"));
}

TEST_F(HostFilesTest, WhereAnyoneMayCreateFilesNoneIsTakenForALeftover)
{
    Host().WriteFile("/data/.new-Ab3dE9", "somebody's");
    MakeWorldWritable("/data");
    EXPECT_EQ(HostReplaceFile("/data/file", ""), 0);
    EXPECT_THAT(Names("/data"), ElementsAre(".new-Ab3dE9", "file"));
}

TEST_F(HostFilesTest, AFailureIsAnErrnoAndLeavesNothingBehind)
{
    Host().WriteFile("/data/from", "content");
    Host().WriteFile("/data/folder/inside", "");
    EXPECT_EQ(HostCopyFile("/data/missing", "/data/to"), ENOENT);
    EXPECT_EQ(HostCopyFile("/data/folder", "/data/to"), EISDIR);
    EXPECT_EQ(HostCopyFile("/data/from", "/data/folder"), EISDIR);
    EXPECT_EQ(HostCopyFile("/data/from", "/data/missing/to"), ENOENT);
    EXPECT_EQ(HostReplaceFile("/data/folder", "x"), EISDIR);
    EXPECT_EQ(HostReplaceFile("/data/from/below", "x"), ENOTDIR);
    EXPECT_THAT(Names("/data"), ElementsAre("folder", "from"));
    EXPECT_THAT(Names("/data/folder"), ElementsAre("inside"));
}

TEST_F(HostFilesTest, AnInterruptedWriteLeavesTheOldFileAsItWas)
{
    Host().WriteFile("/data/from", std::string(100'000, 'n'));
    Host().WriteFile("/data/to", "old");
    {
        const FileSizeLimit limit(50'000);
        EXPECT_EQ(HostCopyFile("/data/from", "/data/to"), EFBIG);
        EXPECT_EQ(HostReplaceFile("/data/to", std::string(100'000, 'n')), EFBIG);
    }
    EXPECT_EQ(Host().ReadFile("/data/to"), "old");
    EXPECT_THAT(Names("/data"), ElementsAre("from", "to"));
}

TEST_F(HostFilesTest, AFolderThatCannotBeSyncedIsAWarningBecauseTheFileIsReplaced)
{
    CSLogger::Log(CSLogger::INFO, "opens the log");
    Host().WriteFile("/data/from", "content");
    {
        const OpenFileLimit limit(2);  // the source and the copy, but not their folder
        EXPECT_EQ(HostCopyFile("/data/from", "/data/copy"), 0);
    }
    {
        const OpenFileLimit limit(1);
        EXPECT_EQ(HostReplaceFile("/data/from", "new"), 0);
    }
    EXPECT_EQ(Host().ReadFile("/data/copy"), "content");
    EXPECT_EQ(Host().ReadFile("/data/from"), "new");
    EXPECT_THAT(Names("/data"), ElementsAre("copy", "from"));
    const std::string reason = " is replaced but its folder is not synced: Too many open files";
    EXPECT_THAT(Host().Log(),
                ElementsAre("info opens the log", "warning /data/copy" + reason, "warning /data/from" + reason));
}

TEST_F(HostFilesTest, ReplacingALinkLeavesItsTargetAlone)
{
    Host().WriteFile("/etc/victim", "precious");
    Link("/tmp/image-info.csv", "/etc/victim");
    EXPECT_EQ(HostReplaceFile("/tmp/image-info.csv", "list"), 0);
    EXPECT_EQ(Host().ReadFile("/etc/victim"), "precious");
    EXPECT_EQ(Host().ReadFile("/tmp/image-info.csv"), "list");
}

TEST_F(HostFilesTest, ACopyFromAPipeIsRefusedWithoutWaiting)
{
    ASSERT_EQ(mkfifo(Host().Real("/etc/pipe").c_str(), 0600), 0);
    EXPECT_EQ(HostCopyFile("/etc/pipe", "/etc/to"), EINVAL);
    EXPECT_FALSE(Host().Exists("/etc/to"));
}

TEST_F(HostFilesTest, OnlyARegularFileIsOpenedAsOne)
{
    Host().WriteFile("/etc/file", "text");
    ASSERT_EQ(mkfifo(Host().Real("/etc/pipe").c_str(), 0600), 0);
    const auto opening = [](const char* path) {
        const int file = HostOpenRegular(path);
        const int reason = errno;
        return file >= 0 ? close(file) : reason;
    };
    EXPECT_EQ(opening("/etc/file"), 0);
    EXPECT_EQ(opening("/etc/pipe"), EINVAL);
    EXPECT_EQ(opening("/etc"), EISDIR);
    EXPECT_EQ(opening("/etc/missing"), ENOENT);
}

TEST_F(HostFilesTest, CreatingInAWorldWritableFolderFollowsNoLink)
{
    MakeWorldWritable("/tmp");
    Host().WriteFile("/etc/victim", "precious");
    Link("/tmp/config-upgrade-marker", "/etc/victim");
    Link("/tmp/dangling", "/etc/planted");
    EXPECT_EQ(Opening("/tmp/config-upgrade-marker", O_WRONLY | O_CREAT | O_TRUNC), ELOOP);
    EXPECT_EQ(Opening("/tmp/dangling", O_WRONLY | O_CREAT), ELOOP);
    EXPECT_EQ(Host().ReadFile("/etc/victim"), "precious");
    EXPECT_FALSE(Host().Exists("/etc/planted"));
    EXPECT_EQ(Opening("/tmp/fresh", O_WRONLY | O_CREAT), 0);
}

TEST_F(HostFilesTest, ElsewhereALinkIsFollowedUnlessTheCallerForbidsIt)
{
    Host().WriteFile("/var/target", "");
    Link("/etc/link", "/var/target");
    EXPECT_EQ(Opening("/etc/link", O_WRONLY | O_CREAT), 0);
    EXPECT_EQ(Opening("/etc/link", O_RDONLY), 0);
    EXPECT_EQ(Opening("/etc/link", O_RDONLY | O_NOFOLLOW), ELOOP);
}

TEST_F(HostFilesTest, AnOpenedFileIsClosedInChildPrograms)
{
    const int file = HostOpen("/etc/new", O_WRONLY | O_CREAT, 0600);
    EXPECT_EQ(fcntl(file, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(Mode("/etc/new"), 0600u);
    close(file);
    EXPECT_EQ(HostOpen("/etc/missing", O_RDONLY), -1);
}

TEST_F(HostFilesTest, FoldersAreMadeWithTheirParents)
{
    EXPECT_EQ(HostMakeFolders("/a/b/c"), 0);
    EXPECT_EQ(HostMakeFolders("/a/b/c"), 0);
    EXPECT_TRUE(fs::is_directory(Host().Real("/a/b/c")));
    Host().WriteFile("/a/file", "");
    EXPECT_EQ(HostMakeFolders("/a/file"), ENOTDIR);
    EXPECT_EQ(HostMakeFolders("/a/file/below"), ENOTDIR);
}

TEST_F(HostFilesTest, TheRootItselfIsNeverMade)
{
    SetHostRoot(Host().Real("/mistyped"));
    EXPECT_EQ(HostMakeFolders("/var/log/talvor"), ENOENT);
    SetHostRoot(Host().Root());
    EXPECT_FALSE(Host().Exists("/mistyped"));
}

TEST_F(HostFilesTest, FoldersAreMadeWhereALinkLeads)
{
    Link("/etc/data", "/var/data");
    EXPECT_EQ(HostMakeFolders("/etc/data/x"), 0);
    EXPECT_TRUE(fs::is_directory(Host().Real("/var/data/x")));
}
