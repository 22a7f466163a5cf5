#include <cstring>
#include <string>

#include "HostUtil.h"
#include "TestHost.h"
#include "ZEL.h"
#include "ZelTestSupport.h"

using ZelAccess = HostTest;

TEST_F(ZelAccess, TheSignatureOfThisInterfaceIsAccepted)
{
    EXPECT_EQ(ZEL_CheckSig(ZEL_DefsMD5Sum, ZEL_INTERFACE_VERSION), ORV_OK);
    EXPECT_EQ(ZEL_INTERFACE_VERSION, 21);
}

TEST_F(ZelAccess, AnotherSignatureOrVersionIsRefused)
{
    EXPECT_EQ(ZEL_CheckSig("00000000000000000000000000000000", ZEL_INTERFACE_VERSION), ORV_FAILURE);
    EXPECT_EQ(ZEL_CheckSig(ZEL_DefsMD5Sum, 20), ORV_FAILURE);
    EXPECT_EQ(ZEL_CheckSig(nullptr, ZEL_INTERFACE_VERSION), ORV_BAD_PARAM);
}

TEST_F(ZelAccess, AKernelOfAnotherInterfaceVersionIsRefused)
{
    Host().WriteFile("/etc/talvor/platform/kernel.json", R"({"interfaceVersion": 20})");
    EXPECT_EQ(ZEL_CheckSig(ZEL_DefsMD5Sum, ZEL_INTERFACE_VERSION), ORV_FAILURE);
}

TEST_F(ZelAccess, KernelFactsThatCannotBeReadDoNotMakeTheInterfaceUnusable)
{
    Host().Remove("/etc/talvor/platform/kernel.json");
    EXPECT_EQ(ZEL_CheckSig(ZEL_DefsMD5Sum, ZEL_INTERFACE_VERSION), ORV_OK);
    EXPECT_TRUE(Host().Log().empty());
}

TEST_F(ZelAccess, ATextIsCutToTheBufferAndTerminated)
{
    Host().WithKernel({.bootCmdLine = "quiet splash"});
    char buffer[6];
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_bootCmdLine, nullptr, buffer, sizeof buffer), ORV_OK);
    EXPECT_STREQ(buffer, "quiet");
}

TEST_F(ZelAccess, OtherDataThanTextIsGivenOnlyWhenItFits)
{
    char buffer[5] = "abcd";
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_bootOption, nullptr, buffer, 3), ORV_LIMIT_EXCEEDED);
    EXPECT_STREQ(buffer, "abcd");
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_bootOption, nullptr, buffer, 4), ORV_OK);
    EXPECT_EQ(std::string(buffer, 4), std::string(4, '\0'));
}

TEST_F(ZelAccess, AMissingBufferOrNodeIsRefused)
{
    char buffer[8];
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_bootCmdLine, nullptr, nullptr, 8), ORV_BAD_PARAM);
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_bootCmdLine, nullptr, buffer, 0), ORV_BAD_PARAM);
    EXPECT_EQ(ZEL_Get(static_cast<ZEL_NodeID>(999), nullptr, buffer, sizeof buffer), ORV_NOT_FOUND);
    EXPECT_EQ(ZEL_Set(static_cast<ZEL_NodeID>(999), nullptr, nullptr, nullptr, nullptr), ORV_NOT_FOUND);
}

TEST_F(ZelAccess, NodesAreReadAndSetOnlyWhereTheirDefinitionSaysSo)
{
    char buffer[8];
    const Params text(0, {std::string("x")});
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_sysAlert, nullptr, buffer, sizeof buffer), ORV_NOT_SUPPORTED);
    EXPECT_EQ(ZEL_Set(ZEL_NODE_system_bootCmdLine, nullptr, text.list, nullptr, nullptr), ORV_READ_ONLY);
}

TEST_F(ZelAccess, InstanceArgumentsMustMatchTheDefinition)
{
    char buffer[sizeof(ZEL_InodeStats)];
    const Params text(1, {std::string("42")});
    const Params two(1, {1, 2});
    const Params one(1, {1});
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_quenfs_inodes_stats, nullptr, buffer, sizeof buffer), ORV_BAD_PARAM);
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_quenfs_inodes_stats, text.list, buffer, sizeof buffer), ORV_BAD_PARAM);
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_quenfs_inodes_stats, two.list, buffer, sizeof buffer), ORV_BAD_PARAM);
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_bootCmdLine, one.list, buffer, sizeof buffer), ORV_BAD_PARAM);
}

TEST_F(ZelAccess, InputMustMatchTheDefinition)
{
    int output = 0;
    const Params number(0, {1});
    const Params text(0, {std::string("alert")});
    EXPECT_EQ(ZEL_Set(ZEL_NODE_system_sysAlert, nullptr, nullptr, nullptr, nullptr), ORV_BAD_PARAM);
    EXPECT_EQ(ZEL_Set(ZEL_NODE_system_sysAlert, nullptr, number.list, nullptr, nullptr), ORV_BAD_PARAM);
    EXPECT_EQ(ZEL_Set(ZEL_NODE_system_sysAlert, nullptr, text.list, &output, nullptr), ORV_BAD_PARAM);
    EXPECT_TRUE(Host().Events().empty());
}

TEST_F(ZelAccess, TheTypeOfAGetIsLookedUp)
{
    const ZEL_Type* type = nullptr;
    ASSERT_EQ(ZEL_LookupOutputTypeOfGet(ZEL_NODE_system_quenfs_inodes_stats, &type), ORV_OK);
    EXPECT_EQ(type->kind, ZEL_DATA_STRUCT);
    EXPECT_EQ(type->size, sizeof(ZEL_InodeStats));
    ZEL_ReleaseType(type);
    EXPECT_EQ(ZEL_LookupOutputTypeOfGet(ZEL_NODE_system_sysAlert, &type), ORV_NOT_SUPPORTED);
    EXPECT_EQ(ZEL_LookupOutputTypeOfGet(static_cast<ZEL_NodeID>(999), &type), ORV_NOT_FOUND);
    EXPECT_EQ(ZEL_LookupOutputTypeOfGet(ZEL_NODE_system_bootMAC, nullptr), ORV_BAD_PARAM);
    ZEL_ReleaseType(nullptr);
}

TEST_F(ZelAccess, SettingTheAlertNodeRaisesASystemAlert)
{
    const Params text(0, {std::string("Store could not be loaded")});
    EXPECT_EQ(ZEL_Set(ZEL_NODE_system_sysAlert, nullptr, text.list, nullptr, nullptr), ORV_OK);
    const std::vector<RaisedEvent> events = Host().Events();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].kind, "alert");
    EXPECT_EQ(events[0].text, "Store could not be loaded");
}

TEST_F(ZelAccess, AnAlertThatCannotBeWrittenIsAFailure)
{
    Host().MakeFolder("/var/log/talvor/events.jsonl");
    const Params text(0, {std::string("Store could not be loaded")});
    EXPECT_EQ(ZEL_Set(ZEL_NODE_system_sysAlert, nullptr, text.list, nullptr, nullptr), ORV_FAILURE);
}

TEST(ZelStatus, EveryStatusHasItsWords)
{
    EXPECT_STREQ(ORV_ReturnStatusToString(ORV_OK), "Success");
    EXPECT_STREQ(ORV_ReturnStatusToString(ORV_NO_MEMORY), "Out of memory");
    EXPECT_STREQ(ORV_ReturnStatusToString(ORV_READ_ONLY), "Read only");
    EXPECT_STREQ(ORV_ReturnStatusToString(-5), "Unknown status");
}
