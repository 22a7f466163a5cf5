#include "DocumentTest.h"

using namespace NimbConfigStore;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace
{
class PermissionPreservationTest : public DesiredDocumentTest
{};

TEST_F(PermissionPreservationTest, PermissionsOfSolutionUsersAreCarriedOverAndNoOthers)
{
    Live(
        "('authorization', 'permissions', 'p1', '{\"principal\":\"svc-qrm-1\"}', 'v'), "
        "('authorization', 'permissions', 'p2', '{\"principal\":\"druuser\"}', NULL), "
        "('authorization', 'permissions', 'p3', '{\"principal\":\"root\"}', 'v'), "
        "('authorization', 'permissions', 'p4', '{\"principal\":\"a-svc-qrm-1\"}', 'v'), "
        "('authorization', 'permissions', 'p5', '{\"principal\":\"tcon\"}', 'v')");
    Process("{}");
    EXPECT_THAT(Staged(), ElementsAre(R"(permissions/p1 {"principal":"svc-qrm-1"} v SET)",
                                      R"(permissions/p2 {"principal":"druuser"} NULL SET)"));
    EXPECT_EQ(Host().SqlValue("SELECT DISTINCT Version FROM DesiredUserConfig"), "1.0.0_0.1");
    EXPECT_THAT(Host().Log(), Contains("info Found 5 permissions in ConfigStore"));
    EXPECT_THAT(Host().Log(), Contains("info Permission[p2] has user-config={\"principal\":\"druuser\"}, vital-data="));
    EXPECT_THAT(Host().Log(), Contains("info Preserving solution-user permission for user=svc-qrm-1"));
    EXPECT_THAT(Host().Log(), Not(Contains("info Preserving solution-user permission for user=root")));
}

TEST_F(PermissionPreservationTest, TheLivePermissionOfASolutionUserOverridesTheDocuments)
{
    Live(
        "('authorization', 'permissions', 'p', '{\"principal\":\"svc-qrm-1\"}', 'v'), "
        "('authorization', 'permissions', 'q', '{\"principal\":\"root\"}', 'v')");
    Process(R"({"nimb": {"authorization": {"permissions": [{"id": "p", "x": 1}, {"id": "q", "x": 1}]}}})");
    EXPECT_THAT(Staged(), ElementsAre(R"(permissions/p {"principal":"svc-qrm-1"} v SET)",
                                      R"(permissions/q {"id":"q","x":1} NULL SET)"));
}

struct BadPermission
{
    const char* userValue;  // as SQL
    const char* line;
    const char* failure;
};
[[maybe_unused]] void PrintTo(const BadPermission& permission, std::ostream* out)
{
    *out << permission.userValue;
}
class BadPermissionTest : public PermissionPreservationTest, public testing::WithParamInterface<BadPermission>
{};

TEST_P(BadPermissionTest, FailsTheDocument)
{
    Live(
        "('authorization', 'permissions', 'a', '{\"principal\":\"root\"}', NULL), "
        "('authorization', 'permissions', 'p', " +
        std::string(GetParam().userValue) + ", 'v')");
    EXPECT_EQ(Failure(), GetParam().failure);
    EXPECT_EQ(Host().Log().back(), GetParam().line);
}

constexpr const char* NO_USER =
    "error Permission[p] does not contain 'principal' property, not preserving the permissions.";
constexpr const char* WITHOUT_PRINCIPAL = "2000 Invalid permission without 'principal' found in ConfigStore.";
INSTANTIATE_TEST_SUITE_P(PermissionPreservation, BadPermissionTest,
                         testing::Values(BadPermission{"NULL", "error Permission[p] does not have user-config",
                                                       "2000 Invalid permission found in ConfigStore."},
                                         BadPermission{"''", "error Permission[p] user-config parsing failed.",
                                                       "2000 Failed to process permission from ConfigStore."},
                                         BadPermission{"'{} x'", "error Permission[p] user-config parsing failed.",
                                                       "2000 Failed to process permission from ConfigStore."},
                                         BadPermission{"'{}'", NO_USER, WITHOUT_PRINCIPAL},
                                         BadPermission{"'[\"principal\"]'", NO_USER, WITHOUT_PRINCIPAL},
                                         BadPermission{"'{\"principal\":7}'", NO_USER, WITHOUT_PRINCIPAL}));

TEST_F(PermissionPreservationTest, PermissionsThatCannotBeReadOrStagedFailTheDocument)
{
    PreserveTheNetwork();
    Live("('authorization', 'permissions', 'p', '{\"principal\":\"svc-qrm-1\"}', 'v')");
    {
        const StoreFault fault(SQLITE_READ, "Config", "VitalValue");
        EXPECT_EQ(Failure(), "2000 Failed to get permissions.");
    }
    Host().Sql(
        "CREATE TRIGGER refuse BEFORE INSERT ON DesiredUserConfig WHEN new.Name = 'permissions' BEGIN "
        "SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_EQ(Failure(), "2000 Failed to preserve solution permission.");
}

struct MissingSchema
{
    const char* removed;  // as SQL, from the schema store
    const char* line;
};
[[maybe_unused]] void PrintTo(const MissingSchema& missing, std::ostream* out)
{
    *out << missing.removed;
}
class PermissionStepTest : public PermissionPreservationTest, public testing::WithParamInterface<MissingSchema>
{};

TEST_P(PermissionStepTest, EndsWithoutPreservingWhenTheSchemasDoNotTellSolutionUsers)
{
    Live(
        "('authorization', 'permissions', 'p', '{\"principal\":\"svc-qrm-1\"}', 'v'), "
        "('authorization', 'permissions', 'q', 'malformed', NULL)");
    Host().Sql(GetParam().removed, DBStore::Type::SchemaStore);
    Process("{}");
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_THAT(Host().Log(), Contains(GetParam().line));
    EXPECT_THAT(Host().Log(), Not(Contains(HasSubstr("permissions in ConfigStore"))));
    EXPECT_EQ(Host().Log().back(), OPTIONS);
}

INSTANTIATE_TEST_SUITE_P(
    PermissionPreservation, PermissionStepTest,
    testing::Values(MissingSchema{"DELETE FROM ConfigSchema WHERE Name = 'user_accounts'",
                                  "warning Schema not found for id='nimb/authentication/user_accounts'"},
                    MissingSchema{"DELETE FROM ConfigSchema WHERE Name = 'permissions'",
                                  "warning Schema not found for id='nimb/authorization/permissions'"},
                    MissingSchema{
                        "UPDATE ConfigSchema SET SchemaJson = replace(SchemaJson, 'solutionUser', 'no')",
                        "warning SolutionUserInstances not found for id='nimb/authentication/user_accounts'"}));
}  // namespace
