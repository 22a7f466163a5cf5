#include <gmock/gmock.h>
#include <sys/stat.h>

#include <string>

#include "HostUtil.h"
#include "PrivateNamespace.h"
#include "TestHost.h"
#include "ZEL.h"
#include "ZelTestSupport.h"
#include "ZelTreeReader.h"

class ZelInodeProvider : public HostTest
{
protected:
    ino_t InodeOf(const std::string& path)
    {
        struct stat found = {};
        EXPECT_EQ(stat(Host().Real(path).c_str(), &found), 0) << path;
        return found.st_ino;
    }

    ORV_ReturnStatus GetStats(ino_t inode, ZEL_InodeStats& stats)
    {
        const Params instance(1, {static_cast<std::int64_t>(inode)});
        return ZEL_Get(ZEL_NODE_system_quenfs_inodes_stats, instance.list, &stats, sizeof stats);
    }
};

TEST_F(ZelInodeProvider, AnInodeBelongsToTheTardiskThatDeliveredItsFile)
{
    Host().WriteFile("/etc/net.conf", "12345").WriteFile("/etc/time.conf", "1");
    Host().WithKernel({.tardisks = {{"net.v00", {"/etc/missing", "/etc/net.conf"}}, {"time.v00", {"/etc/time.conf"}}}});
    ZEL_InodeStats stats = {};
    ASSERT_EQ(GetStats(InodeOf("/etc/net.conf"), stats), ORV_OK);
    EXPECT_STREQ(stats.tardisk, "net.v00");
    EXPECT_EQ(stats.inode, InodeOf("/etc/net.conf"));
    EXPECT_EQ(stats.sizeBytes, 5u);
    ASSERT_EQ(GetStats(InodeOf("/etc/time.conf"), stats), ORV_OK);
    EXPECT_STREQ(stats.tardisk, "time.v00");
}

TEST_F(ZelInodeProvider, TheTardisksOwnCopyOfAChangedFileBelongsToItToo)
{
    Host().WriteFile("/etc/net.conf", "changed").WriteFile("/etc/.#net.conf", "delivered");
    Host().WithKernel({.tardisks = {{"net.v00", {"/etc/net.conf"}}}});
    ZEL_InodeStats stats = {};
    ASSERT_EQ(GetStats(InodeOf("/etc/.#net.conf"), stats), ORV_OK);
    EXPECT_STREQ(stats.tardisk, "net.v00");
}

TEST_F(ZelInodeProvider, AnInodeThatNoTardiskDeliveredIsNotFound)
{
    Host().WriteFile("/etc/net.conf", "x");
    ZEL_InodeStats stats = {};
    EXPECT_EQ(GetStats(InodeOf("/etc/net.conf"), stats), ORV_NOT_FOUND);
}

TEST_F(ZelInodeProvider, TardiskListsOfAnotherShapeAreAFailureThatNamesTheFile)
{
    for (const char* facts : {R"({"tardisks": []})", R"({"tardisks": 7})",
                              R"({"tardisks": {"net.v00": "/etc/net.conf"}})", R"({"tardisks": {"net.v00": [7]}})"}) {
        Host().WriteFile("/etc/talvor/platform/kernel.json", facts).ClearLogs();
        ZEL_InodeStats stats = {};
        EXPECT_EQ(GetStats(1, stats), ORV_FAILURE) << facts;
        EXPECT_EQ(Host().Log(), std::vector<std::string>{"error The kernel's facts in /etc/talvor/platform/kernel.json "
                                                         "give no files by tardisk"});
    }
}

TEST_F(ZelInodeProvider, FactsWithoutTardisksTellOfNoDeliveredFile)
{
    Host().WriteFile("/etc/talvor/platform/kernel.json", "{}");
    ZEL_InodeStats stats = {};
    EXPECT_EQ(GetStats(1, stats), ORV_NOT_FOUND);
    EXPECT_THAT(Instances("/system/quenfs/inodes"), testing::IsEmpty());
    EXPECT_THAT(Host().Log(), testing::IsEmpty());
}

TEST_F(ZelInodeProvider, OneSnapshotReportsBadTardiskListsOnce)
{
    Host().WriteFile("/etc/talvor/platform/kernel.json", R"({"tardisks": 7})");
    const ZEL_Snapshot snapshot;
    ZEL_InodeStats stats = {};
    EXPECT_EQ(GetStats(1, stats), ORV_FAILURE);
    EXPECT_EQ(GetStats(2, stats), ORV_FAILURE);
    EXPECT_EQ(Host().Log().size(), 1u);
}

TEST_F(ZelInodeProvider, DeliveredInodesAreListed)
{
    Host().WriteFile("/etc/net.conf", "changed").WriteFile("/etc/.#net.conf", "delivered").WriteFile("/etc/x", "x");
    Host().WithKernel({.tardisks = {{"net.v00", {"/etc/net.conf", "/etc/missing"}}}});
    EXPECT_THAT(Instances("/system/quenfs/inodes"),
                testing::UnorderedElementsAre(std::to_string(InodeOf("/etc/net.conf")),
                                              std::to_string(InodeOf("/etc/.#net.conf"))));
    ZEL_InodeStats stats = {};
    struct stat file = {};
    ASSERT_EQ(stat(Host().Real("/etc/net.conf").c_str(), &file), 0);
    ASSERT_EQ(GetStats(file.st_ino, stats), ORV_OK);
    EXPECT_EQ(stats.device, file.st_dev);
}

TEST_F(ZelInodeProvider, OneSnapshotLooksAtTheFilesOnce)
{
    Host().WriteFile("/etc/net.conf", "x");
    Host().WithKernel({.tardisks = {{"net.v00", {"/etc/net.conf", "/etc/later"}}}});
    ZEL_InodeStats stats = {};
    {
        const ZEL_Snapshot snapshot;
        EXPECT_EQ(GetStats(InodeOf("/etc/net.conf"), stats), ORV_OK);
        Host().WriteFile("/etc/later", "x");
        EXPECT_EQ(GetStats(InodeOf("/etc/later"), stats), ORV_NOT_FOUND);
    }
    EXPECT_EQ(GetStats(InodeOf("/etc/later"), stats), ORV_OK);
}

TEST_F(ZelInodeProvider, ANumberThatTwoFileSystemsUseTellsNothing)
{
    Host().MakeFolder("/a");
    Host().MakeFolder("/b");
    Host().WithKernel({.tardisks = {{"a.v00", {"/a/file"}}, {"b.v00", {"/b/file"}}}});
    const std::string unavailable = RunInPrivateNamespace([this] {
        ASSERT_EQ(HostMount("none", "/a", "tmpfs", 0, nullptr) + HostMount("none", "/b", "tmpfs", 0, nullptr), 0);
        Host().WriteFile("/a/file", "1").WriteFile("/b/file", "1");
        ASSERT_EQ(InodeOf("/a/file"), InodeOf("/b/file"));
        ZEL_InodeStats stats = {};
        EXPECT_EQ(GetStats(InodeOf("/a/file"), stats), ORV_NOT_FOUND);
        EXPECT_THAT(Instances("/system/quenfs/inodes"), testing::IsEmpty());
        Host().Remove("/b/file");
        EXPECT_EQ(GetStats(InodeOf("/a/file"), stats), ORV_OK);
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}
