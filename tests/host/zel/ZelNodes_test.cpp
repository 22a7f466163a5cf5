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
        EXPECT_TRUE(definition.output != nullptr || definition.input != nullptr) << definition.path;
        EXPECT_STRNE(definition.help, "") << definition.path;
    }
    EXPECT_EQ(nodes.size(), static_cast<std::size_t>(ZEL_NODE_system_quenfs_inodes_stats) + 1);
}

TEST(ZelNodes, RecordMembersLieInsideTheRecord)
{
    for (const ZEL_NodeDefinition& definition : Definitions()) {
        const ZEL_Type* type = definition.output;
        for (std::size_t i = 0; type != nullptr && i < type->memberCount; ++i) {
            EXPECT_LE(type->members[i].offset + type->members[i].size, type->size) << definition.path;
        }
    }
}

TEST(ZelNodes, PlaceholdersSayWhatInstancesAre)
{
    EXPECT_EQ(ZEL_PlaceholderKind("<inode:integer>"), ZEL_DATA_INTEGER);
    EXPECT_EQ(ZEL_PlaceholderKind("<ramdisk:text>"), ZEL_DATA_TEXT);
    EXPECT_EQ(ZEL_PlaceholderKind("inodes"), ZEL_DATA_NONE);
    EXPECT_EQ(ZEL_PlaceholderKind(""), ZEL_DATA_NONE);
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

    changed = Definitions();
    ZEL_Type wider = *changed[0].output;
    wider.size = 99;
    changed[0].output = &wider;
    EXPECT_NE(DefinitionsDigest(changed), ZEL_DefsMD5Sum);
}

TEST(ZelMd5, GivesTheDigestsOfItsDefinition)
{
    EXPECT_EQ(Md5Of(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(Md5Of("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(Md5Of("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(Md5Of("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
              "57edf4a22be3c955ac49da2e2107b67a");
}
