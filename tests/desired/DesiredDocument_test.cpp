#include "DocumentTest.h"

using namespace NimbConfigStore;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace
{
// ---- The walk -----------------------------------------------------------------------------------------------------

TEST_F(DesiredDocumentTest, EveryObjectAndInstanceIsStagedWithItsSchemasVersion)
{
    ProcessNetwork(R"("orvnics": [{"id": "b"}, {"id": "a"}], "dns": {"ttl": 3}, "list": [1])");
    EXPECT_THAT(Staged(), ElementsAre(R"(dns/ {"ttl":3} NULL SET)", "list/ [1] NULL SET",
                                      R"(orvnics/a {"id":"a"} NULL SET)", R"(orvnics/b {"id":"b"} NULL SET)"));
    EXPECT_EQ(Host().SqlValue("SELECT Version FROM DesiredUserConfig WHERE Name = 'dns'"), "2.5");
}

TEST_F(DesiredDocumentTest, AnObjectMayStandForTheOneInstanceOfAMultiInstanceObject)
{
    ProcessNetwork(R"("orvnics": {"id": "a"})");
    EXPECT_THAT(Staged(), ElementsAre(R"(orvnics/a {"id":"a"} NULL SET)"));
}

TEST_F(DesiredDocumentTest, AnEmptyDocumentStagesNothing)
{
    Process("{}");
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_THAT(Host().Log(), ElementsAre(NO_SWITCHES, SOLUTION_USERS, NO_TCON, NO_PERMISSIONS, OPTIONS));
}

TEST_F(DesiredDocumentTest, AProfileStandsForTheRoot)
{
    Process(R"({"nimb": {"network": {"list": []}}, "profile": {"nimb": {"network": {"dns": {}}}}, "unheard": 7})");
    EXPECT_THAT(Staged(), ElementsAre("dns/ {} NULL SET"));
}

TEST_F(DesiredDocumentTest, OfMembersOfTheSameNameTheLastOneWins)
{
    ProcessNetwork(R"("dns": {"ttl": 1}, "orvnics": [{"id": "a", "x": 1}], "dns": {"ttl": 2}, "orvnics": {"id": "a"})");
    EXPECT_THAT(Staged(), ElementsAre(R"(dns/ {"ttl":2} NULL SET)", R"(orvnics/a {"id":"a"} NULL SET)"));
}

TEST_F(DesiredDocumentTest, DeleteDefaultStagesNothingAndIsLogged)
{
    ProcessNetwork(R"("dns": "DELETE_DEFAULT")");
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_EQ(Host().Log().front(), "info Default configuration for comp:nimb, group:network key:dns will be deleted.");
}

TEST_F(DesiredDocumentTest, OtherTextsAndTypesAreIgnored)
{
    for (const char* value : {R"("delete_default")", R"("DELETE_DEFAULT ")", "7", "null", "true"}) {
        ProcessNetwork(R"("dns": )" + std::string(value));
    }
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_THAT(Host().Log(), Not(Contains(HasSubstr("will be deleted"))));
}

TEST_F(DesiredDocumentTest, AnUnknownObjectFailsTheDocumentWhateverItsValue)
{
    for (const char* value : {"{}", "7", R"("DELETE_DEFAULT")"}) {
        EXPECT_EQ(Failure(R"({"nimb": {"network": {"unheard": )" + std::string(value) + "}}}"),
                  "2000 Schema not found for nimb/network/unheard");
    }
}

TEST_F(DesiredDocumentTest, ALevelThatIsNoObjectIsNamed)
{
    EXPECT_EQ(Failure("[]"), "1082 JSON error: the document is not an object");
    EXPECT_EQ(Failure(R"({"profile": 7, "nimb": {}})"), "1082 JSON error: the document is not an object");
    EXPECT_EQ(Failure(R"({"nimb": "x"})"), "1082 JSON error: /nimb is not an object");
    EXPECT_EQ(Failure(R"({"nimb": {"network": []}})"), "1082 JSON error: /nimb/network is not an object");
}

TEST_F(DesiredDocumentTest, SchemasThatCannotBeReadFailTheDocument)
{
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    EXPECT_THAT(Failure(), StartsWith("2000 "));
}

// ---- The network --------------------------------------------------------------------------------------------------

TEST_F(DesiredDocumentTest, APreservedNetworkIsThatOfTheHostAndNotTheDocuments)
{
    PreserveTheNetwork();
    Live(
        "('network', 'orvnics', 'vmk0', '{\"live\":1}', 'v'), ('network_gnx', 'switches', 's', NULL, 'v'), "
        "('network', 'dns', '', '{}', NULL)");
    Process(R"({"nimb": {"network": {"orvnics": [{"id": "vmk9"}], "dns": {"ttl": 1}},
                         "network_gnx": {"switches": [{"name": "other"}]}}})");
    EXPECT_THAT(Staged(), ElementsAre(R"(dns/ {"ttl":1} NULL SET)", R"(orvnics/vmk0 {"live":1} NULL SET)",
                                      "switches/s NULL NULL SET"));
    EXPECT_EQ(Host().SqlValue("SELECT Version FROM DesiredUserConfig WHERE Name = 'switches'"), "live");
    EXPECT_THAT(Host().Log(), ElementsAre("info Successfully preserved network configuration.", SOLUTION_USERS, NO_TCON,
                                          NO_PERMISSIONS, OPTIONS));
}

TEST_F(DesiredDocumentTest, APreservedNetworkMayBeEmpty)
{
    PreserveTheNetwork();
    Process("{}");
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_THAT(Host().Log(), Contains("info Successfully preserved network configuration."));
}

TEST_F(DesiredDocumentTest, AdaptersOfAnyGroupBelongToThePreservedNetworkSwitchesOfTheirOwnAlone)
{
    PreserveTheNetwork();
    Host().WithPackage("more", "1.0.0_0.1",
                       "[" + Instances("other", "orvnics") + "," + Instances("other", "switches") + "]");
    RegisterSchemas();
    Process(R"({"nimb": {"other": {"orvnics": [{"id": "a"}], "switches": [{"id": "b"}]}}})");
    EXPECT_THAT(Staged(), ElementsAre(R"(switches/b {"id":"b"} NULL SET)"));
}

TEST_F(DesiredDocumentTest, TheNetworkIsPreservedOnlyWithBothTheSwitchAndTheHostsFile)
{
    Live("('network', 'orvnics', 'vmk0', '{}', NULL)");
    Host().WithFeatures(R"({"preserveNetworkConfiguration": true})");
    Process("{}");
    EXPECT_THAT(Staged(), IsEmpty());
    Host().WithFeatures("{}").MakeFolder("/etc/talvor/host_configuration.json");
    Process("{}");
    EXPECT_THAT(Staged(), IsEmpty());
    Host().WithFeatures(R"({"preserveNetworkConfiguration": true})");  // the file may be of any type
    Process("{}");
    EXPECT_THAT(Staged(), ElementsAre("orvnics/vmk0 {} NULL SET"));
}

TEST_F(DesiredDocumentTest, ANetworkThatCannotBePreservedFailsTheDocument)
{
    PreserveTheNetwork();
    Live("('network', 'orvnics', 'vmk0', '{}', NULL)");
    const StoreFault fault(SQLITE_INSERT, "DesiredUserConfig");
    EXPECT_EQ(Failure(), "2000 Failed to preserve current GNX networking configuration.");
    EXPECT_THAT(Host().Log(), Not(Contains(HasSubstr("uccessfully preserved"))));
}

// ---- Switches -----------------------------------------------------------------------------------------------------

TEST_F(DesiredDocumentTest, ASwitchThatTheDocumentLeavesOutKeepsItsNameAndVitalData)
{
    Live(
        "('network_gnx', 'switches', 'kept', '{\"mtu\":9000}', '{\"port\":1}'), "
        "('network_gnx', 'switches', 'staged', '{}', 'v')");
    Process(R"({"nimb": {"network_gnx": {"switches": [{"name": "staged", "mtu": 1}]}}})");
    EXPECT_THAT(Staged(), ElementsAre(R"(switches/kept {"name":"kept"} {"port":1} SET)",
                                      R"(switches/staged {"name":"staged","mtu":1} NULL SET)"));
    EXPECT_EQ(Host().SqlValue("SELECT DISTINCT Version FROM DesiredUserConfig"), "3");
    EXPECT_THAT(Host().Log(), ElementsAre("info 1 gnx objects in ConfigStore will be deleted.",
                                          R"(info Preserve Gnx[kept] user-config={"mtu":9000}, vital-data={"port":1})",
                                          "info Successfully preserved Gnx[kept] configuration", SOLUTION_USERS,
                                          NO_TCON, NO_PERMISSIONS, OPTIONS));
}

TEST_F(DesiredDocumentTest, ASwitchWithoutValuesIsPreservedByItsName)
{
    Live("('network_gnx', 'switches', 'a \"b\"', NULL, NULL)");
    Process("{}");
    EXPECT_THAT(Staged(), ElementsAre(R"(switches/a "b" {"name":"a \"b\""} NULL SET)"));
    EXPECT_THAT(Host().Log(), Contains("info Preserve Gnx[a \"b\"] user-config=, vital-data="));
}

TEST_F(DesiredDocumentTest, ASwitchWithoutAnIdentifierIsPreservedOnlyWhereNoSwitchIsStaged)
{
    // No text is known to differ from NULL.
    Live("('network_gnx', 'switches', NULL, '{}', 'v')");
    Process("{}");
    EXPECT_THAT(Staged(), ElementsAre(R"(switches/NULL {"name":""} v SET)"));
    Host().Sql("DELETE FROM DesiredUserConfig");
    Process(R"({"nimb": {"network_gnx": {"switches": [{"name": "a"}]}}})");
    EXPECT_THAT(Staged(), ElementsAre(R"(switches/a {"name":"a"} NULL SET)"));
}

TEST_F(DesiredDocumentTest, WithEverySwitchStagedNoneIsPreserved)
{
    Live("('network_gnx', 'switches', 'a', '{}', 'v')");
    Process(R"({"nimb": {"network_gnx": {"switches": [{"name": "a"}]}}})");
    EXPECT_THAT(Staged(), ElementsAre(R"(switches/a {"name":"a"} NULL SET)"));
    EXPECT_EQ(Host().Log().front(), NO_SWITCHES);
}

TEST_F(DesiredDocumentTest, SwitchesThatCannotBeReadOrStagedFailTheDocument)
{
    {
        const StoreFault fault(SQLITE_READ, "Config");
        EXPECT_EQ(Failure(), "2000 Failed to get current GNX configuration.");
    }
    Live("('network_gnx', 'switches', 'a', '{}', 'v')");
    const StoreFault fault(SQLITE_INSERT, "DesiredUserConfig");
    EXPECT_EQ(Failure(), "2000 Failed to preserve GNX configruation.");
}

// ---- Defaults -----------------------------------------------------------------------------------------------------

class MutableDefaultTest : public DesiredDocumentTest
{
protected:
    MutableDefaultTest()
    {
        const std::string isMutable = R"("mutableDefaultConfig": true, "excludedInstances": ["x", "y"],)";
        Host().WithPackage("defaults", "1.0.0_0.1",
                           "[" + Instances("d", "many", isMutable) +
                               R"(,{"component": "nimb", "group": "d", "key": "one", "excludedInstances": ["x"],
                                    "mutableDefaultConfig": true, "schema": {"type": "object"}},
                                   {"component": "nimb", "group": "d", "key": "generated", "singleton": false,
                                    "excludedInstances": ["x"], "mutableDefaultConfig": true, "schema": {"type":
                                    "object", "properties": {"cs_generated_id": {"type": "string", "instanceId": true}}}},)" +
                               Instances("d", "fixed") + "]");
        RegisterSchemas();
        Default(
            "('d', 'many', 'a', 'u', 'v', 'c'), ('d', 'many', 'x', 'u', 'v', 'c'), ('d', 'one', 'x', 'u', NULL, "
            "NULL), ('d', 'generated', 'x', 'u', NULL, NULL), ('d', 'fixed', 'a', 'u', 'v', 'c')");
    }
};

TEST_F(MutableDefaultTest, ObjectsThatTheDocumentDoesNotMentionKeepTheirDefaultsButForExcludedInstances)
{
    Process("{}");
    EXPECT_THAT(Staged(), ElementsAre("generated/x u NULL NULL", "many/a u v NULL", "one/x u NULL NULL"));
    EXPECT_THAT(Host().Sql("SELECT Version, CachedValue FROM DesiredUserConfig WHERE Name = 'many'"),
                ElementsAre(Row{"8", "c"}));
    EXPECT_THAT(Host().Log(),
                ElementsAre(NO_SWITCHES, "info Processing mutableDefaultConfig schemas id = nimb/d/generated",
                            "info Processing mutableDefaultConfig schemas id = nimb/d/many",
                            "info Processing mutableDefaultConfig schemas id = nimb/d/one", SOLUTION_USERS, NO_TCON,
                            NO_PERMISSIONS, OPTIONS));
}

TEST_F(MutableDefaultTest, AMentionedObjectGetsNoDefaultsWhateverItsValue)
{
    Process(R"({"nimb": {"d": {"many": [], "one": "DELETE_DEFAULT", "generated": 7}}})");
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_THAT(Host().Log(), Not(Contains(HasSubstr("mutableDefaultConfig"))));
}

TEST_F(MutableDefaultTest, AnAdapterThatTheDocumentMentionsInVainGetsNoDefaults)
{
    PreserveTheNetwork();
    Host().WithPackage("adapters", "1.0.0_0.1",
                       "[" + Instances("e", "orvnics", R"("mutableDefaultConfig": true,)") + "]");
    RegisterSchemas();
    Default("('e', 'orvnics', 'a', 'u', NULL, NULL)");
    Process(R"({"nimb": {"e": {"orvnics": []}, "d": {"many": [], "one": {}, "generated": []}}})");
    EXPECT_THAT(Staged(), ElementsAre("one/ {} NULL SET"));
}

TEST_F(MutableDefaultTest, AnObjectWithoutDefaultsStagesNoneAndIsLogged)
{
    Host().Sql("DELETE FROM DefaultConfig");
    Process("{}");
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_THAT(Host().Log(), Contains("info Processing mutableDefaultConfig schemas id = nimb/d/one"));
}

TEST_F(MutableDefaultTest, APreservedNetworkReplacesTheStepOfTheSwitchesAlone)
{
    PreserveTheNetwork();
    Live(
        "('network_gnx', 'switches', 's', '{\"mtu\":1}', 'v'), ('advanced_options', 'user_vars', 'BRX_IP', '{}', "
        "NULL), "
        "('authorization', 'permissions', 'p', '{\"principal\":\"druuser\"}', 'v')");
    Process(R"({"nimb": {"d": {"many": [], "generated": []}}})");
    EXPECT_THAT(Staged(), ElementsAre("one/x u NULL NULL", R"(permissions/p {"principal":"druuser"} v SET)",
                                      R"(switches/s {"mtu":1} NULL SET)", "user_vars/BRX_IP {} NULL SET"));
}

TEST_F(MutableDefaultTest, DefaultsThatCannotBeStagedFailTheDocument)
{
    const StoreFault fault(SQLITE_READ, "DefaultConfig");
    EXPECT_EQ(Failure(), "2000 Failed to insert default configuration to desired config table");
}

TEST_F(DesiredDocumentTest, ADefaultThatMeetsAPreservedRowFailsTheDocument)
{
    PreserveTheNetwork();
    Host().WithPackage("net", "1.1.0_0.1",
                       "[" + Instances("network", "orvnics", R"("mutableDefaultConfig": true,)") + "]");
    RegisterSchemas();
    Live("('network', 'orvnics', 'vmk0', '{}', NULL)");
    Default("('network', 'orvnics', 'vmk0', 'u', NULL, NULL)");
    EXPECT_EQ(Failure(), "2000 Failed to insert default configuration to desired config table");
    Host().Sql("DELETE FROM DesiredUserConfig");
    EXPECT_EQ(Failure(R"({"nimb": {"network": {"orvnics": []}}})"), "nothing");
}

TEST_F(DesiredDocumentTest, ADefaultOfAPreservedSwitchFailsADocumentThatDoesNotMentionSwitches)
{
    Host().WithPackage("net", "1.1.0_0.1",
                       "[" + Instances("network_gnx", "switches", R"("mutableDefaultConfig": true,)") + "]");
    RegisterSchemas();
    Live("('network_gnx', 'switches', 'gnx0', '{}', NULL)");
    Default("('network_gnx', 'switches', 'gnx0', 'u', NULL, NULL)");
    EXPECT_EQ(Failure(), "2000 Failed to insert default configuration to desired config table");
    Host().Sql("DELETE FROM DesiredUserConfig");
    EXPECT_EQ(Failure(R"({"nimb": {"network_gnx": {"switches": []}}})"), "nothing");
    EXPECT_THAT(Staged(), ElementsAre(R"(switches/gnx0 {"name":"gnx0"} NULL SET)"));
}

TEST_F(DesiredDocumentTest, ADefaultOptionOfTheAgentThatIsLiveFailsADocumentThatDoesNotMentionOptions)
{
    Host().WithPackage("net", "1.1.0_0.1",
                       "[" + Instances("advanced_options", "user_vars", R"("mutableDefaultConfig": true,)") + "]");
    RegisterSchemas();
    Live("('advanced_options', 'user_vars', 'BRX_IP', '{}', NULL)");
    Default("('advanced_options', 'user_vars', 'BRX_IP', 'u', NULL, NULL)");
    EXPECT_EQ(Failure(), "2000 Failed to preserve BRX user-var advanced options");
    Host().Sql("DELETE FROM DesiredUserConfig");
    EXPECT_EQ(Failure(R"({"nimb": {"advanced_options": {"user_vars": []}}})"), "nothing");
    EXPECT_THAT(Staged(), ElementsAre("user_vars/BRX_IP {} NULL SET"));
}

// ---- Options of the network virtualisation agent ------------------------------------------------------------------

TEST_F(DesiredDocumentTest, TheAgentsOptionsAreCarriedOverAndNoOthers)
{
    const std::vector<std::string> options{"BRX_IP",         "BRX_NodeUUID",           "BRX_OptionalServices",
                                           "BRX_ScxCpuSize", "BRX_ScxMemSize",         "BRX_Thumbprint",
                                           "BRX_Token",      "BRX_ValidateManagerCert"};
    std::vector<std::string> expected;
    for (const std::string& option : options) {
        Live("('advanced_options', 'user_vars', '" + option + "', '{\"v\":1}', 'v')");
        expected.push_back("user_vars/" + option + R"( {"v":1} NULL SET)");
    }
    Live("('advanced_options', 'user_vars', 'BRX_Other', '{}', NULL), ('other', 'user_vars', 'BRX_IP', '{}', NULL)");
    Process("{}");
    EXPECT_THAT(Staged(), ElementsAreArray(expected));
    EXPECT_EQ(Host().SqlValue("SELECT DISTINCT Version FROM DesiredUserConfig"), "live");
}

TEST_F(DesiredDocumentTest, ADocumentThatStagesALiveOptionOfTheAgentFails)
{
    Live("('advanced_options', 'user_vars', 'BRX_IP', '{}', NULL)");
    const std::string document = R"({"nimb": {"advanced_options": {"user_vars": [{"id": "BRX_IP"}]}}})";
    EXPECT_EQ(Failure(document), "2000 Failed to preserve BRX user-var advanced options");
    Host().Sql("DELETE FROM Config");
    EXPECT_EQ(Failure(document), "nothing");
}
}  // namespace
