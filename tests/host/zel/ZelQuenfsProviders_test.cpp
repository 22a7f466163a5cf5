#include <sys/stat.h>

#include <cstring>
#include <string>

#include "TestHost.h"
#include "ZEL.h"
#include "ZelTestSupport.h"

class ZelQuenfsProviders : public HostTest
{
protected:
    ORV_ReturnStatus SetLimits(const std::string& ramdisk, std::int64_t warning, std::int64_t error)
    {
        const Params instance(1, {ramdisk});
        const Params input(0, {warning, error});
        return ZEL_Set(ZEL_NODE_system_quenfs_ramdisks_memUsageLimit, instance.list, input.list, nullptr, nullptr);
    }

    ORV_ReturnStatus GetLimits(const std::string& ramdisk, ZEL_MemUsageLimit& limit)
    {
        const Params instance(1, {ramdisk});
        return ZEL_Get(ZEL_NODE_system_quenfs_ramdisks_memUsageLimit, instance.list, &limit, sizeof limit);
    }

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

TEST_F(ZelQuenfsProviders, TheLimitsOfARamdiskAreReadBackAsSet)
{
    ZEL_MemUsageLimit limit = {};
    EXPECT_EQ(GetLimits("configstore", limit), ORV_NOT_FOUND);
    EXPECT_EQ(SetLimits("configstore", 80, 90), ORV_OK);
    EXPECT_EQ(SetLimits("configstorebkp", 70, 75), ORV_OK);
    EXPECT_EQ(SetLimits("configstore", 81, 91), ORV_OK);
    ASSERT_EQ(GetLimits("configstore", limit), ORV_OK);
    EXPECT_EQ(limit.warningPercent, 81);
    EXPECT_EQ(limit.errorPercent, 91);
    EXPECT_EQ(Host().ReadFile("/var/run/talvor/zel/memUsageLimit/configstore"), "81 91\n");
}

TEST_F(ZelQuenfsProviders, LimitsOutOfRangeOrOrderAreRefused)
{
    EXPECT_EQ(SetLimits("configstore", -1, 90), ORV_BAD_PARAM);
    EXPECT_EQ(SetLimits("configstore", 80, 101), ORV_BAD_PARAM);
    EXPECT_EQ(SetLimits("configstore", 90, 80), ORV_BAD_PARAM);
    EXPECT_FALSE(Host().Exists("/var/run/talvor/zel"));
}

TEST_F(ZelQuenfsProviders, ARamdiskNameNeverLeadsOutOfItsFolder)
{
    for (const std::string& name : {std::string(), std::string("."), std::string(".."), std::string("../../x"),
                                    std::string("a/b"), std::string(300, 'n')}) {
        ZEL_MemUsageLimit limit = {};
        EXPECT_EQ(SetLimits(name, 80, 90), ORV_BAD_PARAM) << name;
        EXPECT_EQ(GetLimits(name, limit), ORV_NOT_FOUND) << name;
    }
}

TEST_F(ZelQuenfsProviders, LimitsThatCannotBeKeptAreAFailureThatNamesTheRamdisk)
{
    Host().WriteFile("/var/run/talvor/zel", "a file where the folder should be");
    EXPECT_EQ(SetLimits("configstore", 80, 90), ORV_FAILURE);
    ASSERT_EQ(Host().Log().size(), 1u);
    EXPECT_NE(Host().Log()[0].find("usage limits of ramdisk configstore in /var/run/talvor/zel"), std::string::npos);
}

TEST_F(ZelQuenfsProviders, KeptLimitsThatAreGarbageAreAFailure)
{
    Host().WriteFile("/var/run/talvor/zel/memUsageLimit/configstore", "eighty");
    ZEL_MemUsageLimit limit = {};
    EXPECT_EQ(GetLimits("configstore", limit), ORV_FAILURE);
}

TEST_F(ZelQuenfsProviders, AnInodeBelongsToTheTardiskThatDeliveredItsFile)
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

TEST_F(ZelQuenfsProviders, TheTardisksOwnCopyOfAChangedFileBelongsToItToo)
{
    Host().WriteFile("/etc/net.conf", "changed").WriteFile("/etc/.#net.conf", "delivered");
    Host().WithKernel({.tardisks = {{"net.v00", {"/etc/net.conf"}}}});
    ZEL_InodeStats stats = {};
    ASSERT_EQ(GetStats(InodeOf("/etc/.#net.conf"), stats), ORV_OK);
    EXPECT_STREQ(stats.tardisk, "net.v00");
}

TEST_F(ZelQuenfsProviders, AnInodeThatNoTardiskDeliveredIsNotFound)
{
    Host().WriteFile("/etc/net.conf", "x");
    ZEL_InodeStats stats = {};
    EXPECT_EQ(GetStats(InodeOf("/etc/net.conf"), stats), ORV_NOT_FOUND);
}

TEST_F(ZelQuenfsProviders, TardiskListsOfAnotherShapeAreAFailureThatNamesTheFile)
{
    for (const char* facts : {"{}", R"({"tardisks": []})", R"({"tardisks": 7})",
                              R"({"tardisks": {"net.v00": "/etc/net.conf"}})", R"({"tardisks": {"net.v00": [7]}})"}) {
        Host().WriteFile("/etc/talvor/platform/kernel.json", facts).ClearLogs();
        ZEL_InodeStats stats = {};
        EXPECT_EQ(GetStats(1, stats), ORV_FAILURE) << facts;
        EXPECT_EQ(Host().Log(), std::vector<std::string>{"error The kernel's facts in /etc/talvor/platform/kernel.json "
                                                         "give no files by tardisk"});
    }
}
