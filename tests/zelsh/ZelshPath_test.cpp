#include <memory>
#include <string>

#include "TestHost.h"
#include "ZELSH.h"

using ZelshPath = HostTest;

namespace
{
struct PathDeleter
{
    void operator()(ZELSHPath* path) const { ZELSHPath_Delete(path); }
};
using Path = std::unique_ptr<ZELSHPath, PathDeleter>;

struct ListDeleter
{
    void operator()(ZEL_ParamList* list) const { ZEL_ParamListDestroy(list); }
};
using List = std::unique_ptr<ZEL_ParamList, ListDeleter>;

Path Form(const std::string& text)
{
    ZELSHPath* path = nullptr;
    EXPECT_EQ(ZELSHPath_Form(text.c_str(), &path), ORV_OK) << text;
    return Path(path);
}

ZEL_NodeID Leaf(const std::string& text)
{
    const Path path = Form(text);
    ZEL_NodeID node = static_cast<ZEL_NodeID>(999);
    EXPECT_EQ(ZELSHPath_GetLeafElement(path.get(), &node), ORV_OK);
    return node;
}

List Arguments(const std::string& text)
{
    const Path path = Form(text);
    ZEL_ParamList* list = nullptr;
    EXPECT_EQ(ZELSHPath_GetInstArgs(path.get(), &list), ORV_OK);
    return List(list);
}

ORV_ReturnStatus FormStatus(const char* text)
{
    ZELSHPath* path = nullptr;
    const ORV_ReturnStatus status = ZELSHPath_Form(text, &path);
    EXPECT_EQ(path != nullptr, status == ORV_OK);
    ZELSHPath_Delete(path);
    return status;
}
}  // namespace

TEST_F(ZelshPath, TheTextPathOfALeafLeadsToItsNode)
{
    EXPECT_EQ(Leaf("/system/bootFsUUID"), ZEL_NODE_system_bootFsUUID);
    EXPECT_EQ(Leaf("/system/sysAlert"), ZEL_NODE_system_sysAlert);
    EXPECT_EQ(Leaf("/system/quenfs/inodes/42/stats"), ZEL_NODE_system_quenfs_inodes_stats);
    EXPECT_EQ(Leaf("/system/quenfs/ramdisks/configstore/memUsageLimit"), ZEL_NODE_system_quenfs_ramdisks_memUsageLimit);
}

TEST_F(ZelshPath, EveryDefinedPathIsFoundUnderItsOwnNode)
{
    for (std::size_t i = 0; const ZEL_NodeDefinition* definition = ZEL_NodeDefinitionAt(i); ++i) {
        std::string text = definition->path;
        if (definition->kind != ZEL_KIND_LEAF) {
            continue;
        }
        const std::size_t instance = text.find('<');
        if (instance != std::string::npos) {
            text.replace(instance, text.find('>') + 1 - instance, "7");
        }
        EXPECT_EQ(Leaf(text), definition->node) << text;
    }
}

TEST_F(ZelshPath, EmptyComponentsCountForNothing)
{
    EXPECT_EQ(Leaf("//system///bootMAC/"), ZEL_NODE_system_bootMAC);
}

TEST_F(ZelshPath, PathsThatLeadToNoNodeAreNotFound)
{
    for (const char* text : {"/system/bootfsuuid", "/system/bootFsUUID/more", "/system/quenfs/inodes/stats", "/nothing",
                             "/system/quenfs/inodes/<inode>/stats", "/system/bootMAC\\x00", "/\"\"/system\\"}) {
        EXPECT_EQ(FormStatus(text), ORV_NOT_FOUND) << text;
    }
}

TEST_F(ZelshPath, ABranchIsNoLeaf)
{
    for (const char* text : {"/", "/system", "/system/quenfs/inodes", "/system/quenfs/inodes/42"}) {
        const Path path = Form(text);
        ZEL_NodeID node = ZEL_NODE_root;
        EXPECT_EQ(ZELSHPath_GetLeafElement(path.get(), &node), ORV_NOT_FOUND) << text;
    }
}

TEST_F(ZelshPath, AnInodeThatIsNoNumberIsNotFound)
{
    for (const char* inode : {"-1", "+1", "1x", "0x1", " 1", "18446744073709551616"}) {
        EXPECT_EQ(FormStatus((std::string("/system/quenfs/inodes/") + inode + "/stats").c_str()), ORV_NOT_FOUND)
            << inode;
    }
    EXPECT_EQ(FormStatus("/system/quenfs/inodes/18446744073709551615/stats"), ORV_OK);
}

TEST_F(ZelshPath, EmptyTextsAndNullsAreRefused)
{
    EXPECT_EQ(FormStatus(""), ORV_BAD_PARAM);
    EXPECT_EQ(FormStatus(nullptr), ORV_BAD_PARAM);
    EXPECT_EQ(ZELSHPath_Form("/system/bootMAC", nullptr), ORV_BAD_PARAM);
    ZEL_NodeID node = ZEL_NODE_system_bootMAC;
    ZEL_ParamList* list = nullptr;
    EXPECT_EQ(ZELSHPath_GetLeafElement(nullptr, &node), ORV_BAD_PARAM);
    EXPECT_EQ(ZELSHPath_GetInstArgs(nullptr, &list), ORV_BAD_PARAM);
    const Path path = Form("/system/bootMAC");
    EXPECT_EQ(ZELSHPath_GetLeafElement(path.get(), nullptr), ORV_BAD_PARAM);
    EXPECT_EQ(ZELSHPath_GetInstArgs(path.get(), nullptr), ORV_BAD_PARAM);
    ZELSHPath_Delete(nullptr);
}

TEST_F(ZelshPath, TheInstanceArgumentsChooseTheInstanceThatIsRead)
{
    const List input(ZEL_ParamListCreate(0, 2));
    EXPECT_EQ(ZEL_ParamListAddInt(input.get(), 80), ORV_OK);
    EXPECT_EQ(ZEL_ParamListAddInt(input.get(), 90), ORV_OK);
    const List ramdisk = Arguments("/system/quenfs/ramdisks/configstore/memUsageLimit");
    EXPECT_EQ(ZEL_Set(ZEL_NODE_system_quenfs_ramdisks_memUsageLimit, ramdisk.get(), input.get(), nullptr, nullptr),
              ORV_OK);
    EXPECT_EQ(Host().ReadFile("/var/run/talvor/zel/memUsageLimit/configstore"), "80 90\n");
}

TEST_F(ZelshPath, APathWithoutInstancesHasNoArguments)
{
    const List none = Arguments("/system/bootMAC");
    char text[32] = {};
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_bootMAC, none.get(), text, sizeof text), ORV_OK);
    EXPECT_EQ(ZEL_ParamListAddInt(none.get(), 1), ORV_LIMIT_EXCEEDED);
}
