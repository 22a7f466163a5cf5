#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>

#include "FileSizeLimit.h"
#include "NimbConfigStore.h"
#include "StoreFault.h"
#include "TestHost.h"
#include "Thrown.h"

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
const std::string FOLDER = "/usr/lib/talvor/configmanager/schemas/";

/// One element of a schema file: nimb/network/KEY, with further members.
std::string Element(const std::string& key, const std::string& more = "")
{
    return R"({"component": "nimb", "group": "network", "key": ")" + key + R"(", "schema": {"type": "object"})" +
           (more.empty() ? "" : ", " + more) + "}";
}

RaisedEvent SchemaEvent(const std::string& kind, const std::string& text, const std::string& argument)
{
    return {
        "observation", "zub.user.cs.schema." + kind + ".error", text + " schema file " + argument + ".", {argument}};
}

RaisedEvent FileEvent(const std::string& name)
{
    return SchemaEvent("file", "Error processing", name);
}
RaisedEvent MetadataEvent(const std::string& name)
{
    return SchemaEvent("metadata", "Invalid metadata in", name);
}

class SchemaProcessorTest : public HostTest
{
protected:
    void SetUp() override { Host().WithStores(); }

    void Write(const std::string& name, const std::string& content) { Host().WriteFile(FOLDER + name, content); }

    std::vector<std::string> Registered()
    {
        std::vector<std::string> keys;
        for (const Row& row : Host().Sql("SELECT Name FROM ConfigSchema ORDER BY Name", DBStore::Type::SchemaStore)) {
            keys.push_back(row[0].value_or("NULL"));
        }
        return keys;
    }

    /// "key of identifier" of each object.
    std::vector<std::string> RegisteredFor()
    {
        std::vector<std::string> texts;
        for (const Row& row : Host().Sql("SELECT Name || ' of ' || SchemaId FROM ConfigSchema ORDER BY Name",
                                         DBStore::Type::SchemaStore)) {
            texts.push_back(row[0].value_or("NULL"));
        }
        return texts;
    }
};

TEST_F(SchemaProcessorTest, ARunRegistersWhatTheImageDeclaresAndSaysSo)
{
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "," + Element("ntp") + "]");
    EXPECT_TRUE(ProcessSchemas({}));
    EXPECT_THAT(Registered(), ElementsAre("dns", "ntp"));
    EXPECT_THAT(Host().Events(), IsEmpty());
    std::vector<std::string> log = Host().Log();
    std::erase_if(log, [](const std::string& line) { return line.find("Skip processing") != std::string::npos; });
    EXPECT_THAT(log, ElementsAre("info [SchemaProcessor] Processing schemas..",
                                 "info Processing schema file 'net-1.0.0_0.1.json'.",
                                 "info [SchemaProcessor] Schema file processed successfully",
                                 "info [SchemaProcessor] Schema processing completed: success",
                                 "info Processing default configuration.",
                                 "info Completed processing default configuration: success."));
}

TEST_F(SchemaProcessorTest, TheWholeElementIsKept)
{
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns", R"("dspIntegrated": true)") + "]");
    ASSERT_TRUE(ProcessSchemas({}));
    EXPECT_EQ(Host().SqlValue("SELECT SchemaJson FROM ConfigSchema", DBStore::Type::SchemaStore),
              R"({"component":"nimb","group":"network","key":"dns","schema":{"type":"object"},"dspIntegrated":true})");
}

TEST_F(SchemaProcessorTest, OnlyTheNewestFileOfASchemaIsProcessed)
{
    Host().WithPackage("net", "1.0.1_0.1", "[" + Element("dns") + "]");
    Host().WithSchemaFile("net", "1.0.0_0.1", "[" + Element("old") + "]");
    EXPECT_TRUE(ProcessSchemas({}));
    EXPECT_THAT(Registered(), ElementsAre("dns"));
    EXPECT_THAT(Host().Log(), Contains("info Skipping schema file 'net-1.0.0_0.1.json' since latest version already "
                                       "processed."));
}

TEST_F(SchemaProcessorTest, AnUndeclaredNewestFileStillPutsTheDeclaredOlderOneAside)
{
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("old") + "]");
    Host().WithSchemaFile("net", "1.0.1_0.1", "[" + Element("dns") + "]");
    EXPECT_TRUE(ProcessSchemas({}));
    EXPECT_THAT(Registered(), IsEmpty());
    EXPECT_THAT(Host().Events(),
                ElementsAre(SchemaEvent("validation", "BrevId validation failed for", "net-1.0.1_0.1.json")));
    EXPECT_THAT(Host().Log(), Contains("info Skipping schema file 'net-1.0.0_0.1.json' since latest version already "
                                       "processed."));
}

TEST_F(SchemaProcessorTest, AVersionBeyondIntEndsTheRunAndTheLogNamesItsFile)
{
    Host()
        .WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]")
        .WithSchemaFile("far", "1.0.99999999999_0.1", "[]");
    EXPECT_FALSE(ProcessSchemas({}));
    EXPECT_THAT(Registered(), IsEmpty());
    EXPECT_THAT(Host().Log(), Contains("error [SchemaProcessor] Error processing schemas - 'stoi: " + FOLDER +
                                       "far-1.0.99999999999_0.1.json'."));
}

TEST_F(SchemaProcessorTest, WithoutVersioningEveryFileIsProcessed)
{
    Host().WithFeatures(R"({"schemaVersioning": false})");
    Host().WithPackage("net", "1.0.1_0.1", "[" + Element("dns") + "]");
    Host().WithSchemaFile("net", "1.0.0_0.1", "[" + Element("old") + "]");
    EXPECT_TRUE(ProcessSchemas({"net-1.0.0_0.1"}));
    EXPECT_THAT(Registered(), ElementsAre("dns", "old"));
    EXPECT_THAT(Host().Log(), Not(Contains(HasSubstr("latest version already processed"))));
}

TEST_F(SchemaProcessorTest, AnUndeclaredIdentifierRegistersNothingAndStillSucceeds)
{
    Host().WithSchemaFile("net", "1.0.0_0.1", "[" + Element("dns") + "]").WithPackage("other", "1.0.0_0.1");
    EXPECT_TRUE(ProcessSchemas({}));
    EXPECT_THAT(Registered(), IsEmpty());
    EXPECT_THAT(Host().Events(),
                ElementsAre(SchemaEvent("validation", "BrevId validation failed for", "net-1.0.0_0.1.json")));
    EXPECT_THAT(Host().Log(), Contains("error [SchemaProcessor] Schema-id 'net-1.0.0_0.1' does not align with expected "
                                       "schema-ids."));
}

TEST_F(SchemaProcessorTest, TheCallersIdentifiersAreExpectedToo)
{
    Host().WithSchemaFile("net", "1.0.0_0.1", "[" + Element("dns") + "]").WithPackage("other", "1.0.0_0.1");
    EXPECT_TRUE(ProcessSchemas({"net-1.0.0_0.1"}));
    EXPECT_THAT(Registered(), ElementsAre("dns"));
    EXPECT_THAT(Host().Log(), Contains("info [SchemaProcessor] Schema ID list received as input"));
}

TEST_F(SchemaProcessorTest, AFileWithoutMetadataIsReportedTwiceAndTheRestGoesOn)
{
    for (const char* versioning : {"true", "false"}) {
        Host().ClearLogs();
        Host().WithFeatures(std::string(R"({"schemaVersioning": )") + versioning + "}");
        Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
        Write("bad.json", R"({"data": []})");
        EXPECT_TRUE(ProcessSchemas({}));
        EXPECT_THAT(Registered(), ElementsAre("dns"));
        EXPECT_THAT(Host().Events(), ElementsAre(MetadataEvent(FOLDER + "bad.json"), MetadataEvent("bad.json")));
        EXPECT_THAT(Host().Log(), AllOf(Contains("error [SchemaProcessor] Invalid format in schema file bad.json"),
                                        Contains("info Processing schema file 'bad.json'.")));
    }
}

TEST_F(SchemaProcessorTest, AFileThatDoesNotParseEndsTheRunAndThePreviousSchemasStand)
{
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
    ASSERT_TRUE(ProcessSchemas({}));
    Write("bad.json", std::string(1 << 20, '['));
    Host().WithPackage("disk", "1.0.0_0.1", "[" + Element("raid") + "]");
    EXPECT_FALSE(ProcessSchemas({}));
    EXPECT_THAT(Registered(), ElementsAre("dns"));
    EXPECT_THAT(Host().Log(), Contains(AllOf(StartsWith("error [SchemaProcessor] Error processing schemas - '"),
                                             HasSubstr(FOLDER + "bad.json"))));
    EXPECT_THAT(Host().Log(), Contains("info [SchemaProcessor] Schema processing completed: failure"));
    EXPECT_THAT(Host().Events(), IsEmpty());
}

TEST_F(SchemaProcessorTest, WithoutVersioningAFileThatDoesNotParseIsAFileWithErrors)
{
    Host().WithFeatures(R"({"schemaVersioning": false})");
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
    Write("bad.json", "{");
    EXPECT_FALSE(ProcessSchemas({}));
    EXPECT_THAT(Registered(), ElementsAre("dns"));
    EXPECT_THAT(Host().Events(), ElementsAre(FileEvent("bad.json")));
    EXPECT_THAT(Host().Log(), Contains("error [SchemaProcessor] Schema file has errors."));
}

TEST_F(SchemaProcessorTest, DefaultConfigurationIsProcessedAfterAFailureToo)
{
    Write("bad.json", "{");
    Host().WithPackage("net", "1.0.0_0.1");
    Host().Sql("INSERT INTO DefaultConfig (Component, ConfigGroup, Name, Identifier) VALUES ('a', 'b', 'c', '')");
    EXPECT_FALSE(ProcessSchemas({}));
    EXPECT_EQ(Host().SqlValue("SELECT count(*) FROM DefaultConfig"), "0");
    EXPECT_THAT(Host().Log(), Contains("info Completed processing default configuration: success."));
}

TEST_F(SchemaProcessorTest, AFailedDefaultConfigurationMakesTheResultFalse)
{
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
    Host().WithDefaultConfig("net", "1.0.0_0.1", R"([{"key": "none"}])");
    EXPECT_FALSE(ProcessSchemas({}));
    EXPECT_THAT(Registered(), ElementsAre("dns"));
}

TEST_F(SchemaProcessorTest, OnASmartnicTheDefaultsAreItsVariants)
{
    const std::string data = R"([{"component": "nimb", "group": "network", "key": "dns", "config": {"on": "host"},
                                  "nimbio_config": {"on": "smartnic"}}])";
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]").WithDefaultConfig("net", "1.0.0_0.1", data);
    EXPECT_TRUE(ProcessSchemas({}));
    EXPECT_EQ(Host().SqlValue("SELECT Value FROM DefaultConfig"), R"({"on":"host"})");
    Host().WriteFile("/etc/.nimbio", "");
    EXPECT_TRUE(ProcessSchemas({}));
    EXPECT_EQ(Host().SqlValue("SELECT Value FROM DefaultConfig"), R"({"on":"smartnic"})");
}

TEST_F(SchemaProcessorTest, AMissingSchemaStoreIsAFailure)
{
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    EXPECT_FALSE(ProcessSchemas({}));
    EXPECT_THAT(Host().Log(), Contains(StartsWith("error [SchemaProcessor] Error processing schemas - '")));
    EXPECT_FALSE(Host().Exists(DBStore::StorePath(DBStore::Type::SchemaStore)));
}

TEST_F(SchemaProcessorTest, ARunThatCannotBeCommittedLeavesThePreviousSchemas)
{
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
    {
        const StoreFault fault(SQLITE_TRANSACTION, "COMMIT");
        EXPECT_FALSE(ProcessSchemas({}));
    }
    EXPECT_THAT(Registered(), IsEmpty());
}

TEST_F(SchemaProcessorTest, ADiskThatFillsUpInTheMiddleLeavesExactlyThePreviousSchemas)
{
    Host().WithSchemaFile("net", "1.0.0_0.1", "[" + Element("dns") + "," + Element("ntp") + "]");
    Host().WithPackage("small", "1.0.0_0.1");
    ASSERT_TRUE(ProcessSchemas({"net-1.0.0_0.1"}));
    const std::string large = R"("description": ")" + std::string(8 << 20, 'x') + '"';
    Host().WithSchemaFile("net", "1.1.0_0.1", "[" + Element("dns", R"("dspIntegrated": true)") + "]");
    Host().WithPackage("large", "1.0.5_0.1", "[" + Element("large", large) + "]");
    Host().WithPackage("small", "1.0.0_0.1", "[" + Element("small") + "]");
    {
        const FileSizeLimit limit(3 << 20);
        EXPECT_FALSE(ProcessSchemas({"net-1.1.0_0.1"}));
    }
    EXPECT_THAT(RegisteredFor(), ElementsAre("dns of net-1.0.0_0.1", "ntp of net-1.0.0_0.1"));
    EXPECT_THAT(Host().Log(),
                Contains("error [SchemaProcessor] Error processing schemas - 'Failed to read the schema store'."));
}

TEST_F(SchemaProcessorTest, AFileThatIsNotWrittenWholeLeavesTheSchemasThatItDidNotReplace)
{
    const std::string shared = R"("smartnic": {"schema": "nimb-shared"})";
    const std::string data = "[" + Element("a") + "," + Element("b", shared) + "," + Element("c") + "]";
    Host().WithSchemaFile("net", "1.0.0_0.1", data);
    Host().WithPackage("other", "1.0.0_0.1");
    ASSERT_TRUE(ProcessSchemas({"net-1.0.0_0.1"}));
    Host().WithSchemaFile("net", "1.1.0_0.1", data);
    {
        const StoreFault fault(SQLITE_INSERT, "SmartnicSchema");
        EXPECT_FALSE(ProcessSchemas({"net-1.1.0_0.1"}));
    }
    EXPECT_THAT(Registered(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(Host().SqlValue("SELECT count(*) FROM SmartnicSchema", DBStore::Type::SchemaStore), "1");
    EXPECT_THAT(Host().Events(), ElementsAre(FileEvent("net-1.1.0_0.1.json")));
    EXPECT_TRUE(ProcessSchemas({"net-1.1.0_0.1"}));
    EXPECT_THAT(RegisteredFor(), ElementsAre("a of net-1.1.0_0.1", "b of net-1.1.0_0.1", "c of net-1.1.0_0.1"));
}

TEST_F(SchemaProcessorTest, AnImageThatCannotBeReadIsTheCallersMatter)
{
    EXPECT_THROW(ProcessSchemas({}), std::runtime_error);
    EXPECT_THROW(RefreshConfigStore({}, {}), std::runtime_error);
}

TEST_F(SchemaProcessorTest, TheSchemasOfARemovedPackageAreDropped)
{
    Host().WithSchemaFile("old", "1.0.0_0.1", "[" + Element("old") + "]");
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
    ASSERT_TRUE(ProcessSchemas({"old-1.0.0_0.1"}));
    Host().Remove(FOLDER + "old-1.0.0_0.1.json");
    EXPECT_TRUE(ProcessSchemas({}));
    EXPECT_THAT(Registered(), ElementsAre("dns"));
}

TEST_F(SchemaProcessorTest, ARefreshProcessesSchemasAndSaysSo)
{
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
    EXPECT_TRUE(RefreshConfigStore({}, {}));
    EXPECT_THAT(Registered(), ElementsAre("dns"));
    EXPECT_EQ(Host().Log().front(), "info Refresh Config Store");
}

TEST_F(SchemaProcessorTest, ARefreshExpectsTheCallersIdentifiersToo)
{
    Host().WithSchemaFile("net", "1.0.0_0.1", "[" + Element("dns") + "]").WithPackage("other", "1.0.0_0.1");
    EXPECT_TRUE(RefreshConfigStore({"net-1.0.0_0.1"}, {}));
    EXPECT_THAT(Registered(), ElementsAre("dns"));
}

TEST_F(SchemaProcessorTest, ARefreshRunsTheModulesOfALiveInstall)
{
    const std::string module = "/usr/lib/talvor/configmanager/upgrade/lib/success.so";
    std::filesystem::copy_file(std::filesystem::path(UPGRADE_MODULES) / "success.so", Host().Real(module));
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
    EXPECT_TRUE(RefreshConfigStore({}, {module}));
    EXPECT_EQ(Host().ReadFile("/var/told"), "1 0 1 " + Host().Real("/etc/talvor/configstore/current-store-1") + "\n");
    EXPECT_EQ(Host().Log().back(), "info Running upgrade module " + module);
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}

TEST_F(SchemaProcessorTest, ARefreshWithoutASchemaStoreFailsWithoutAnExceptionAndRunsNoModule)
{
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    bool succeeded = true;
    EXPECT_NO_THROW(succeeded = RefreshConfigStore({}, {"/usr/lib/talvor/configmanager/upgrade/lib/missing.so"}));
    EXPECT_FALSE(succeeded);
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}

TEST_F(SchemaProcessorTest, ARefreshFailsWithAModuleThatFails)
{
    Host().WithPackage("net", "1.0.0_0.1", "[" + Element("dns") + "]");
    EXPECT_FALSE(RefreshConfigStore({}, {"/usr/lib/talvor/configmanager/upgrade/lib/missing.so"}));
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.upgrade.config.error"));
}

TEST_F(SchemaProcessorTest, ARefreshRunsNoModuleAfterFailedSchemas)
{
    Host().WithPackage("net", "1.0.0_0.1");
    Write("bad.json", "{");
    EXPECT_FALSE(RefreshConfigStore({}, {"/usr/lib/talvor/configmanager/upgrade/lib/missing.so"}));
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}
}  // namespace
