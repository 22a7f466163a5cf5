#include "DocumentTest.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// To the database a missing identifier (NULL) equals no other, not even another missing one: such rows are never
// duplicates, replace nothing and are replaced by nothing. The library writes the empty text; others may not have.
namespace
{
class NullIdentifiersTest : public DesiredDocumentTest
{
protected:
    /// Registers the adapters anew, with a default that users may change.
    void MakeAdaptersDefaultMutable(const std::string& members = "")
    {
        Host().WithPackage("net", "1.1.0_0.1",
                           "[" + Instances("network", "orvnics", R"("mutableDefaultConfig": true,)" + members) + "]");
        RegisterSchemas();
    }
};
}  // namespace

TEST_F(NullIdentifiersTest, AnInstanceReplacesTheRowWithItsIdentifierAndNoneWithout)
{
    Host().Sql(
        "INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, Value) VALUES ('nimb', 'network', "
        "'dns', NULL, 'without'), ('nimb', 'network', 'dns', '', 'empty')");
    Process(R"({"nimb": {"network": {"dns": {}}}})");
    EXPECT_THAT(Staged(), ElementsAre("dns/NULL without NULL NULL", "dns/ {} NULL SET"));
}

TEST_F(NullIdentifiersTest, AnAdapterWithoutAnIdentifierIsNobodysLiveAdapter)
{
    Live("('network', 'orvnics', NULL, '[]', NULL)");
    Process(R"({"nimb": {"network": {"orvnics": [{"id": ""}]}}})");
    EXPECT_THAT(Staged(), ElementsAre(R"(orvnics/ {"id":""} NULL SET)"));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("Orvnic {} not found on NIMB host")));
}

TEST_F(NullIdentifiersTest, APreservedNetworkKeepsEveryRowWithoutAnIdentifier)
{
    PreserveTheNetwork();
    Live("('network', 'orvnics', NULL, 'a', NULL), ('network', 'orvnics', NULL, 'b', NULL)");
    Process("{}");
    EXPECT_THAT(Staged(), ElementsAre("orvnics/NULL a NULL SET", "orvnics/NULL b NULL SET"));
}

TEST_F(NullIdentifiersTest, ADefaultWithoutAnIdentifierMeetsNoPreservedRow)
{
    PreserveTheNetwork();
    MakeAdaptersDefaultMutable();
    Live("('network', 'orvnics', NULL, 'live', NULL)");
    Default("('network', 'orvnics', NULL, 'default', NULL, NULL)");
    Process("{}");
    EXPECT_THAT(Staged(), ElementsAre("orvnics/NULL live NULL SET", "orvnics/NULL default NULL NULL"));
}

TEST_F(NullIdentifiersTest, ADefaultWithoutAnIdentifierIsStagedOnlyWhereNoInstanceIsExcluded)
{
    // No text is known to differ from NULL.
    MakeAdaptersDefaultMutable();
    Default("('network', 'orvnics', NULL, 'default', NULL, NULL)");
    Process("{}");
    EXPECT_THAT(Staged(), ElementsAre("orvnics/NULL default NULL NULL"));
    Host().Sql("DELETE FROM DesiredUserConfig");
    MakeAdaptersDefaultMutable(R"("excludedInstances": ["x"],)");
    Default("('network', 'orvnics', NULL, 'default', NULL, NULL)");
    Process("{}");
    EXPECT_THAT(Staged(), IsEmpty());
}

TEST_F(NullIdentifiersTest, PermissionsWithoutAnIdentifierAreCarriedOverBesideTheDocuments)
{
    Live(
        "('authorization', 'permissions', NULL, '{\"principal\":\"svc-qrm-1\"}', NULL), "
        "('authorization', 'permissions', NULL, '{\"principal\":\"svc-qrm-2\"}', NULL)");
    Process(R"({"nimb": {"authorization": {"permissions": [{"id": ""}]}}})");
    EXPECT_THAT(Staged(), UnorderedElementsAre(R"(permissions/NULL {"principal":"svc-qrm-1"} NULL SET)",
                                               R"(permissions/NULL {"principal":"svc-qrm-2"} NULL SET)",
                                               R"(permissions/ {"id":""} NULL SET)"));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("Permission[] has user-config={\"principal\":\"svc-qrm-1\"}")));
}

TEST_F(NullIdentifiersTest, AnOptionWithoutAnIdentifierIsNoneOfTheAgents)
{
    Live("('advanced_options', 'user_vars', NULL, '{}', NULL)");
    Process("{}");
    EXPECT_THAT(Staged(), IsEmpty());
}

TEST_F(NullIdentifiersTest, SwitchesWithoutAnIdentifierAreEachPreserved)
{
    Live("('network_gnx', 'switches', NULL, 'a', 'v'), ('network_gnx', 'switches', NULL, 'b', 'w')");
    Process("{}");
    EXPECT_THAT(Staged(), ElementsAre(R"(switches/NULL {"name":""} v SET)", R"(switches/NULL {"name":""} w SET)"));
}
