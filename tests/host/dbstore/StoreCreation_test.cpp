#include <gmock/gmock.h>

#include <filesystem>

#include "CrashedStore.h"

using DBStore::CreateDatabases;
using DBStore::Type;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{
constexpr Type ALL[] = {Type::ConfigStore, Type::SchemaStore, Type::DataFileStore};

class StoreCreationTest : public HostTest
{
protected:
    std::string Columns(Type type, const std::string& table)
    {
        return Host().SqlValue("SELECT group_concat(name) FROM pragma_table_info('" + table + "')", type);
    }
};
}  // namespace

TEST_F(StoreCreationTest, CreatesTheThreeStoresWithTheirFolders)
{
    Host().Remove("/etc/talvor/configstore");
    Host().Remove("/var/lib");
    EXPECT_EQ(CreateDatabases(), DBStore::SUCCESS);
    for (const Type type : ALL) {
        EXPECT_TRUE(DBStore::Check(DBStore::StorePath(type)));
        EXPECT_EQ(Host().SqlValue("PRAGMA page_size", type), "16384");
        EXPECT_EQ(Host().SqlValue("PRAGMA journal_mode", type), "delete");  // what is not write-ahead mode
    }
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(StoreCreationTest, TheConfigStoreHasTheColumnsOfTheCatalogue)
{
    Host().WithStores();
    EXPECT_EQ(Columns(Type::ConfigStore, "Config"),
              "Component,ConfigGroup,Name,Identifier,Version,CreationTime,Revision,Success,DesiredValue,UserValue,"
              "VitalValue,CachedValue,AutoConfValue");
    EXPECT_EQ(Columns(Type::ConfigStore, "DesiredUserConfig"),
              "Component,ConfigGroup,Name,Identifier,Version,BootAction,Value,VitalValue,CachedValue");
    EXPECT_EQ(Columns(Type::ConfigStore, "DefaultConfig"),
              "Component,ConfigGroup,Name,Identifier,Version,Value,VitalValue,CachedValue");
    EXPECT_EQ(Columns(Type::ConfigStore, "KeyValue"), "Key,Value");
}

TEST_F(StoreCreationTest, TheOtherStoresHaveTheColumnsOfTheCatalogue)
{
    Host().WithStores();
    EXPECT_EQ(Columns(Type::SchemaStore, "ConfigSchema"),
              "Component,ConfigGroup,Name,DSPIntegrated,SchemaType,MutableDefaultConfig,PreserveNonUser,NoRestore,"
              "Singleton,Version,SchemaId,SchemaJson");
    EXPECT_EQ(Columns(Type::SchemaStore, "SmartnicSchema"), "Component,ConfigGroup,Name,ValueType");
    EXPECT_EQ(Columns(Type::SchemaStore, "DataFileSchema"), "Component,KEY,SchemaId,SchemaJson");
    EXPECT_EQ(Columns(Type::DataFileStore, "DataFileMetadata"), "Component,KEY,DirName,FileName");
}

TEST_F(StoreCreationTest, AConfigRowIsUniqueByItsFourPartKey)
{
    Host().WithStores();
    const char* insert = "INSERT INTO Config (Component, ConfigGroup, Name, Identifier) VALUES ('c', 'g', 'n', 'i')";
    Host().Sql(insert);
    EXPECT_THROW(Host().Sql(insert), std::runtime_error);
    EXPECT_NO_THROW(
        Host().Sql("INSERT INTO Config (Component, ConfigGroup, Name, Identifier) VALUES "
                   "('c', 'g', 'n', ''), ('c', 'g', 'n', NULL), ('c', 'g', 'n', NULL)"));
}

TEST_F(StoreCreationTest, WhatIsThereStaysAsItIs)
{
    Host().WithStores();
    Host().Sql("INSERT INTO KeyValue VALUES ('k', 'v')");
    const std::string before = Host().ReadFile(DBStore::StorePath(Type::ConfigStore));
    EXPECT_EQ(CreateDatabases(), DBStore::SUCCESS);
    EXPECT_EQ(Host().ReadFile(DBStore::StorePath(Type::ConfigStore)), before);
}

TEST_F(StoreCreationTest, MissingTablesIndexesAndStatisticsAreAdded)
{
    Host().WithStores();
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name) VALUES ('c', 'g', 'n'); DROP TABLE DesiredUserConfig; "
        "DROP INDEX ConfigMarked; DELETE FROM sqlite_stat1 WHERE tbl = 'DefaultConfig'");
    EXPECT_EQ(CreateDatabases(), DBStore::SUCCESS);
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM DesiredUserConfig"), "0");
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM sqlite_schema WHERE name = 'ConfigMarked'"), "1");
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM sqlite_stat1 WHERE tbl = 'DefaultConfig'"), "1");
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM Config"), "1");
}

TEST_F(StoreCreationTest, EveryStatisticNamesAnIndexThatExists)
{
    Host().WithStores();
    for (const Type type : ALL) {
        EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) > 0 FROM sqlite_stat1", type), "1");
        EXPECT_THAT(Host().Sql("SELECT idx FROM sqlite_stat1 AS t WHERE NOT EXISTS (SELECT 1 FROM sqlite_schema AS s "
                               "WHERE s.type = 'index' AND s.name = t.idx AND s.tbl_name = t.tbl)",
                               type),
                    IsEmpty());
    }
}

TEST_F(StoreCreationTest, AnEmptyFileBecomesAStore)
{
    Host().WriteFile(DBStore::StorePath(Type::ConfigStore), "");
    EXPECT_EQ(CreateDatabases(), DBStore::SUCCESS);
    EXPECT_TRUE(DBStore::Check(DBStore::StorePath(Type::ConfigStore)));
    EXPECT_EQ(Host().SqlValue("PRAGMA page_size"), "16384");
}

TEST_F(StoreCreationTest, GarbageIsAFailureThatNamesTheFileAndDoesNotKeepTheOtherStoresAway)
{
    const std::string garbage(5000, 'x');
    Host().WriteFile(DBStore::StorePath(Type::ConfigStore), garbage);
    EXPECT_EQ(CreateDatabases(), DBStore::FAILURE);
    EXPECT_EQ(Host().ReadFile(DBStore::StorePath(Type::ConfigStore)), garbage);
    EXPECT_THAT(Host().Log(), ElementsAre("error Cannot create store database /etc/talvor/configstore/"
                                          "current-store-1: file is not a database"));
    EXPECT_TRUE(DBStore::Check(DBStore::StorePath(Type::SchemaStore)));
    EXPECT_TRUE(DBStore::Check(DBStore::StorePath(Type::DataFileStore)));
}

TEST_F(StoreCreationTest, AFolderInPlaceOfAStoreAndAFileInPlaceOfAFolderAreFailures)
{
    Host().MakeFolder(DBStore::StorePath(Type::DataFileStore));
    EXPECT_EQ(CreateDatabases(), DBStore::FAILURE);
    TestHost other;
    other.Remove("/var/lib/talvor");
    other.WriteFile("/var/lib/talvor", "");
    EXPECT_EQ(CreateDatabases(), DBStore::FAILURE);
    EXPECT_THAT(other.Log(), ElementsAre(HasSubstr("schema-store: Not a directory")));
}

TEST_F(StoreCreationTest, AHalfDoneChangeOfTheStoreIsUndoneWhenItIsOpened)
{
    Host().WithStores();
    const std::string crashed = "/tmp/crashed";
    CopyAsIfCrashed(Host(), Type::ConfigStore, crashed);
    TestHost rebooted;
    const std::string store = rebooted.Real(DBStore::StorePath(Type::ConfigStore));
    std::filesystem::copy_file(Host().Real(crashed), store);
    std::filesystem::copy_file(Host().Real(crashed + "-journal"), store + "-journal");
    std::string value;
    const auto reader = DBStore::GetConnection(Type::ConfigStore, false);
    EXPECT_EQ(DBStore::ReadKeyValue("k", &value, reader), DBStore::SUCCESS);
    EXPECT_TRUE(DBStore::Check(DBStore::StorePath(Type::ConfigStore)));
    EXPECT_EQ(rebooted.SqlValue("SELECT COUNT(*) FROM sqlite_schema WHERE name = 'Half'"), "0");
}
