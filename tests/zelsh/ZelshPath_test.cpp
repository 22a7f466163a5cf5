#include <sys/resource.h>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ChildProcess.h"
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

std::string Text(const Path& path)
{
    char text[256] = {};
    EXPECT_EQ(ZELSHPath_GetStr(path.get(), text, sizeof text), ORV_OK);
    return text;
}

Path RootPath()
{
    ZELSHPath* path = nullptr;
    EXPECT_EQ(ZELSHPath_InitRoot(&path), ORV_OK);
    return Path(path);
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

TEST_F(ZelshPath, ARootPathIsTheRootOfTheMoment)
{
    EXPECT_EQ(Text(RootPath()), "/");
    EXPECT_EQ(ZELSH_InitRoot("/system/quenfs"), ORV_OK);
    const Path path = RootPath();
    EXPECT_EQ(Text(path), "/");
    EXPECT_EQ(ZELSHPath_CatComponent(path.get(), "inodes"), ORV_OK);
    EXPECT_EQ(Text(path), "/inodes");
    EXPECT_EQ(ZELSH_InitRoot(""), ORV_OK);
    EXPECT_EQ(ZELSHPath_InitRoot(nullptr), ORV_BAD_PARAM);
}

TEST_F(ZelshPath, APathGrowsByOneComponentAtATime)
{
    const Path path = RootPath();
    for (const auto& [component, text] : std::vector<std::pair<const char*, const char*>>{
             {"system", "/system"},
             {"quenfs", "/system/quenfs"},
             {".", "/system/quenfs"},
             {"ramdisks", "/system/quenfs/ramdisks"},
             {"\"a/b c\"", "/system/quenfs/ramdisks/\"a/b c\""},
             {"memUsageLimit", "/system/quenfs/ramdisks/\"a/b c\"/memUsageLimit"},
             {"..", "/system/quenfs/ramdisks/\"a/b c\""}}) {
        EXPECT_EQ(ZELSHPath_CatComponent(path.get(), component), ORV_OK) << component;
        EXPECT_EQ(Text(path), text);
        EXPECT_EQ(Text(Form(text)), text);
    }
}

TEST_F(ZelshPath, AComponentThatIsRefusedLeavesThePathAsItIs)
{
    const Path path = Form("/system");
    for (const char* component : {"", "quenfs/inodes", "/", "bootMAC/", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(ZELSHPath_CatComponent(path.get(), component), ORV_BAD_PARAM);
    }
    EXPECT_EQ(ZELSHPath_CatComponent(path.get(), "none"), ORV_NOT_FOUND);
    EXPECT_EQ(ZELSHPath_CatComponent(nullptr, "system"), ORV_BAD_PARAM);
    EXPECT_EQ(Text(path), "/system");
}

TEST_F(ZelshPath, ATextThatDoesNotFitIsNotWritten)
{
    const Path path = Form("/system");
    char text[] = "untouched";
    EXPECT_EQ(ZELSHPath_GetStr(path.get(), text, 7), ORV_LIMIT_EXCEEDED);
    EXPECT_EQ(ZELSHPath_GetStr(path.get(), text, 0), ORV_LIMIT_EXCEEDED);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(ZELSHPath_GetStr(path.get(), text, 8), ORV_OK);
    EXPECT_STREQ(text, "/system");
    EXPECT_EQ(ZELSHPath_GetStr(path.get(), nullptr, 8), ORV_BAD_PARAM);
    EXPECT_EQ(ZELSHPath_GetStr(nullptr, text, 8), ORV_BAD_PARAM);
}

TEST_F(ZelshPath, InstancesAreListedAsTheyStandInPaths)
{
    Host().WriteFile("/var/run/talvor/zel/memUsageLimit/plain", "80 90\n");
    Host().WriteFile("/var/run/talvor/zel/memUsageLimit/odd name", "80 90\n");
    const Path path = Form("/system/quenfs/ramdisks");
    char** names = nullptr;
    std::size_t count = 0;
    ASSERT_EQ(ZELSH_GetInstanceNodes(path.get(), &names, &count), ORV_OK);
    ASSERT_EQ(count, 2U);
    std::swap(names[0], names[1]);
    std::qsort(names, count, sizeof *names, ZELSH_StringCompareCb);
    EXPECT_STREQ(names[0], "\"odd name\"");
    EXPECT_STREQ(names[1], "plain");
    std::free(names);
    EXPECT_EQ(ZELSH_GetInstanceNodes(Form("/system").get(), &names, &count), ORV_BAD_PARAM);
    EXPECT_EQ(names, nullptr);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(ZELSH_GetInstanceNodes(nullptr, &names, &count), ORV_BAD_PARAM);
    EXPECT_EQ(ZELSH_GetInstanceNodes(path.get(), nullptr, &count), ORV_BAD_PARAM);
    EXPECT_EQ(ZELSH_GetInstanceNodes(path.get(), &names, nullptr), ORV_BAD_PARAM);
}

TEST_F(ZelshPath, TextsAreComparedByTheirBytes)
{
    const char* left = "B";
    for (const auto& [right, order] :
         std::vector<std::pair<const char*, int>>{{"B", 0}, {"A", 1}, {"a", -1}, {"", 1}, {"B ", -1}, {"\xff", -1}}) {
        const int result = ZELSH_StringCompareCb(&left, &right);
        EXPECT_EQ((result > 0) - (result < 0), order) << right;
    }
}

#ifndef SANITIZED  // a sanitizer's own bookkeeping needs the memory that is taken away here
TEST_F(ZelshPath, AComponentThatMemoryDoesNotHoldIsAStatus)
{
    const Path path = Form("/system/quenfs/ramdisks");
    const std::string component(64 << 20, 'x');
    EXPECT_TRUE(Succeeded(StartProcess([&] {
        const rlimit nothing = {1, 1};
        setrlimit(RLIMIT_DATA, &nothing);
        setrlimit(RLIMIT_AS, &nothing);
        return ZELSHPath_CatComponent(path.get(), component.c_str()) == ORV_NO_MEMORY;
    })));
}
#endif
