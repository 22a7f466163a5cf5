#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>

#include "NimbConfigStore.h"
#include "StoreConnection.h"
#include "StoreFault.h"
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
class CleanupTest : public HostTest
{
protected:
    CleanupTest()
    {
        Host().WithStores();
        Host().ClearLogs();
    }

    // A row of Config; @p columns are the values that it has, like "UserValue".
    void AddRow(const std::string& name, const std::vector<std::string>& columns)
    {
        std::string names;
        std::string values;
        for (const std::string& column : columns) {
            names += ", " + column;
            values += ", '1'";
        }
        Host().Sql("INSERT INTO Config (Component, ConfigGroup, Name, Identifier" + names +
                   ") VALUES ('nimb', 'network', '" + name + "', ''" + values + ")");
    }

    void DeclareObject(const std::string& name)
    {
        Host().Sql("INSERT INTO ConfigSchema (Component, ConfigGroup, Name) VALUES ('nimb', 'network', '" + name + "')",
                   DBStore::Type::SchemaStore);
    }

    void AddDataFile(const std::string& key, const std::string& folder, const std::string& file)
    {
        Host().Sql("INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName) VALUES ('nimb', '" + key + "', '" +
                       folder + "', '" + file + "')",
                   DBStore::Type::DataFileStore);
        Host().WriteFile("/var/cache/datafiles/" + folder + "/" + file, "data");
    }

    void DeclareDataFile(const std::string& key)
    {
        Host().Sql("INSERT INTO DataFileSchema (Component, KEY) VALUES ('nimb', '" + key + "')",
                   DBStore::Type::SchemaStore);
    }

    std::vector<Row> Names() { return Host().Sql("SELECT Name FROM Config ORDER BY Name"); }
    std::vector<Row> Keys()
    {
        return Host().Sql("SELECT KEY FROM DataFileMetadata ORDER BY KEY", DBStore::Type::DataFileStore);
    }
};
}  // namespace

TEST_F(CleanupTest, AutomaticValuesGoAndSoDoRowsThatHeldNothingElse)
{
    AddRow("automatic", {"AutoConfValue"});
    AddRow("cached", {"AutoConfValue", "CachedValue"});
    AddRow("desired", {"DesiredValue"});
    AddRow("empty", {});
    AddRow("user", {"UserValue"});
    AddRow("vital", {"VitalValue", "AutoConfValue"});
    CleanupAutoConfig();
    EXPECT_THAT(Names(), ElementsAre(Row{"cached"}, Row{"desired"}, Row{"user"}, Row{"vital"}));
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM Config WHERE AutoConfValue IS NOT NULL"), "0");
    EXPECT_THAT(Host().Log(), ElementsAre("info Cleanup auto configurations"));
}

TEST_F(CleanupTest, AnAutomaticConfigurationThatCannotBeClearedThrows)
{
    AddRow("automatic", {"AutoConfValue"});
    {
        const StoreFault fault(SQLITE_UPDATE, "Config");
        EXPECT_EQ(ThrownBy(CleanupAutoConfig), "2000 Error removing auto configuration value.");
    }
    const StoreFault fault(SQLITE_DELETE, "Config");
    EXPECT_EQ(ThrownBy(CleanupAutoConfig), "2000 Error cleaning up config.");
}

TEST_F(CleanupTest, WithoutAConfigStoreThereIsNoAutomaticConfigurationToClean)
{
    Host().Remove(STORE);
    EXPECT_EQ(ThrownBy(CleanupAutoConfig), "nothing");
    EXPECT_THAT(Host().Log(), Contains("error Cleanup failed: could not connect to ConfigStore"));
}

TEST_F(CleanupTest, RowsAndMetadataThatNoSchemaDescribesAreRemovedAndFilesKept)
{
    AddRow("known", {"UserValue"});
    AddRow("orphan", {"UserValue"});
    DeclareObject("known");
    AddDataFile("kept", "d1", "f1");
    AddDataFile("orphan", "d2", "f2");
    DeclareDataFile("kept");
    Host().ClearLogs();
    CleanupStore(true);
    EXPECT_THAT(Names(), ElementsAre(Row{"known"}));
    EXPECT_THAT(Keys(), ElementsAre(Row{"kept"}));
    EXPECT_TRUE(Host().Exists("/var/cache/datafiles/d2/f2"));
    EXPECT_THAT(Host().Log(), ElementsAre("info Cleanup config store", "info Cleanup config store completed",
                                          "info Cleanup data file store", "info Cleanup data file store completed"));
}

TEST_F(CleanupTest, ALiveCleanupRemovesTheFoldersOfOrphanedFilesToo)
{
    AddDataFile("kept", "d1", "f1");
    AddDataFile("orphan", "d2", "f2");
    AddDataFile("other orphan", "d2", "f3");
    DeclareDataFile("kept");
    CleanupStore(false);
    EXPECT_TRUE(Host().Exists("/var/cache/datafiles/d1/f1"));
    EXPECT_FALSE(Host().Exists("/var/cache/datafiles/d2"));
    EXPECT_THAT(Host().Log(), Contains("info Cleanup datafile directory: d2").Times(1));
}

TEST_F(CleanupTest, AFolderNameThatLeadsOutOfTheRootRemovesNothing)
{
    Host().WriteFile("/var/cache/precious", "").WriteFile("/etc/precious", "");
    for (const char* folder : {"", ".", "..", "../..", "/etc", "../../etc", "sub/.."}) {
        Host().Sql(std::string("INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName) VALUES ('nimb', '") +
                       folder + "', '" + folder + "', 'f')",
                   DBStore::Type::DataFileStore);
    }
    Host().WriteFile("/var/cache/datafiles/sub/f", "");
    CleanupStore(false);
    EXPECT_TRUE(Host().Exists("/var/cache/precious"));
    EXPECT_TRUE(Host().Exists("/etc/precious"));
    EXPECT_TRUE(Host().Exists("/var/cache/datafiles/sub/f"));
    EXPECT_THAT(Keys(), IsEmpty());
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("is not a plain name, left as it is")).Times(7));
}

TEST_F(CleanupTest, AFolderThatIsALinkIsRemovedButNotWhatItLeadsTo)
{
    Host().WriteFile("/etc/precious", "");
    std::filesystem::create_symlink("/etc", Host().Real("/var/cache/datafiles/link"));
    Host().Sql("INSERT INTO DataFileMetadata (Component, KEY, DirName, FileName) VALUES ('nimb', 'k', 'link', 'f')",
               DBStore::Type::DataFileStore);
    CleanupStore(false);
    EXPECT_TRUE(Host().Exists("/etc/precious"));
    EXPECT_FALSE(Host().Exists("/var/cache/datafiles/link"));
}

TEST_F(CleanupTest, WithoutAConfigStoreTheDataFileHalfStillRuns)
{
    AddDataFile("orphan", "d", "f");
    Host().Remove(STORE);
    CleanupStore(true);
    EXPECT_THAT(Keys(), IsEmpty());
    EXPECT_THAT(Host().Log(), Contains("error ConfigStore cleanup failed: could not connect"));
    EXPECT_THAT(Host().Log(), Contains("info Cleanup data file store completed"));
}

TEST_F(CleanupTest, WithoutASchemaStoreNothingIsRemoved)
{
    AddRow("row", {"UserValue"});
    AddDataFile("file", "d", "f");
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    CleanupStore(false);
    EXPECT_THAT(Names(), ElementsAre(Row{"row"}));
    EXPECT_THAT(Keys(), ElementsAre(Row{"file"}));
    EXPECT_TRUE(Host().Exists("/var/cache/datafiles/d/f"));
    EXPECT_THAT(Host().Log(), Contains("error ConfigStore cleanup failed: could not attach to SchemaStore"));
    EXPECT_THAT(Host().Log(), Contains("error Datafile store cleanup failed: could not attach to data file schemas"));
    EXPECT_FALSE(Host().Exists(DBStore::StorePath(DBStore::Type::SchemaStore)));
}

TEST_F(CleanupTest, WithoutADataFileStoreTheCleanupEnds)
{
    Host().Remove(DATAFILE_STORE);
    CleanupStore(false);
    EXPECT_THAT(Host().Log(), Contains("info Cleanup config store completed"));
    EXPECT_THAT(Host().Log(), Contains("error Datafile store cleanup failed: could not connect"));
    EXPECT_THAT(Host().Log(), Not(Contains("info Cleanup data file store completed")));
}

TEST_F(CleanupTest, AStatementThatFailsEndsItsHalf)
{
    AddDataFile("orphan", "d", "f");
    {
        const StoreFault fault(SQLITE_DELETE, "");
        CleanupStore(false);
    }
    EXPECT_TRUE(Host().Exists("/var/cache/datafiles/d/f"));
    EXPECT_THAT(Host().Log(), Contains("error ConfigStore cleanup failed: SQL command unsuccessful"));
    EXPECT_THAT(Host().Log(), Contains("error Datafile cleanup failed: SQL command unsuccessful"));
    Host().ClearLogs();
    {
        const StoreFault fault(SQLITE_READ, "DataFileMetadata");
        CleanupStore(false);
    }
    EXPECT_THAT(Host().Log(), Contains("error Datafile live cleanup failed: read dir SQL command unsuccessful"));
    EXPECT_THAT(Keys(), ElementsAre(Row{"orphan"}));
}

TEST_F(CleanupTest, ACleanupLeavesNoSchemaStoreAttached)
{
    // Shared with the cleanup: what it left attached would outlive it and meet the next attachment.
    const DBStore::ConnectionPtr configStore = GetDBConnection(DBStore::Type::ConfigStore, true);
    const DBStore::ConnectionPtr dataFileStore = GetDBConnection(DBStore::Type::DataFileStore, true);
    CleanupStore(true);
    CleanupStore(false);
    EXPECT_THAT(Host().Log(), Not(Contains(HasSubstr("error"))));
    EXPECT_EQ(DBStore::AttachSchemaStore(configStore), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::AttachSchemaStore(dataFileStore), DBStore::SUCCESS);
}
