#include "CommandTest.h"
#include "InspectStatements.h"

using ::testing::HasSubstr;
using ::testing::Not;
namespace Statements = ConfigStoreCtl::Statements;

namespace
{
constexpr const char* STORE = "/etc/talvor/configstore/current-store-1";

/// config, default and desired show.
class StoreListingsTest : public CommandTest
{
protected:
    std::string Plan(const std::string& sql)
    {
        std::string plan;
        for (const Row& row : Host().Sql("EXPLAIN QUERY PLAN " + sql)) {
            plan += row.back().value_or("") + "\n";
        }
        return plan;
    }
};
}  // namespace

TEST_F(StoreListingsTest, ConfigListNamesEveryRowAndTheValuesItHas)
{
    FillStores();
    ExpectGolden("config-list", {"config", "list"});
}

TEST_F(StoreListingsTest, ConfigListTakesAComponentAGroupOrAnObject)
{
    FillStores();
    EXPECT_EQ(Run({"config", "list", "nimb"}).output, Run({"config", "list"}).output);
    ExpectGolden("config-list-group", {"config", "list", "nimb/network"});
    ExpectGolden("config-list-object", {"config", "list", "nimb/network/portgroups"});
}

TEST_F(StoreListingsTest, ConfigListOfNothingIsAHeadingAlone)
{
    Host().WithStores();
    EXPECT_EQ(Run({"config", "list", "other"}).output, "OBJECT  IDENTIFIER  VERSION  REVISION  VALUES\n");
    EXPECT_EQ(Run({"config", "list", "--json"}).output, "[]\n");
}

TEST_F(StoreListingsTest, ConfigShowLaysValuesOut)
{
    FillStores();
    ExpectGolden("config-show", {"config", "show", "nimb/network/portgroups"});
    ExpectGolden("config-show-marked", {"config", "show", "nimb/time/ntp"});
}

TEST_F(StoreListingsTest, ConfigShowTakesAnIdentifierThatHoldsASlash)
{
    FillStores();
    ExpectGolden("config-show-instance", {"config", "show", "nimb/network/portgroups/vm/net"});
}

TEST_F(StoreListingsTest, ConfigShowOfAnUnknownObjectFails)
{
    FillStores();
    ExpectFailure({"config", "show", "nimb/network/dhcp"},
                  "config show: nimb/network/dhcp: no such row in the config store");
    ExpectFailure({"default", "show", "nimb/network/dhcp"},
                  "default show: nimb/network/dhcp: no default configuration in the config store");
}

TEST_F(StoreListingsTest, DefaultsAreListedAndShown)
{
    FillStores();
    ExpectGolden("default-list", {"default", "list"});
    ExpectGolden("default-show", {"default", "show", "nimb/network/dns"});
}

TEST_F(StoreListingsTest, DesiredShowTellsWhatIsStaged)
{
    FillStores();
    ExpectGolden("desired-show", {"desired", "show"});
}

TEST_F(StoreListingsTest, DesiredShowOfNothingSaysSo)
{
    Host().WithStores();
    ExpectGolden("desired-show-nothing", {"desired", "show"});
}

TEST_F(StoreListingsTest, NothingInTheStoreSteersTheTerminal)
{
    Host().WithStores();
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue) VALUES "
        "('nimb', 'a', 'b', char(27) || '[2J' || char(155) || char(127) || char(10), "
        "'{\"x\": \"' || char(155) || char(127) || '\"}')");
    for (const Words& words : {Words{"config", "list"}, Words{"config", "show", "nimb/a/b"},
                               Words{"config", "list", "--json"}, Words{"config", "show", "--json", "nimb/a/b"}}) {
        const std::string output = Run(words).output;
        EXPECT_THAT(output, Not(HasSubstr("\x1b"))) << output;
        EXPECT_THAT(output, Not(HasSubstr("\x7f"))) << output;
        EXPECT_THAT(output, Not(HasSubstr("\xC2\x9B"))) << output;
    }
}

TEST_F(StoreListingsTest, SayThatTheStoreIsMissing)
{
    const std::string why = std::string(STORE) + ": cannot be opened: No such file or directory";
    ExpectFailure({"config", "list"}, "config list: " + why);
    ExpectFailure({"config", "show", "a/b/c"}, "config show: " + why);
    ExpectFailure({"default", "list"}, "default list: " + why);
    ExpectFailure({"default", "show", "a/b/c"}, "default show: " + why);
    ExpectFailure({"desired", "show"}, "desired show: " + why);
    EXPECT_FALSE(Host().Exists(STORE));
}

TEST_F(StoreListingsTest, SayThatTheStoreIsDamaged)
{
    Host().WriteFile(STORE, std::string(8192, 'x'));
    ExpectFailure({"config", "list"},
                  std::string("config list: ") + STORE + ": cannot be opened: file is not a database");
    Host().Remove(STORE);
    Host().WithStores();
    Host().Sql("DROP TABLE Config");
    ExpectFailure({"config", "list"}, std::string("config list: ") + STORE + ": is damaged");
}

TEST_F(StoreListingsTest, NeverChangeTheStore)
{
    FillStores();
    const std::string before = Host().ReadFile(STORE);
    for (const Words& words : {Words{"config", "list"}, Words{"config", "show", "nimb/network/dns"},
                               Words{"default", "list"}, Words{"desired", "show"}, Words{"boot", "mode"}}) {
        EXPECT_EQ(Run(words).status, 0);
    }
    EXPECT_EQ(Host().ReadFile(STORE), before);
}

TEST_F(StoreListingsTest, AreServedByTheIndexOfEachTable)
{
    FillStores();
    const std::string filters =
        std::string(Statements::FILTER_COMPONENT) + Statements::FILTER_GROUP + Statements::FILTER_KEY;
    for (const char* statement : {Statements::LIST_CONFIG, Statements::SHOW_CONFIG, Statements::LIST_DEFAULTS,
                                  Statements::SHOW_DEFAULTS, Statements::SHOW_STAGED}) {
        const std::string plan =
            Plan(statement + filters + Statements::FILTER_IDENTIFIER + Statements::ORDER_BY_OBJECT);
        EXPECT_THAT(plan, HasSubstr("USING INDEX")) << statement;
        EXPECT_THAT(plan, Not(HasSubstr("SCAN"))) << statement;
        EXPECT_THAT(Plan(std::string(statement) + Statements::ORDER_BY_OBJECT), Not(HasSubstr("TEMP B-TREE")))
            << statement;
    }
}
