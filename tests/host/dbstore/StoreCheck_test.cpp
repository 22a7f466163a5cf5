#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "CrashedStore.h"

using DBStore::Check;
using DBStore::Type;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{
constexpr const char* COPY = "/var/lib/talvor/configstore/backup/current-store-1";

class StoreCheckTest : public HostTest
{
protected:
    StoreCheckTest() { Host().WithStores(); }

    std::string StoreBytes() { return Host().ReadFile(DBStore::StorePath(Type::ConfigStore)); }

    std::set<std::string> BackupFiles()
    {
        std::set<std::string> names;
        for (const auto& entry :
             std::filesystem::directory_iterator(Host().Real("/var/lib/talvor/configstore/backup"))) {
            names.insert(entry.path().filename());
        }
        return names;
    }

    /// Locks do not show inside the process that holds them.
    bool AnotherProcessSeesALock()
    {
        const pid_t child = fork();
        if (child == 0) {
            const int file = open(Host().Real(DBStore::StorePath(Type::ConfigStore)).c_str(), O_RDWR | O_CLOEXEC);
            struct flock lock = {};
            lock.l_type = F_WRLCK;
            lock.l_whence = SEEK_SET;
            _exit(fcntl(file, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK ? 1 : 0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 1;
    }

    /// A store with enough rows to have inner pages.
    void FillConfig()
    {
        Host().Sql(
            "WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2000) INSERT INTO Config "
            "(Component, ConfigGroup, Name, Identifier, UserValue) SELECT 'c', 'g', 'n', i, hex(zeroblob(100)) FROM n");
    }
};
}  // namespace

TEST_F(StoreCheckTest, AFreshStoreOfEachKindIsConsistent)
{
    for (const Type type : {Type::ConfigStore, Type::SchemaStore, Type::DataFileStore}) {
        EXPECT_TRUE(Check(DBStore::StorePath(type)));
    }
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(StoreCheckTest, ACopyIsExpectedToHaveTheTablesThatItsBaseNameStandsFor)
{
    Host().WriteFile(COPY, StoreBytes());
    EXPECT_TRUE(Check(COPY));
    Host().WriteFile("/tmp/datafile-store", StoreBytes());
    EXPECT_FALSE(Check("/tmp/datafile-store"));
    EXPECT_THAT(Host().Log(),
                ElementsAre("warning Store database /tmp/datafile-store is inconsistent: no table DataFileMetadata"));
}

TEST_F(StoreCheckTest, AStoreThatLacksATableIsInconsistent)
{
    for (const char* table : {"Config", "DesiredUserConfig", "DefaultConfig", "KeyValue"}) {
        TestHost host;
        host.WithStores().Sql(std::string("DROP TABLE ") + table);
        EXPECT_FALSE(Check(DBStore::StorePath(Type::ConfigStore))) << table;
    }
}

TEST_F(StoreCheckTest, NothingAFolderAndAnEmptyFileAreInconsistentAndStayAsTheyAre)
{
    EXPECT_FALSE(Check("/tmp/absent"));
    EXPECT_FALSE(Host().Exists("/tmp/absent"));
    EXPECT_FALSE(Check("/tmp"));
    Host().WriteFile(COPY, "");
    Host().WriteFile(std::string(COPY) + "-journal", "left over");
    EXPECT_FALSE(Check(COPY));
    EXPECT_EQ(Host().ReadFile(std::string(COPY) + "-journal"), "left over");
}

TEST_F(StoreCheckTest, ALinkToItselfIsInconsistent)
{
    std::filesystem::create_symlink("loop", Host().Real("/tmp/loop"));
    EXPECT_FALSE(Check("/tmp/loop"));
}

TEST_F(StoreCheckTest, GarbageOfAnyLengthIsInconsistent)
{
    for (const std::size_t length : {1U, 19U, 20U, 99U, 100U, 512U, 16384U, 200000U}) {
        Host().WriteFile(COPY, std::string(length, '\x5a'));
        EXPECT_FALSE(Check(COPY)) << length;
    }
}

TEST_F(StoreCheckTest, ATruncatedCopyIsInconsistent)
{
    FillConfig();
    const std::string whole = StoreBytes();
    for (const std::size_t length : {std::size_t{100}, whole.size() / 3, whole.size() / 2, whole.size() - 16384}) {
        Host().WriteFile(COPY, whole.substr(0, length));
        EXPECT_FALSE(Check(COPY)) << length;
    }
}

TEST_F(StoreCheckTest, EveryOverwrittenPageIsFound)
{
    FillConfig();
    const std::string whole = StoreBytes();
    for (std::size_t page = 0; page < whole.size(); page += 16384) {
        std::string damaged = whole;
        damaged.replace(page, 16384, std::string(16384, '\xff'));
        Host().WriteFile(COPY, damaged);
        EXPECT_FALSE(Check(COPY)) << page;
    }
}

TEST_F(StoreCheckTest, AnIndexThatDisagreesWithItsTableIsFound)
{
    Host().Sql("INSERT INTO KeyValue VALUES ('sought', 'v')");
    std::string damaged = StoreBytes();
    // The key stands twice in the file: in the row and in the index.
    const std::size_t place = damaged.find("sought");
    ASSERT_NE(place, std::string::npos);
    damaged[place] = 'b';
    Host().WriteFile(COPY, damaged);
    EXPECT_FALSE(Check(COPY));
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("missing from index")));
}

TEST_F(StoreCheckTest, AHotJournalMakesACopyInconsistentAndIsLeftAlone)
{
    CopyAsIfCrashed(Host(), Type::ConfigStore, COPY);
    const std::string journal = Host().ReadFile(std::string(COPY) + "-journal");
    ASSERT_GT(journal.size(), 512U);
    EXPECT_FALSE(Check(COPY));
    EXPECT_EQ(Host().ReadFile(std::string(COPY) + "-journal"), journal);
}

TEST_F(StoreCheckTest, ACheckCreatesNoFileAndChangesNone)
{
    const std::string before = StoreBytes();
    Host().WriteFile(COPY, before);
    EXPECT_TRUE(Check(COPY));
    EXPECT_THAT(BackupFiles(), ElementsAre("current-store-1"));
    EXPECT_EQ(Host().ReadFile(COPY), before);
}

TEST_F(StoreCheckTest, ACopyInWriteAheadModeIsRefusedAndCreatesNoFile)
{
    Host().Sql("PRAGMA journal_mode = WAL");
    Host().WriteFile(COPY, StoreBytes());
    EXPECT_FALSE(Check(COPY));
    EXPECT_THAT(BackupFiles(), ElementsAre("current-store-1"));
}

TEST_F(StoreCheckTest, ChecksAStoreWhoseTransactionThisProcessHoldsWithoutLosingItsLock)
{
    const DBStore::ConnectionPtr connection = DBStore::GetConnection(Type::ConfigStore, true);
    ASSERT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
    EXPECT_TRUE(Check(DBStore::StorePath(Type::ConfigStore)));
    EXPECT_TRUE(AnotherProcessSeesALock());
    EXPECT_EQ(DBStore::CancelTransaction(connection), DBStore::SUCCESS);
    EXPECT_FALSE(AnotherProcessSeesALock());
}
