#include "CommandTest.h"

namespace
{
using CleanupCommandsTest = CommandTest;
}  // namespace

TEST_F(CleanupCommandsTest, AutoConfTellsHowManyRowsWent)
{
    Host().WithStores();
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, AutoConfValue, UserValue) VALUES "
        "('a','b','c','1','{}',NULL),('a','b','c','2','{}','{}')");
    ExpectGolden("cleanup-autoconf", {"cleanup", "autoconf"});
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM Config"), "1");
}

TEST_F(CleanupCommandsTest, StoreRemovesWhatNoSchemaDescribes)
{
    FillStores();
    Host().Sql("INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName) VALUES ('a','b','d','f')",
               DBStore::Type::DataFileStore);
    Host().WriteFile("/var/cache/datafiles/d/f", "data");
    ExpectGolden("cleanup-store", {"cleanup", "store"});
    EXPECT_TRUE(Host().Exists("/var/cache/datafiles/d/f"));
}

TEST_F(CleanupCommandsTest, LiveStoreCleanupRemovesFoldersToo)
{
    Host().WithStores();
    Host().Sql("INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName) VALUES ('a','b','d','f')",
               DBStore::Type::DataFileStore);
    Host().WriteFile("/var/cache/datafiles/d/f", "data");
    EXPECT_EQ(Run({"cleanup", "store", "--live"}).output,
              "rows removed               0\ndata-file records removed  1\n");
    EXPECT_FALSE(Host().Exists("/var/cache/datafiles/d"));
}

TEST_F(CleanupCommandsTest, DataFilesTellsHowManyEntriesWent)
{
    Host().WithStores();
    Host().Sql("INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName) VALUES ('a','b','d','f')",
               DBStore::Type::DataFileStore);
    ExpectGolden("cleanup-datafiles", {"cleanup", "datafiles"});
}

TEST_F(CleanupCommandsTest, FailWhenTheLibraryOnlyLogsItsFailure)
{
    FillStores();
    Host().Remove("/var/lib/talvor/configstore/schema-store");
    const Ran ran = Run({"cleanup", "store"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.output, "");
    EXPECT_THAT(ran.errors, ::testing::HasSubstr("ConfigStore cleanup failed: could not attach to SchemaStore"));
    EXPECT_THAT(ran.errors,
                ::testing::HasSubstr("Datafile store cleanup failed: could not attach to data file schemas"));
}

TEST_F(CleanupCommandsTest, SayThatTheStoreIsMissing)
{
    ExpectFailure({"cleanup", "autoconf"},
                  "cleanup autoconf: /etc/talvor/configstore/current-store-1: cannot be opened: "
                  "No such file or directory");
    ExpectFailure({"cleanup", "datafiles"},
                  "cleanup datafiles: /etc/talvor/configstore/datafile-store: cannot be opened: "
                  "No such file or directory");
}
