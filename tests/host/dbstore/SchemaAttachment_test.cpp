#include <gmock/gmock.h>

#include <filesystem>

#include "CrashedStore.h"
#include "HostUtil.h"

using DBStore::ConnectionPtr;
using DBStore::GetConnection;
using DBStore::Type;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace
{
constexpr const char* COUNT_SCHEMAS = "SELECT 1 FROM ss.ConfigSchema";

class SchemaAttachmentTest : public HostTest
{
protected:
    bool SeesSchemas(const ConnectionPtr& connection)
    {
        return DBStore::Execute(connection, COUNT_SCHEMAS, DBStore::WAIT_LIMIT_MS) == DBStore::SUCCESS;
    }
};
}  // namespace

TEST_F(SchemaAttachmentTest, TheSchemaTablesAreThereWhileItIsAttached)
{
    Host().WithStores();
    for (const Type type : {Type::ConfigStore, Type::DataFileStore}) {
        const ConnectionPtr connection = GetConnection(type, true);
        EXPECT_FALSE(SeesSchemas(connection));
        EXPECT_EQ(DBStore::AttachSchemaStore(connection), DBStore::SUCCESS);
        EXPECT_TRUE(SeesSchemas(connection));
        EXPECT_EQ(DBStore::DetachSchemaStore(connection), DBStore::SUCCESS);
        EXPECT_FALSE(SeesSchemas(connection));
    }
}

TEST_F(SchemaAttachmentTest, AReadOnlyHandleAttachesToo)
{
    Host().WithStores();
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, false);
    EXPECT_EQ(DBStore::AttachSchemaStore(connection), DBStore::SUCCESS);
    EXPECT_TRUE(SeesSchemas(connection));
}

TEST_F(SchemaAttachmentTest, AStoreThatIsNotThereIsAFailureAndIsNotCreated)
{
    Host().WithStores();
    Host().Remove(DBStore::StorePath(Type::SchemaStore));
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::AttachSchemaStore(connection), DBStore::FAILURE);
    EXPECT_FALSE(Host().Exists(DBStore::StorePath(Type::SchemaStore)));
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("/var/lib/talvor/configstore/schema-store: unable to open")));
}

TEST_F(SchemaAttachmentTest, AFileThatIsNoDatabaseIsAFailure)
{
    Host().WithStores();
    Host().WriteFile(DBStore::StorePath(Type::SchemaStore), std::string(5000, 'x'));
    EXPECT_EQ(DBStore::AttachSchemaStore(GetConnection(Type::ConfigStore, true)), DBStore::FAILURE);
}

TEST_F(SchemaAttachmentTest, AttachingTwiceAndDetachingWithoutAttachingAreFailures)
{
    Host().WithStores();
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::DetachSchemaStore(connection), DBStore::FAILURE);
    EXPECT_EQ(DBStore::AttachSchemaStore(connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::AttachSchemaStore(connection), DBStore::FAILURE);
    EXPECT_TRUE(SeesSchemas(connection));
    EXPECT_THAT(Host().Log(),
                ElementsAre(HasSubstr("no such database: ss"), HasSubstr("database ss is already in use")));
}

TEST_F(SchemaAttachmentTest, InsideATransactionNeitherIsPossible)
{
    Host().WithStores();
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    ASSERT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::AttachSchemaStore(connection), DBStore::FAILURE);
    ASSERT_EQ(DBStore::CancelTransaction(connection), DBStore::SUCCESS);
    ASSERT_EQ(DBStore::AttachSchemaStore(connection), DBStore::SUCCESS);
    ASSERT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::DetachSchemaStore(connection), DBStore::FAILURE);
    EXPECT_TRUE(SeesSchemas(connection));
}

TEST_F(SchemaAttachmentTest, ATransactionOfTheConnectionDoesNotHoldUpChangesOfTheSchemaStore)
{
    Host().WithStores();
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    ASSERT_EQ(DBStore::AttachSchemaStore(connection), DBStore::SUCCESS);
    ASSERT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
    EXPECT_NO_THROW(Host().Sql("BEGIN IMMEDIATE; ROLLBACK", Type::SchemaStore));
    EXPECT_EQ(DBStore::Execute(connection, "DELETE FROM ss.ConfigSchema", 0), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("attempt to write a readonly database")));
}

TEST_F(SchemaAttachmentTest, AHalfDoneChangeOfTheSchemaStoreIsUndoneFirst)
{
    Host().WithStores();
    const std::string crashed = "/tmp/crashed";
    CopyAsIfCrashed(Host(), Type::SchemaStore, crashed);
    const std::string store = Host().Real(DBStore::StorePath(Type::SchemaStore));
    std::filesystem::rename(Host().Real(crashed), store);
    std::filesystem::rename(Host().Real(crashed + "-journal"), store + "-journal");
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::AttachSchemaStore(connection), DBStore::SUCCESS);
    EXPECT_TRUE(SeesSchemas(connection));
    EXPECT_EQ(DBStore::Execute(connection, "SELECT 1 FROM ss.Half", 0), DBStore::FAILURE);
}

TEST_F(SchemaAttachmentTest, ARootMayHoldBlanksAndEveryCharacterThatMeansSomethingInAUri)
{
    const std::string root = Host().Real("/tmp/odd root %41?mode=rwc&x#y'\"\xC3\xA9");
    std::filesystem::create_directories(root);
    SetHostRoot(root);
    EXPECT_EQ(DBStore::CreateDatabases(), DBStore::SUCCESS);
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::AttachSchemaStore(connection), DBStore::SUCCESS);
    EXPECT_TRUE(SeesSchemas(connection));
    EXPECT_EQ(DBStore::Backup(Type::ConfigStore, "/etc/talvor/copy"), DBStore::SUCCESS);
    EXPECT_TRUE(DBStore::Check("/etc/talvor/copy"));
    SetHostRoot(Host().Root());
}
