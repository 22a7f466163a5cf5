#include "DesiredTest.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

namespace
{
constexpr const char* DOCUMENT = R"({"nimb": {
    "network": {"dns": {"servers": ["10.0.0.2"]}, "routes": [{"to": "10.1.0.0/16"}],
                "orvnics": [{"id": "orv0", "port_connection_type": "GNX", "gnx_port": {"switch_uuid": "s"}}],
                "uplinks": "DELETE_DEFAULT"},
    "authorization": {"permissions": [{"id": "p1", "principal": "mallory"}]}}})";

using StagingCommandsTest = DesiredTest;
}  // namespace

TEST_F(StagingCommandsTest, SetTellsWhatItStagedAndWhatItPreservedAndWhy)
{
    WithLiveRows();
    Input(DOCUMENT);
    ExpectGolden("desired-set", {"desired", "set", "-"});
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "1");
    EXPECT_THAT(
        Staged(),
        ElementsAre(
            R"(dns/ {"servers":["10.0.0.2"]} NULL SET)",
            R"(orvnics/orv0 {"id":"orv0","port_connection_type":"GNX","gnx_port":{"switch_uuid":"s","port_key":"7"}} NULL SET)",
            R"(permissions/p1 {"id":"p1","principal":"svc-qrm-7"} {"seen":1} SET)", StartsWith("routes/"),
            R"(switches/sw1 {"name":"sw1"} {"uuid":"u1"} SET)",
            R"(user_vars/BRX_IP {"id":"BRX_IP","value":"10.0.0.5"} NULL SET)"));
}

TEST_F(StagingCommandsTest, SetTellsWhatItReplacedOfAnEarlierStaging)
{
    Stage("set", R"({"nimb": {"network": {"vswitch": [{"name": "a"}, {"name": "b", "mtu": 1}, {"name": "c"}]}}})");
    ASSERT_EQ(Run({"desired", "delete", "nimb/network/dns"}).status, 0);
    Input(R"({"nimb": {"network": {"vswitch": [{"name": "a"}, {"name": "b", "mtu": 2}]}}})");
    ExpectFile("desired-set-again.txt", Run({"desired", "set", "-"}).output);
}

TEST_F(StagingCommandsTest, SetPreservesTheNetworkWhereTheHostDoes)
{
    WithLiveRows();
    Host()
        .WithFeatures(R"({"preserveNetworkConfiguration": true})")
        .WriteFile("/etc/talvor/host_configuration.json", "{}");
    EXPECT_THAT(Stage("set", "{}").output, HasSubstr("this host preserves its network"));
    EXPECT_THAT(Run({"desired", "show", "--json"}).output, HasSubstr(R"("mtu": 9000)"));
}

TEST_F(StagingCommandsTest, SetOfADocumentThatStagesNothingStillDropsWhatWasStaged)
{
    Stage("set", R"({"nimb": {"network": {"vswitch": [{"name": "a"}]}}})");
    Input(R"({"profile": {"nimb": {"network": {"dns": "DELETE_DEFAULT", "uplinks": []}}}})");
    EXPECT_EQ(Run({"desired", "set", "-"}).output,
              "WHAT     OBJECT                IDENTIFIER  ACTION  WHY\n"
              "deleted  nimb/network/dns      -           -       DELETE_DEFAULT in the document\n"
              "dropped  nimb/network/dns      -           -       staged earlier, not any more\n"
              "dropped  nimb/network/uplinks  up0         -       staged earlier, not any more\n"
              "dropped  nimb/network/vswitch  a           SET     staged earlier, not any more\n"
              "\n"
              "deleted 1, dropped 3; the next boot applies 1 (desired)\n");
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_EQ(Run({"desired", "set", "-"}).output,
              "WHAT     OBJECT            IDENTIFIER  ACTION  WHY\n"
              "deleted  nimb/network/dns  -           -       DELETE_DEFAULT in the document\n"
              "\n"
              "deleted 1; the next boot applies 1 (desired)\n");
}

TEST_F(StagingCommandsTest, SetTellsADeletedDefaultFromTheRowsThatArePreservedAllTheSame)
{
    WithLiveRows();
    Live("('advanced_options', 'user_vars', 'BRX_Token', '{\"id\":\"BRX_Token\"}', NULL)");
    Host().Sql("UPDATE ConfigSchema SET MutableDefaultConfig = 1 WHERE Name = 'user_vars'", DBStore::Type::SchemaStore);
    const std::string output = Stage("set", R"({"nimb": {"advanced_options": {"user_vars": "DELETE_DEFAULT"},
        "network": {"dns": {}, "uplinks": []}}})")
                                   .output;
    for (const char* row :
         {"deleted    nimb/advanced_options/user_vars  -           -       DELETE_DEFAULT in the document\n",
          "preserved  nimb/advanced_options/user_vars  BRX_IP      SET     option of the network",
          "preserved  nimb/advanced_options/user_vars  BRX_Token   SET     option of the network",
          "staged 1, preserved 4, deleted 1; "}) {
        EXPECT_THAT(output, HasSubstr(row));
    }
}

TEST_F(StagingCommandsTest, AnInvalidDocumentStagesNothingAndIsReportedWhole)
{
    Stage("set", R"({"nimb": {"network": {"vswitch": [{"name": "a"}]}}})");
    const std::vector<std::string> before = Staged();
    Input(R"({"profile": {"nimb": {"network": {"dns": {"servers": [1, "a", 2]}, "dhcp": {}}, "sound": {}},
              "nimbx": {}}})");
    ExpectGolden("desired-set-invalid", {"desired", "set", "-"}, 1);
    EXPECT_EQ(Run({"desired", "set", "-"}).errors,
              "configstorectl: desired set: -: is not valid; findings: 5; nothing was staged\n");
    EXPECT_EQ(Staged(), before);
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "1");
}

TEST_F(StagingCommandsTest, ADocumentThatCannotBeStagedChangesNothingAndSaysWhy)
{
    Stage("smartnic", "{}");
    const std::vector<std::string> before = Staged();
    Live("('authorization', 'permissions', 'p9', NULL, '{}')");
    Input("{}");
    ExpectFailure({"desired", "set", "-"},
                  "desired set: -: SetDesiredUserConfig failed: Invalid permission found in ConfigStore. "
                  "(Permission[p9] does not have user-config)");
    EXPECT_EQ(Staged(), before);
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "3");
}

TEST_F(StagingCommandsTest, ADocumentCannotStageWhatIsPreservedAnyway)
{
    WithLiveRows();
    Input(R"({"nimb": {"advanced_options": {"user_vars": [{"id": "BRX_IP", "value": "10.0.0.6"}]}}})");
    const Ran ran = Run({"desired", "set", "-"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.output, "");
    EXPECT_THAT(ran.errors, HasSubstr("Failed to preserve BRX user-var advanced options"));
    EXPECT_THAT(Staged(), IsEmpty());
}

TEST_F(StagingCommandsTest, ValidateFindsWhatStagingWouldRefuseAndStagesNothing)
{
    WithLiveRows();
    Input(R"({"nimb": {"advanced_options": {"user_vars": [{"id": "BRX_IP", "value": "10.0.0.6"}]}}})");
    const Ran ran = Run({"desired", "validate", "-"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.output, HasSubstr("cannot be staged: SetDesiredUserConfig failed: Failed to preserve BRX user-var "
                                      "advanced options"));
    EXPECT_EQ(ran.errors, "configstorectl: desired validate: -: is not valid; findings: 1\n");
    Input(DOCUMENT);
    EXPECT_EQ(Run({"desired", "validate", "-"}).output, "-: valid\n");
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "");
}

TEST_F(StagingCommandsTest, ValidateNeedsTheSchemasAlone)
{
    Host().Remove("/etc/talvor/configstore/current-store-1");
    Input(DOCUMENT);
    EXPECT_EQ(Run({"desired", "validate", "-"}).output, "-: valid\n");
}

TEST_F(StagingCommandsTest, SmartnicTellsWhatTheDocumentLeavesOut)
{
    Input(R"({"nimb": {"network": {"vswitch": [{"name": "a"}], "dns": "DELETE_DEFAULT"}}})");
    ExpectGolden("desired-smartnic", {"desired", "smartnic", "-"});
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "3");
    EXPECT_THAT(Staged(), ElementsAre("dns/NULL NULL NULL DELETE", "uplinks/NULL NULL NULL SET_DEFAULT",
                                      R"(vswitch/a {"name":"a"} NULL SET)"));
}

TEST_F(StagingCommandsTest, SmartnicReportsEveryFindingAndStagesNothing)
{
    Input(R"({"nimb": {"network": {"dns": {"servers": [1, 2]}, "dhcp": {}, "vswitch": "DELETE_DEFAULT"}}})");
    ExpectGolden("desired-smartnic-invalid", {"desired", "smartnic", "-"}, 1);
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "");
}

TEST_F(StagingCommandsTest, SmartnicReportsEveryKeyThatCannotBeStagedWhateverTheLogSaysOfIt)
{
    for (const char* keys : {R"("dns": "delete_default", "vswitch": 7)", R"("vswitch": 7, "dns": "delete_default")"}) {
        Input(R"({"nimb": {"network": {)" + std::string(keys) + "}}}");
        const Ran ran = Run({"desired", "smartnic", "-"});
        EXPECT_EQ(ran.errors, "configstorectl: desired smartnic: -: is not valid; findings: 2; nothing was staged\n");
        EXPECT_THAT(ran.output, HasSubstr("-     /nimb/network/dns      expected an object, an array, or "
                                          "\"DELETE_DEFAULT\" where the object has a mutable default\n"));
        EXPECT_THAT(ran.output, HasSubstr("-     /nimb/network/vswitch  expected the type array, found 7\n"));
    }
}

TEST_F(StagingCommandsTest, SmartnicReportsAnUnknownNameOfAnyLength)
{
    const std::string name(100000, 'x');
    Input(R"({"nimb": {"network": {")" + name + R"(": {}, "dns": {"servers": [1]}}}})");
    const Ran ran = Run({"desired", "smartnic", "-"});
    EXPECT_EQ(ran.errors, "configstorectl: desired smartnic: -: is not valid; findings: 2; nothing was staged\n");
    EXPECT_THAT(ran.output, HasSubstr("found the unknown object nimb/network/" + name + "\n"));
}

TEST_F(StagingCommandsTest, SmartnicNamesAValueThatNoRowCanHold)
{
    Input(R"({"nimb": 7})");
    const Ran ran = Run({"desired", "smartnic", "-"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.errors, HasSubstr("/nimb is not an object"));
}

TEST_F(StagingCommandsTest, DeleteStagesOneObjectBesideWhatIsStaged)
{
    Stage("set", R"({"nimb": {"network": {"vswitch": [{"name": "a"}], "dns": {}, "uplinks": []}}})");
    ExpectGolden("desired-delete", {"desired", "delete", "nimb/network/vswitch"});
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "4");
    EXPECT_EQ(Run({"desired", "delete", "nimb/network/dns"}).status, 0);
    EXPECT_THAT(Staged(), Contains("vswitch/NULL NULL NULL DELETE"));
    EXPECT_THAT(Staged(), Contains("dns/NULL NULL NULL DELETE"));
    EXPECT_THAT(Staged(), Contains(R"(vswitch/a {"name":"a"} NULL SET)"));
}

TEST_F(StagingCommandsTest, DeleteTellsWhatOfAnEarlierStagingAppliesNoLonger)
{
    Stage("set", "{}");
    EXPECT_EQ(Run({"desired", "delete", "nimb/network/dns"}).output,
              "WHAT     OBJECT            IDENTIFIER  ACTION  WHY\n"
              "dropped  nimb/network/dns  -           -       default staged earlier: no longer applies\n"
              "staged   nimb/network/dns  -           DELETE  every row of the object goes\n"
              "\n"
              "staged 1, dropped 1; the next boot applies 4 (hostapi), no longer 1 (desired)\n");
    Stage("smartnic", "{}");
    EXPECT_THAT(
        Run({"desired", "delete", "nimb/network/uplinks"}).output,
        HasSubstr("kept    nimb/network/uplinks  -           SET_DEFAULT  staged earlier: outlives the delete\n"));
}

TEST_F(StagingCommandsTest, DeleteOfAnUnknownObjectFails)
{
    ExpectFailure({"desired", "delete", "nimb/network/dhcp"},
                  "desired delete: nimb/network/dhcp: Schema not found for nimb/network/dhcp");
    ExpectFailure({"desired", "delete", "nimb/network"},
                  "desired delete: OBJECT: 'nimb/network' is not of the form COMPONENT/GROUP/KEY (configstorectl "
                  "--help lists the commands)",
                  2);
    EXPECT_THAT(Staged(), IsEmpty());
}

TEST_F(StagingCommandsTest, SayWhichStoreIsMissing)
{
    Host().Remove("/etc/talvor/configstore/current-store-1");
    Input("{}");
    for (const Words& words :
         {Words{"desired", "set", "-"}, Words{"desired", "smartnic", "-"}, Words{"desired", "delete", "a/b/c"}}) {
        const Ran ran = Run(words);
        EXPECT_EQ(ran.status, 1);
        EXPECT_THAT(ran.errors, HasSubstr("/etc/talvor/configstore/current-store-1: cannot be opened: "));
        EXPECT_THAT(ran.errors, Not(HasSubstr("schema-store")));
    }
}

TEST_F(StagingCommandsTest, ADocumentThatDoesNotParseIsNamed)
{
    Input("{");
    for (const char* verb : {"set", "smartnic"}) {
        EXPECT_THAT(Run({"desired", verb, "-"}).errors, HasSubstr("-: is not a JSON document: "));
    }
    EXPECT_THAT(Staged(), IsEmpty());
}
