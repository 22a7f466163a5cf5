#include "CommandTest.h"

namespace
{
constexpr const char* BACKUP = "/var/lib/talvor/configstore/backup/current-store-1";

using StoreCommandsTest = CommandTest;
}  // namespace

TEST_F(StoreCommandsTest, BackupWritesStoresThatCanBeRestored)
{
    FillStores();
    Host().Remove("/var/lib/talvor/configstore/backup");
    ExpectGolden("store-backup", {"store", "backup"});
    EXPECT_TRUE(DBStore::Check(BACKUP));
    EXPECT_TRUE(DBStore::Check("/var/lib/talvor/configstore/backup/datafile-store"));
}

TEST_F(StoreCommandsTest, BackupThatCannotBeWrittenNamesItsPlace)
{
    Host().WithStores();
    Host().MakeFolder(BACKUP);
    const Ran ran = Run({"store", "backup"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.output, "");
    EXPECT_THAT(ran.errors, ::testing::HasSubstr(BACKUP));
}

TEST_F(StoreCommandsTest, BackupSaysThatAStoreIsMissing)
{
    ExpectFailure({"store", "backup"},
                  "store backup: /etc/talvor/configstore/current-store-1: cannot be opened: "
                  "No such file or directory");
}

TEST_F(StoreCommandsTest, CheckFindsSoundStoresSound)
{
    Host().WithStores();
    ExpectGolden("store-check", {"store", "check"});
}

TEST_F(StoreCommandsTest, CheckFailsForADamagedBackup)
{
    Host().WithStores().WriteFile(BACKUP, "garbage");
    ExpectGolden("store-check-damaged", {"store", "check"}, 1);
    EXPECT_EQ(Run({"store", "check"}).errors, "configstorectl: store check: " + std::string(BACKUP) + ": is damaged\n");
}

TEST_F(StoreCommandsTest, CheckFailsForAMissingLiveStore)
{
    Host().WithStores().Remove("/etc/talvor/configstore/datafile-store");
    EXPECT_EQ(Run({"store", "check"}).errors,
              "configstorectl: store check: /etc/talvor/configstore/datafile-store: is missing\n");
}
