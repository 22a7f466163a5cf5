#include "SampleHost.h"

#include <gmock/gmock.h>

#include "NimbConfigStore.h"
#include "NimbConfigUpgrade.h"
#include "NimbSchemaStore.h"
#include "ZubEvents.h"

using namespace NimbConfigStore;
using NimbSchemaStore::SchemaStore;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;

namespace
{
const std::string SCHEMAS = "/usr/lib/talvor/configmanager/schemas/";

RaisedEvent Observation(const char* id, const char* text, const std::string& argument)
{
    return {"observation", id, text + argument + ".", {argument}};
}

bool Registered(const char* group, const char* key)
{
    return SchemaStore::GetStore(false)->GetCache()->Find({"nimb", group, key}) != nullptr;
}
}  // namespace

class BrokenFilesTest : public SampleHostTest
{
protected:
    BrokenFilesTest()
    {
        EXPECT_TRUE(ProcessSchemas({}));
        Host().ClearLogs();
    }
};

TEST_F(BrokenFilesTest, EachBadSchemaFileIsReportedByNameAndTheOthersAreProcessed)
{
    WithOverlay("broken");
    EXPECT_FALSE(ProcessSchemas({}));

    EXPECT_THAT(
        Host().Events(),
        ElementsAre(
            Observation(ZUB_SCHEMA_METADATA_ERROR, "Invalid metadata in schema file ", SCHEMAS + "vendor-notes.json"),
            Observation(ZUB_SCHEMA_FILE_ERROR, "Error processing schema file ", "storage-vault-1.2.0_1.0.json"),
            Observation(ZUB_SCHEMA_VALIDATION_ERROR, "BrevId validation failed for schema file ",
                        "vendor-tools-0.7.0_1.0.json"),
            Observation(ZUB_SCHEMA_METADATA_ERROR, "Invalid metadata in schema file ", "vendor-notes.json")));
    EXPECT_TRUE(Registered("time", "ntp"));
    EXPECT_TRUE(Registered("storage_vault", "settings")) << "stands before the bad element";
    EXPECT_FALSE(Registered("storage_vault", "keys"));
}

TEST_F(BrokenFilesTest, ADescriptorThatTheProfileDoesNotListIsReportedAndLeftOut)
{
    WithOverlay("broken");
    (void)ProcessSchemas({});

    EXPECT_THAT(Host().Syslog(),
                Contains("error brev Talvor_bootbank_nic-driver_0.3.0_1.0 not found in image profile"));
}

TEST_F(BrokenFilesTest, DefaultsThatFailAreListedInAnErrorFile)
{
    WithOverlay("broken");
    (void)ProcessSchemas({});

    JsonDocument file;
    file.Parse(Host().ReadFile("/var/run/talvor/files/errors-storage-vault-1.2.0_1.0.json").c_str());
    const JsonValue& errors = file["errors"];
    ASSERT_EQ(errors.Size(), 2U);
    EXPECT_STREQ(errors[0]["key"].GetString(), "settings");
    EXPECT_STREQ(errors[1]["key"].GetString(), "policy");
    EXPECT_STREQ(errors[1]["error"].GetString(), "Schema not found");
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM DefaultConfig WHERE ConfigGroup = 'storage_vault'"), "0");
}

TEST_F(BrokenFilesTest, ASchemaFileThatDoesNotParseEndsTheRunAndTheFormerSchemasStand)
{
    WithOverlay("unparsable-schema");
    EXPECT_FALSE(ProcessSchemas({}));

    EXPECT_THAT(Host().Log(), Contains(HasSubstr(SCHEMAS + "net-probe-1.0.0_1.0.json")));
    EXPECT_TRUE(Registered("network", "orvnics"));
}

TEST_F(BrokenFilesTest, ADescriptorThatCannotBeReadEndsTheRunAndTheFormerSchemasStand)
{
    WithOverlay("unreadable-descriptor");
    EXPECT_THROW((void)ProcessSchemas({}), std::runtime_error);

    EXPECT_TRUE(Registered("network", "orvnics"));
}

TEST_F(BrokenFilesTest, OfABadBootDocumentTheSoundObjectsAreWritten)
{
    WithOverlay("broken");
    EXPECT_EQ(LoadStore(true), 0);

    EXPECT_THAT(Column("SELECT Name || '/' || Identifier FROM Config"), ElementsAre("routes/10.40.0.0/16"));
    EXPECT_THAT(Host().BootLog(), IsSupersetOf({"error Validation failed for nimb/time/ntp, skipping",
                                                "error nimb/hardware/power is empty, skipping",
                                                "error Schema not found for nimb/network/vlans, skipping",
                                                "error /nimb/storage is invalid, skipping"}));
}

TEST_F(BrokenFilesTest, AnUpgradeModuleThatIsNoSharedObjectIsReportedAndTheOthersRun)
{
    WithOverlay("broken");
    const std::string sound = WithUpgradeModule();
    const std::string folder = "/usr/lib/talvor/configmanager/upgrade/lib/";
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue) VALUES "
        "('nimb', 'time', 'ntp', '', '{\"servers\":[\"a\"]}')");

    EXPECT_EQ(NimbConfigUpgrade::ExecuteBootTimeModules({folder + "net-core-upgrade.so", sound}, false), 1);

    EXPECT_THAT(Host().Events(), ElementsAre(Observation(ZUB_UPGRADE_CONFIG_ERROR, "Error in upgrading config ",
                                                         "net-core-upgrade.so")));
    EXPECT_EQ(Host().SqlValue("SELECT UserValue FROM Config"), R"({"servers":[{"address":"a","iburst":true}]})");
}
