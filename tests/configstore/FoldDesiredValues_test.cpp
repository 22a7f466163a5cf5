#include <random>

#include "ApplyTest.h"

using ::testing::ElementsAre;

namespace
{
class FoldTest : public ApplyTest
{
protected:
    static void Schema(const TestHost& host, const std::string& name, int noRestore)
    {
        host.Sql("INSERT INTO ConfigSchema (Component, ConfigGroup, Name, NoRestore) VALUES ('nimb', 'g', '" + name +
                     "', " + std::to_string(noRestore) + ")",
                 DBStore::Type::SchemaStore);
    }

    /// Every row as "name/identifier user desired success".
    std::vector<std::string> Folded()
    {
        std::vector<std::string> rows;
        for (const Row& row : Host().Sql("SELECT Name, Identifier, UserValue, DesiredValue, Success FROM Config "
                                         "ORDER BY Name, Identifier")) {
            rows.push_back(*row[0] + "/" + row[1].value_or("NULL") + " " + row[2].value_or("NULL") + " " +
                           row[3].value_or("NULL") + " " + row[4].value_or("NULL"));
        }
        return rows;
    }

    /// A store of random rows, the same for the same seed: values and marks present or not, objects with and without
    /// a schema, identifiers NULL, empty and given.
    static void FillAtRandom(const TestHost& host, unsigned seed)
    {
        std::mt19937 random(seed);
        const auto pick = [&random](std::initializer_list<const char*> choices) {
            return std::string(choices.begin()[random() % choices.size()]);
        };
        for (const char* name : {"a", "b", "c"}) {
            if (random() % 3 != 0) {
                Schema(host, name, static_cast<int>(random() % 2));
            }
        }
        std::string sql = "BEGIN; ";
        for (int i = 0; i < 60; ++i) {
            sql +=
                "INSERT OR IGNORE INTO Config (Component, ConfigGroup, Name, Identifier, UserValue, "
                "DesiredValue, VitalValue, Success) VALUES ('nimb', " +
                pick({"'g'", "'G'"}) + ", " + pick({"'a'", "'b'", "'c'"}) + ", " +
                pick({"NULL", "''", "'1'", "'2'", "'3'"}) + ", " + pick({"NULL", "''", "'user'"}) + ", " +
                pick({"NULL", "NULL", "''", "'desired'"}) + ", " + pick({"NULL", "'vital'"}) + ", " +
                pick({"NULL", "0", "1", "7"}) + ");";
        }
        host.Sql(sql + "COMMIT");
    }

    /// The store of that seed after the fold, which changes something in each.
    std::vector<Row> FoldedBy(Applier fold, unsigned seed)
    {
        TestHost host;
        host.WithStores();
        FillAtRandom(host, seed);
        const char* all = "SELECT * FROM Config ORDER BY rowid";
        const std::vector<Row> before = host.Sql(all);
        EXPECT_EQ(Apply(fold), "nothing");
        const std::vector<Row> after = host.Sql(all);
        EXPECT_NE(after, before);
        return after;
    }
};

constexpr const char* FOLD_OF_EVERY_ROW =
    "UPDATE Config AS c SET UserValue = CASE WHEN DesiredValue IS NULL THEN UserValue ELSE DesiredValue END, "
    "DesiredValue = NULL, Success = (SELECT NoRestore FROM ss.ConfigSchema AS s WHERE s.Name = c.Name AND "
    "s.ConfigGroup = c.ConfigGroup AND s.Component = c.Component)";

void FoldEveryRow(const DBStore::ConnectionPtr& connection)
{
    EXPECT_EQ(DBStore::Execute(connection, FOLD_OF_EVERY_ROW, DBStore::WAIT_LIMIT_MS), DBStore::SUCCESS);
}
}  // namespace

TEST_F(FoldTest, ADesiredValueBecomesTheUserValue)
{
    Schema(Host(), "dns", 1);
    Config(
        "('nimb', 'g', 'dns', 'a', 'old', NULL), ('nimb', 'g', 'dns', 'b', 'old', NULL), "
        "('nimb', 'g', 'dns', 'c', NULL, NULL)");
    Host().Sql("UPDATE Config SET DesiredValue = 'new' WHERE Identifier <> 'b'");
    EXPECT_EQ(Apply(FoldDesiredValues), "nothing");
    EXPECT_THAT(Folded(), ElementsAre("dns/a new NULL 1", "dns/b old NULL 1", "dns/c new NULL 1"));
}

TEST_F(FoldTest, SuccessIsWhatTheSchemaSaysAndNothingWithoutOne)
{
    Schema(Host(), "restored", 0);
    Schema(Host(), "kept", 1);
    Config(
        "('nimb', 'g', 'restored', '', 'x', NULL), ('nimb', 'g', 'kept', '', 'x', NULL), "
        "('nimb', 'g', 'unknown', '', 'x', NULL)");
    Host().Sql("UPDATE Config SET Success = 5");
    EXPECT_EQ(Apply(FoldDesiredValues), "nothing");
    EXPECT_THAT(Folded(), ElementsAre("kept/ x NULL 1", "restored/ x NULL 0", "unknown/ x NULL NULL"));
}

TEST_F(FoldTest, RowsThatDoNotChangeAreNotRewritten)
{
    Schema(Host(), "dns", 1);
    Config(
        "('nimb', 'g', 'dns', 'a', 'x', NULL), ('nimb', 'g', 'dns', 'b', 'x', NULL), "
        "('nimb', 'g', 'unknown', '', 'x', NULL)");
    EXPECT_EQ(Apply(FoldDesiredValues), "nothing");
    Host().Sql(
        "CREATE TABLE Touched (Name); CREATE TRIGGER Watch AFTER UPDATE ON Config BEGIN INSERT INTO Touched "
        "VALUES (old.Identifier); END; UPDATE Config SET DesiredValue = 'y' WHERE Identifier = 'b'; "
        "DELETE FROM Touched");
    EXPECT_EQ(Apply(FoldDesiredValues), "nothing");
    EXPECT_EQ(Host().SqlValue("SELECT group_concat(Name) FROM Touched"), "b");
}

TEST_F(FoldTest, GivesTheSameStoreAsRewritingEveryRow)
{
    for (unsigned seed = 1; seed <= 12; ++seed) {
        const std::vector<Row> expected = FoldedBy(FoldEveryRow, seed);
        EXPECT_EQ(FoldedBy(FoldDesiredValues, seed), expected) << seed;
    }
}

TEST_F(FoldTest, AFailureIsNamed)
{
    Config("('nimb', 'g', 'dns', '', 'x', NULL)");
    Host().Sql(
        "UPDATE Config SET DesiredValue = 'y'; CREATE TRIGGER Refuse BEFORE UPDATE ON Config BEGIN SELECT "
        "RAISE(ABORT, 'refused'); END");
    EXPECT_EQ(Apply(FoldDesiredValues), "2000 Failed to reset success flag for configuration");
}
