#include <gmock/gmock.h>

#include <fstream>
#include <regex>
#include <set>

#include "StatementList.h"
#include "TestHost.h"

using NimbConfigStore::Statements::kAllStatements;
using NimbConfigStore::Statements::ListedStatement;
using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace
{
class StoreStatementsTest : public HostTest
{
protected:
    StoreStatementsTest() { Host().WithStores(); }

    /// The steps of the plan by which SQLite runs the statement, as the store is now.
    std::vector<std::string> Plan(const ListedStatement& statement)
    {
        const DBStore::ConnectionPtr connection = DBStore::GetConnection(statement.store, true);
        EXPECT_EQ(DBStore::AttachSchemaStore(connection), DBStore::SUCCESS);
        const auto explain = DBStore::internal::Prepare(
            connection, std::string("EXPLAIN QUERY PLAN ") + statement.text + statement.completion, 0);
        std::vector<std::string> steps;
        const auto keepStep = [](void* context, int, char** values, char**) {
            static_cast<std::vector<std::string>*>(context)->emplace_back(values[3]);
            return 0;
        };
        EXPECT_EQ(DBStore::ExecuteStmt(connection, explain, keepStep, &steps, 0), DBStore::SUCCESS) << statement.name;
        return steps;
    }

    static const ListedStatement& Listed(const std::string& name)
    {
        return *std::find_if(std::begin(kAllStatements), std::end(kAllStatements),
                             [&name](const ListedStatement& statement) { return statement.name == name; });
    }

    /// Objects of ten rows each, a tenth of all rows staged; a schema for every object and for some others.
    static void Fill(const TestHost& host, int rows)
    {
        const std::string numbers = "WITH RECURSIVE n (i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < " +
                                    std::to_string(rows) + ") ";
        host.Sql("BEGIN; " + numbers +
                 "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue) SELECT 'nimb', 'group', "
                 "'object' || (i / 10), 'id' || i, '{}' FROM n; INSERT INTO DesiredUserConfig (Component, ConfigGroup, "
                 "Name, Identifier, Value, BootAction) SELECT Component, ConfigGroup, Name, Identifier, '{}', 'SET' "
                 "FROM Config WHERE rowid % 10 = 0; COMMIT");
        host.Sql(numbers +
                     "INSERT INTO ConfigSchema (Component, ConfigGroup, Name, DSPIntegrated) SELECT 'nimb', 'group', "
                     "'object' || i, 1 FROM n WHERE i <= " +
                     std::to_string(rows / 10 + 5),
                 DBStore::Type::SchemaStore);
    }
};

/// The tables that a plan reads from beginning to end. Lists of constants are no tables.
std::set<std::string> TablesReadWhole(const std::vector<std::string>& plan)
{
    std::set<std::string> tables;
    const std::regex scan(R"(SCAN (?:ss\.)?(\S+).*)");
    for (const std::string& step : plan) {
        std::smatch match;
        if (std::regex_match(step, match, scan) && step.find("CONSTANT ROW") == std::string::npos) {
            tables.insert(match[1]);
        }
    }
    return tables;
}

std::set<std::string> NamesInTheCatalogue()
{
    std::set<std::string> names;
    std::ifstream source(SOURCE_DIR "/configstore/StoreStatements.h");
    const std::regex definition(R"(inline constexpr const char\* (\w+) =.*)");
    for (std::string line; std::getline(source, line);) {
        std::smatch match;
        if (std::regex_match(line, match, definition)) {
            names.insert(match[1]);
        }
    }
    return names;
}
}  // namespace

TEST_F(StoreStatementsTest, EveryStatementOfTheCatalogueIsListed)
{
    std::set<std::string> listed;
    for (const ListedStatement& statement : kAllStatements) {
        listed.insert(statement.name);
    }
    EXPECT_EQ(listed, NamesInTheCatalogue());
}

TEST_F(StoreStatementsTest, EachPreparesAndReadsWholeOnlyTheTablesOfWhichEveryRowCounts)
{
    for (const ListedStatement& statement : kAllStatements) {
        std::set<std::string> expected;
        if (*statement.read != '\0') {
            expected.insert(statement.read);
        }
        EXPECT_EQ(TablesReadWhole(Plan(statement)), expected) << statement.name;
    }
}

TEST_F(StoreStatementsTest, ThePlansAreTheSameAtEverySize)
{
    std::vector<std::vector<std::string>> fresh;
    for (const ListedStatement& statement : kAllStatements) {
        fresh.push_back(Plan(statement));
    }
    for (const int rows : {10, 1000, 20000}) {
        TestHost larger;
        larger.WithStores();
        Fill(larger, rows);
        for (std::size_t i = 0; i < fresh.size(); ++i) {
            EXPECT_EQ(Plan(kAllStatements[i]), fresh[i]) << kAllStatements[i].name << " at " << rows << " rows";
        }
    }
}

TEST_F(StoreStatementsTest, TheMarkStartsFromTheSchemasAndLooksTheRowsUp)
{
    const std::vector<std::string> plan = Plan(Listed("MARK_USER_CONFIG"));
    ASSERT_GE(plan.size(), 2U);
    EXPECT_THAT(plan[0], StartsWith("SCAN s"));
    EXPECT_EQ(plan[1],
              "SEARCH Config USING INDEX sqlite_autoindex_Config_1 (Component=? AND ConfigGroup=? AND Name=?)");
}

TEST_F(StoreStatementsTest, TheUpdateLooksStagedRowsUpByAllFourColumns)
{
    const char* lookUp =
        "SEARCH DesiredUserConfig USING INDEX sqlite_autoindex_DesiredUserConfig_1 (Component=? AND ConfigGroup=? AND "
        "Name=? AND Identifier=?)";
    EXPECT_THAT(Plan(Listed("UPDATE_FROM_STAGED")),
                ElementsAre("SCAN Config", "MULTI-INDEX OR", "INDEX 1", lookUp, "INDEX 2", lookUp, "INDEX 3", lookUp));
}
