#include "CommandTest.h"

using ::testing::HasSubstr;

namespace
{
class MetricsCommandTest : public CommandTest
{};
}  // namespace

TEST_F(MetricsCommandTest, SizesComponentsAndLargestObjectsAreShown)
{
    FillStores();
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue) VALUES ('files', 'etc', 'hosts', '', "
        "'" +
        std::string(120, 'x') + "')");
    ExpectGolden("metrics", {"metrics"});
}

TEST_F(MetricsCommandTest, RowsAreListedOneByOne)
{
    FillStores();
    ExpectGolden("metrics-rows", {"metrics", "--rows"});
}

TEST_F(MetricsCommandTest, AnEmptyStoreMeasuresNothing)
{
    Host().WithStores();
    ExpectGolden("metrics-empty", {"metrics"});
    EXPECT_EQ(Run({"metrics", "--rows", "--json"}).output, "[]\n");
}

TEST_F(MetricsCommandTest, OnlyTheTenLargestObjectsAreNamed)
{
    Host().WithStores();
    Host().Sql(
        "WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 12) INSERT INTO Config "
        "(Component, ConfigGroup, Name, Identifier, UserValue) SELECT 'nimb', 'group', 'key' || i, '', "
        "substr('xxxxxxxxxxxxxxxxxxxxxxxx', 1, i) FROM n");
    const std::string output = Run({"metrics"}).output;
    EXPECT_THAT(output, HasSubstr("nimb/group/key3 "));
    EXPECT_THAT(output, ::testing::Not(HasSubstr("nimb/group/key2 ")));
}

TEST_F(MetricsCommandTest, NamesThatHoldCommasAreKeptWhole)
{
    Host().WithStores();
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue) VALUES ('nimb', 'net', "
        "'a,b', '', '1234')");
    EXPECT_THAT(Run({"metrics", "--rows"}).output, HasSubstr("nimb/net/a,b  0      4     0\n"));
}

TEST_F(MetricsCommandTest, AMissingStoreIsAFailure)
{
    const Ran ran = Run({"metrics"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.output, "");
    EXPECT_THAT(ran.errors, HasSubstr("configstorectl: metrics: "));
}
