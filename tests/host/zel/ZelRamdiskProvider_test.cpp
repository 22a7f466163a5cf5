#include <gmock/gmock.h>

#include <string>

#include "HostUtil.h"
#include "PrivateNamespace.h"
#include "TestHost.h"
#include "ZEL.h"
#include "ZelTestSupport.h"
#include "ZelTreeReader.h"

class ZelRamdiskProvider : public HostTest
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
};

TEST_F(ZelRamdiskProvider, TheLimitsOfARamdiskAreReadBackAsSet)
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

TEST_F(ZelRamdiskProvider, LimitsOutOfRangeOrOrderAreRefused)
{
    EXPECT_EQ(SetLimits("configstore", -1, 90), ORV_BAD_PARAM);
    EXPECT_EQ(SetLimits("configstore", 80, 101), ORV_BAD_PARAM);
    EXPECT_EQ(SetLimits("configstore", 90, 80), ORV_BAD_PARAM);
    EXPECT_FALSE(Host().Exists("/var/run/talvor/zel"));
}

TEST_F(ZelRamdiskProvider, ARamdiskNameNeverLeadsOutOfItsFolder)
{
    for (const std::string& name : {std::string(), std::string("."), std::string(".."), std::string("../../x"),
                                    std::string("a/b"), std::string(300, 'n')}) {
        ZEL_MemUsageLimit limit = {};
        EXPECT_EQ(SetLimits(name, 80, 90), ORV_BAD_PARAM) << name;
        EXPECT_EQ(GetLimits(name, limit), ORV_NOT_FOUND) << name;
    }
}

TEST_F(ZelRamdiskProvider, LimitsThatCannotBeKeptAreAFailureThatNamesTheRamdisk)
{
    Host().WriteFile("/var/run/talvor/zel", "a file where the folder should be");
    EXPECT_EQ(SetLimits("configstore", 80, 90), ORV_FAILURE);
    ASSERT_EQ(Host().Log().size(), 1u);
    EXPECT_NE(Host().Log()[0].find("usage limits of ramdisk configstore in /var/run/talvor/zel"), std::string::npos);
}

TEST_F(ZelRamdiskProvider, KeptLimitsThatAreGarbageAreAFailure)
{
    Host().WriteFile("/var/run/talvor/zel/memUsageLimit/configstore", "eighty");
    ZEL_MemUsageLimit limit = {};
    EXPECT_EQ(GetLimits("configstore", limit), ORV_FAILURE);
}

TEST_F(ZelRamdiskProvider, AMountedRamdiskIsListedAndMeasuredAgainstItsLimits)
{
    Host().MakeFolder("/mnt/disk");
    const std::string unavailable = RunInPrivateNamespace([this] {
        ASSERT_EQ(HostMount("none", "/mnt/disk", "quenfs", 0, "0,1,0,0,0,00755,disk"), 0);
        EXPECT_THAT(Instances("/system/quenfs/ramdisks"), testing::ElementsAre("disk"));
        Reading stats = Read("/system/quenfs/ramdisks/<ramdisk>/stats", {"disk"});
        EXPECT_EQ(stats["totalBytes"] + " " + stats["usedBytes"] + " " + stats["state"], "1048576 0 normal");
        EXPECT_EQ(stats["mountPoint"], "/mnt/disk");
        EXPECT_EQ(SetLimits("disk", 50, 75), ORV_OK);
        Host().WriteFile("/mnt/disk/half", std::string(512 << 10, 'x'));
        stats = Read("/system/quenfs/ramdisks/<ramdisk>/stats", {"disk"});
        EXPECT_EQ(stats["usedPercent"] + " " + stats["state"], "50 warning");
        Host().WriteFile("/mnt/disk/quarter", std::string(256 << 10, 'x'));
        EXPECT_EQ(Read("/system/quenfs/ramdisks/<ramdisk>/stats", {"disk"})["state"], "error");
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}

TEST_F(ZelRamdiskProvider, ARamdiskThatAnotherFileSystemCoversIsNotMeasured)
{
    Host().MakeFolder("/mnt/disk");
    const std::string unavailable = RunInPrivateNamespace([] {
        ASSERT_EQ(HostMount("none", "/mnt/disk", "quenfs", 0, "0,1,0,0,0,00755,disk"), 0);
        EXPECT_EQ(Read("/system/quenfs/ramdisks/<ramdisk>/stats", {"disk"})["totalBytes"], "1048576");
        ASSERT_EQ(HostMount("none", "/mnt/disk", "tmpfs", 0, "size=2m"), 0);
        EXPECT_EQ(Read("/system/quenfs/ramdisks/<ramdisk>/stats", {"disk"}).status, ORV_NOT_FOUND);
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}

TEST_F(ZelRamdiskProvider, LimitsThatAreJustBeingSetAreNoRamdisk)
{
    EXPECT_EQ(SetLimits("disk", 50, 75), ORV_OK);
    Host().WriteFile("/var/run/talvor/zel/memUsageLimit/.new-a1B2c3", "50");
    EXPECT_THAT(Instances("/system/quenfs/ramdisks"), testing::ElementsAre("disk"));
    EXPECT_EQ(SetLimits(".new-a1B2c3", 50, 75), ORV_BAD_PARAM);
}

TEST_F(ZelRamdiskProvider, FileSystemsInMemoryWithoutANameAreNoRamdisks)
{
    Host().MakeFolder("/mnt/disk");
    const std::string unavailable = RunInPrivateNamespace([] {
        ASSERT_EQ(HostMount("tmpfs", "/mnt/disk", "tmpfs", 0, "size=1m"), 0);
        EXPECT_THAT(Instances("/system/quenfs/ramdisks"), testing::IsEmpty());
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}
