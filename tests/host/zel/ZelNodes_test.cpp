#include <gmock/gmock.h>

#include <set>
#include <string>

#include "ZEL.h"
#include "ZelDigest.h"

namespace
{
std::vector<ZEL_NodeDefinition> Definitions()
{
    std::vector<ZEL_NodeDefinition> definitions;
    for (std::size_t i = 0; ZEL_NodeDefinitionAt(i) != nullptr; ++i) {
        definitions.push_back(*ZEL_NodeDefinitionAt(i));
    }
    return definitions;
}

std::string Md5Of(std::string_view text)
{
    ZelMd5 digest;
    digest.Add(text);
    return digest.Digest();
}
}  // namespace

TEST(ZelNodes, EveryNodeIsDefinedOnceWithAPathAndHelp)
{
    std::set<ZEL_NodeID> nodes;
    std::set<std::string> paths;
    for (const ZEL_NodeDefinition& definition : Definitions()) {
        EXPECT_TRUE(nodes.insert(definition.node).second) << definition.path;
        EXPECT_TRUE(paths.insert(definition.path).second) << definition.path;
        EXPECT_STRNE(definition.help, "") << definition.path;
        EXPECT_EQ(ZEL_LookupNode(definition.node)->path, definition.path);
    }
    for (std::uint32_t named = ZEL_NODE_root; named <= ZEL_NODE_system_quenfs_ramdisks_stats; ++named) {
        EXPECT_EQ(nodes.count(static_cast<ZEL_NodeID>(named)), 1u) << named;
    }
}

TEST(ZelNodes, OnlyLeavesHaveTypesAndOnlyInstanceBranchesInstances)
{
    for (const ZEL_NodeDefinition& definition : Definitions()) {
        const bool isLeaf = definition.outputType != nullptr || definition.inputType != nullptr;
        const bool hasInstances = definition.instanceKind != ZEL_DATA_NONE;
        EXPECT_EQ(definition.kind == ZEL_KIND_LEAF, isLeaf) << definition.path;
        EXPECT_EQ(definition.kind == ZEL_KIND_INSTANCE_BRANCH, hasInstances) << definition.path;
        EXPECT_EQ(std::string(definition.instanceName).empty(), !hasInstances) << definition.path;
    }
}

TEST(ZelNodes, TheTreeIsWalkedFromTheRoot)
{
    std::set<std::string> walked;
    std::vector<ZEL_NodeID> open = {ZEL_NODE_root};
    while (!open.empty()) {
        const ZEL_NodeID branch = open.back();
        open.pop_back();
        walked.insert(ZEL_LookupNode(branch)->path);
        for (std::size_t i = 0; const ZEL_NodeDefinition* child = ZEL_ChildAt(branch, i); ++i) {
            EXPECT_EQ(child->parent, branch);
            EXPECT_EQ(ZEL_FindChild(branch, child->name), child);
            open.push_back(child->node);
        }
    }
    EXPECT_EQ(walked.size(), Definitions().size());
}

TEST(ZelNodes, APathNamesTheInstancesAboveIt)
{
    const ZEL_NodeDefinition* stats = ZEL_LookupNode(ZEL_NODE_system_quenfs_inodes_stats);
    EXPECT_STREQ(stats->path, "/system/quenfs/inodes/<inode>/stats");
    const ZEL_NodeDefinition* inodes = ZEL_LookupNode(stats->parent);
    EXPECT_STREQ(inodes->path, "/system/quenfs/inodes");
    EXPECT_STREQ(inodes->name, "inodes");
    EXPECT_STREQ(inodes->instanceName, "inode");
    EXPECT_EQ(inodes->instanceKind, ZEL_DATA_UINT64);
    const ZEL_NodeDefinition* root = ZEL_LookupNode(ZEL_NODE_root);
    EXPECT_STREQ(root->name, "");
    EXPECT_STREQ(root->path, "/");
    EXPECT_EQ(root->parent, ZEL_NODE_root);
}

TEST(ZelNodes, WhatIsNotDefinedIsNotFound)
{
    EXPECT_EQ(ZEL_LookupNode(static_cast<ZEL_NodeID>(60)), nullptr);
    EXPECT_EQ(ZEL_ChildAt(ZEL_NODE_system_bootMAC, 0), nullptr);
    EXPECT_EQ(ZEL_FindChild(ZEL_NODE_root, "System"), nullptr);
    EXPECT_EQ(ZEL_FindChild(ZEL_NODE_root, ""), nullptr);
    EXPECT_EQ(ZEL_FindChild(ZEL_NODE_root, nullptr), nullptr);
}

TEST(ZelNodes, MembersLieInsideTheirStructureWithoutGaps)
{
    for (const ZEL_NodeDefinition& definition : Definitions()) {
        const ZEL_Type* type = definition.outputType;
        std::size_t end = 0;
        for (std::size_t i = 0; type != nullptr && i < type->memberCount; ++i) {
            EXPECT_EQ(type->members[i].offset, end) << definition.path << " " << type->members[i].name;
            end += type->members[i].size;
        }
        EXPECT_TRUE(type == nullptr || type->memberCount == 0 || end == type->size) << definition.path;
    }
}

TEST(ZelNodes, TheSignatureIsTheDigestOfTheDefinitions)
{
    EXPECT_EQ(ZEL_DefsMD5Sum, DefinitionsDigest(Definitions()));
    EXPECT_THAT(ZEL_DefsMD5Sum, testing::MatchesRegex("[0-9a-f]{32}"));
}

TEST(ZelNodes, TheSignatureChangesWithADefinition)
{
    std::vector<ZEL_NodeDefinition> changed = Definitions();
    changed[0].help = "another help";
    EXPECT_NE(DefinitionsDigest(changed), ZEL_DefsMD5Sum);

    changed = Definitions();
    changed.pop_back();
    EXPECT_NE(DefinitionsDigest(changed), ZEL_DefsMD5Sum);
}

TEST(ZelNodes, TheSignatureChangesWithATypeAMemberOrTheNameOfAValue)
{
    const ZEL_Enumerator values[] = {{1, "up"}};
    const ZEL_Enumerator renamed[] = {{1, "on"}};
    const ZEL_Type states = {"state", ZEL_DATA_ENUM, 4, nullptr, 0, values, 1, nullptr};
    const ZEL_Type otherStates = {"state", ZEL_DATA_ENUM, 4, nullptr, 0, renamed, 1, nullptr};
    const ZEL_TypeMember member = {"state", "help", "", &states, 0, 4};
    const ZEL_TypeMember withUnit = {"state", "help", "ms", &states, 0, 4};
    const ZEL_TypeMember withOtherStates = {"state", "help", "", &otherStates, 0, 4};
    std::set<std::string> digests;
    for (const ZEL_TypeMember* of : {&member, &withUnit, &withOtherStates}) {
        const ZEL_Type record = {"record", ZEL_DATA_STRUCT, 4, of, 1, nullptr, 0, nullptr};
        const ZEL_Type list = {"list", ZEL_DATA_ARRAY, 0, nullptr, 0, nullptr, 0, &record};
        for (const ZEL_Type* output : {&record, &list}) {
            std::vector<ZEL_NodeDefinition> changed = Definitions();
            changed.back().outputType = output;
            digests.insert(DefinitionsDigest(changed));
        }
    }
    EXPECT_EQ(digests.size(), 6u);
    EXPECT_EQ(digests.count(ZEL_DefsMD5Sum), 0u);
}

TEST(ZelMd5, GivesTheDigestsOfItsDefinition)
{
    EXPECT_EQ(Md5Of(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(Md5Of("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(Md5Of("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(Md5Of("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
              "57edf4a22be3c955ac49da2e2107b67a");
}
