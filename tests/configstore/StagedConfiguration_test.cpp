#include "StagedConfiguration.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <stdexcept>

#include "BootHost.h"
#include "NimbConfigStore.h"
#include "StoreFault.h"
#include "StoreFiles.h"
#include "Thrown.h"

using NimbConfigStore::ApplyStagedConfiguration;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace
{
constexpr const char* EVENT = "zub.user.cs.desired.config.error";
constexpr const char* SUCCESS = "info Desired user config generated successfully.";

class StagedConfigurationTest : public BootHostTest
{
protected:
    void Apply(const std::string& mode)
    {
        SetKey("BOOT_MODE", mode);
        Host().ClearLogs();
        ApplyStagedConfiguration();
    }

    // The same while the databases refuse something.
    void ApplyAgainst(const std::string& mode, int action, const std::string& argument, const std::string& column = "")
    {
        SetKey("BOOT_MODE", mode);
        Host().ClearLogs();
        const StoreFault fault(action, argument, column);
        ApplyStagedConfiguration();
    }

    std::string BootInfo() { return Host().KeyValue("BOOT_INFO"); }
};
}  // namespace

TEST_F(StagedConfigurationTest, WithoutAModeOnlyDesiredValuesAreFolded)
{
    AddRow("network/dns", "", R"({"hostname": "old"})");
    AddRow("system/keyboard", "", R"({"layout": "us"})");
    Host().Sql("UPDATE Config SET DesiredValue = '{\"hostname\": \"new\"}' WHERE Name = 'dns'");
    Apply("");
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname": "new"})");
    EXPECT_EQ(UserValue("system/keyboard"), R"({"layout": "us"})");
    EXPECT_THAT(Host().Sql("SELECT Name, DesiredValue, Success FROM Config ORDER BY Name"),
                ElementsAre(Row{"dns", std::nullopt, "1"}, Row{"keyboard", std::nullopt, "0"}));
    EXPECT_EQ(BootInfo(), R"({"type":0})");
    EXPECT_THAT(Host().Log(), ElementsAre("info Generating desired user config: BootMode = 0", SUCCESS));
}

TEST_F(StagedConfigurationTest, ModeOneAppliesTheDesiredDocumentAndSaysSo)
{
    AddRow("network/vswitch", "old", "{}");
    AddRow("security/accounts", "root", R"({"name": "root"})");
    StageRow("network/vswitch", "new", R"({"name": "new"})");
    Apply("1");
    EXPECT_EQ(UserValue("network/vswitch", "new"), R"({"name": "new"})");
    EXPECT_EQ(UserValue("network/vswitch", "old"), "none");
    EXPECT_EQ(UserValue("security/accounts", "root"), R"({"name": "root"})");
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM DesiredUserConfig"), "0");
    EXPECT_EQ(BootInfo(), R"({"type":1})");
    EXPECT_THAT(Host().Log(), Contains(SUCCESS));
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}

TEST_F(StagedConfigurationTest, ModeTwoAppliesTheBootDocument)
{
    Host().WriteFile(BOOT_DOCUMENT, R"({"nimb": {"network": {"dns": {"hostname": "boot"}}}})");
    Apply("2");
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname":"boot"})");
    EXPECT_EQ(BootInfo(), R"({"type":0})");
}

TEST_F(StagedConfigurationTest, ModeThreeAppliesSharedValuesAndKeepsThemStaged)
{
    AddRow("network/vswitch", "gone", "{}");
    StageRow("network/dns", "", R"({"hostname": "smartnic"})");
    Apply("3");
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname": "smartnic"})");
    EXPECT_EQ(UserValue("network/vswitch", "gone"), "none");
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM DesiredUserConfig"), "1");
    EXPECT_EQ(BootInfo(), R"({"type":0})");
}

TEST_F(StagedConfigurationTest, ModeFourAppliesChangesOfSingleObjects)
{
    AddRow("network/vswitch", "gone", "{}");
    AddRow("network/vswitch", "stays", "{}");
    AddRow("network/dns", "", "{}");
    StageRow("network/vswitch", "gone", "", "DELETE_INSTANCE");
    StageRow("network/dns", "", "", "SET_DEFAULT");
    Apply("4");
    EXPECT_EQ(UserValue("network/vswitch", "gone"), "none");
    EXPECT_EQ(UserValue("network/vswitch", "stays"), "{}");
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname":"localhost"})");
    EXPECT_EQ(BootInfo(), R"({"type":0})");
}

TEST_F(StagedConfigurationTest, AnUnknownModeAppliesNothingButTheFold)
{
    AddRow("network/dns", "", "{}");
    AddRow("system/keyboard", "", R"({"layout": "us"})");
    Host().Sql("UPDATE Config SET DesiredValue = '{\"layout\": \"de\"}' WHERE Name = 'keyboard'");
    StageRow("network/dns", "", R"({"hostname": "staged"})");
    Apply("7");
    EXPECT_EQ(UserValue("network/dns"), "{}");
    EXPECT_EQ(UserValue("system/keyboard"), R"({"layout": "de"})");
    EXPECT_THAT(Host().Sql("SELECT Name, DesiredValue, Success FROM Config ORDER BY Name"),
                ElementsAre(Row{"dns", std::nullopt, "1"}, Row{"keyboard", std::nullopt, "0"}));
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
    EXPECT_THAT(Host().Log(), ElementsAre("info Generating desired user config: BootMode = 7", SUCCESS));
}

TEST_F(StagedConfigurationTest, TheModeIsTakenBackTogetherWithWhatItApplied)
{
    StageRow("network/dns", "", "{}");
    Apply("1");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
    ApplyAgainst("1", SQLITE_TRANSACTION, "COMMIT");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "1");
}

TEST_F(StagedConfigurationTest, AFailedApplyLeavesEveryRowAsItWas)
{
    AddRow("network/vswitch", "old", "{}");
    Host().Sql("UPDATE Config SET DesiredValue = '7'");
    StageRow("network/vswitch", "new", "{}");
    SetKey("BOOT_INFO", R"({"type":0})");
    SetKey("BOOT_MODE", "1");
    const std::string before = DumpStore(DBStore::Type::ConfigStore);
    ApplyAgainst("1", SQLITE_DELETE, "DesiredUserConfig");
    EXPECT_EQ(DumpStore(DBStore::Type::ConfigStore), before);
    EXPECT_THAT(Host().Log(),
                Contains("error GenerateDesiredConfiguration failed: Failed to cleanup desired configuration"));
    EXPECT_EQ(Host().Log().back(), SUCCESS);
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(StagedConfigurationTest, WhenTheFoldFailsNothingIsAppliedThoughTheDocumentRanToItsEnd)
{
    AddRow("network/vswitch", "old", "{}");
    ApplyAgainst("1", SQLITE_UPDATE, "Config", "Success");
    EXPECT_EQ(UserValue("network/vswitch", "old"), "{}");
    EXPECT_EQ(BootInfo(), R"({"type":1})");
    EXPECT_THAT(Host().Log(), Contains("error GenerateDesiredConfiguration failed: Failed to reset success flag for "
                                       "configuration"));
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(StagedConfigurationTest, WhenTheModeCannotBeTakenBackNothingIsAppliedAndTheStagingStands)
{
    AddRow("network/vswitch", "old", "{}");
    StageRow("network/vswitch", "new", "{}");
    SetKey("BOOT_MODE", "1");
    const std::string before = DumpStore(DBStore::Type::ConfigStore);
    ApplyAgainst("1", SQLITE_INSERT, "KeyValue");
    EXPECT_EQ(DumpStore(DBStore::Type::ConfigStore), before);
    EXPECT_THAT(Host().Log(), Contains("error GenerateDesiredConfiguration failed: Failed to take the boot mode back"));
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(StagedConfigurationTest, WhenTheCommitFailsNothingIsApplied)
{
    AddRow("network/vswitch", "old", "{}");
    ApplyAgainst("4", SQLITE_TRANSACTION, "COMMIT");
    EXPECT_EQ(BootInfo(), R"({"type":0})");
    EXPECT_THAT(Host().Log(), Contains("error GenerateDesiredConfiguration failed: Failed to commit desired "
                                       "configuration transaction"));
    EXPECT_EQ(Host().Log().back(), SUCCESS);
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(StagedConfigurationTest, WithoutATransactionNothingIsAppliedAndTheBootInfoSaysSo)
{
    AddRow("network/dns", "", "{}");
    ApplyAgainst("1", SQLITE_TRANSACTION, "BEGIN");
    EXPECT_EQ(UserValue("network/dns"), "{}");
    EXPECT_EQ(BootInfo(), R"({"type":0})");
    EXPECT_THAT(Host().Log(), Contains("error Failed to begin desired configuration transaction"));
    EXPECT_EQ(Host().Log().back(), SUCCESS);
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(StagedConfigurationTest, WithoutASchemaStoreThereIsNeitherBootInfoNorTheClosingLine)
{
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    Apply("1");
    EXPECT_EQ(BootInfo(), "");
    EXPECT_EQ(Host().Log().back(), "error Failed to attach schema store");
    EXPECT_THAT(Host().Log(), Not(Contains(SUCCESS)));
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(StagedConfigurationTest, AFailedDetachIsReportedAndTheApplyStands)
{
    StageRow("network/dns", "", "{}");
    ApplyAgainst("1", SQLITE_DETACH, "");
    EXPECT_EQ(UserValue("network/dns"), "{}");
    EXPECT_EQ(BootInfo(), R"({"type":1})");
    EXPECT_THAT(Host().Log(), Contains("error Failed to detach schema store"));
    EXPECT_EQ(Host().Log().back(), SUCCESS);
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(StagedConfigurationTest, ABootDocumentThatDoesNotParseFailsTheApplyAndIsNamed)
{
    Host().WriteFile(BOOT_DOCUMENT, "{");
    Apply("2");
    EXPECT_THAT(Host().Log(),
                Contains(AllOf(HasSubstr("error GenerateDesiredConfiguration failed: "), HasSubstr(BOOT_DOCUMENT))));
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(StagedConfigurationTest, AModeThatIsNoNumberGoesToTheCaller)
{
    SetKey("BOOT_MODE", "abc");
    EXPECT_THROW(ApplyStagedConfiguration(), std::invalid_argument);
    EXPECT_EQ(BootInfo(), "");
}
