#include "ApplyTest.h"

using ::testing::ElementsAre;
using ::testing::Not;

namespace
{
constexpr const char* SHARED = R"(, "singleton": false, "smartnic": {"schema": "nimb-shared"})";

/// A host with an object whose instances it shares with its SmartNIC.
class SmartnicTest : public ApplyTest
{
protected:
    SmartnicTest() { Declare("shared", SHARED); }

    std::string ApplyShared() { return Apply(ApplySmartnicBootConfig); }
};
}  // namespace

TEST_F(SmartnicTest, SharedInstancesBecomeThoseOfTheDocument)
{
    Config("('nimb', 'g', 'shared', 'gone', 'old', 'v'), ('nimb', 'g', 'shared', 'kept', 'old', 'v')");
    Stage(
        "('nimb', 'g', 'shared', 'kept', 'new', 'ignored', 'SET'), ('nimb', 'g', 'shared', 'added', 'new', "
        "'ignored', 'SET')");
    EXPECT_EQ(ApplyShared(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("shared/added new NULL", "shared/kept new v"));
}

TEST_F(SmartnicTest, ANewRowBringsItsVersion)
{
    Stage("('nimb', 'g', 'shared', 'a', 'new', NULL, 'SET')");
    Host().Sql("UPDATE DesiredUserConfig SET Version = '2'");
    EXPECT_EQ(ApplyShared(), "nothing");
    EXPECT_EQ(Host().SqlValue("SELECT Version FROM Config"), "2");
}

TEST_F(SmartnicTest, OnlySharedMultiInstanceObjectsLoseInstances)
{
    Declare("single", R"(, "smartnic": {"schema": "nimb-shared"})");
    Declare("nimbio", R"(, "singleton": false, "smartnic": {"schema": "nimbio-only"})");
    Declare("host", R"(, "singleton": false)");
    Config(
        "('nimb', 'g', 'single', '', 'x', NULL), ('nimb', 'g', 'nimbio', 'a', 'x', NULL), "
        "('nimb', 'g', 'host', 'a', 'x', NULL), ('nimb', 'g', 'shared', 'a', 'x', NULL)");
    EXPECT_EQ(ApplyShared(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("host/a x NULL", "nimbio/a x NULL", "single/ x NULL"));
}

TEST_F(SmartnicTest, DeletedAndDefaultedObjectsLoseTheirRowsWhateverTheyHold)
{
    Declare("defaulted", SHARED);
    Config(
        "('nimb', 'g', 'deleted', 'a', 'x', 'v'), ('nimb', 'g', 'deleted', 'b', NULL, 'v'), "
        "('nimb', 'g', 'defaulted', 'a', 'x', NULL)");
    Default("('nimb', 'g', 'defaulted', 'd', 'u', 'v', '3')");
    Stage(
        "('nimb', 'g', 'deleted', '', NULL, NULL, 'DELETE'), ('nimb', 'g', 'defaulted', '', NULL, NULL, "
        "'SET_DEFAULT')");
    EXPECT_EQ(ApplyShared(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("defaulted/d u v"));
}

TEST_F(SmartnicTest, SettingARowThatIsThereOfAnObjectThatIsNotSharedIsAFailure)
{
    Declare("host", R"(, "singleton": false)");
    Config("('nimb', 'g', 'host', 'a', 'x', NULL)");
    Stage("('nimb', 'g', 'host', 'a', 'y', NULL, 'SET')");
    EXPECT_EQ(ApplyShared(), "2000 Failed to process BootAction=SET for new configs");
    EXPECT_THAT(Rows(), ElementsAre("host/a x NULL"));
}

TEST_F(SmartnicTest, RowsWithoutAnActionTakeNoPart)
{
    Config("('nimb', 'g', 'host', 'a', 'x', NULL)");
    Stage("('nimb', 'g', 'host', 'a', 'new', NULL, NULL), ('nimb', 'g', 'host', 'b', 'new', NULL, NULL)");
    EXPECT_EQ(ApplyShared(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("host/a x NULL"));
}

TEST_F(SmartnicTest, ARowWithoutAnIdentifierGoesUnlessItsObjectHasStagedInstances)
{
    Declare("second", SHARED);
    Config("('nimb', 'g', 'shared', NULL, 'x', NULL), ('nimb', 'g', 'second', NULL, 'x', NULL)");
    Stage("('nimb', 'g', 'shared', 'a', 'new', NULL, 'SET')");
    EXPECT_EQ(ApplyShared(), "nothing");
    // The unnamed row also stands in the way of the staged instance: no text is known to differ from NULL.
    EXPECT_THAT(Rows(), ElementsAre("shared/NULL x NULL"));
}

TEST_F(SmartnicTest, LeavesTheStagedRowsAndLogsItsBeginningAndEnd)
{
    Stage("('nimb', 'g', 'shared', 'a', 'new', NULL, 'SET')");
    EXPECT_EQ(ApplyShared(), "nothing");
    EXPECT_EQ(StagedRows(), "1");
    EXPECT_THAT(Host().Log(), ElementsAre("info Setting up smartnic boot configuration.",
                                          "info Smartnic boot configuration completed."));
}

class SmartnicFailureTest : public SmartnicTest, public ::testing::WithParamInterface<FailingStep>
{};

TEST_P(SmartnicFailureTest, AFailingStepIsNamedAndLeavesTheStoreAsItWas)
{
    Config(
        "('nimb', 'g', 'deleted', 'a', 'x', NULL), ('nimb', 'g', 'shared', 'a', 'x', NULL), "
        "('nimb', 'g', 'shared', 'b', 'x', NULL)");
    Default("('nimb', 'g', 'default', '', 'u', NULL, '3')");
    Stage(
        "('nimb', 'g', 'deleted', '', NULL, NULL, 'DELETE'), ('nimb', 'g', 'default', '', NULL, NULL, 'SET_DEFAULT'), "
        "('nimb', 'g', 'shared', 'a', 'y', NULL, 'SET'), ('nimb', 'g', 'shared', 'c', 'y', NULL, 'SET')");
    Host().Sql(std::string("CREATE TRIGGER Refuse BEFORE ") + GetParam().trigger +
               " BEGIN SELECT RAISE(ABORT, 'refused'); END");
    const std::vector<Row> before = Everything();
    EXPECT_EQ(ApplyShared(), GetParam().message);
    EXPECT_EQ(Everything(), before);
    EXPECT_THAT(Host().Log(), Not(::testing::Contains("info Smartnic boot configuration completed.")));
}

INSTANTIATE_TEST_SUITE_P(
    Steps, SmartnicFailureTest,
    ::testing::Values(
        FailingStep{"DELETE ON Config WHEN old.Name = 'deleted'", "2000 Failed to process BootAction=DELETE"},
        FailingStep{"INSERT ON Config WHEN new.Name = 'default'", "2000 Failed to process BootAction=SET_DEFAULT"},
        FailingStep{"INSERT ON Config WHEN new.Name = 'shared'",
                    "2000 Failed to process BootAction=SET for new configs"},
        FailingStep{"UPDATE ON Config", "2000 Failed to process BootAction=SET for existing configs"},
        FailingStep{"DELETE ON Config WHEN old.Name = 'shared'",
                    "2000 Failed to process BootAction=SET for non-existing configs"}));
