#include <gmock/gmock.h>
#include <sqlite3.h>

#include "TestHost.h"

using DBStore::ConnectionPtr;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{
class KeyValueTest : public HostTest
{
protected:
    KeyValueTest() { Host().WithStores(); }
};

/// Databases opened while it exists take no text of more than 10000 bytes.
class ShortTexts
{
public:
    ShortTexts() { sqlite3_auto_extension(Entry()); }
    ~ShortTexts() { sqlite3_cancel_auto_extension(Entry()); }
    ShortTexts(const ShortTexts&) = delete;
    ShortTexts& operator=(const ShortTexts&) = delete;

private:
    static int Bound(sqlite3* database, const char**, const void*)
    {
        sqlite3_limit(database, SQLITE_LIMIT_LENGTH, 10000);
        return SQLITE_OK;
    }

    // SQLite declares the entry without parameters and calls it with those of an extension's.
    using AutoExtension = void (*)();
    static AutoExtension Entry() { return reinterpret_cast<AutoExtension>(Bound); }
};
}  // namespace

TEST_F(KeyValueTest, AnAbsentKeyReadsAsTheEmptyText)
{
    const ConnectionPtr connection = DBStore::GetConnection(DBStore::Type::ConfigStore, false);
    std::string value = "old";
    EXPECT_EQ(DBStore::ReadKeyValue("IS_BOOT", &value, connection), DBStore::SUCCESS);
    EXPECT_EQ(value, "");
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(KeyValueTest, WritingAgainReplacesTheValue)
{
    const ConnectionPtr connection = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
    EXPECT_EQ(DBStore::WriteKeyValue("BOOT_MODE", "1", connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::WriteKeyValue("BOOT_MODE", "0", connection), DBStore::SUCCESS);
    std::string value;
    EXPECT_EQ(DBStore::ReadKeyValue("BOOT_MODE", &value, connection), DBStore::SUCCESS);
    EXPECT_EQ(value, "0");
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM KeyValue"), "1");
}

TEST_F(KeyValueTest, AnEmptyValueIsKeptAsAText)
{
    const ConnectionPtr connection = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
    EXPECT_EQ(DBStore::WriteKeyValue("IS_BOOT", "", connection), DBStore::SUCCESS);
    EXPECT_EQ(Host().SqlValue("SELECT typeof(Value) FROM KeyValue"), "text");
}

TEST_F(KeyValueTest, KeysAndValuesAreKeptToTheirLastByte)
{
    const ConnectionPtr connection = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
    const std::string text("a\0b", 3);
    EXPECT_EQ(DBStore::WriteKeyValue(text, text, connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::WriteKeyValue("a", "other", connection), DBStore::SUCCESS);
    std::string value;
    EXPECT_EQ(DBStore::ReadKeyValue(text, &value, connection), DBStore::SUCCESS);
    EXPECT_EQ(value, text);
}

TEST_F(KeyValueTest, AnEntryWithoutAValueReadsAsTheEmptyText)
{
    Host().Sql("DROP TABLE KeyValue; CREATE TABLE KeyValue (Key TEXT, Value TEXT)");
    Host().Sql("INSERT INTO KeyValue VALUES ('k', NULL)");
    std::string value = "old";
    const ConnectionPtr connection = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
    EXPECT_EQ(DBStore::ReadKeyValue("k", &value, connection), DBStore::SUCCESS);
    EXPECT_EQ(value, "");
}

TEST_F(KeyValueTest, AnEntryThatCannotBeReadIsAFailure)
{
    Host().Sql("DROP TABLE KeyValue");
    std::string value = "old";
    const ConnectionPtr connection = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
    EXPECT_EQ(DBStore::ReadKeyValue("k", &value, connection), DBStore::FAILURE);
    EXPECT_EQ(DBStore::ReadKeyValue("k", &value, nullptr), DBStore::FAILURE);
    EXPECT_EQ(value, "");
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("no such table: KeyValue")));
}

TEST_F(KeyValueTest, AKeyThatTheDatabaseDoesNotTakeIsAFailureWithOneLine)
{
    const ShortTexts bound;
    std::string value = "old";
    const ConnectionPtr connection = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
    EXPECT_EQ(DBStore::ReadKeyValue(std::string(20000, 'k'), &value, connection), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("string or blob too big")));
}

TEST_F(KeyValueTest, OnlyTheConfigStoreHasEntries)
{
    const ConnectionPtr connection = DBStore::GetConnection(DBStore::Type::DataFileStore, true);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", connection), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("no such table: KeyValue")));
}
