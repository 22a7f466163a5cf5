#include <gmock/gmock.h>

#include <filesystem>
#include <thread>

#include "HostUtil.h"
#include "TestHost.h"

using DBStore::ConnectionPtr;
using DBStore::GetConnection;
using DBStore::Type;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace
{
class ConnectionTest : public HostTest
{};

std::string Value(const ConnectionPtr& connection, const std::string& key)
{
    std::string value;
    EXPECT_EQ(DBStore::ReadKeyValue(key, &value, connection), DBStore::SUCCESS);
    return value;
}
}  // namespace

TEST_F(ConnectionTest, EveryoneInTheThreadSharesTheConnectionWhileAHandleIsAlive)
{
    Host().WithStores();
    const ConnectionPtr first = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(GetConnection(Type::ConfigStore, true), first);
    EXPECT_NE(GetConnection(Type::DataFileStore, true), first);
}

TEST_F(ConnectionTest, TheLastHandleClosesIt)
{
    Host().WithStores();
    const std::weak_ptr<DBStore::StoreConnection> closed = GetConnection(Type::ConfigStore, true);
    EXPECT_TRUE(closed.expired());
}

TEST_F(ConnectionTest, ASecondHandleTakesPartInTheTransactionUnderWay)
{
    Host().WithStores();
    const ConnectionPtr outer = GetConnection(Type::ConfigStore, true);
    ASSERT_EQ(DBStore::BeginTransaction(outer), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", GetConnection(Type::ConfigStore, true)), DBStore::SUCCESS);
    EXPECT_EQ(Value(GetConnection(Type::ConfigStore, false), "k"), "v");
    EXPECT_EQ(Host().KeyValue("k"), "");  // not committed
    ASSERT_EQ(DBStore::CancelTransaction(outer), DBStore::SUCCESS);
    EXPECT_EQ(Value(outer, "k"), "");
}

TEST_F(ConnectionTest, ARunningTransactionEndsWithoutEffectWhenItsLastHandleGoes)
{
    Host().WithStores();
    {
        const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
        ASSERT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
        ASSERT_EQ(DBStore::WriteKeyValue("k", "v", connection), DBStore::SUCCESS);
    }
    EXPECT_EQ(Host().KeyValue("k"), "");
    EXPECT_EQ(DBStore::WriteKeyValue("k", "free again", GetConnection(Type::ConfigStore, true)), DBStore::SUCCESS);
}

TEST_F(ConnectionTest, AReadOnlyHandleReadsButDoesNotWrite)
{
    Host().WithStores();
    const ConnectionPtr reader = GetConnection(Type::ConfigStore, false);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", reader), DBStore::FAILURE);
    EXPECT_EQ(DBStore::BeginTransaction(reader), DBStore::FAILURE);
    EXPECT_EQ(Value(reader, "k"), "");
    EXPECT_THAT(Host().Log().front(), HasSubstr("attempt to write a readonly database"));
}

TEST_F(ConnectionTest, AskingForAWritableHandleBesideAReadOnlyOneOpensASecondConnection)
{
    Host().WithStores();
    const ConnectionPtr reader = GetConnection(Type::ConfigStore, false);
    const ConnectionPtr writer = GetConnection(Type::ConfigStore, true);
    EXPECT_NE(writer, reader);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", writer), DBStore::SUCCESS);
    EXPECT_EQ(Value(reader, "k"), "v");
}

TEST_F(ConnectionTest, EachThreadHasItsOwnConnection)
{
    Host().WithStores();
    const ConnectionPtr mine = GetConnection(Type::ConfigStore, true);
    ConnectionPtr same = mine;
    std::thread([&mine, &same] { same = GetConnection(Type::ConfigStore, true) == mine ? mine : nullptr; }).join();
    EXPECT_EQ(same, nullptr);
}

TEST_F(ConnectionTest, OpeningAStoreThatIsNotThereFailsAndCreatesNothing)
{
    for (const Type type : {Type::ConfigStore, Type::SchemaStore, Type::DataFileStore}) {
        EXPECT_EQ(GetConnection(type, true), nullptr);
        EXPECT_EQ(GetConnection(type, false), nullptr);
        EXPECT_FALSE(Host().Exists(DBStore::StorePath(type)));
    }
    EXPECT_THAT(Host().Log().front(), HasSubstr("error Cannot open store database /etc/talvor/configstore/"
                                                "current-store-1: unable to open database file"));
}

TEST_F(ConnectionTest, AFileThatIsNoDatabaseIsNotOpened)
{
    Host().WriteFile(DBStore::StorePath(Type::ConfigStore), std::string(5000, 'x'));
    EXPECT_EQ(GetConnection(Type::ConfigStore, true), nullptr);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("file is not a database")));
}

TEST_F(ConnectionTest, ANumberThatIsNoStoreGivesNoConnection)
{
    EXPECT_EQ(GetConnection(static_cast<Type>(7), true), nullptr);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("7 is no store")));
}

TEST_F(ConnectionTest, AnotherHostRootNeverGetsTheFormerRootsConnection)
{
    Host().WithStores();
    const ConnectionPtr former = GetConnection(Type::ConfigStore, true);
    TestHost other;
    other.WithStores();
    const ConnectionPtr present = GetConnection(Type::ConfigStore, true);
    EXPECT_NE(present, former);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "other", present), DBStore::SUCCESS);
    EXPECT_EQ(other.KeyValue("k"), "other");
    EXPECT_EQ(Host().KeyValue("k"), "");
}

TEST_F(ConnectionTest, AStoreWhoseFileWasReplacedIsOpenedAnew)
{
    Host().WithStores();
    const ConnectionPtr stale = GetConnection(Type::ConfigStore, true);
    const std::string file = Host().Real(DBStore::StorePath(Type::ConfigStore));
    std::filesystem::copy_file(file, file + "-restored");
    std::filesystem::rename(file + "-restored", file);
    const ConnectionPtr fresh = GetConnection(Type::ConfigStore, true);
    EXPECT_NE(fresh, stale);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", fresh), DBStore::SUCCESS);
    EXPECT_EQ(Host().KeyValue("k"), "v");
}

TEST_F(ConnectionTest, DoubleQuotedTextsAreAcceptedAndExtensionsAreNot)
{
    Host().WithStores();
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::Execute(connection, R"(DELETE FROM KeyValue WHERE Key = "no such column")", 0),
              DBStore::SUCCESS);
    EXPECT_EQ(DBStore::Execute(connection, "SELECT load_extension('x')", 0), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("not authorized")));
}
