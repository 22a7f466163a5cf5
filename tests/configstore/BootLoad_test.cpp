#include <gmock/gmock.h>
#include <sqlite3.h>

#include "BootHost.h"
#include "CSLogger.h"
#include "NimbConfigStore.h"
#include "StoreFault.h"
#include "StoreFiles.h"

using NimbConfigStore::LoadStore;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace
{

class BootLoadTest : public BootHostTest
{
protected:
    BootLoadTest() { Host().WriteFile(BOOT_DOCUMENT, R"({"nimb": {"network": {"dns": {"hostname": "boot"}}}})"); }

    // The load ends as a failure for this reason, which an alert and the system log tell.
    void ExpectFailedLoad(bool restore, const std::string& reason)
    {
        EXPECT_EQ(LoadStore(restore), 1);
        ASSERT_THAT(Host().Events(), Not(IsEmpty()));
        EXPECT_EQ(Host().Events().back().kind, "alert");
        EXPECT_EQ(Host().Events().back().text, "Generic ConfigStore Failure: " + reason);
        EXPECT_THAT(Host().Syslog(), Contains("error Generic ConfigStore Failure: " + reason));
    }

    std::string Record() { return Host().KeyValue("BOOT_APPLY_RESULT"); }
};
}  // namespace

TEST_F(BootLoadTest, AnOrdinaryBootRestoresTheBackupAndOpensAutomaticConfiguration)
{
    AddRow("network/dns", "", R"({"hostname": "kept"})");
    SetKey("BOOT_APPLY_RESULT", R"({"isBootComplete":true})");
    SaveBackup();
    Host().Sql("DELETE FROM Config");
    EXPECT_EQ(LoadStore(true), 0);
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname": "kept"})");
    EXPECT_EQ(Host().KeyValue("IS_BOOT"), "true");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
    EXPECT_EQ(Host().KeyValue("BOOT_INFO"), R"({"type":0})");
    EXPECT_EQ(Record(), R"({"isBootComplete":false})");
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}

TEST_F(BootLoadTest, WithoutRestoreTheStoreIsNeitherReplacedNorCreated)
{
    SaveBackup();
    AddRow("network/dns", "", R"({"hostname": "live"})");
    Host().Remove(DATAFILE_STORE);
    EXPECT_EQ(LoadStore(false), 0);
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname": "live"})");
    EXPECT_FALSE(Host().Exists(DATAFILE_STORE));
}

TEST_F(BootLoadTest, WithoutAnyStoreALoadThatMustNotCreateOneFails)
{
    Host().Remove(STORE);
    ExpectFailedLoad(false, "Failed to connect to database.");
    EXPECT_FALSE(Host().Exists(STORE));
}

TEST_F(BootLoadTest, AFirstBootStartsAFreshStoreWithTheBootDocument)
{
    EXPECT_EQ(LoadStore(true), 0);
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname":"boot"})");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
    EXPECT_THAT(Host().Log(), Contains("info Generating desired user config: BootMode = 2"));
}

TEST_F(BootLoadTest, AnInconsistentBackupStartsAFreshStoreWithTheBootDocument)
{
    SaveBackup();
    Host().WriteFile(BACKUP, "damaged");
    EXPECT_EQ(LoadStore(true), 0);
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname":"boot"})");
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.createstore.copy.backup.error"));
}

TEST_F(BootLoadTest, AMissingDataFileBackupLeavesTheBootModeAsItWas)
{
    StageRow("network/dns", "", R"({"hostname": "staged"})");
    SetKey("BOOT_MODE", "1");
    SaveBackup();
    Host().Remove(DATAFILE_BACKUP);
    EXPECT_EQ(LoadStore(true), 0);
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname": "staged"})");
    EXPECT_EQ(Host().KeyValue("BOOT_INFO"), R"({"type":1})");
}

TEST_F(BootLoadTest, ASecondLoadOfTheSameBootAppliesNothingMore)
{
    StageRow("network/dns", "", R"({"hostname": "staged"})");
    SetKey("BOOT_MODE", "4");
    EXPECT_EQ(LoadStore(false), 0);
    Host().Sql("UPDATE Config SET UserValue = '{\"hostname\": \"later\"}'");
    EXPECT_EQ(LoadStore(false), 0);
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname": "later"})");
}

TEST_F(BootLoadTest, ABootFromAnotherBankProcessesSchemasAndUpgrades)
{
    Host().WithPackage("net-core", "1.1.0_1.0", R"([{"component": "nimb", "group": "network", "key": "dns",
                       "schema": {"type": "object"}}])");
    AddRow("network/retired", "", "{}");
    SaveBackup();
    Host().WithKernel({.bootFsUUID = OTHER_UUID});
    EXPECT_EQ(LoadStore(true), 0);
    EXPECT_EQ(UserValue("network/retired"), "none");
    EXPECT_THAT(Host().Log(), Contains("info Config upgrade boot"));
    EXPECT_TRUE(Host().Exists("/tmp/config-upgrade-marker"));
}

TEST_F(BootLoadTest, TheInstallersWordIsLookedForOnlyOnTheSameBank)
{
    Host().WithKernel({.bootCmdLine = "skorlInstalled"});
    EXPECT_EQ(LoadStore(false), 0);
    EXPECT_THAT(Host().Log(), Contains("info [SchemaProcessor] Processing schemas.."));
    Host().WithKernel({.bootCmdLine = "skorlInstalled", .bootFsUUID = OTHER_UUID}).ClearLogs();
    EXPECT_EQ(LoadStore(false), 0);
    EXPECT_THAT(Host().Log(), Not(Contains(HasSubstr("BootCmdLine:"))));
}

TEST_F(BootLoadTest, AModuleThatFailsDoesNotEndTheLoad)
{
    Host().WithKernel({.bootFsUUID = OTHER_UUID});
    Host().WriteFile("/usr/lib/talvor/configmanager/upgrade/lib/bad.so", "no module");
    EXPECT_EQ(LoadStore(false), 0);
    EXPECT_THAT(Host().Log(), Contains("error Configuration upgrade failed."));
    EXPECT_THAT(Host().Log(), Contains("info Cleanup config store completed"));
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.upgrade.config.error"));
}

TEST_F(BootLoadTest, TheModeIsConsumedThoughTheApplyFailed)
{
    AddRow("network/dns", "", "{}");
    StageRow("network/dns", "", R"({"hostname": "staged"})");
    SetKey("BOOT_MODE", "1");
    {
        const StoreFault fault(SQLITE_DELETE, "DesiredUserConfig");
        EXPECT_EQ(LoadStore(false), 0);
    }
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
    EXPECT_EQ(Host().KeyValue("BOOT_INFO"), R"({"type":0})");
    EXPECT_EQ(UserValue("network/dns"), "{}");
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.desired.config.error"));
}

TEST_F(BootLoadTest, FilesWithoutSchemaGoAndEarlierErrorsBecomeAlerts)
{
    Host().WriteFile("/var/run/nonSchemaFiles", "etc/x.conf etc/declared.conf").WriteFile("/etc/x.conf", "");
    Host().WriteFile("/etc/declared.conf", "");
    Host().WriteFile(EARLIER_ERRORS, R"({"zubs": [{"zubMsg": "disk %s full on %s", "zubArgs": ["a", "b"]}]})");
    EXPECT_EQ(LoadStore(false), 0);
    EXPECT_FALSE(Host().Exists("/etc/x.conf"));
    EXPECT_TRUE(Host().Exists("/etc/declared.conf"));
    ASSERT_EQ(Host().Events().size(), 1U);
    EXPECT_EQ(Host().Events()[0].text, "disk a full on b");
}

TEST_F(BootLoadTest, TheBootLogHoldsTheLoadAndIsClosedAfterIt)
{
    EXPECT_EQ(LoadStore(false), 0);
    EXPECT_EQ(Host().BootLog().front(), "info LoadStore Start.");
    EXPECT_EQ(Host().BootLog().back(), "info LoadStore End.");
    CSLogger::Log(CSLogger::INFO, "after the load");
    EXPECT_EQ(Host().BootLog().back(), "info LoadStore End.");
}

TEST_F(BootLoadTest, AFailedLoadLeavesItsLogOpenAndTheRecordUncleared)
{
    SetKey("BOOT_MODE", "abc");
    SetKey("BOOT_APPLY_RESULT", "old");
    ExpectFailedLoad(false, "stoi");
    EXPECT_EQ(Record(), "old");
    EXPECT_EQ(Host().KeyValue("IS_BOOT"), "");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "abc");
    CSLogger::Log(CSLogger::INFO, "after the load");
    EXPECT_EQ(Host().BootLog().back(), "info after the load");
}

TEST_F(BootLoadTest, AnErrorFileOfWrongTypesEndsTheLoadAfterItsWork)
{
    SetKey("BOOT_APPLY_RESULT", "old");
    Host().WriteFile(EARLIER_ERRORS, R"({"zubs": [7]})");
    EXPECT_EQ(LoadStore(false), 1);
    EXPECT_THAT(Host().Events().back().text, HasSubstr("Generic ConfigStore Failure: JSON error:"));
    EXPECT_THAT(Host().Log(), Contains("info LoadStore End."));
    EXPECT_EQ(Host().KeyValue("IS_BOOT"), "true");
    EXPECT_EQ(Record(), "old");
}

TEST_F(BootLoadTest, AnErrorWithMoreArgumentsThanPlacesEndsTheLoad)
{
    Host().WriteFile(EARLIER_ERRORS, R"({"zubs": [{"zubMsg": "text", "zubArgs": ["a"]}]})");
    EXPECT_EQ(LoadStore(false), 1);
    EXPECT_THAT(Host().Events().back().text, HasSubstr("Generic ConfigStore Failure: "));
}

TEST_F(BootLoadTest, WithoutKernelFactsTheLoadFails)
{
    Host().Remove("/etc/talvor/platform/kernel.json");
    ExpectFailedLoad(false, "Failed to get boot fs uuid.");
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("/etc/talvor/platform/kernel.json")));
}

TEST_F(BootLoadTest, SchemasThatCannotBeProcessedAtAllEndTheLoad)
{
    Host().WithKernel({.bootFsUUID = OTHER_UUID});
    Host().WriteFile("/var/db/nimbimg/profiles/profile", "<imageprofile>");
    ExpectFailedLoad(false, "Failed to parse image profile.");
    CSLogger::Log(CSLogger::INFO, "after the load");
    EXPECT_EQ(Host().BootLog().back(), "info after the load");
}

TEST_F(BootLoadTest, ARecordThatCannotBeClearedEndsTheLoadAndLeavesItsLogOpen)
{
    Host().WriteFile("/var/run/nonSchemaFiles", std::string(STORE).substr(1));  // gone when the record is due
    ExpectFailedLoad(false, "Failed to connect to database");
    CSLogger::Log(CSLogger::INFO, "after the load");
    EXPECT_THAT(Host().BootLog(), Contains("info LoadStore End."));
    EXPECT_EQ(Host().BootLog().back(), "info after the load");
}

TEST_F(BootLoadTest, AutomaticConfigurationThatCannotBeClearedEndsTheLoad)
{
    const StoreFault fault(SQLITE_UPDATE, "Config", "AutoConfValue");
    ExpectFailedLoad(false, "Error removing auto configuration value.");
}

TEST_F(BootLoadTest, AStoreThatCannotBeCreatedIsReportedAndFailsTheLoad)
{
    Host().Remove("/etc/talvor/configstore");
    Host().WriteFile("/etc/talvor/configstore", "a file");
    ExpectFailedLoad(true, "Failed to connect to database");
    EXPECT_THAT(Host().EventIds(), Contains("zub.user.cs.db.operation.error"));
}

TEST_F(BootLoadTest, WithoutASchemaStoreNothingStagedIsAppliedAndTheLoadGoesOn)
{
    StageRow("network/dns", "", "{}");
    SetKey("BOOT_MODE", "1");
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    EXPECT_EQ(LoadStore(false), 0);
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
    EXPECT_EQ(Host().KeyValue("BOOT_INFO"), "");
    EXPECT_THAT(Host().Log(), Contains("error Failed to attach schema store"));
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.desired.config.error"));
}
