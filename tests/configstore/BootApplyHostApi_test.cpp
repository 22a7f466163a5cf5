#include "ApplyTest.h"

using ::testing::ElementsAre;
using ::testing::Not;

namespace
{
class HostApiTest : public ApplyTest
{
protected:
    std::string ApplyChanges() { return Apply(ApplyHostApiConfig); }
};
}  // namespace

TEST_F(HostApiTest, SettingAnObjectReplacesAllItsInstances)
{
    Config(
        "('nimb', 'g', 'nic', 'again', 'old', 'v'), ('nimb', 'g', 'nic', 'gone', 'old', NULL), "
        "('nimb', 'g', 'other', '', 'stays', NULL)");
    Stage("('nimb', 'g', 'nic', 'again', 'new', NULL, 'SET'), ('nimb', 'g', 'nic', 'added', 'new', 'w', 'SET')");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("nic/added new w", "nic/again new v", "other/ stays NULL"));
}

TEST_F(HostApiTest, ASetRowBringsItsVersionWhenItIsNewAndKeepsTheOldOneOtherwise)
{
    Config("('nimb', 'g', 'nic', 'old', 'x', NULL)");
    Host().Sql("UPDATE Config SET Version = '1', CachedValue = 'c'");
    Stage("('nimb', 'g', 'nic', 'old', 'y', NULL, 'SET'), ('nimb', 'g', 'nic', 'new', 'y', NULL, 'SET')");
    Host().Sql("UPDATE DesiredUserConfig SET Version = '2'");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_EQ(
        Host().SqlValue("SELECT group_concat(Version, ',') FROM (SELECT Version FROM Config ORDER BY Identifier)"),
        "2,1");
    EXPECT_EQ(Host().SqlValue("SELECT CachedValue FROM Config WHERE Identifier = 'old'"), "c");
}

TEST_F(HostApiTest, AStagedVitalOrCachedValueReplacesTheCurrentOne)
{
    Config("('nimb', 'g', 'nic', '', 'x', 'v')");
    Stage("('nimb', 'g', 'nic', '', 'y', 'w', 'SET')");
    Host().Sql("UPDATE DesiredUserConfig SET CachedValue = 'd'");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("nic/ y w"));
    EXPECT_EQ(Host().SqlValue("SELECT CachedValue FROM Config"), "d");
}

TEST_F(HostApiTest, DeletingAnObjectRemovesItsRows)
{
    Config(
        "('nimb', 'g', 'nic', 'a', 'x', NULL), ('nimb', 'g', 'nic', 'b', 'x', 'v'), ('nimb', 'h', 'nic', 'a', 'x', "
        "NULL)");
    Stage("('nimb', 'g', 'nic', '', NULL, NULL, 'DELETE')");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_EQ(Host().SqlValue("SELECT group_concat(ConfigGroup) FROM Config"), "h");
}

TEST_F(HostApiTest, ADeletedRowWithoutAUserValueStaysForTheSweepOfEmptyRows)
{
    Config("('nimb', 'g', 'nic', 'a', NULL, 'v')");
    Host().Sql("UPDATE Config SET DesiredValue = 'staged'");
    Stage("('nimb', 'g', 'nic', '', NULL, NULL, 'DELETE')");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("nic/a NULL v"));
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM Config WHERE DesiredValue IS NULL"), "1");
}

TEST_F(HostApiTest, DeletingAnInstanceRemovesThatRowAlone)
{
    Config("('nimb', 'g', 'nic', 'a', 'x', NULL), ('nimb', 'g', 'nic', 'b', 'x', NULL)");
    Stage("('nimb', 'g', 'nic', 'a', NULL, NULL, 'DELETE_INSTANCE')");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("nic/b x NULL"));
}

TEST_F(HostApiTest, DefaultsComeBackForAnObjectSetToThem)
{
    Config("('nimb', 'g', 'nic', 'mine', 'x', NULL)");
    Default(
        "('nimb', 'g', 'nic', 'd1', 'u', 'v', '3'), ('nimb', 'g', 'nic', 'd2', 'u', NULL, '3'), "
        "('nimb', 'g', 'other', '', 'u', NULL, '3')");
    Stage("('nimb', 'g', 'nic', '', NULL, NULL, 'SET_DEFAULT')");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("nic/d1 u v", "nic/d2 u NULL"));
    EXPECT_EQ(Host().SqlValue("SELECT DISTINCT Version FROM Config"), "3");
}

TEST_F(HostApiTest, AnObjectWithoutDefaultsThatIsSetToThemIsLeftWithoutRows)
{
    Config("('nimb', 'g', 'nic', 'a', 'x', NULL)");
    Stage("('nimb', 'g', 'nic', '', NULL, NULL, 'SET_DEFAULT')");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre());
}

TEST_F(HostApiTest, ADefaultThatMeetsARowWithoutAUserValueIsAFailure)
{
    Config("('nimb', 'g', 'nic', 'a', NULL, 'v')");
    Default("('nimb', 'g', 'nic', 'a', 'u', NULL, '3')");
    Stage("('nimb', 'g', 'nic', '', NULL, NULL, 'SET_DEFAULT')");
    EXPECT_EQ(ApplyChanges(), "2000 Failed to process BootAction=SET_DEFAULT for deleted configs");
    EXPECT_THAT(Rows(), ElementsAre("nic/a NULL v"));
}

TEST_F(HostApiTest, RowsWithoutAnActionTakeNoPart)
{
    Config("('nimb', 'g', 'nic', 'a', 'x', NULL)");
    Stage("('nimb', 'g', 'nic', 'a', 'new', NULL, NULL), ('nimb', 'g', 'nic', 'b', 'new', NULL, NULL)");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("nic/a x NULL"));
}

TEST_F(HostApiTest, ANewInstanceIsNotSetBesideARowWithoutAnIdentifier)
{
    // No text is known to differ from NULL, so the object's unnamed row stands for every identifier.
    Config("('nimb', 'g', 'nic', NULL, NULL, 'v')");
    Stage("('nimb', 'g', 'nic', 'a', 'new', NULL, 'SET'), ('nimb', 'g', 'other', NULL, 'new', NULL, 'SET')");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("nic/NULL NULL v", "other/NULL new NULL"));
}

TEST_F(HostApiTest, ARowWithoutAnIdentifierIsNeverDeletedAsAnInstance)
{
    Config("('nimb', 'g', 'nic', NULL, 'x', NULL)");
    Stage("('nimb', 'g', 'nic', NULL, NULL, NULL, 'DELETE_INSTANCE')");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("nic/NULL x NULL"));
}

TEST_F(HostApiTest, LeavesTheStagedRowsAndLogsItsBeginningAndEnd)
{
    Stage("('nimb', 'g', 'nic', 'a', 'new', NULL, 'SET')");
    EXPECT_EQ(ApplyChanges(), "nothing");
    EXPECT_EQ(StagedRows(), "1");
    EXPECT_THAT(Host().Log(), ElementsAre("info Setting up hostapi configuration.",
                                          "info Setting up hostapi configuration completed."));
}

class HostApiFailureTest : public HostApiTest, public ::testing::WithParamInterface<FailingStep>
{};

TEST_P(HostApiFailureTest, AFailingStepIsNamedAndLeavesTheStoreAsItWas)
{
    Config(
        "('nimb', 'g', 'nic', 'single', 'x', NULL), ('nimb', 'g', 'set', 'a', 'x', NULL), "
        "('nimb', 'g', 'deleted', 'a', 'x', NULL)");
    Default("('nimb', 'g', 'default', '', 'u', NULL, '3')");
    Stage(
        "('nimb', 'g', 'nic', 'single', NULL, NULL, 'DELETE_INSTANCE'), ('nimb', 'g', 'set', 'a', 'y', NULL, 'SET'), "
        "('nimb', 'g', 'set', 'b', 'y', NULL, 'SET'), ('nimb', 'g', 'deleted', '', NULL, NULL, 'DELETE'), "
        "('nimb', 'g', 'default', '', NULL, NULL, 'SET_DEFAULT')");
    Host().Sql(std::string("CREATE TRIGGER Refuse BEFORE ") + GetParam().trigger +
               " BEGIN SELECT RAISE(ABORT, 'refused'); END");
    const std::vector<Row> before = Everything();
    EXPECT_EQ(ApplyChanges(), GetParam().message);
    EXPECT_EQ(Everything(), before);
    EXPECT_THAT(Host().Log(), Not(::testing::Contains("info Setting up hostapi configuration completed.")));
}

INSTANTIATE_TEST_SUITE_P(
    Steps, HostApiFailureTest,
    ::testing::Values(
        FailingStep{"UPDATE ON Config WHEN old.Name = 'nic'",
                    "2000 Failed to mark configurations with BootAction=DELETE_INSTANCE for deletion"},
        FailingStep{"UPDATE ON Config WHEN old.Name = 'deleted'", "2000 Failed to mark configurations for deletion"},
        FailingStep{"INSERT ON Config WHEN new.Name = 'set'", "2000 Failed to process BootAction=SET for new configs"},
        FailingStep{"UPDATE OF VitalValue ON Config",
                    "2000 Failed to process BootAction=SET to update existing configs"},
        FailingStep{"DELETE ON Config", "2000 Failed to process BootAction=DELETE"},
        FailingStep{"INSERT ON Config WHEN new.Name = 'default'",
                    "2000 Failed to process BootAction=SET_DEFAULT for deleted configs"}));
