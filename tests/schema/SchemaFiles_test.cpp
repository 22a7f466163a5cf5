#include "SchemaFiles.h"

#include <gmock/gmock.h>

#include <random>
#include <regex>

#include "StorePaths.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace
{
const std::string FOLDER = "/schemas";

class SchemaFilesTest : public HostTest
{
protected:
    void Write(const std::string& name, const std::string& content) { Host().WriteFile(FOLDER + "/" + name, content); }

    void WriteSchema(const std::string& name, const std::string& package, const std::string& version)
    {
        Write(name,
              R"({"data": [], "metadata": {"brevname": ")" + package + R"(", "brevversion": ")" + version + "\"}}");
    }

    std::vector<std::string> Order(const std::list<std::string>& names, bool versioning = true)
    {
        std::vector<std::string> order;
        for (const SchemaFile& file : OrderSchemaFiles(names, FOLDER, versioning)) {
            order.push_back(file.superseded ? "(" + file.name + ")" : file.name);
        }
        return order;
    }
};

std::vector<std::string> Sorted(const SchemaIdMap& map, std::list<std::string> files)
{
    files.sort(VersionCompare(FOLDER, map));
    return {files.begin(), files.end()};
}

std::string Nested(std::size_t levels)
{
    return std::string(levels, '[');
}

TEST_F(SchemaFilesTest, OnlyNamesThatEndInJsonAreListed)
{
    for (const char* name : {"a.json", "b.JSON", ".json", "readme", "json", "c.json.bak"}) {
        Write(name, "{}");
    }
    EXPECT_THAT(GetSchemaFiles(FOLDER), ElementsAre("a.json"));
}

TEST_F(SchemaFilesTest, EveryOtherEntryIsLoggedTheFolderItselfAndItsParentToo)
{
    for (const char* name : {"a.json", "b.JSON", ".json", "readme"}) {
        Write(name, "{}");
    }
    (void)GetSchemaFiles(FOLDER);
    const std::string skipped = "info [SchemaProcessor] Skip processing non-json file ";
    EXPECT_THAT(Host().Log(), UnorderedElementsAre(skipped + "b.JSON", skipped + ".json", skipped + "readme",
                                                   skipped + ".", skipped + ".."));
}

TEST_F(SchemaFilesTest, AFolderThatCannotBeOpenedListsNothingAndLogsNothing)
{
    Host().WriteFile("/schemas", "a file in its place");
    EXPECT_THAT(GetSchemaFiles(FOLDER), IsEmpty());
    EXPECT_THAT(GetSchemaFiles("/missing"), IsEmpty());
    EXPECT_EQ(FindSchemaFiles("/missing"), std::nullopt);
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(SchemaFilesTest, TheIdentifierIsNameHyphenVersion)
{
    WriteSchema("a.json", "net-drv", "1.2.3_4.5");
    EXPECT_EQ(ReadSchemaFile("a.json", FOLDER).schemaId, "net-drv-1.2.3_4.5");
    EXPECT_THAT(Host().Events(), IsEmpty());
}

TEST_F(SchemaFilesTest, AFileWithoutIdentityRaisesTheMetadataEventWithItsPath)
{
    Write("a.json", R"({"data": [], "metadata": {"brevname": "net"}})");
    EXPECT_EQ(ReadSchemaFile("a.json", FOLDER).schemaId, "");
    EXPECT_THAT(Host().Events(), ElementsAre(RaisedEvent{"observation",
                                                         "zub.user.cs.schema.metadata.error",
                                                         "Invalid metadata in schema file /schemas/a.json.",
                                                         {"/schemas/a.json"}}));
    EXPECT_THAT(Host().Log(), ElementsAre("error [SchemaProcessor] Invalid format in schema file /schemas/a.json"));
}

class IncompleteFile : public SchemaFilesTest, public testing::WithParamInterface<const char*>
{};

TEST_P(IncompleteFile, HasNoIdentifier)
{
    Write("a.json", GetParam());
    EXPECT_EQ(ReadSchemaFile("a.json", FOLDER).schemaId, "");
    EXPECT_THAT(GenerateSchemaIdMap({"a.json"}, FOLDER), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(SchemaFiles, IncompleteFile,
                         testing::Values("{}", "[]", "null", "7", R"("text")", R"({"data": []})",
                                         R"({"metadata": {"brevname": "a", "brevversion": "1"}})",
                                         R"({"data": [], "metadata": []})",
                                         R"({"data": [], "metadata": {"brevversion": "1"}})"));

TEST_F(SchemaFilesTest, AnIdentityThatIsNoTextIsAJsonErrorThatNamesTheFile)
{
    Write("a.json", R"({"data": [], "metadata": {"brevname": "net", "brevversion": 7}})");
    const std::string thrown = ThrownBy([] { GenerateSchemaIdMap({"a.json"}, FOLDER); });
    EXPECT_THAT(thrown, StartsWith("1082 JSON error:"));
    EXPECT_THAT(thrown, HasSubstr("/schemas/a.json"));
}

TEST_F(SchemaFilesTest, TheMapLeavesOutFilesWithoutIdentifier)
{
    WriteSchema("a.json", "a", "1.0.0_0.1");
    WriteSchema("b.json", "b", "2");
    Write("c.json", "{}");
    EXPECT_THAT(GenerateSchemaIdMap({"a.json", "b.json", "c.json"}, FOLDER),
                ElementsAre(Pair("/schemas/a.json", "a-1.0.0_0.1"), Pair("/schemas/b.json", "b-2")));
}

TEST_F(SchemaFilesTest, TheMapEndsAtAFileThatDoesNotParse)
{
    WriteSchema("a.json", "a", "1.0.0_0.1");
    for (const std::string& content : {std::string("{\"data\""), std::string(), Nested(1000000)}) {
        Write("bad.json", content);
        const std::string thrown = ThrownBy([] { GenerateSchemaIdMap({"a.json", "bad.json"}, FOLDER); });
        EXPECT_THAT(thrown, StartsWith("1081 "));
        EXPECT_THAT(thrown, HasSubstr("/schemas/bad.json"));
    }
}

TEST(SchemaIdentifier, TheNameEndsAtTheLastHyphenBeforeAVersion)
{
    EXPECT_EQ(ExtractSchemaNameFromSchemaId("foo-bar-1.2.3_4.5"), "foo-bar");
    EXPECT_EQ(ExtractSchemaNameFromSchemaId("foo-1.2_4.5"), "foo");
    EXPECT_EQ(ExtractSchemaNameFromSchemaId("x-1.2.3_4.5.6"), "x");
    EXPECT_EQ(ExtractSchemaNameFromSchemaId("a-1.2.3_4-5.6_7"), "a-1.2.3_4");
    EXPECT_EQ(ExtractSchemaNameFromSchemaId("-1.2_3"), "");
}

TEST(SchemaIdentifier, AnythingElseHasNoName)
{
    for (const char* id : {"", "foo", "foo-1_2", "foo-1.2.3", "foo-1.2.3_", "foo-1.2.3_4.5x", "foo-1.2.3_4.5 "}) {
        EXPECT_EQ(ExtractSchemaNameFromSchemaId(id), "") << id;
    }
}

SchemaVersion VersionOf(const std::string& id)
{
    return ExtractVersion({{"/schemas/f", id}}, "f", FOLDER);
}

TEST(SchemaIdentifier, TheVersionHasFiveNumbers)
{
    EXPECT_EQ(VersionOf("foo-bar-1.2.3_4.5"), SchemaVersion(1, 2, 3, 4, 5));
    EXPECT_EQ(VersionOf("x-1.2.3_4.5.6"), SchemaVersion(1, 2, 3, 4, 5));
    EXPECT_EQ(VersionOf("x-1.2.3_4.5-6.7.8_9.10"), SchemaVersion(1, 2, 3, 4, 5));
    EXPECT_EQ(VersionOf("foo-1.2_4.5"), SchemaVersion());
    EXPECT_EQ(VersionOf("foo-1.2.3_4"), SchemaVersion());
}

TEST(SchemaIdentifier, AVersionNumberBeyondIntAndAFileOutsideTheMapThrow)
{
    EXPECT_THROW(VersionOf("foo-1.2.99999999999_4.5"), std::out_of_range);
    EXPECT_EQ(ThrownBy([] { VersionOf("foo-1.2.99999999999_4.5"); }), "stoi: /schemas/f");
    EXPECT_EQ(ThrownBy([] { ExtractVersion({}, "f", FOLDER); }), "map::at");
}

TEST(SchemaIdentifier, ItIsReadAsTheRegularExpressionsSay)
{
    const std::regex whole(R"((.*)-\d+(\.\d+)+_\d+(\.\d+)*)");
    const std::regex version(R"(-(\d+)\.(\d+)\.(\d+)_([\d]+)\.([\d]+))");
    std::mt19937 random(7);
    int matched = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string id;
        for (int part = static_cast<int>(random() % 9); part > 0; --part) {
            id += std::vector<std::string>{"-", ".", "_", "1", "2", "a", "-1.2", ".3_4.", "\n"}[random() % 9];
        }
        std::smatch parts;
        const bool isWhole = std::regex_match(id, parts, whole);
        EXPECT_EQ(ExtractSchemaNameFromSchemaId(id), isWhole ? parts[1].str() : "") << id;
        const bool isFound = std::regex_search(id, parts, version);
        const auto number = [&](std::size_t group) { return isFound ? std::stoi(parts[group].str()) : 0; };
        const SchemaVersion expected(number(1), number(2), number(3), number(4), number(5));
        matched += isWhole && isFound ? 1 : 0;
        EXPECT_EQ(VersionOf(id), expected) << id;
    }
    EXPECT_GT(matched, 20);
}

TEST(SchemaIdentifier, AMegabyteOfIdentifierIsReadLikeAnyOther)
{
    const std::string name(1 << 20, 'a');
    EXPECT_EQ(ExtractSchemaNameFromSchemaId(name + "-1.2.3_4.5"), name);
    EXPECT_EQ(VersionOf(name + "-1.2.3_4.5"), SchemaVersion(1, 2, 3, 4, 5));
    EXPECT_EQ(VersionOf("a-" + std::string(1 << 20, '1')), SchemaVersion());
    EXPECT_EQ(VersionOf(std::string(1 << 20, '-') + "1.2.3_4.5"), SchemaVersion(1, 2, 3, 4, 5));
}

TEST(VersionOrder, NewestComesFirstByNumberNotByText)
{
    const SchemaIdMap map{{"/schemas/old", "a-1.9.9_9.9"}, {"/schemas/new", "a-1.10.0_0.1"}, {"/schemas/none", "a"}};
    EXPECT_THAT(Sorted(map, {"none", "old", "new"}), ElementsAre("new", "old", "none"));
}

TEST(VersionOrder, EveryPartCounts)
{
    const SchemaIdMap map{{"/schemas/a", "a-1.0.0_0.1"},
                          {"/schemas/b", "a-1.0.0_1.0"},
                          {"/schemas/c", "a-1.0.1_0.0"},
                          {"/schemas/d", "a-1.1.0_0.0"},
                          {"/schemas/e", "a-2.0.0_0.0"}};
    EXPECT_THAT(Sorted(map, {"a", "b", "c", "d", "e"}), ElementsAre("e", "d", "c", "b", "a"));
}

TEST(VersionOrder, EqualVersionsKeepTheirOrder)
{
    const SchemaIdMap map{{"/schemas/x", "x-1.0.0_0.1"}, {"/schemas/y", "y-1.0.0_0.1"}, {"/schemas/z", "z-1.0.0_0.1"}};
    EXPECT_THAT(Sorted(map, {"z", "x", "y"}), ElementsAre("z", "x", "y"));
}

TEST(VersionOrder, AFileOutsideTheMapEndsTheSort)
{
    const SchemaIdMap map{{"/schemas/x", "x-1.0.0_0.1"}};
    EXPECT_EQ(ThrownBy([&] { Sorted(map, {"x", "stranger"}); }), "map::at");
}

TEST_F(SchemaFilesTest, ARunTakesTheNewestOfEachNameAndMarksTheRest)
{
    WriteSchema("a.json", "net", "1.0.0_0.1");
    WriteSchema("b.json", "disk", "3.0.0_0.1");
    WriteSchema("c.json", "net", "1.0.1_0.1");
    EXPECT_THAT(Order({"a.json", "b.json", "c.json"}), ElementsAre("b.json", "c.json", "(a.json)"));
}

TEST_F(SchemaFilesTest, FilesWithoutIdentifierAreNeverSortedAndComeLast)
{
    Write("bad.json", "{}");
    WriteSchema("a.json", "net", "1.0.0_0.1");
    Write("worse.json", "[]");
    EXPECT_THAT(Order({"bad.json", "a.json", "worse.json"}), ElementsAre("a.json", "bad.json", "worse.json"));
}

TEST_F(SchemaFilesTest, IdentifiersWithoutANameSupersedeNothing)
{
    WriteSchema("a.json", "net", "1");
    WriteSchema("b.json", "disk", "2");
    EXPECT_THAT(Order({"a.json", "b.json"}), ElementsAre("a.json", "b.json"));
}

TEST_F(SchemaFilesTest, WithoutVersioningNothingIsReadOrReordered)
{
    EXPECT_THAT(Order({"c.json", "a.json", "b.json"}, false), ElementsAre("c.json", "a.json", "b.json"));
    EXPECT_EQ(OrderSchemaFiles({"c.json"}, FOLDER, false).front().document, nullptr);
}
}  // namespace
