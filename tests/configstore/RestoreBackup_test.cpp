#include "RestoreBackup.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>

#include "StoreFiles.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace
{

class RestoreBackupTest : public HostTest
{
protected:
    // A consistent config store that holds @p text, under the path @p path alone.
    void WithStore(const std::string& path, const std::string& text)
    {
        Host().WithStores();
        Host().Sql("INSERT OR REPLACE INTO KeyValue (Key, Value) VALUES ('CS_INST_INFO_KEY', '" + text + "')");
        Move(STORE, path);
    }

    void WithDataFileBackup(const std::string& folder)
    {
        Host().WithStores();
        Host().Sql("INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName) VALUES ('nimb', 'k', '" + folder +
                       "', 'f')",
                   DBStore::Type::DataFileStore);
        Move(DATAFILE_STORE, DATAFILE_BACKUP);
    }

    int Restore()
    {
        Host().ClearLogs();
        return RestoreFromBackup(true);
    }

    void Move(const std::string& from, const std::string& to)
    {
        std::filesystem::rename(Host().Real(from), Host().Real(to));
    }

    // Leaves a store as a writer does that dies in the middle: pages written, their old content in the journal.
    void LosePowerWhileWriting(const std::string& store, const std::string& table)
    {
        sqlite3* writer = nullptr;
        ASSERT_EQ(sqlite3_open(Host().Real(store).c_str(), &writer), SQLITE_OK);
        const std::string writes = "PRAGMA cache_size = 1; BEGIN; DELETE FROM " + table +
                                   "; CREATE TABLE Spilled AS SELECT hex(randomblob(500000))";
        ASSERT_EQ(sqlite3_exec(writer, writes.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        const std::string pages = Host().ReadFile(store);
        const std::string journal = Host().ReadFile(store + "-journal");
        sqlite3_close(writer);
        ASSERT_GT(journal.size(), 512U);
        Host().WriteFile(store, pages).WriteFile(store + "-journal", journal);
    }

    std::string Text() { return Host().KeyValue("CS_INST_INFO_KEY"); }
    std::string BootMode() { return Host().KeyValue("BOOT_MODE"); }
    std::string DataFolder()
    {
        return Host().SqlValue("SELECT DirName FROM DataFileMetadata", DBStore::Type::DataFileStore);
    }
};

std::string Line(const std::string& level, const std::string& before, const std::string& path,
                 const std::string& after = "")
{
    return level + " " + before + path + after;
}
}  // namespace

TEST_F(RestoreBackupTest, WithoutTheFlagNothingIsRestoredOrCreated)
{
    WithStore(BACKUP, "backup");
    Host().Remove(DATAFILE_STORE);
    Host().WriteFile(STORE, "whatever").ClearLogs();
    EXPECT_EQ(RestoreFromBackup(false), 0);
    EXPECT_EQ(Host().ReadFile(STORE), "whatever");
    EXPECT_FALSE(Host().Exists(DATAFILE_STORE));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(RestoreBackupTest, TheRegularBackupWinsOverTheFirstBootBackup)
{
    WithStore(FIRSTBOOT_BACKUP, "first boot");
    WithStore(BACKUP, "regular");
    WithStore(STORE, "stale");
    EXPECT_EQ(Restore(), 0);
    EXPECT_EQ(Text(), "regular");
    EXPECT_EQ(BootMode(), "");
    EXPECT_THAT(Host().Log(), ElementsAre(Line("info", "Restore ConfigStore from ", BACKUP),
                                          "info ConfigStore restored successfully from backup",
                                          Line("info", "DataFileStore backup not found ", DATAFILE_BACKUP)));
}

TEST_F(RestoreBackupTest, TheFirstBootBackupServesWhenThereIsNoOther)
{
    WithStore(FIRSTBOOT_BACKUP, "first boot");
    EXPECT_EQ(Restore(), 0);
    EXPECT_EQ(Text(), "first boot");
    EXPECT_THAT(Host().Log(), Contains(Line("info", "Restore ConfigStore from ", FIRSTBOOT_BACKUP)));
}

TEST_F(RestoreBackupTest, WithoutABackupTheStoreIsNewAndTheBootDocumentIsNext)
{
    WithStore(STORE, "stale");
    EXPECT_EQ(Restore(), 1);
    EXPECT_EQ(Text(), "");
    EXPECT_EQ(BootMode(), "2");
    EXPECT_THAT(Host().Log(), ElementsAre("info ConfigStore backup not found ",
                                          Line("info", "DataFileStore backup not found ", DATAFILE_BACKUP),
                                          "info Next boot mode set to 2"));
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}

TEST_F(RestoreBackupTest, AnInconsistentBackupStartsANewStoreAndIsReported)
{
    WithStore(STORE, "stale");
    Host().WriteFile(BACKUP, "no database");
    EXPECT_EQ(Restore(), 1);
    EXPECT_EQ(Text(), "");
    EXPECT_EQ(BootMode(), "2");
    EXPECT_THAT(Host().Log(), Contains(Line("error", "ConfigStore backup [", BACKUP,
                                            "] is inconsistent, creating new ConfigStore.")));
    ASSERT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.createstore.copy.backup.error"));
    EXPECT_THAT(Host().Events()[0].args, ElementsAre(BACKUP));
}

TEST_F(RestoreBackupTest, AnInconsistentBackupIsNotMadeUpForByTheFirstBootBackup)
{
    WithStore(FIRSTBOOT_BACKUP, "first boot");
    Host().WriteFile(BACKUP, "no database");
    EXPECT_EQ(Restore(), 1);
    EXPECT_EQ(Text(), "");
    EXPECT_EQ(BootMode(), "2");
}

TEST_F(RestoreBackupTest, ABackupThatLeadsNowhereDoesNotExist)
{
    WithStore(FIRSTBOOT_BACKUP, "first boot");
    std::filesystem::create_symlink("/nowhere", Host().Real(BACKUP));
    EXPECT_EQ(Restore(), 0);
    EXPECT_EQ(Text(), "first boot");
}

TEST_F(RestoreBackupTest, AStoreThatCannotBeReplacedIsReported)
{
    WithStore(BACKUP, "backup");
    Host().Remove(STORE);
    Host().WriteFile(STORE + std::string("/full"), "");
    Host().ClearLogs();
    EXPECT_EQ(ThrownBy([] { RestoreFromBackup(true); }), "2000 Failed to connect to database");
    EXPECT_FALSE(Host().Exists(STORE + std::string(".restored")));
    EXPECT_THAT(Host().Log(), Contains("error Error removing sticky ConfigStore file"));
    EXPECT_THAT(Host().Log(), Contains(Line("error", "Cannot copy ConfigStore from backup [", BACKUP,
                                            "], creating new ConfigStore.")));
    EXPECT_THAT(Host().EventIds(),
                ElementsAre("zub.user.cs.createstore.copy.backup.error", "zub.user.cs.db.operation.error"));
}

TEST_F(RestoreBackupTest, TheDataFileStoreIsRestoredFromItsBackup)
{
    WithDataFileBackup("restored");
    WithStore(BACKUP, "backup");
    EXPECT_EQ(Restore(), 0);
    EXPECT_EQ(DataFolder(), "restored");
    EXPECT_THAT(Host().Log(), Contains(Line("info", "DataFileStore backup [", DATAFILE_BACKUP, "] is valid.")));
    EXPECT_THAT(Host().Log(), Contains("info DataFileStore restored successfully from backup"));
}

TEST_F(RestoreBackupTest, AnInconsistentDataFileBackupIsReportedAndLeavesTheConfigStoreAlone)
{
    WithStore(BACKUP, "backup");
    Host().WriteFile(DATAFILE_BACKUP, "no database");
    EXPECT_EQ(Restore(), 0);
    EXPECT_EQ(BootMode(), "");
    EXPECT_THAT(Host().Log(), Contains(Line("error", "DataFileStore backup [", DATAFILE_BACKUP,
                                            "] is inconsistent, will create new DataFileStore.")));
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.dfs.restore.error"));
}

TEST_F(RestoreBackupTest, ADataFileStoreThatCannotBeReplacedIsReported)
{
    WithDataFileBackup("restored");
    WithStore(BACKUP, "backup");
    Host().Remove(DATAFILE_STORE);
    Host().WriteFile(DATAFILE_STORE + std::string("/full"), "");
    EXPECT_EQ(Restore(), 0);
    EXPECT_THAT(Host().Log(), Contains(Line("error", "Cannot copy DataFileStore from backup [", DATAFILE_BACKUP,
                                            "], will create new DataFileStore.")));
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.dfs.restore.error", "zub.user.cs.db.operation.error"));
}

TEST_F(RestoreBackupTest, MissingDatabasesAreCreated)
{
    WithStore(BACKUP, "backup");
    Host().Remove(DATAFILE_STORE);
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    EXPECT_EQ(Restore(), 0);
    for (const auto type : {DBStore::Type::ConfigStore, DBStore::Type::DataFileStore, DBStore::Type::SchemaStore}) {
        EXPECT_TRUE(DBStore::Check(DBStore::StorePath(type)));
    }
}

TEST_F(RestoreBackupTest, ARestoredStoreDoesNotMeetTheJournalOfTheOneItReplaces)
{
    WithStore(BACKUP, "backup");
    WithStore(STORE, "stale");
    LosePowerWhileWriting(STORE, "KeyValue");
    Host().WriteFile(STORE + std::string("-wal"), "x");
    EXPECT_EQ(Restore(), 0);
    EXPECT_EQ(Text(), "backup");
    EXPECT_TRUE(DBStore::Check(STORE));
    EXPECT_FALSE(Host().Exists(STORE + std::string("-wal")));
}

TEST_F(RestoreBackupTest, ANewStoreDoesNotMeetAJournalEither)
{
    Host().WriteFile(STORE + std::string("-journal"), "left behind");
    EXPECT_EQ(Restore(), 1);
    EXPECT_NE(Host().ReadFile(STORE + std::string("-journal")), "left behind");
    EXPECT_TRUE(DBStore::Check(STORE));
}

TEST_F(RestoreBackupTest, ABackupIsNotPutBesideAJournalThatCannotBeRemoved)
{
    WithStore(BACKUP, "backup");
    WithStore(STORE, "stale");
    Host().WriteFile(STORE + std::string("-journal/full"), "");
    EXPECT_EQ(Restore(), 1);
    EXPECT_EQ(Host().ReadFile(STORE), "");
    EXPECT_FALSE(Host().Exists(STORE + std::string(".restored")));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("Cannot remove /etc/talvor/configstore/current-store-1-journal: ")));
    EXPECT_THAT(Host().Log(), Contains(Line("error", "Cannot copy ConfigStore from backup [", BACKUP,
                                            "], creating new ConfigStore.")));
    EXPECT_THAT(Host().Log(), Not(Contains("info ConfigStore restored successfully from backup")));
    EXPECT_THAT(Host().EventIds(),
                ElementsAre("zub.user.cs.createstore.copy.backup.error", "zub.user.cs.db.operation.error"));
}

TEST_F(RestoreBackupTest, ADataFileStoreStaysWhileItsJournalCannotBeRemoved)
{
    WithDataFileBackup("stays");
    Move(DATAFILE_BACKUP, DATAFILE_STORE);
    const std::string before = Host().ReadFile(DATAFILE_STORE);
    WithDataFileBackup("backup");
    Host().WriteFile(DATAFILE_STORE, before).WriteFile(DATAFILE_STORE + std::string("-journal/full"), "");
    Restore();
    EXPECT_EQ(Host().ReadFile(DATAFILE_STORE), before);
    EXPECT_FALSE(Host().Exists(DATAFILE_STORE + std::string(".restored")));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("Cannot remove /etc/talvor/configstore/datafile-store-journal: ")));
    EXPECT_THAT(Host().Log(), Contains(Line("error", "Cannot copy DataFileStore from backup [", DATAFILE_BACKUP,
                                            "], will create new DataFileStore.")));
    EXPECT_THAT(Host().Log(), Not(Contains("info DataFileStore restored successfully from backup")));
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.dfs.restore.error", "zub.user.cs.db.operation.error"));
}

TEST_F(RestoreBackupTest, ADataFileStoreThatAnotherLeftoverKeepsInPlaceIsRolledBackByItsJournal)
{
    WithDataFileBackup("committed");
    Move(DATAFILE_BACKUP, "/etc/committed");
    WithDataFileBackup("backup");
    Move("/etc/committed", DATAFILE_STORE);
    LosePowerWhileWriting(DATAFILE_STORE, "DataFileMetadata");
    Host().WriteFile(DATAFILE_STORE + std::string("-shm/full"), "");
    Restore();
    EXPECT_EQ(DataFolder(), "committed");
    EXPECT_TRUE(DBStore::Check(DATAFILE_STORE));
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.dfs.restore.error"));
}

TEST_F(RestoreBackupTest, ADataFileStoreThatStaysIsRolledBackByItsJournal)
{
    WithDataFileBackup("committed");
    Move(DATAFILE_BACKUP, DATAFILE_STORE);
    LosePowerWhileWriting(DATAFILE_STORE, "DataFileMetadata");
    EXPECT_EQ(Restore(), 1);
    EXPECT_EQ(DataFolder(), "committed");
    EXPECT_TRUE(DBStore::Check(DATAFILE_STORE));
}

TEST_F(RestoreBackupTest, ADataFileStoreWhoseBackupCannotBeCopiedIsRolledBackByItsJournal)
{
    WithDataFileBackup("committed");
    Move(DATAFILE_BACKUP, "/etc/committed");
    WithDataFileBackup("backup");
    Move("/etc/committed", DATAFILE_STORE);
    LosePowerWhileWriting(DATAFILE_STORE, "DataFileMetadata");
    Host().WriteFile(DATAFILE_STORE + std::string(".restored/full"), "");
    EXPECT_EQ(Restore(), 1);
    EXPECT_EQ(DataFolder(), "committed");
    EXPECT_TRUE(DBStore::Check(DATAFILE_STORE));
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.dfs.restore.error"));
}

TEST_F(RestoreBackupTest, ARestoredDataFileStoreDoesNotMeetTheJournalOfTheOneItReplaces)
{
    WithDataFileBackup("stale");
    Move(DATAFILE_BACKUP, "/etc/stale");
    WithDataFileBackup("backup");
    Move("/etc/stale", DATAFILE_STORE);
    LosePowerWhileWriting(DATAFILE_STORE, "DataFileMetadata");
    Restore();
    EXPECT_EQ(DataFolder(), "backup");
    EXPECT_TRUE(DBStore::Check(DATAFILE_STORE));
}

TEST_F(RestoreBackupTest, AStoreThatCannotBeRemovedKeepsItsJournal)
{
    Host().WriteFile(STORE + std::string("/full"), "").WriteFile(STORE + std::string("-journal"), "pages");
    EXPECT_EQ(ThrownBy([] { RestoreFromBackup(true); }), "2000 Failed to connect to database");
    EXPECT_EQ(Host().ReadFile(STORE + std::string("-journal")), "pages");
}
