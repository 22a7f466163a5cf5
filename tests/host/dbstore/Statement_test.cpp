#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>

#include "TestHost.h"

using DBStore::ConnectionPtr;
using DBStore::ExecuteStmt;
using DBStore::StatementPtr;
using DBStore::internal::Bind;
using DBStore::internal::BindNull;
using DBStore::internal::Prepare;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{
constexpr int WAIT = DBStore::WAIT_LIMIT_MS;

class StatementTest : public HostTest
{
protected:
    StatementTest()
    {
        Host().WithStores();
        connection_ = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
    }

    StatementPtr Prepared(const std::string& sql) { return Prepare(connection_, sql, WAIT); }
    int Run(const StatementPtr& statement, DBStore::RowCallback callback = nullptr, void* context = nullptr)
    {
        return ExecuteStmt(connection_, statement, callback, context, WAIT);
    }

    std::vector<Row> Rows(const StatementPtr& statement)
    {
        std::vector<Row> rows;
        EXPECT_EQ(
            Run(
                statement,
                [](void* context, int columns, char** values, char**) {
                    Row& row = static_cast<std::vector<Row>*>(context)->emplace_back();
                    for (int i = 0; i < columns; ++i) {
                        row.push_back(values[i] != nullptr ? std::optional<std::string>(values[i]) : std::nullopt);
                    }
                    return 0;
                },
                &rows),
            DBStore::SUCCESS);
        return rows;
    }

    ConnectionPtr connection_;
};

int CountRow(void* context, int, char**, char**)
{
    ++*static_cast<int*>(context);
    return 0;
}
}  // namespace

TEST_F(StatementTest, BindsTextsNumbersAndNothing)
{
    const StatementPtr statement = Prepared("SELECT ?1, ?2, ?3, ?4, ?5, ?6");
    EXPECT_TRUE(Bind(statement, 1, "text"));
    EXPECT_TRUE(Bind(statement, 2, std::int64_t{1} << 40));
    EXPECT_TRUE(BindNull(statement, 3));
    EXPECT_TRUE(Bind(statement, 4, std::string_view()));
    EXPECT_TRUE(Bind(statement, 5, std::optional<std::string>()));
    const std::optional<std::string> given = "given";
    EXPECT_TRUE(Bind(statement, 6, given));
    EXPECT_THAT(Rows(statement), ElementsAre(Row{"text", "1099511627776", std::nullopt, "", std::nullopt, "given"}));
}

TEST_F(StatementTest, ATextMayHoldQuotesAndAnyCharacters)
{
    const std::string odd = "it's \"odd\"; \n-- \xC3\xA9";
    const StatementPtr statement = Prepared("SELECT ?");
    EXPECT_TRUE(Bind(statement, 1, odd));
    EXPECT_THAT(Rows(statement), ElementsAre(Row{odd}));
}

TEST_F(StatementTest, ColumnNamesReachTheCallback)
{
    std::string name;
    const auto keepName = [](void* context, int, char**, char** names) {
        *static_cast<std::string*>(context) = names[0];
        return 0;
    };
    EXPECT_EQ(Run(Prepared("SELECT 1 AS Answer"), keepName, &name), DBStore::SUCCESS);
    EXPECT_EQ(name, "Answer");
}

TEST_F(StatementTest, RunsAgainWithoutTheFormerBindings)
{
    const StatementPtr statement = Prepared("SELECT ?");
    Bind(statement, 1, "first");
    EXPECT_THAT(Rows(statement), ElementsAre(Row{"first"}));
    EXPECT_THAT(Rows(statement), ElementsAre(Row{std::nullopt}));
    Bind(statement, 1, "second");
    EXPECT_THAT(Rows(statement), ElementsAre(Row{"second"}));
}

TEST_F(StatementTest, ATextThatNobodyUsesIsNotPreparedAgain)
{
    // A statement that is kept survives the removal of its table; a text prepared anew would be refused at once.
    Prepared("SELECT * FROM DefaultConfig");
    ASSERT_EQ(DBStore::Execute(connection_, "DROP TABLE DefaultConfig", WAIT), DBStore::SUCCESS);
    EXPECT_NE(Prepared("SELECT * FROM DefaultConfig"), nullptr);
    EXPECT_EQ(Prepared("SELECT Name FROM DefaultConfig"), nullptr);
}

TEST_F(StatementTest, AReturnedStatementComesBackWithoutBindings)
{
    Bind(Prepared("SELECT ?"), 1, "left over");
    EXPECT_THAT(Rows(Prepared("SELECT ?")), ElementsAre(Row{std::nullopt}));
}

TEST_F(StatementTest, ATextInUseIsPreparedSeparately)
{
    const StatementPtr first = Prepared("SELECT ?");
    const StatementPtr second = Prepared("SELECT ?");
    Bind(first, 1, "one");
    Bind(second, 1, "two");
    EXPECT_THAT(Rows(first), ElementsAre(Row{"one"}));
    EXPECT_THAT(Rows(second), ElementsAre(Row{"two"}));
}

TEST_F(StatementTest, AStatementOutlivesEveryHandleOfItsConnection)
{
    const StatementPtr statement = Prepared("SELECT COUNT(*) FROM KeyValue");
    const std::weak_ptr<DBStore::StoreConnection> kept = connection_;
    connection_.reset();
    EXPECT_FALSE(kept.expired());
    int rows = 0;
    EXPECT_EQ(ExecuteStmt(kept.lock(), statement, CountRow, &rows, WAIT), DBStore::SUCCESS);
    EXPECT_EQ(rows, 1);
}

TEST_F(StatementTest, ATextThatDoesNotPrepareIsLoggedOnceAndFailsWhenRun)
{
    const StatementPtr statement = Prepared("SELECT * FROM Nowhere");
    EXPECT_EQ(statement, nullptr);
    EXPECT_FALSE(Bind(statement, 1, "text"));
    EXPECT_FALSE(BindNull(statement, 1));
    EXPECT_EQ(Run(statement), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(),
                ElementsAre("error Store statement failed: no such table: Nowhere: SELECT * FROM Nowhere"));
}

TEST_F(StatementTest, OneTextIsOneStatement)
{
    EXPECT_EQ(Prepared("SELECT 1; SELECT 2"), nullptr);
    EXPECT_EQ(Prepared(""), nullptr);
    EXPECT_NE(Prepared("SELECT 1; \n"), nullptr);
    EXPECT_EQ(Host().Log().size(), 2U);
}

TEST_F(StatementTest, AFailedBindIsLoggedOnceAndMakesTheNextRunFail)
{
    const StatementPtr statement = Prepared("SELECT ?");
    EXPECT_FALSE(Bind(statement, 2, "beyond"));
    EXPECT_EQ(Run(statement), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(), ElementsAre(AllOf(HasSubstr("column index out of range"), HasSubstr("SELECT ?"))));
    EXPECT_TRUE(Bind(statement, 1, "again"));
    EXPECT_THAT(Rows(statement), ElementsAre(Row{"again"}));
}

TEST_F(StatementTest, AFailedStepIsLoggedOnceAndLeavesTheStatementUsable)
{
    const StatementPtr insert = Prepared("INSERT INTO KeyValue (Key, Value) VALUES (?1, 'v')");
    Bind(insert, 1, "k");
    EXPECT_EQ(Run(insert), DBStore::SUCCESS);
    Bind(insert, 1, "k");
    EXPECT_EQ(Run(insert), DBStore::FAILURE);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("UNIQUE constraint failed: KeyValue.Key")));
    Bind(insert, 1, "another");
    EXPECT_EQ(Run(insert), DBStore::SUCCESS);
}

TEST_F(StatementTest, ACallbackThatRefusesARowEndsTheStatementAsAFailure)
{
    int rows = 0;
    const auto refuseSecond = [](void* context, int, char**, char**) {
        return ++*static_cast<int*>(context) == 2 ? 1 : 0;
    };
    EXPECT_EQ(Run(Prepared("VALUES (1), (2), (3)"), refuseSecond, &rows), DBStore::FAILURE);
    EXPECT_EQ(rows, 2);
    EXPECT_THAT(Host().Log(), ElementsAre(HasSubstr("ended by its caller")));
}

TEST_F(StatementTest, ACallbackThatThrowsLeavesTheStatementResetAndTheStoreUnlocked)
{
    const StatementPtr statement = Prepared("VALUES (1), (2)");
    const auto throws = [](void*, int, char**, char**) -> int { throw std::runtime_error("from the callback"); };
    EXPECT_THROW(Run(statement, throws), std::runtime_error);
    EXPECT_EQ(Rows(statement).size(), 2U);
    EXPECT_NO_THROW(Host().Sql("INSERT INTO KeyValue VALUES ('k', 'v')"));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(StatementTest, ACallbackMayRunOtherStatementsOfTheConnection)
{
    const auto count = [](void* context, int, char** values, char**) {
        auto& connection = *static_cast<ConnectionPtr*>(context);
        return DBStore::WriteKeyValue(values[0], "seen", connection);
    };
    EXPECT_EQ(Run(Prepared("VALUES ('a'), ('b')"), count, &connection_), DBStore::SUCCESS);
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM KeyValue WHERE Value = 'seen'"), "2");
}

TEST_F(StatementTest, WithoutAConnectionEverythingFails)
{
    EXPECT_EQ(Prepare(nullptr, "SELECT 1", WAIT), nullptr);
    EXPECT_EQ(ExecuteStmt(nullptr, Prepared("SELECT 1"), nullptr, nullptr, WAIT), DBStore::FAILURE);
    EXPECT_EQ(DBStore::Execute(nullptr, "SELECT 1", WAIT), DBStore::FAILURE);
    EXPECT_EQ(DBStore::BeginTransaction(nullptr), DBStore::FAILURE);
    EXPECT_EQ(DBStore::CommitTransaction(nullptr), DBStore::FAILURE);
    EXPECT_EQ(DBStore::AttachSchemaStore(nullptr), DBStore::FAILURE);
    EXPECT_EQ(DBStore::DetachSchemaStore(nullptr), DBStore::FAILURE);
    std::string value = "old";
    EXPECT_EQ(DBStore::ReadKeyValue("k", &value, nullptr), DBStore::FAILURE);
    EXPECT_EQ(DBStore::WriteKeyValue("k", "v", nullptr), DBStore::FAILURE);
}

TEST_F(StatementTest, AVeryLongTextIsCutInTheLog)
{
    EXPECT_EQ(Prepared("SELECT " + std::string(100000, '(')), nullptr);
    EXPECT_LT(Host().Log().front().size(), 2000U);
}
