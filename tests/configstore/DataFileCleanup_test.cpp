#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>

#include "NimbConfigStore.h"
#include "StoreFault.h"
#include "StoreFiles.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

namespace
{
constexpr const char* ROOT = "/var/cache/datafiles";
constexpr const char* EVENT = "zub.user.cs.dfs.cleanup.error";

class DataFileCleanupTest : public HostTest
{
protected:
    DataFileCleanupTest() { Host().WithStores(); }

    void AddMetadata(const std::string& folder, const std::string& file)
    {
        Host().Sql("INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName) VALUES ('nimb', 'key', '" +
                       folder + "', '" + file + "')",
                   DBStore::Type::DataFileStore);
        Host().ClearLogs();
    }

    void AddFile(const std::string& path) { Host().WriteFile(ROOT + ("/" + path), "data"); }

    std::vector<Row> Metadata()
    {
        return Host().Sql("SELECT DirName, FileName FROM DataFileMetadata ORDER BY DirName, FileName",
                          DBStore::Type::DataFileStore);
    }

    bool HasFile(const std::string& path) { return Host().Exists(ROOT + ("/" + path)); }
};
}  // namespace

TEST_F(DataFileCleanupTest, WhatIsInBothStays)
{
    AddMetadata("d", "b");
    AddMetadata("d", "a");
    AddFile("d/a");
    AddFile("d/b");
    CleanupDataFiles();
    EXPECT_THAT(Metadata(), ElementsAre(Row{"d", "a"}, Row{"d", "b"}));
    EXPECT_TRUE(HasFile("d/a") && HasFile("d/b"));
    EXPECT_THAT(Host().Log(), ElementsAre("info DataFileMap:", "debug d : a','b", "info DataDir found: d",
                                          "info CleanupDataFiles completed"));
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}

TEST_F(DataFileCleanupTest, AFileDirectlyUnderTheRootIsRemoved)
{
    AddMetadata("stray", "f");
    AddFile("stray");
    CleanupDataFiles();
    EXPECT_FALSE(HasFile("stray"));
    EXPECT_THAT(Host().Log(), Contains("info Delete illegal file at datafiles root: /var/cache/datafiles/stray"));
}

TEST_F(DataFileCleanupTest, AFolderThatTheStoreDoesNotKnowIsRemovedWhole)
{
    AddFile("unknown/sub/f");
    CleanupDataFiles();
    EXPECT_FALSE(HasFile("unknown"));
    EXPECT_THAT(Host().Log(), Contains("info Datafile directory not in store, remove: /var/cache/datafiles/unknown"));
}

TEST_F(DataFileCleanupTest, AFileThatItsFolderDoesNotListIsRemoved)
{
    AddMetadata("d", "a");
    AddFile("d/a");
    AddFile("d/extra");
    AddFile("d/folder/f");
    CleanupDataFiles();
    EXPECT_TRUE(HasFile("d/a"));
    EXPECT_FALSE(HasFile("d/extra") || HasFile("d/folder"));
    EXPECT_THAT(Host().Log(), Contains("info Datafile not in store, remove: /var/cache/datafiles/d/extra"));
    EXPECT_THAT(Host().Log(), Contains("info Datafile not in store, remove: /var/cache/datafiles/d/folder"));
}

TEST_F(DataFileCleanupTest, MetadataWhoseFileIsGoneIsRemoved)
{
    AddMetadata("d", "a");
    AddMetadata("d", "gone too");
    AddMetadata("gone", "f");
    AddFile("d/a");
    CleanupDataFiles();
    EXPECT_THAT(Metadata(), ElementsAre(Row{"d", "a"}));
    EXPECT_THAT(Host().Log(), Contains("info DataDir found: d"));
}

TEST_F(DataFileCleanupTest, WithoutTheRootAllMetadataGoes)
{
    AddMetadata("d", "a");
    Host().Remove(ROOT);
    CleanupDataFiles();
    EXPECT_THAT(Metadata(), IsEmpty());
    EXPECT_THAT(Host().Log(), Contains("info CleanupDataFiles completed"));
}

TEST_F(DataFileCleanupTest, ARootThatIsAFileCountsAsMissing)
{
    AddMetadata("d", "a");
    Host().Remove(ROOT);
    Host().WriteFile(ROOT, "text");
    CleanupDataFiles();
    EXPECT_THAT(Metadata(), IsEmpty());
    EXPECT_EQ(Host().ReadFile(ROOT), "text");
}

TEST_F(DataFileCleanupTest, WhileTheRootCannotBeExaminedTheMetadataStay)
{
    AddMetadata("d", "a");
    Host().Remove(ROOT);
    std::filesystem::create_symlink("/var/" + std::string(300, 'x'), Host().Real(ROOT));  // longer than names may be
    CleanupDataFiles();
    EXPECT_THAT(Metadata(), ElementsAre(Row{"d", "a"}));
    EXPECT_EQ(Host().Log().back(), "error CleanupDataFiles cannot examine /var/cache/datafiles: File name too long");
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(DataFileCleanupTest, ARootThatLeadsNowhereCountsAsMissing)
{
    AddMetadata("d", "a");
    Host().Remove(ROOT);
    std::filesystem::create_symlink("/nowhere", Host().Real(ROOT));
    CleanupDataFiles();
    EXPECT_THAT(Metadata(), IsEmpty());
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}

TEST_F(DataFileCleanupTest, LinksAreRemovedAndNeverFollowed)
{
    AddMetadata("link", "precious");
    Host().WriteFile("/etc/precious", "").WriteFile("/etc/other", "");
    std::filesystem::create_symlink("/etc", Host().Real(ROOT + std::string("/link")));
    CleanupDataFiles();
    EXPECT_FALSE(HasFile("link"));
    EXPECT_TRUE(Host().Exists("/etc/precious") && Host().Exists("/etc/other"));
    EXPECT_THAT(Metadata(), IsEmpty());
}

TEST_F(DataFileCleanupTest, AFolderNameThatLeadsOutOfTheRootLosesItsMetadataAlone)
{
    Host().WriteFile("/var/cache/f", "").WriteFile("/etc/f", "");
    for (const char* folder : {"", ".", "..", "../../etc"}) {
        AddMetadata(folder, "f");
    }
    CleanupDataFiles();
    EXPECT_TRUE(Host().Exists("/var/cache/f") && Host().Exists("/etc/f"));
    EXPECT_THAT(Metadata(), IsEmpty());
}

TEST_F(DataFileCleanupTest, ManyMissingFilesOfOneFolderAreRemovedTogether)
{
    Host().Sql(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) "
        "INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName) SELECT 'nimb', 'key', 'd', i FROM n",
        DBStore::Type::DataFileStore);
    CleanupDataFiles();
    EXPECT_THAT(Metadata(), IsEmpty());
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}

TEST_F(DataFileCleanupTest, WithoutAStoreTheFilesStayAndTheEventIsRaised)
{
    AddFile("d/a");
    Host().Remove(DATAFILE_STORE);
    CleanupDataFiles();
    EXPECT_TRUE(HasFile("d/a"));
    EXPECT_THAT(Host().Log(), Contains("error Datafile store cleanup failed: could not connect"));
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(DataFileCleanupTest, MetadataThatCannotBeReadLeavesTheFilesAlone)
{
    AddFile("d/a");
    const StoreFault fault(SQLITE_READ, "DataFileMetadata");
    CleanupDataFiles();
    EXPECT_TRUE(HasFile("d/a"));
    EXPECT_THAT(Host().Log(), Contains("error CleanupDataFiles read sql command failed"));
    EXPECT_THAT(Host().Log(), Not(Contains("info CleanupDataFiles completed")));
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}

TEST_F(DataFileCleanupTest, MetadataThatCannotBeDeletedIsReportedForEachFolder)
{
    AddMetadata("d1", "a");
    AddMetadata("d2", "b");
    const StoreFault fault(SQLITE_DELETE, "DataFileMetadata");
    CleanupDataFiles();
    EXPECT_THAT(Host().Log(), Contains("error CleanupDataFiles failed to clearup metadata").Times(2));
    EXPECT_THAT(Host().Log(), Contains("info CleanupDataFiles completed"));
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT, EVENT));
}

TEST_F(DataFileCleanupTest, MetadataThatCannotBeClearedIsReported)
{
    AddMetadata("d", "a");
    Host().Remove(ROOT);
    const StoreFault fault(SQLITE_DELETE, "DataFileMetadata");
    CleanupDataFiles();
    EXPECT_THAT(Host().Log(), Contains("error CleanupDataFiles clear sql command failed"));
    EXPECT_THAT(Host().EventIds(), ElementsAre(EVENT));
}
