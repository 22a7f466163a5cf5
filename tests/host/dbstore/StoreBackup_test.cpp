#include <gmock/gmock.h>

#include <filesystem>

#include "TestHost.h"

using DBStore::Backup;
using DBStore::Type;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

namespace
{
constexpr const char* FOLDER = "/var/lib/talvor/configstore/backup";
constexpr const char* COPY = "/var/lib/talvor/configstore/backup/current-store-1";

class StoreBackupTest : public HostTest
{
protected:
    StoreBackupTest() { Host().WithStores(); }

    std::vector<std::string> BackupFiles()
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Host().Real(FOLDER))) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    /// Puts the copy in the place of the store and reads an entry of it.
    std::string RestoredValue(const std::string& key)
    {
        std::filesystem::copy_file(Host().Real(COPY), Host().Real(DBStore::StorePath(Type::ConfigStore)),
                                   std::filesystem::copy_options::overwrite_existing);
        return Host().KeyValue(key);
    }
};
}  // namespace

TEST_F(StoreBackupTest, TheCopyIsAConsistentStoreAndTheOnlyFileThatIsLeft)
{
    Host().Sql("INSERT INTO KeyValue VALUES ('k', 'saved')");
    EXPECT_EQ(Backup(Type::ConfigStore, COPY), DBStore::SUCCESS);
    EXPECT_EQ(Backup(Type::DataFileStore, std::string(FOLDER) + "/datafile-store"), DBStore::SUCCESS);
    EXPECT_TRUE(DBStore::Check(COPY));
    EXPECT_THAT(BackupFiles(), UnorderedElementsAre("current-store-1", "datafile-store"));
    Host().Sql("DELETE FROM KeyValue");
    EXPECT_EQ(RestoredValue("k"), "saved");
}

TEST_F(StoreBackupTest, ACopyThatAKilledProcessLeftHalfWrittenGoesWithTheNextOne)
{
    Host().WriteFile(std::string(FOLDER) + "/.new-Ab3dE9", "half a store");
    EXPECT_EQ(Backup(Type::ConfigStore, COPY), DBStore::SUCCESS);
    EXPECT_THAT(BackupFiles(), ElementsAre("current-store-1"));
}

TEST_F(StoreBackupTest, AnEarlierCopyIsReplaced)
{
    Host().WriteFile(COPY, "whatever stood there");
    EXPECT_EQ(Backup(Type::ConfigStore, COPY), DBStore::SUCCESS);
    EXPECT_TRUE(DBStore::Check(COPY));
}

TEST_F(StoreBackupTest, AChangeUnderWayStaysOutOfTheCopy)
{
    {
        const DBStore::ConnectionPtr connection = DBStore::GetConnection(Type::ConfigStore, true);
        ASSERT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
        ASSERT_EQ(DBStore::WriteKeyValue("k", "not yet", connection), DBStore::SUCCESS);
        EXPECT_EQ(Backup(Type::ConfigStore, COPY), DBStore::SUCCESS);
        ASSERT_EQ(DBStore::CommitTransaction(connection), DBStore::SUCCESS);
    }
    EXPECT_EQ(Host().KeyValue("k"), "not yet");
    EXPECT_EQ(RestoredValue("k"), "");
}

TEST_F(StoreBackupTest, TheCopyHasTheStoresAccessRights)
{
    const auto rights = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
    std::filesystem::permissions(Host().Real(DBStore::StorePath(Type::ConfigStore)), rights);
    EXPECT_EQ(Backup(Type::ConfigStore, COPY), DBStore::SUCCESS);
    EXPECT_EQ(std::filesystem::status(Host().Real(COPY)).permissions(), rights);
}

TEST_F(StoreBackupTest, AFailedCopyLeavesTheEarlierOneAndNothingElse)
{
    ASSERT_EQ(Backup(Type::ConfigStore, COPY), DBStore::SUCCESS);
    const std::string earlier = Host().ReadFile(COPY);
    Host().WriteFile(DBStore::StorePath(Type::ConfigStore), std::string(5000, 'x'));
    EXPECT_EQ(Backup(Type::ConfigStore, COPY), DBStore::FAILURE);
    EXPECT_EQ(Host().ReadFile(COPY), earlier);
    EXPECT_THAT(BackupFiles(), ElementsAre("current-store-1"));
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr(std::string(COPY) + ": file is not a database")));
}

TEST_F(StoreBackupTest, AStoreOrAFolderThatIsNotThereIsAFailure)
{
    EXPECT_EQ(Backup(Type::ConfigStore, "/no/such/folder/copy"), DBStore::FAILURE);
    Host().Remove(DBStore::StorePath(Type::ConfigStore));
    EXPECT_EQ(Backup(Type::ConfigStore, COPY), DBStore::FAILURE);
    EXPECT_FALSE(Host().Exists(COPY));
    EXPECT_FALSE(Host().Exists(DBStore::StorePath(Type::ConfigStore)));
    EXPECT_THAT(Host().Log(),
                ElementsAre(HasSubstr("No such file or directory"), HasSubstr("No such file or directory")));
}

TEST_F(StoreBackupTest, AFolderInTheTargetsPlaceIsAFailure)
{
    Host().MakeFolder(std::string(COPY) + "/occupied");
    EXPECT_EQ(Backup(Type::ConfigStore, COPY), DBStore::FAILURE);
    EXPECT_THAT(BackupFiles(), ElementsAre("current-store-1"));
}

TEST_F(StoreBackupTest, ACopyForAnotherRootStandsInItsOwnPlaceThere)
{
    Host().Sql("INSERT INTO KeyValue VALUES ('k', 'kept in the copy')");
    ASSERT_EQ(DBStore::CopyToRoot(Type::ConfigStore, Host().Real("/other/root")), DBStore::SUCCESS);
    const std::string copy = std::string("/other/root") + DBStore::StorePath(Type::ConfigStore);
    EXPECT_TRUE(DBStore::Check(copy.c_str()));
    EXPECT_THAT(Host().ReadFile(copy), HasSubstr("kept in the copy"));
}

TEST_F(StoreBackupTest, ACopyForARootThatCannotBeMadeIsAFailure)
{
    Host().WriteFile("/file", "");
    EXPECT_EQ(DBStore::CopyToRoot(Type::ConfigStore, Host().Real("/file")), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(),
                ElementsAre(HasSubstr("Cannot copy store database /etc/talvor/configstore/current-store-1 to ")));
}
