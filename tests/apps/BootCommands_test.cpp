#include "CommandTest.h"

using ::testing::HasSubstr;

namespace
{
constexpr const char* NO_STORE = "/etc/talvor/configstore/current-store-1: cannot be opened: No such file or directory";
constexpr const char* UUID = "5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11";

class BootCommandsTest : public CommandTest
{
protected:
    void SetEntry(const std::string& key, const std::string& value)
    {
        Host().Sql("INSERT OR REPLACE INTO KeyValue (Key, Value) VALUES ('" + key + "', '" + value + "')");
    }
};
}  // namespace

TEST_F(BootCommandsTest, FactsTellWhatKernelAndStoreKnow)
{
    Host().WithStores().WithKernel({.bootCmdLine = "quiet skorlInstalled", .bootOption = "00000001"});
    SetEntry("BOOT_FS_UUID", "11111111-7a64-4c0e-9d6e-0c3a5b1f2a11");
    SetEntry("BOOT_MODE", "3");
    SetEntry("IS_BOOT", "true");
    ExpectGolden("boot-facts", {"boot", "facts"});
}

TEST_F(BootCommandsTest, FactsNameTheOneThatCannotBeRead)
{
    Host().WithStores().WriteFile("/etc/talvor/platform/kernel.json", R"({"bootMAC": "", "bootOption": "00000000"})");
    const Ran ran = Run({"boot", "facts"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.errors, HasSubstr("configstorectl: boot facts: /system/bootCmdLine: cannot be read: "));
}

TEST_F(BootCommandsTest, ModeIsShownByNumberAndName)
{
    Host().WithStores();
    SetEntry("BOOT_MODE", "4");
    ExpectGolden("boot-mode", {"boot", "mode"});
}

TEST_F(BootCommandsTest, ModeIsSetByNameOrNumber)
{
    Host().WithStores();
    EXPECT_EQ(Run({"boot", "mode", "boot-config"}).output, "boot mode  2 (boot-config)\n");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "2");
    EXPECT_EQ(Run({"boot", "mode", "1"}).output, "boot mode  1 (desired)\n");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "1");
}

TEST_F(BootCommandsTest, ModeThatIsNoneIsShownAsUnknown)
{
    Host().WithStores();
    SetEntry("BOOT_MODE", "7");
    EXPECT_EQ(Run({"boot", "mode"}).output, "boot mode  7 (unknown)\n");
}

TEST_F(BootCommandsTest, NotifyTurnsNotificationOfChangesOnAndOff)
{
    Host().WithStores();
    ExpectGolden("boot-notify", {"boot", "notify", "true"});
    EXPECT_EQ(Host().KeyValue("NOTIFY_TRELLD"), "true");
    EXPECT_EQ(Run({"boot", "notify", "false"}).output, "notification  no\n");
    EXPECT_EQ(Host().KeyValue("NOTIFY_TRELLD"), "false");
}

TEST_F(BootCommandsTest, FinishClosesTheBoot)
{
    Host().WithStores();
    SetEntry("IS_BOOT", "true");
    SetEntry("POST_LIVE_INSTALL_BOOT", "true");
    ExpectGolden("boot-finish", {"boot", "finish"});
    EXPECT_EQ(Host().KeyValue("IS_BOOT"), "");
    EXPECT_EQ(Host().KeyValue("BOOT_FS_UUID"), UUID);
    EXPECT_EQ(Host().KeyValue("POST_LIVE_INSTALL_BOOT"), "false");
}

TEST_F(BootCommandsTest, RecordIsSetShownAndCleared)
{
    Host().WithStores();
    ExpectGolden("boot-record-set", {"boot", "record", "set", R"({"applied": ["a"]})"});
    ExpectGolden("boot-record-show", {"boot", "record", "show"});
    ExpectGolden("boot-record", {"boot", "record"});
    ExpectGolden("boot-record-clear", {"boot", "record", "clear"});
    EXPECT_EQ(Host().KeyValue("BOOT_APPLY_RESULT"), R"({"isBootComplete":false})");
}

TEST_F(BootCommandsTest, RecordThatWasNeverWrittenIsAFailure)
{
    Host().WithStores();
    ExpectFailure({"boot", "record", "show"}, "boot record show: BOOT_APPLY_RESULT: no boot has written a record yet");
}

TEST_F(BootCommandsTest, FailuresListTheRowsThatWereNotRestored)
{
    FillStores();
    Host().Sql(
        "INSERT INTO ConfigSchema (Component, ConfigGroup, Name, DSPIntegrated, SchemaType) VALUES "
        "('nimb','network','portgroups',1,0)",
        DBStore::Type::SchemaStore);
    ExpectGolden("boot-failures", {"boot", "failures"});
}

TEST_F(BootCommandsTest, SayThatTheStoreIsMissing)
{
    for (const Words& words :
         {Words{"boot", "facts"}, Words{"boot", "mode"}, Words{"boot", "mode", "1"}, Words{"boot", "finish"},
          Words{"boot", "record", "show"}, Words{"boot", "record", "set", "x"}, Words{"boot", "record", "clear"},
          Words{"boot", "failures"}}) {
        const std::string path = words[1] == "record" ? words[0] + " record " + words[2] : words[0] + " " + words[1];
        ExpectFailure(words, path + ": " + NO_STORE);
    }
}

TEST_F(BootCommandsTest, LoadTellsWhatTheBootDid)
{
    Host().WithPackage("net-drv", "1.0.0_1.0");
    ExpectGolden("boot-load-first", {"boot", "load"});
    EXPECT_TRUE(Host().Exists("/etc/talvor/configstore/current-store-1"));
}

TEST_F(BootCommandsTest, LoadAppliesTheModeThatWasSet)
{
    Host().WithPackage("net-drv", "1.0.0_1.0").WithStores();
    SetEntry("BOOT_MODE", "4");
    ExpectGolden("boot-load-hostapi", {"boot", "load", "--no-restore"});
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
}

TEST_F(BootCommandsTest, LoadThatEndsEarlyReportsAndFailsWithTheAlert)
{
    const Ran ran = Run({"boot", "load", "--no-restore"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.output, HasSubstr("result     failed\n"));
    EXPECT_THAT(ran.errors, HasSubstr("configstorectl: boot load: Generic ConfigStore Failure: "));
}

TEST_F(BootCommandsTest, LoadDoesNotDependOnReadableLogs)
{
    Host().WithPackage("net-drv", "1.0.0_1.0").WithStores();
    for (const char* name : {"configstore.log", "configstore-boot.log", "events.jsonl"}) {
        Host().MakeFolder(std::string("/var/log/talvor/") + name);
    }
    EXPECT_THAT(Run({"boot", "load", "--no-restore"}).output, HasSubstr("result     complete\n"));
}
