#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

#include "FileSizeLimit.h"
#include "TestHost.h"

using DBStore::ConnectionPtr;
using DBStore::GetConnection;
using DBStore::Type;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{
class TransactionTest : public HostTest
{};

/// A transaction that wrote something and then met a disk that fails.
class LostTransactionTest : public TransactionTest
{
protected:
    LostTransactionTest()
    {
        Host().WithStores();
        Host().Sql("INSERT INTO KeyValue VALUES ('earlier', 'kept')");
        connection_ = GetConnection(Type::ConfigStore, true);
        EXPECT_EQ(DBStore::BeginTransaction(connection_), DBStore::SUCCESS);
        EXPECT_EQ(DBStore::WriteKeyValue("earlier", "changed", connection_), DBStore::SUCCESS);
        const FileSizeLimit limit(1 << 20);
        EXPECT_EQ(DBStore::WriteKeyValue("large", std::string(8 << 20, 'v'), connection_), DBStore::FAILURE);
    }

    const ConnectionPtr& Connection() const { return connection_; }

private:
    ConnectionPtr connection_;
};

/// Another process that creates the stores, holds the config store's write lock until it is told to let go, and
/// then commits. It must be started before this process touches the database.
class LockHolder
{
public:
    LockHolder()
    {
        if (pipe(ready_) != 0 || pipe(release_) != 0) {
            throw std::runtime_error("no pipe");
        }
        child_ = fork();
        if (child_ == 0) {
            _exit(Hold() ? 0 : 1);
        }
        close(ready_[1]);
        close(release_[0]);
        char byte = 0;
        holds_ = read(ready_[0], &byte, 1) == 1;
    }
    ~LockHolder()
    {
        Release();
        close(ready_[0]);
    }
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    bool Holds() const { return holds_; }

    /// True when the other process committed.
    bool Release()
    {
        if (child_ <= 0) {
            return committed_;
        }
        close(release_[1]);
        int status = 0;
        waitpid(child_, &status, 0);
        child_ = 0;
        committed_ = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        return committed_;
    }

private:
    bool Hold()
    {
        close(release_[1]);
        const bool created = DBStore::CreateDatabases() == DBStore::SUCCESS;
        const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
        if (!created || DBStore::BeginTransaction(connection) != DBStore::SUCCESS ||
            DBStore::WriteKeyValue("k", "from the other process", connection) != DBStore::SUCCESS ||
            write(ready_[1], "r", 1) != 1) {
            return false;
        }
        char byte = 0;
        (void)!read(release_[0], &byte, 1);  // ends when the other side closes the pipe
        return DBStore::CommitTransaction(connection) == DBStore::SUCCESS;
    }

    int ready_[2] = {-1, -1};
    int release_[2] = {-1, -1};
    pid_t child_ = 0;
    bool holds_ = false;
    bool committed_ = false;
};
}  // namespace

TEST_F(TransactionTest, WhatIsCommittedStays)
{
    Host().WithStores();
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::CommitTransaction(connection), DBStore::SUCCESS);
    EXPECT_EQ(Host().KeyValue("k"), "v");
}

TEST_F(TransactionTest, WhatIsCancelledNeverWas)
{
    Host().WithStores();
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "before", connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::CancelTransaction(connection), DBStore::SUCCESS);
    EXPECT_EQ(Host().KeyValue("k"), "before");
}

TEST_F(TransactionTest, ASecondBeginFailsAndLeavesTheFirstOpen)
{
    Host().WithStores();
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::BeginTransaction(connection), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("cannot start a transaction within a transaction")));
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::CommitTransaction(connection), DBStore::SUCCESS);
    EXPECT_EQ(Host().KeyValue("k"), "v");
}

TEST_F(TransactionTest, WithNoTransactionOpenCommitFailsAndCancelSucceeds)
{
    Host().WithStores();
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::CancelTransaction(connection), DBStore::SUCCESS);
    EXPECT_THAT(Host().Log(), IsEmpty());
    EXPECT_EQ(DBStore::CommitTransaction(connection), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("no transaction is active")));
}

TEST_F(LostTransactionTest, EveryFurtherStatementFailsAndNothingIsStored)
{
    std::string value = "old";
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", Connection()), DBStore::FAILURE);
    EXPECT_EQ(DBStore::ReadKeyValue("earlier", &value, Connection()), DBStore::FAILURE);
    EXPECT_EQ(DBStore::Execute(Connection(), "DELETE FROM KeyValue", 0), DBStore::FAILURE);
    EXPECT_EQ(DBStore::BeginTransaction(Connection()), DBStore::FAILURE);
    EXPECT_EQ(DBStore::CommitTransaction(Connection()), DBStore::FAILURE);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "after the commit", Connection()), DBStore::FAILURE);
    EXPECT_THAT(Host().Sql("SELECT * FROM KeyValue"), ElementsAre(Row{"earlier", "kept"}));
}

TEST_F(LostTransactionTest, TheLossIsLoggedOnceAfterItsReason)
{
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", Connection()), DBStore::FAILURE);
    EXPECT_EQ(DBStore::CommitTransaction(Connection()), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("disk I/O error"), HasSubstr("transaction lost")));
}

TEST_F(LostTransactionTest, ACancelEndsItAndTheNextTransactionIsWhole)
{
    EXPECT_EQ(DBStore::CancelTransaction(Connection()), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::BeginTransaction(Connection()), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", Connection()), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::CommitTransaction(Connection()), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::WriteKeyValue("l", "outside", Connection()), DBStore::SUCCESS);
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM KeyValue"), "3");
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("disk I/O error")));
}

TEST_F(TransactionTest, BeginTakesTheWriteLockAtOnce)
{
    Host().WithStores();
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    ASSERT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
    EXPECT_THROW(Host().Sql("INSERT INTO KeyValue VALUES ('k', 'v')"), std::runtime_error);
    EXPECT_NO_THROW(Host().Sql("SELECT * FROM KeyValue"));
}

TEST_F(TransactionTest, AnotherProcesssWriterIsWaitedForUpToTheLimit)
{
    LockHolder other;
    ASSERT_TRUE(other.Holds());
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(DBStore::Execute(connection, "DELETE FROM KeyValue", 40), DBStore::FAILURE);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
    EXPECT_THAT(Host().Log(), ElementsAre("error Store statement failed: database is locked: DELETE FROM KeyValue"));
}

TEST_F(TransactionTest, AZeroLimitDoesNotWait)
{
    LockHolder other;
    ASSERT_TRUE(other.Holds());
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::Execute(connection, "DELETE FROM KeyValue", 0), DBStore::FAILURE);
}

TEST_F(TransactionTest, ReadersGoOnWhileAnotherProcessWrites)
{
    LockHolder other;
    ASSERT_TRUE(other.Holds());
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, false);
    std::string value;
    EXPECT_EQ(DBStore::ReadKeyValue("k", &value, connection), DBStore::SUCCESS);
    EXPECT_EQ(value, "");
    EXPECT_TRUE(other.Release());
    EXPECT_EQ(DBStore::ReadKeyValue("k", &value, connection), DBStore::SUCCESS);
    EXPECT_EQ(value, "from the other process");
}

TEST_F(TransactionTest, TheLockIsFreeOnceTheOtherProcessHasCommitted)
{
    LockHolder other;
    ASSERT_TRUE(other.Holds());
    const ConnectionPtr connection = GetConnection(Type::ConfigStore, true);
    EXPECT_EQ(DBStore::Execute(connection, "DELETE FROM KeyValue", 0), DBStore::FAILURE);
    EXPECT_TRUE(other.Release());
    EXPECT_EQ(DBStore::BeginTransaction(connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "mine", connection), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::CommitTransaction(connection), DBStore::SUCCESS);
    EXPECT_EQ(Host().KeyValue("k"), "mine");
}
