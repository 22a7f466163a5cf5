#include "BootDocument.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include "NimbConfigStore.h"
#include "StoreConnection.h"
#include "StoreFault.h"
#include "StoreFiles.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace
{
const std::string BEGINS = std::string("info Processing boot document ") + BOOT_DOCUMENT;
const std::string ENDS = "info Boot document processed.";

const char* const SCHEMAS = R"([
    {"component": "nimb", "group": "network", "key": "dns", "version": "2.5", "schema": {"type": "object",
     "properties": {"ttl": {"type": "integer"}}}},
    {"component": "nimb", "group": "network", "key": "power", "mutableDefaultConfig": true,
     "schema": {"type": "object"}},
    {"component": "nimb", "group": "network", "key": "nics", "singleton": false, "schema": {"type": "object",
     "properties": {"id": {"type": "string", "instanceId": true}}}},
    {"component": "nimb", "group": "network", "key": "routes", "singleton": false, "mutableDefaultConfig": true,
     "schema": {"type": "object", "properties": {"cs_generated_id": {"type": "string", "instanceId": true}}}},
    {"component": "nimb", "group": "network", "key": "list", "schema": {"type": "array"}},
    {"component": "nimb", "group": "network", "key": "number", "schema": {"type": "integer"}}])";

class BootDocumentTest : public HostTest
{
protected:
    void SetUp() override
    {
        Host().WithStores().WithPackage("net", "1.0.0_0.1", SCHEMAS);
        ASSERT_TRUE(ProcessSchemas({}));
        Host().ClearLogs();
    }

    void Apply() { ApplyBootDocument(GetDBConnection(DBStore::Type::ConfigStore, true)); }

    void Apply(const std::string& document)
    {
        Host().WriteFile(BOOT_DOCUMENT, document);
        Apply();
    }

    void ApplyNetwork(const std::string& keys) { Apply(R"({"nimb": {"network": {)" + keys + "}}}"); }

    /// "key/identifier user value" of each row.
    std::vector<std::string> Rows()
    {
        std::vector<std::string> texts;
        for (const Row& row : Host().Sql("SELECT Name, Identifier, UserValue FROM Config ORDER BY Name, Identifier")) {
            texts.push_back(row[0].value_or("NULL") + "/" + row[1].value_or("NULL") + " " + row[2].value_or("NULL"));
        }
        return texts;
    }
};

TEST_F(BootDocumentTest, WithoutTheFileNothingIsLoggedOrWritten)
{
    Apply();
    EXPECT_THAT(Host().Log(), IsEmpty());
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(BootDocumentTest, EachObjectAndInstanceIsWrittenAsAUserValue)
{
    ApplyNetwork(R"("dns": {"ttl": 3}, "nics": [{"id": "b", "x": 1}, {"id": "a"}])");
    EXPECT_THAT(Rows(), ElementsAre(R"(dns/ {"ttl":3})", R"(nics/a {"id":"a"})", R"(nics/b {"id":"b","x":1})"));
    EXPECT_EQ(Host().SqlValue("SELECT Version FROM Config WHERE Name = 'dns'"), "2.5");
    EXPECT_EQ(Host().SqlValue("SELECT count(*) FROM Config WHERE Component = 'nimb' AND ConfigGroup = 'network' AND "
                              "CreationTime IS NOT NULL AND Revision = 1"),
              "3");
    EXPECT_THAT(Host().Log(), ElementsAre(BEGINS, ENDS));
}

TEST_F(BootDocumentTest, AProfileStandsForTheRoot)
{
    Apply(R"({"profile": {"nimb": {"network": {"dns": {"ttl": 1}}}}, "nimb": {"network": {"nics": [{"id": "a"}]}}})");
    EXPECT_THAT(Rows(), ElementsAre(R"(dns/ {"ttl":1})"));
}

TEST_F(BootDocumentTest, ARootOrProfileThatIsNoObjectIsRefused)
{
    for (const char* document : {"[]", "null", "7", R"({"profile": []})", R"({"profile": null, "nimb": {}})"}) {
        Host().ClearLogs();
        Apply(document);
        EXPECT_THAT(Host().Log(), ElementsAre(BEGINS, "error Failed to process, document should be an object"))
            << document;
        EXPECT_THAT(Rows(), IsEmpty());
    }
}

TEST_F(BootDocumentTest, AFileThatDoesNotParseIsTheCallersMatter)
{
    for (const std::string& content : {std::string(), std::string("{"), std::string(1 << 20, '[')}) {
        Host().WriteFile(BOOT_DOCUMENT, content);
        EXPECT_THAT(ThrownBy([this] { Apply(); }), AllOf(StartsWith("1081 "), HasSubstr(BOOT_DOCUMENT)));
    }
    Host().Remove(BOOT_DOCUMENT);
    Host().MakeFolder(BOOT_DOCUMENT);
    EXPECT_THAT(ThrownBy([this] { Apply(); }), StartsWith("1081 "));
}

TEST_F(BootDocumentTest, SchemasThatCannotBeReadAreTheCallersMatter)
{
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    EXPECT_THAT(ThrownBy([this] { Apply("{}"); }), StartsWith("2000 "));
}

TEST_F(BootDocumentTest, LevelsThatAreNoObjectAreSkippedByName)
{
    Apply(R"({"odd": [], "nimb": {"worse": 7, "network": {"dns": {"ttl": 1}}}})");
    EXPECT_THAT(Host().Log(),
                ElementsAre(BEGINS, "error /odd is invalid, skipping", "error /nimb/worse is invalid, skipping", ENDS));
    EXPECT_THAT(Rows(), ElementsAre(R"(dns/ {"ttl":1})"));
}

TEST_F(BootDocumentTest, EmptyValuesAreSkippedEvenOfUnknownObjects)
{
    ApplyNetwork(R"("dns": {}, "nics": [], "unheard": null)");
    EXPECT_THAT(Host().Log(), ElementsAre(BEGINS, "error nimb/network/dns is empty, skipping",
                                          "error nimb/network/nics is empty, skipping",
                                          "error nimb/network/unheard is empty, skipping", ENDS));
}

TEST_F(BootDocumentTest, AnUnknownObjectIsSkipped)
{
    ApplyNetwork(R"("unheard": {"a": 1}, "dns": {"ttl": 1})");
    EXPECT_THAT(Host().Log(), ElementsAre(BEGINS, "error Schema not found for nimb/network/unheard, skipping", ENDS));
    EXPECT_THAT(Rows(), ElementsAre(R"(dns/ {"ttl":1})"));
}

TEST_F(BootDocumentTest, AnInvalidObjectIsSkippedAndItsRowsStay)
{
    ApplyNetwork(R"("power": {"a": 1})");
    Host().ClearLogs();
    ApplyNetwork(R"("power": "delete_default", "dns": {"ttl": "x"}, "nics": {"id": "a"}, "list": "DELETE_DEFAULT")");
    EXPECT_THAT(Rows(), ElementsAre(R"(power/ {"a":1})"));
    for (const char* key : {"power", "dns", "nics", "list"}) {
        EXPECT_THAT(Host().Log(),
                    Contains("error Validation failed for nimb/network/" + std::string(key) + ", skipping"));
    }
    EXPECT_EQ(Host().Log().back(), ENDS);
}

TEST_F(BootDocumentTest, AValueThatIsNeitherObjectNorArrayIsRefused)
{
    ApplyNetwork(R"("number": 7)");
    EXPECT_THAT(Host().Log(), ElementsAre(BEGINS, "error Validation failed for nimb/network/number, skipping", ENDS));
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(BootDocumentTest, AnArrayThatIsASingletonsValueIsOneRow)
{
    ApplyNetwork(R"("list": ["a", "b"])");
    EXPECT_THAT(Rows(), ElementsAre(R"(list/ ["a","b"])"));
}

TEST_F(BootDocumentTest, AMutableDefaultIsReplacedAsAWhole)
{
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue) VALUES "
        "('nimb', 'network', 'routes', 'old', '{}'), ('nimb', 'other', 'routes', 'kept', '{}')");
    ApplyNetwork(R"("routes": [{"cs_generated_id": "new"}])");
    EXPECT_THAT(Rows(), ElementsAre("routes/kept {}", R"(routes/new {"cs_generated_id":"new"})"));
}

TEST_F(BootDocumentTest, DeleteDefaultRemovesEveryRowOfAMutableDefault)
{
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, VitalValue) VALUES "
        "('nimb', 'network', 'routes', 'a', '{}'), ('nimb', 'network', 'routes', 'b', '{}')");
    ApplyNetwork(R"("routes": "DELETE_DEFAULT")");
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_THAT(Host().Log(),
                ElementsAre(BEGINS, "info Default configuration for nimb/network/routes will be deleted.", ENDS));
}

TEST_F(BootDocumentTest, OtherInstancesOfAnObjectWithoutMutableDefaultStay)
{
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue) VALUES "
        "('nimb', 'network', 'nics', 'old', '{}')");
    ApplyNetwork(R"("nics": [{"id": "a"}])");
    EXPECT_THAT(Rows(), ElementsAre(R"(nics/a {"id":"a"})", "nics/old {}"));
}

TEST_F(BootDocumentTest, ASecondBootKeepsCreationTimeAndOtherValuesAndRaisesTheRevision)
{
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, CreationTime, Revision, VitalValue, "
        "CachedValue, AutoConfValue) VALUES ('nimb', 'network', 'dns', '', 'long ago', 4, 'v', 'c', 'a')");
    ApplyNetwork(R"("dns": {"ttl": 1})");
    Apply();
    EXPECT_EQ(
        Host().Sql("SELECT CreationTime, Revision, VitalValue, CachedValue, AutoConfValue, UserValue FROM Config"),
        std::vector<Row>({{"long ago", "6", "v", "c", "a", R"({"ttl":1})"}}));
}

TEST_F(BootDocumentTest, InstancesWithoutIdentifierGetGeneratedOnesThatASecondBootFindsAgain)
{
    ApplyNetwork(R"("routes": [{"to": "a"}, {"to": "b"}])");
    const std::vector<std::string> rows = Rows();
    EXPECT_EQ(rows.size(), 2u);
    Apply();
    EXPECT_EQ(Rows(), rows);
}

TEST_F(BootDocumentTest, AnInstanceWithoutItsIdentifierIsSkippedWithTheReason)
{
    ApplyNetwork(R"("nics": [{"id": "a"}, {"x": 1}, {"id": "c"}], "dns": {"ttl": 1})");
    EXPECT_THAT(Host().Log(), ElementsAre(BEGINS,
                                          AllOf(StartsWith("error "), HasSubstr("id"),
                                                testing::EndsWith(": nimb/network/nics, skipping")),
                                          ENDS));
    EXPECT_THAT(Rows(), ElementsAre(R"(dns/ {"ttl":1})", R"(nics/a {"id":"a"})"));
}

TEST_F(BootDocumentTest, AFailedWriteOrDeleteSkipsTheObject)
{
    Host().WriteFile(BOOT_DOCUMENT, R"({"nimb": {"network": {"power": {"a": 1}}}})");
    {
        const StoreFault fault(SQLITE_DELETE, "Config");
        Apply();
    }
    EXPECT_THAT(Host().Log(), Contains("error Delete mutable default config failed: nimb/network/power, skipping"));
    Host().ClearLogs();
    const StoreFault fault(SQLITE_INSERT, "Config");
    Apply();
    EXPECT_THAT(Host().Log(), Contains("error Write user config failed: nimb/network/power, skipping"));
    EXPECT_EQ(Host().Log().back(), ENDS);
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(BootDocumentTest, TheCallersTransactionDecides)
{
    Host().WriteFile(BOOT_DOCUMENT, R"({"nimb": {"network": {"dns": {"ttl": 1}}}})");
    const DBStore::ConnectionPtr connection = GetDBConnection(DBStore::Type::ConfigStore, true);
    ASSERT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
    ApplyBootDocument(connection);
    ASSERT_EQ(DBStore::CancelTransaction(connection), DBStore::SUCCESS);
    EXPECT_THAT(Rows(), IsEmpty());
}
}  // namespace
