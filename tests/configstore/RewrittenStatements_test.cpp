#include <random>

#include "ApplyTest.h"
#include "StoreStatements.h"

namespace
{
/// A statement of the catalogue, and the plain text whose effect it has at less cost.
struct Rewritten
{
    const char* name;
    const char* text;
    const char* plain;
};

constexpr Rewritten REWRITTEN[] = {
    {"INSERT_SET_ROWS", NimbConfigStore::Statements::INSERT_SET_ROWS,
     "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue, VitalValue, CachedValue) "
     "SELECT Component, ConfigGroup, Name, Identifier, Version, Value, VitalValue, CachedValue FROM DesiredUserConfig "
     "WHERE BootAction = 'SET' AND (Component, ConfigGroup, Name, Identifier) NOT IN "
     "(SELECT Component, ConfigGroup, Name, Identifier FROM Config)"},
    {"INSERT_SMARTNIC_ROWS", NimbConfigStore::Statements::INSERT_SMARTNIC_ROWS,
     "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue) SELECT Component, ConfigGroup, "
     "Name, Identifier, Version, Value FROM DesiredUserConfig WHERE BootAction = 'SET' AND (Component, ConfigGroup, "
     "Name, Identifier) NOT IN (SELECT Component, ConfigGroup, Name, Identifier FROM Config WHERE (Component, "
     "ConfigGroup, Name) IN (SELECT Component, ConfigGroup, Name FROM ss.SmartnicSchema "
     "WHERE ValueType = 'nimb-shared'))"},
    {"DELETE_UNSTAGED_SHARED_ROWS", NimbConfigStore::Statements::DELETE_UNSTAGED_SHARED_ROWS,
     "DELETE FROM Config WHERE (Component, ConfigGroup, Name, Identifier) NOT IN (SELECT Component, ConfigGroup, Name, "
     "Identifier FROM DesiredUserConfig WHERE BootAction = 'SET') AND (Component, ConfigGroup, Name) NOT IN "
     "(SELECT Component, ConfigGroup, Name FROM DesiredUserConfig WHERE BootAction = 'SET_DEFAULT') AND (Component, "
     "ConfigGroup, Name) IN (SELECT s.Component, s.ConfigGroup, s.Name FROM ss.SmartnicSchema AS s JOIN "
     "ss.ConfigSchema AS c ON c.Component = s.Component AND c.ConfigGroup = s.ConfigGroup AND c.Name = s.Name "
     "WHERE s.ValueType = 'nimb-shared' AND c.Singleton = 0)"},
    {"DELETE_ORPHANED_CONFIG", NimbConfigStore::Statements::DELETE_ORPHANED_CONFIG,
     "DELETE FROM Config WHERE (Component, ConfigGroup, Name) NOT IN (SELECT Component, ConfigGroup, Name "
     "FROM ss.ConfigSchema)"},
};

/// Rows whose keys meet often: few names, identifiers NULL, empty and given, every action and none.
std::string RandomRows(std::mt19937& random)
{
    const auto pick = [&random](std::initializer_list<const char*> choices) {
        return std::string(choices.begin()[random() % choices.size()]);
    };
    const auto key = [&pick] {
        return "'nimb', " + pick({"'g'", "'h'"}) + ", " + pick({"'a'", "'b'", "'c'"}) + ", " +
               pick({"NULL", "''", "'1'", "'2'", "'3'", "'4'"});
    };
    std::string sql = "DELETE FROM Config; DELETE FROM DesiredUserConfig;";
    for (std::size_t i = random() % 20; i > 0; --i) {
        sql += "INSERT OR IGNORE INTO Config (Component, ConfigGroup, Name, Identifier, UserValue) VALUES (" + key() +
               ", 'old');";
    }
    for (std::size_t i = random() % 20; i > 0; --i) {
        sql +=
            "INSERT OR IGNORE INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, BootAction, Value, "
            "Version) VALUES (" +
            key() + ", " + pick({"'SET'", "'SET'", "'SET'", "'DELETE'", "'SET_DEFAULT'", "NULL"}) + ", 'new', '2');";
    }
    return sql;
}

class RewrittenStatementsTest : public ApplyTest
{
protected:
    RewrittenStatementsTest()
    {
        Host().Sql(
            "INSERT INTO ConfigSchema (Component, ConfigGroup, Name, Singleton) VALUES ('nimb', 'g', 'a', 0), "
            "('nimb', 'g', 'b', 1), ('nimb', 'h', 'a', 0), ('nimb', 'h', 'c', 0); "
            "INSERT INTO SmartnicSchema VALUES ('nimb', 'g', 'a', 'nimb-shared'), "
            "('nimb', 'g', 'b', 'nimb-shared'), ('nimb', 'h', 'a', 'nimb-shared'), "
            "('nimb', 'h', 'c', 'nimbio-only'), ('nimb', 'h', 'b', 'nimb-shared')",
            DBStore::Type::SchemaStore);
        connection_ = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
        EXPECT_EQ(DBStore::AttachSchemaStore(connection_), DBStore::SUCCESS);
    }

    /// The rows that the statement leaves, in no order that counts; the store is as before afterwards.
    std::vector<std::string> RowsAfter(const char* text, bool& succeeded)
    {
        EXPECT_EQ(DBStore::BeginTransaction(connection_), DBStore::SUCCESS);
        succeeded = DBStore::Execute(connection_, text, 0) == DBStore::SUCCESS;
        const auto select = DBStore::internal::Prepare(
            connection_,
            "SELECT json_array(ConfigGroup, Name, Identifier, Version, UserValue) AS r FROM Config ORDER BY r", 0);
        std::vector<std::string> rows;
        const auto keep = [](void* context, int, char** values, char**) {
            static_cast<std::vector<std::string>*>(context)->emplace_back(values[0]);
            return 0;
        };
        EXPECT_EQ(DBStore::ExecuteStmt(connection_, select, keep, &rows, 0), DBStore::SUCCESS);
        EXPECT_EQ(DBStore::CancelTransaction(connection_), DBStore::SUCCESS);
        return rows;
    }

    DBStore::ConnectionPtr connection_;
};
}  // namespace

namespace
{
std::vector<std::string> Texts(const std::vector<Row>& rows)
{
    std::vector<std::string> texts;
    for (const Row& row : rows) {
        texts.push_back(row.at(0).value());
    }
    return texts;
}

std::string RandomDataFiles(std::mt19937& random)
{
    std::string sql = "DELETE FROM DataFileMetadata;";
    for (std::size_t i = random() % 15; i > 0; --i) {
        const auto letter = [&random] { return "'" + std::string(1, static_cast<char>('a' + random() % 4)) + "'"; };
        sql += "INSERT OR IGNORE INTO DataFileMetadata VALUES (" + letter() + "," + letter() + "," + letter() + "," +
               letter() + ");";
    }
    return sql;
}
}  // namespace

TEST_F(RewrittenStatementsTest, FindTheDataFilesThatTheirPlainTextsFind)
{
    const std::string attach =
        "ATTACH '" + Host().Real(DBStore::StorePath(DBStore::Type::SchemaStore)) + "' AS ss; BEGIN;";
    const std::string rows =
        "SELECT json_array(Component, KEY, DirName, FileName) AS r FROM DataFileMetadata ORDER BY r";
    const std::string orphaned = "(Component, KEY) NOT IN (SELECT Component, KEY FROM ss.DataFileSchema)";
    Host().Sql("INSERT INTO DataFileSchema (Component, KEY) VALUES ('a', 'a'), ('a', 'b'), ('b', 'a'), ('c', 'd')",
               DBStore::Type::SchemaStore);
    const auto after = [&](const std::string& text) {
        return Texts(Host().Sql(attach + text + ";" + rows + "; ROLLBACK", DBStore::Type::DataFileStore));
    };
    std::mt19937 random(21);
    std::size_t found = 0;
    for (int store = 0; store < 60; ++store) {
        Host().Sql(RandomDataFiles(random), DBStore::Type::DataFileStore);
        const auto folders = after("SELECT DISTINCT DirName FROM DataFileMetadata WHERE " + orphaned);
        EXPECT_EQ(after(NimbConfigStore::Statements::SELECT_ORPHANED_DIRS), folders) << "store " << store;
        EXPECT_EQ(after(NimbConfigStore::Statements::DELETE_ORPHANED_DATAFILES),
                  after("DELETE FROM DataFileMetadata WHERE " + orphaned))
            << "store " << store;
        found += folders.size();
    }
    EXPECT_GT(found, 100U);
}

TEST_F(RewrittenStatementsTest, HaveTheEffectOfTheirPlainTextsOnEveryStore)
{
    std::mt19937 random(20);
    int changed = 0;
    for (int store = 0; store < 120; ++store) {
        Host().Sql("BEGIN;" + RandomRows(random) + "COMMIT");
        for (const Rewritten& statement : REWRITTEN) {
            bool plainSucceeded = false;
            bool succeeded = false;
            const auto expected = RowsAfter(statement.plain, plainSucceeded);
            EXPECT_EQ(RowsAfter(statement.text, succeeded), expected) << statement.name << " on store " << store;
            EXPECT_EQ(succeeded, plainSucceeded) << statement.name << " on store " << store;
            changed += succeeded ? 1 : 0;
        }
    }
    EXPECT_GT(changed, 120);  // most of them ran to their end
}
