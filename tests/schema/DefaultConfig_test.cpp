#include <gmock/gmock.h>
#include <sqlite3.h>

#include "NimbConfigStore.h"
#include "StoreFault.h"
#include "TestHost.h"

using namespace NimbConfigStore;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace
{
const std::string FOLDER = "/etc/talvor/default-config";
const std::string ERRORS = "/var/run/talvor/files/errors-";
const std::string FILE_NAME = "net-1.0.0_0.1.json";

const char* const SCHEMAS = R"([
    {"component": "nimb", "group": "network", "key": "dns", "version": "2.5", "schema": {"type": "object",
     "properties": {"host": {"type": "string"}, "ttl": {"type": "integer", "minimum": 1},
     "seed": {"type": "string", "vital": true}, "lease": {"type": "string", "cached": true}}}},
    {"component": "nimb", "group": "network", "key": "nics", "singleton": false, "schema": {"type": "object",
     "properties": {"id": {"type": "string", "instanceId": true}, "mtu": {"type": "integer"},
     "mac": {"type": "string", "vital": true}}}},
    {"component": "nimb", "group": "network", "key": "routes", "singleton": false, "schema": {"type": "object",
     "properties": {"cs_generated_id": {"type": "string", "instanceId": true}, "to": {"type": "string"}}}},
    {"component": "nimb", "group": "network", "key": "list", "schema": {"type": "array"}}])";

std::string Entry(const std::string& key, const std::string& config, const std::string& more = "")
{
    return R"({"component": "nimb", "group": "network", "key": ")" + key + R"(", "config": )" + config + more + "}";
}

class DefaultConfigTest : public HostTest
{
protected:
    void SetUp() override
    {
        Host().WithStores().WithPackage("net", "1.0.0_0.1", SCHEMAS);
        ASSERT_TRUE(ProcessSchemas({}));
        Host().Sql("INSERT INTO DefaultConfig (Component, ConfigGroup, Name, Identifier) VALUES ('o', 'l', 'd', '')");
        Host().ClearLogs();
    }

    bool Process(const std::string& data, bool nimbio = false)
    {
        Host().WithDefaultConfig("net", "1.0.0_0.1", data);
        return ProcessDefaultConfiguration(nimbio);
    }

    /// "key/identifier user vital cached" of each row.
    std::vector<std::string> Defaults()
    {
        std::vector<std::string> texts;
        for (const Row& row : Host().Sql("SELECT Name, Identifier, Value, VitalValue, CachedValue FROM DefaultConfig "
                                         "ORDER BY Name, Identifier")) {
            texts.push_back(row[0].value_or("NULL") + "/" + row[1].value_or("NULL") + " " + row[2].value_or("NULL") +
                            " " + row[3].value_or("NULL") + " " + row[4].value_or("NULL"));
        }
        return texts;
    }

    void ExpectDefaultsUntouched() { EXPECT_THAT(Defaults(), ElementsAre("d/ NULL NULL NULL")); }

    std::string ErrorFile(const std::string& name = FILE_NAME) { return Host().ReadFile(ERRORS + name); }
};

TEST_F(DefaultConfigTest, AnEmptyFolderEmptiesTheTableAndSucceeds)
{
    EXPECT_TRUE(ProcessDefaultConfiguration(false));
    EXPECT_THAT(Defaults(), IsEmpty());
    EXPECT_EQ(Host().Log().front(), "info Processing default configuration.");
    EXPECT_EQ(Host().Log().back(), "info Completed processing default configuration: success.");
}

TEST_F(DefaultConfigTest, AValueIsSplitIntoItsPartsAndCarriesTheSchemasVersion)
{
    EXPECT_TRUE(Process("[" + Entry("dns", R"({"host":"h","seed":"s","lease":"l"})") + "]"));
    EXPECT_THAT(Defaults(), ElementsAre(R"(dns/ {"host":"h"} {"seed":"s"} {"lease":"l"})"));
    EXPECT_EQ(Host().SqlValue("SELECT Version FROM DefaultConfig"), "2.5");
    EXPECT_EQ(Host().SqlValue("SELECT Component || '/' || ConfigGroup FROM DefaultConfig"), "nimb/network");
    EXPECT_THAT(Host().Log(), Contains("info Processing default config from '" + FOLDER + "/" + FILE_NAME + "'"));
    EXPECT_FALSE(Host().Exists(ERRORS + FILE_NAME));
}

TEST_F(DefaultConfigTest, EachInstanceIsARowAndAPartWithoutContentIsNull)
{
    EXPECT_TRUE(Process("[" + Entry("nics", R"([{"id":"a","mtu":9000},{"id":"b","mac":"00:01"}])") + "]"));
    EXPECT_THAT(Defaults(), ElementsAre(R"(nics/a {"id":"a","mtu":9000} NULL NULL)",
                                        R"(nics/b {"id":"b"} {"id":"b","mac":"00:01"} NULL)"));
    EXPECT_EQ(Host().SqlValue("SELECT DISTINCT Version FROM DefaultConfig"), "1.0.0_0.1");
}

TEST_F(DefaultConfigTest, InstancesWithoutIdentifierGetGeneratedOnes)
{
    EXPECT_TRUE(Process("[" + Entry("routes", R"([{"to":"a"},{"to":"b"}])") + "]"));
    EXPECT_EQ(Host().SqlValue("SELECT count(DISTINCT Identifier) FROM DefaultConfig WHERE Identifier <> ''"), "2");
    const std::string before = Host().SqlValue("SELECT group_concat(Identifier) FROM DefaultConfig");
    EXPECT_TRUE(ProcessDefaultConfiguration(false));
    EXPECT_EQ(Host().SqlValue("SELECT group_concat(Identifier) FROM DefaultConfig"), before);
}

TEST_F(DefaultConfigTest, AnArrayThatIsASingletonsValueIsOneRow)
{
    EXPECT_TRUE(Process("[" + Entry("list", R"(["a","b"])") + "]"));
    EXPECT_THAT(Defaults(), ElementsAre(R"(list/ ["a","b"] NULL NULL)"));
}

TEST_F(DefaultConfigTest, OnlyASmartnicTakesItsVariant)
{
    const std::string data = "[" + Entry("dns", R"({"host":"host"})", R"(, "nimbio_config": {"host":"nic"})") + "," +
                             Entry("nics", R"([{"id":"a"}])") + "]";
    EXPECT_TRUE(Process(data));
    EXPECT_THAT(Defaults(), Contains(R"(dns/ {"host":"host"} NULL NULL)"));
    EXPECT_TRUE(Process(data, true));
    EXPECT_THAT(Defaults(), ElementsAre(R"(dns/ {"host":"nic"} NULL NULL)", R"(nics/a {"id":"a"} NULL NULL)"));
}

TEST_F(DefaultConfigTest, OnlyTheNewestOfTwoVersionsIsApplied)
{
    Host().WithDefaultConfig("net", "0.9.0_0.1", "[" + Entry("dns", R"({"host":"old"})") + "]");
    EXPECT_TRUE(Process("[" + Entry("dns", R"({"host":"new"})") + "]"));
    EXPECT_THAT(Defaults(), ElementsAre(R"(dns/ {"host":"new"} NULL NULL)"));
    EXPECT_THAT(Host().Log(), Contains("info Skipping schema file 'net-0.9.0_0.1.json' since latest version already "
                                       "processed."));
}

TEST_F(DefaultConfigTest, WithoutVersioningEveryFileIsAppliedAndNeedsNoMetadata)
{
    Host().WithFeatures(R"({"schemaVersioning": false})");
    Host().WriteFile(FOLDER + "/bare.json", R"({"data": [)" + Entry("nics", R"([{"id":"a"}])") + "]}");
    Host().WithDefaultConfig("net", "0.9.0_0.1", "[" + Entry("nics", R"([{"id":"b"}])") + "]");
    EXPECT_TRUE(Process("[" + Entry("dns", R"({"host":"new"})") + "]"));
    EXPECT_EQ(Defaults().size(), 3u);
}

TEST_F(DefaultConfigTest, AnUnknownObjectIsRecordedAndTheOthersAreWritten)
{
    EXPECT_FALSE(Process("[" + Entry("none", "{}") + "," + Entry("dns", R"({"host":"h"})") + "]"));
    EXPECT_THAT(Defaults(), ElementsAre(R"(dns/ {"host":"h"} NULL NULL)"));
    EXPECT_EQ(ErrorFile(), R"({"errors":[{"component":"nimb","group":"network","key":"none","identifier":"",)"
                           R"("error":"Schema not found"}]})");
    EXPECT_THAT(Host().Log(), AllOf(Contains("error Creating default config error file " + ERRORS + FILE_NAME),
                                    Contains("error Default configuration failed '" + FILE_NAME + "'")));
    EXPECT_EQ(Host().Log().back(), "info Completed processing default configuration: failure.");
}

TEST_F(DefaultConfigTest, EveryFindingOfAnInvalidValueIsRecordedAndNothingOfItWritten)
{
    EXPECT_FALSE(Process("[" + Entry("dns", R"({"host":7,"ttl":0})") + "]"));
    EXPECT_THAT(Defaults(), IsEmpty());
    EXPECT_THAT(ErrorFile(), AllOf(HasSubstr("/host"), HasSubstr("/ttl")));
    EXPECT_THAT(Host().Log(), Contains("error Validation failed for key: dns"));
}

TEST_F(DefaultConfigTest, AFindingNamesItsInstanceAndTheWholeEntryIsLeftOut)
{
    EXPECT_FALSE(Process("[" + Entry("nics", R"([{"id":"good"},{"id":"bad","mtu":"x"}])") + "]"));
    EXPECT_THAT(Defaults(), IsEmpty());
    EXPECT_THAT(ErrorFile(), HasSubstr(R"("key":"nics","identifier":"bad","error":"/1/mtu)"));
}

TEST_F(DefaultConfigTest, AnInstanceWithoutItsIdentifierFailsTheWholeEntry)
{
    EXPECT_FALSE(Process("[" + Entry("nics", R"([{"id":"a"},{"mtu":1}])") + "]"));
    EXPECT_THAT(Defaults(), IsEmpty());
    EXPECT_THAT(ErrorFile(), AllOf(HasSubstr(R"("key":"nics")"), HasSubstr("id")));
}

TEST_F(DefaultConfigTest, AnErrorFileOfAnEarlierRunIsReplacedAndThenRemoved)
{
    EXPECT_FALSE(Process("[" + Entry("none", "{}") + "," + Entry("missing", "{}") + "]"));
    EXPECT_FALSE(Process("[" + Entry("none", "{}") + "]"));
    EXPECT_THAT(ErrorFile(), Not(HasSubstr("missing")));
    EXPECT_TRUE(Process("[]"));
    EXPECT_FALSE(Host().Exists(ERRORS + FILE_NAME));
}

TEST_F(DefaultConfigTest, ARebuildLeavesNoErrorFileOfAFileThatIsGoneOrSuperseded)
{
    EXPECT_FALSE(Process("[" + Entry("none", "{}") + "]"));
    ASSERT_TRUE(Host().Exists(ERRORS + FILE_NAME));
    Host()
        .WriteFile(ERRORS + "gone-1.0.0_0.1.json", "{}")
        .WriteFile("/var/run/talvor/files/loadStoreErrors.json", "{}");
    Host().MakeFolder(ERRORS + "folder");
    Host().WithDefaultConfig("net", "1.0.1_0.1", "[]");
    EXPECT_TRUE(ProcessDefaultConfiguration(false));
    EXPECT_FALSE(Host().Exists(ERRORS + FILE_NAME));
    EXPECT_FALSE(Host().Exists(ERRORS + "gone-1.0.0_0.1.json"));
    EXPECT_TRUE(Host().Exists("/var/run/talvor/files/loadStoreErrors.json"));
    EXPECT_TRUE(Host().Exists(ERRORS + "folder"));
}

TEST_F(DefaultConfigTest, WithoutTheFolderOfErrorFilesARebuildSucceeds)
{
    Host().Remove("/var/run/talvor/files");
    EXPECT_TRUE(Process("[" + Entry("dns", R"({"host":"h"})") + "]"));
    EXPECT_THAT(Host().Log(), Not(Contains(StartsWith("warning"))));
}

TEST_F(DefaultConfigTest, AnErrorFileThatCannotBeWrittenIsLoggedOnly)
{
    Host().Remove("/var/run/talvor/files");
    Host().WriteFile("/var/run/talvor/files", "a file in its place");
    EXPECT_FALSE(Process("[" + Entry("none", "{}") + "," + Entry("dns", R"({"host":"h"})") + "]"));
    EXPECT_EQ(Defaults().size(), 1u);
    EXPECT_THAT(Host().Log(), Contains(StartsWith("error Failed to write " + ERRORS + FILE_NAME)));
}

class BadDefaultEntry : public DefaultConfigTest, public testing::WithParamInterface<const char*>
{};

TEST_P(BadDefaultEntry, IsRecordedAndTheOthersAreWritten)
{
    EXPECT_FALSE(Process("[" + std::string(GetParam()) + "," + Entry("dns", R"({"host":"h"})") + "]"));
    EXPECT_EQ(Defaults().size(), 1u);
    EXPECT_THAT(ErrorFile(), StartsWith(R"({"errors":[{"component":)"));
}

INSTANTIATE_TEST_SUITE_P(
    DefaultConfig, BadDefaultEntry,
    testing::Values("7", "null", "[]", "{}", R"({"key": 1, "component": 2, "group": 3})",
                    R"({"component": "nimb", "group": "network", "key": "dns"})",
                    R"({"component": "nimb", "group": "network", "key": "dns", "config": null})",
                    R"({"component": "nimb", "group": "network", "key": "dns", "config": []})",
                    R"({"component": "nimb", "group": "network", "key": "nics", "config": {"id": "a"}})",
                    R"({"component": "nimb", "group": "network", "key": "nics", "config": ["a"]})",
                    R"({"component": "nimb", "group": "network", "key": "nics", "config": [{"id": 7}]})"));

class BadDefaultFile : public DefaultConfigTest, public testing::WithParamInterface<const char*>
{};

TEST_P(BadDefaultFile, HasAnErrorFileAndTheOthersAreApplied)
{
    Host().WriteFile(FOLDER + "/bad.json", GetParam());
    EXPECT_FALSE(Process("[" + Entry("dns", R"({"host":"h"})") + "]"));
    EXPECT_EQ(Defaults().size(), 1u);
    EXPECT_THAT(ErrorFile("bad.json"),
                StartsWith(R"({"errors":[{"component":"","group":"","key":"","identifier":"",)"));
    EXPECT_THAT(Host().Log(), Contains("error Default configuration failed 'bad.json'"));
}

INSTANTIATE_TEST_SUITE_P(DefaultConfig, BadDefaultFile,
                         testing::Values("7", "[]", "{}", R"({"data": []})",
                                         R"({"data": {}, "metadata": {"brevname": "a", "brevversion": "1.0.0_0.1"}})"));

class UnparsableDefaultFile : public DefaultConfigTest, public testing::WithParamInterface<const char*>
{};

TEST_P(UnparsableDefaultFile, LeavesTheTableAsItWas)
{
    Host().WithFeatures(std::string(R"({"schemaVersioning": )") + GetParam() + "}");
    for (const std::string& content : {std::string(), std::string("{"), std::string(1 << 20, '[')}) {
        Host().ClearLogs();
        Host().WriteFile(FOLDER + "/bad.json", content);
        EXPECT_FALSE(Process("[" + Entry("dns", R"({"host":"h"})") + "]"));
        ExpectDefaultsUntouched();
        EXPECT_THAT(Host().Log(),
                    Contains(AllOf(StartsWith("error DefaultConfiguration Failed "), HasSubstr(FOLDER + "/bad.json"))));
        EXPECT_EQ(Host().Log().back(), "info Completed processing default configuration: failure.");
    }
}

INSTANTIATE_TEST_SUITE_P(DefaultConfig, UnparsableDefaultFile, testing::Values("true", "false"));

TEST_F(DefaultConfigTest, AFolderThatCannotBeOpenedLeavesTheTableAsItWas)
{
    Host().Remove(FOLDER);
    EXPECT_FALSE(ProcessDefaultConfiguration(false));
    ExpectDefaultsUntouched();
    EXPECT_THAT(Host().Log(), ElementsAre("info Processing default configuration.", "error Failed to open " + FOLDER,
                                          "info Completed processing default configuration: failure."));
}

struct Fault
{
    int action;
    const char* argument;
    const char* logged;
};

[[maybe_unused]] void PrintTo(const Fault& fault, std::ostream* out)
{
    *out << fault.logged;
}

class FailingStore : public DefaultConfigTest, public testing::WithParamInterface<Fault>
{};

TEST_P(FailingStore, LeavesTheTableAsItWas)
{
    {
        const StoreFault fault(GetParam().action, GetParam().argument);
        EXPECT_FALSE(Process("[" + Entry("none", "{}") + "," + Entry("dns", R"({"host":"h"})") + "]"));
    }
    ExpectDefaultsUntouched();
    EXPECT_THAT(Host().Log(), Contains(std::string("error DefaultConfiguration Failed ") + GetParam().logged));
}

INSTANTIATE_TEST_SUITE_P(
    DefaultConfig, FailingStore,
    testing::Values(Fault{SQLITE_READ, "ConfigSchema", "Failed to read the schema store"},
                    Fault{SQLITE_TRANSACTION, "BEGIN", "Failed to begin default config transaction"},
                    Fault{SQLITE_DELETE, "DefaultConfig", "Failed to cleanup default config"},
                    Fault{SQLITE_INSERT, "DefaultConfig", "Failed to write default config for nimb/network/dns/"},
                    Fault{SQLITE_TRANSACTION, "COMMIT", "Failed to commit default config"}));

TEST_F(DefaultConfigTest, ARowThatCannotBeWrittenIsNamed)
{
    const StoreFault fault(SQLITE_INSERT, "DefaultConfig");
    EXPECT_FALSE(Process("[" + Entry("nics", R"([{"id":"a"}])") + "]"));
    EXPECT_THAT(Host().Log(), Contains("error Failed to write default config for nimb/network/nics/a"));
}

TEST_F(DefaultConfigTest, AMissingStoreIsAFailure)
{
    Host().Remove(DBStore::StorePath(DBStore::Type::ConfigStore));
    EXPECT_FALSE(ProcessDefaultConfiguration(false));
    EXPECT_THAT(Host().Log(), Contains("error DefaultConfiguration Failed Failed to connect to database"));
}
}  // namespace
