#include "ApplyTest.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace
{
constexpr const char* MANY = R"(, "singleton": false)";
constexpr const char* MARK_TEXT =
    "UPDATE Config SET UserValue = CASE WHEN UserValue IS NOT NULL AND s.PreserveNonUser = 0 THEN 'mark for deletion' "
    "ELSE NULL END, DesiredValue = NULL FROM ss.ConfigSchema AS s WHERE s.Component = Config.Component AND "
    "s.ConfigGroup = Config.ConfigGroup AND s.Name = Config.Name AND s.DSPIntegrated = 1 AND NOT "
    "(Config.Component='nimb' AND Config.ConfigGroup='authentication' AND Config.Name='user_accounts' AND "
    "Config.Identifier LIKE 'svc-qrm-%') AND (Config.Component, Config.ConfigGroup, Config.Name, Config.Identifier) "
    "NOT IN";
constexpr const char* MARK_FAILURE = "2000 Failed to mark user configuration for delete";

/// A store with an object of kind 5 that excludes two instances, without which no whole document is applied.
class DesiredDocumentTest : public ApplyTest
{
protected:
    DesiredDocumentTest()
    {
        Declare("roles", R"(, "singleton": false, "schemaType": 5, "excludedInstances": ["admin", "auditor"])");
    }

    std::string ApplyDocument() { return Apply(ApplyDesiredDocumentConfig); }
};

/// The same without that object.
class DesiredDocumentWithoutExclusionsTest : public ApplyTest
{};

std::string IdentifierList(int count)
{
    std::string list;
    for (int i = 0; i < count; ++i) {
        list += (i > 0 ? ",\"" : "\"") + std::to_string(i) + "\"";
    }
    return "[" + list + "]";
}
}  // namespace

TEST_F(DesiredDocumentTest, ReplacesTheUserConfigurationOfIntegratedObjects)
{
    Declare("dns", MANY);
    Config("('nimb', 'g', 'dns', 'gone', 'old', NULL), ('nimb', 'g', 'dns', 'kept', 'old', 'v')");
    Stage("('nimb', 'g', 'dns', 'kept', 'new', NULL, 'SET'), ('nimb', 'g', 'dns', 'added', 'new', 'w', 'SET')");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("dns/added new w", "dns/kept new v"));
    EXPECT_EQ(StagedRows(), "0");
}

TEST_F(DesiredDocumentTest, LeavesObjectsAloneThatTakeNoPartInDesiredDocuments)
{
    Host().Sql("INSERT INTO ConfigSchema (Component, ConfigGroup, Name) VALUES ('nimb', 'g', 'local')",
               DBStore::Type::SchemaStore);
    Config("('nimb', 'g', 'local', '', 'old', NULL), ('nimb', 'g', 'undeclared', '', 'old', NULL)");
    Host().Sql("UPDATE Config SET DesiredValue = 'staged'");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("local/ old NULL", "undeclared/ old NULL"));
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM Config WHERE DesiredValue = 'staged'"), "2");
}

TEST_F(DesiredDocumentTest, DropsDesiredValuesOfIntegratedObjects)
{
    Declare("dns", "");
    Config("('nimb', 'g', 'dns', '', NULL, 'vital')");
    Host().Sql("UPDATE Config SET DesiredValue = 'staged'");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM Config WHERE DesiredValue IS NULL"), "1");
}

TEST_F(DesiredDocumentTest, ARowWithoutAUserValueStaysForTheSweepOfEmptyRows)
{
    Declare("dns", MANY);
    Config("('nimb', 'g', 'dns', 'a', NULL, 'vital'), ('nimb', 'g', 'dns', 'b', NULL, NULL)");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("dns/a NULL vital", "dns/b NULL NULL"));
}

TEST_F(DesiredDocumentTest, ASchemaMayPreserveRowsWithoutTheirUserValue)
{
    Declare("host", R"(, "singleton": false, "preserveNonUser": true)");
    Config("('nimb', 'g', 'host', 'a', 'user', 'vital'), ('nimb', 'g', 'host', 'b', 'user', 'vital')");
    Stage("('nimb', 'g', 'host', 'b', 'new', NULL, 'SET')");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("host/a NULL vital", "host/b new vital"));
}

TEST_F(DesiredDocumentTest, AStagedRowWithAnEmptyIdentifierChangesEveryInstance)
{
    Declare("nic", MANY);
    Config("('nimb', 'g', 'nic', 'a', 'old', NULL), ('nimb', 'g', 'nic', 'b', NULL, 'v')");
    Stage("('nimb', 'g', 'nic', '', 'all', NULL, 'SET')");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("nic/ all NULL", "nic/a all NULL", "nic/b all v"));
}

TEST_F(DesiredDocumentTest, AStagedRowWithoutAnIdentifierChangesEveryInstanceAndIsAlwaysInserted)
{
    Declare("nic", MANY);
    Config("('nimb', 'g', 'nic', 'a', 'old', NULL), ('nimb', 'g', 'nic', NULL, 'old', 'v')");
    Stage("('nimb', 'g', 'nic', NULL, 'all', NULL, NULL)");
    EXPECT_EQ(ApplyDocument(), "nothing");
    // No NULL equals another, so the row that was there does not keep the staged one from being inserted.
    EXPECT_THAT(Rows(), ElementsAre("nic/NULL all v", "nic/NULL all NULL", "nic/a all NULL"));
}

TEST_F(DesiredDocumentTest, AStagedValueThatIsNullKeepsTheRowsOwn)
{
    Declare("dns", R"(, "preserveNonUser": true)");
    Config("('nimb', 'g', 'dns', '', 'old', 'vital')");
    Host().Sql("UPDATE Config SET CachedValue = 'cached'");
    Stage("('nimb', 'g', 'dns', '', 'new', NULL, 'SET')");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("dns/ new vital"));
    EXPECT_EQ(Host().SqlValue("SELECT CachedValue FROM Config"), "cached");
}

TEST_F(DesiredDocumentTest, AStagedRowWithoutAUserValueDoesNotSaveAMarkedRow)
{
    Declare("dns", "");
    Config("('nimb', 'g', 'dns', '', 'old', 'vital')");
    Stage("('nimb', 'g', 'dns', '', NULL, 'new vital', 'SET')");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre());
}

TEST_F(DesiredDocumentTest, RowsCopiedFromDefaultsHaveNoActionAndTakePart)
{
    Declare("dns", "");
    Stage("('nimb', 'g', 'dns', '', 'default', NULL, NULL)");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("dns/ default NULL"));
}

TEST_F(DesiredDocumentTest, SolutionUsersAccountsAreNeverTouched)
{
    Host().Sql(
        "INSERT INTO ConfigSchema (Component, ConfigGroup, Name, DSPIntegrated) VALUES "
        "('nimb', 'authentication', 'user_accounts', 1), ('other', 'authentication', 'user_accounts', 1)",
        DBStore::Type::SchemaStore);
    Config(
        "('nimb', 'authentication', 'user_accounts', 'svc-qrm-7', 'kept', NULL), "
        "('nimb', 'authentication', 'user_accounts', 'SVC-QRM-8', 'kept too', NULL), "
        "('nimb', 'authentication', 'user_accounts', 'svc-qr-9', 'gone', NULL), "
        "('other', 'authentication', 'user_accounts', 'svc-qrm-7', 'gone', NULL)");
    Host().Sql("UPDATE Config SET DesiredValue = 'staged'");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("user_accounts/SVC-QRM-8 kept too NULL", "user_accounts/svc-qrm-7 kept NULL"));
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM Config WHERE DesiredValue = 'staged'"), "2");
}

TEST_F(DesiredDocumentTest, ExcludedInstancesAreLeftAlone)
{
    Config(
        "('nimb', 'g', 'roles', 'admin', 'kept', NULL), ('nimb', 'g', 'roles', 'auditor', 'kept', 'v'), "
        "('nimb', 'g', 'roles', 'guest', 'gone', NULL)");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("roles/admin kept NULL", "roles/auditor kept v"));
}

TEST_F(DesiredDocumentTest, AUserValueThatIsTheMarkerIsRemovedAtBoot)
{
    Config(
        "('nimb', 'g', 'undeclared', '', 'mark for deletion', 'vital'), "
        "('nimb', 'g', 'undeclared', 'b', 'Mark for deletion', NULL)");
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("undeclared/b Mark for deletion NULL"));
}

TEST_F(DesiredDocumentTest, LogsTheMarkingStatementToTheLetter)
{
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Host().Log(), ElementsAre("info Boot with new desired configuration.",
                                          std::string("info Delete existing user configuration query = ") + MARK_TEXT +
                                              "((?,?,?,?),(?,?,?,?))"));
}

TEST_F(DesiredDocumentTest, OnlyObjectsOfKindFiveWithAKeyOfTheirOwnExcludeInstances)
{
    Declare("other", R"(, "singleton": false, "schemaType": 4, "excludedInstances": ["x"])");
    Declare("single", R"(, "schemaType": 5, "excludedInstances": ["x"])");
    const std::string generated = R"({"component": "nimb", "group": "g", "key": "generated", "schemaType": 5, )"
                                  R"("singleton": false, "excludedInstances": ["x"], "schema": {"properties": )"
                                  R"({"cs_generated_id": {"type": "string", "instanceId": true}}}})";
    const auto store = NimbSchemaStore::SchemaStore::GetStore(true);
    NimbSchemaStore::SetSchema("pkg-1.0.0_1.0", "nimb", "g", "generated", generated, store, false);
    NimbSchemaStore::RemoveUndeclaredSchemas({}, store);
    EXPECT_EQ(ApplyDocument(), "nothing");
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("NOT IN((?,?,?,?),(?,?,?,?))")));
}

TEST_F(DesiredDocumentWithoutExclusionsTest, FailsWhenNoInstanceIsExcludedAndLeavesTheStoreAsItWas)
{
    Declare("dns", "");
    Config("('nimb', 'g', 'dns', '', 'old', NULL)");
    Stage("('nimb', 'g', 'dns', '', 'new', NULL, 'SET')");
    const std::vector<Row> before = Everything();
    EXPECT_EQ(Apply(ApplyDesiredDocumentConfig), MARK_FAILURE);
    EXPECT_EQ(Everything(), before);
    EXPECT_THAT(Host().Log(),
                Contains(std::string("info Delete existing user configuration query = ") + MARK_TEXT + ")"));
}

TEST_F(DesiredDocumentWithoutExclusionsTest, ThousandsOfExcludedInstancesWork)
{
    Declare("ports", R"(, "singleton": false, "schemaType": 5, "excludedInstances": )" + IdentifierList(20000));
    Config("('nimb', 'g', 'ports', '19999', 'kept', NULL), ('nimb', 'g', 'ports', '20000', 'gone', NULL)");
    EXPECT_EQ(Apply(ApplyDesiredDocumentConfig), "nothing");
    EXPECT_THAT(Rows(), ElementsAre("ports/19999 kept NULL"));
}

TEST_F(DesiredDocumentWithoutExclusionsTest, MoreThanTheDatabaseTakesFailAndLeaveTheStoreAsItWas)
{
    Declare("ports", R"(, "singleton": false, "schemaType": 5, "excludedInstances": )" + IdentifierList(62501));
    Config("('nimb', 'g', 'ports', 'x', 'kept', NULL)");
    const std::vector<Row> before = Everything();
    EXPECT_EQ(Apply(ApplyDesiredDocumentConfig), MARK_FAILURE);
    EXPECT_EQ(Everything(), before);
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("too many SQL variables")));
}

class DesiredDocumentFailureTest : public DesiredDocumentTest, public ::testing::WithParamInterface<FailingStep>
{};

TEST_P(DesiredDocumentFailureTest, AFailingStepIsNamedAndLeavesTheStoreAsItWas)
{
    Declare("dns", MANY);
    Config("('nimb', 'g', 'dns', 'gone', 'old', NULL), ('nimb', 'g', 'dns', 'kept', 'old', 'v')");
    Stage("('nimb', 'g', 'dns', 'kept', 'new', NULL, 'SET'), ('nimb', 'g', 'dns', 'added', 'new', 'w', 'SET')");
    Host().Sql(std::string("CREATE TRIGGER Refuse BEFORE ") + GetParam().trigger +
               " BEGIN SELECT RAISE(ABORT, 'refused'); END");
    const std::vector<Row> before = Everything();
    EXPECT_EQ(ApplyDocument(), GetParam().message);
    EXPECT_EQ(Everything(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, DesiredDocumentFailureTest,
    ::testing::Values(FailingStep{"UPDATE OF DesiredValue ON Config",
                                  "2000 Failed to mark user configuration for delete"},
                      FailingStep{"INSERT ON Config", "2000 Failed to insert desired configuration to config table"},
                      FailingStep{"UPDATE OF VitalValue ON Config", "2000 Failed to update config table"},
                      FailingStep{"DELETE ON DesiredUserConfig", "2000 Failed to cleanup desired configuration"},
                      FailingStep{"DELETE ON Config", "2000 Failed to cleanup previous user configuration"}));
