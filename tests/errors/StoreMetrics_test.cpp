#include <gmock/gmock.h>
#include <sqlite3.h>

#include "NimbConfigStore.h"
#include "StoreFault.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
class StoreMetricsTest : public HostTest
{
protected:
    StoreMetricsTest() { Host().WithStores(); }

    void AddRow(const std::string& object, const std::string& vital, const std::string& user, const std::string& cached)
    {
        Host().Sql(
            "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, VitalValue, UserValue, CachedValue) "
            "VALUES ('net', 'ip', '" +
            object + "', '', " + vital + ", " + user + ", " + cached + ")");
    }
};

int RowsSize()
{
    return static_cast<int>(GetConfigMetrics().size());
}

struct NamedMetric
{
    const char* name;
    int (*read)();
};

constexpr NamedMetric METRICS[] = {{"GetVitalConfigSize", GetVitalConfigSize},
                                   {"GetUserConfigSize", GetUserConfigSize},
                                   {"GetCachedConfigSize", GetCachedConfigSize},
                                   {"GetConfigRowCount", GetConfigRowCount},
                                   {"GetConfigMetrics", RowsSize}};
}  // namespace

TEST_F(StoreMetricsTest, SizesAreSumsOverAllRowsByColumn)
{
    AddRow("config", "'12345'", "'{}'", "NULL");
    AddRow("route", "'1'", "'{\"a\":1}'", "'abc'");
    EXPECT_EQ(GetVitalConfigSize(), 6);
    EXPECT_EQ(GetUserConfigSize(), 9);
    EXPECT_EQ(GetCachedConfigSize(), 3);
    EXPECT_EQ(GetConfigRowCount(), 2);
}

TEST_F(StoreMetricsTest, SizesAreCharactersNotBytes)
{
    AddRow("config", "'h\xC3\xB6he'", "NULL", "NULL");
    EXPECT_EQ(GetVitalConfigSize(), 4);
}

TEST_F(StoreMetricsTest, AnEmptyTableMeasuresNothing)
{
    for (const NamedMetric& metric : METRICS) {
        EXPECT_EQ(metric.read(), 0) << metric.name;
    }
    EXPECT_THAT(GetConfigMetrics(), IsEmpty());
}

TEST_F(StoreMetricsTest, AColumnWithoutAnyValueMeasuresZero)
{
    AddRow("config", "NULL", "NULL", "NULL");
    EXPECT_EQ(GetVitalConfigSize(), 0);
    EXPECT_EQ(GetUserConfigSize(), 0);
    EXPECT_EQ(GetCachedConfigSize(), 0);
    EXPECT_EQ(GetConfigRowCount(), 1);
}

TEST_F(StoreMetricsTest, ARowIsListedWithZeroForEachValueThatItDoesNotHave)
{
    AddRow("config", "NULL", "'" + std::string(52, 'x') + "'", "NULL");
    AddRow("route", "'12'", "NULL", "'abc'");
    EXPECT_THAT(GetConfigMetrics(), ElementsAre("net,ip,config,0,52,0", "net,ip,route,2,0,3"));
}

TEST_F(StoreMetricsTest, WithoutAStoreEachSaysThatItCannotConnect)
{
    Host().Remove(DBStore::StorePath(DBStore::Type::ConfigStore));
    for (const NamedMetric& metric : METRICS) {
        EXPECT_EQ(ThrownBy(metric.read), "2000 Failed to connect to database.") << metric.name;
    }
}

TEST_F(StoreMetricsTest, AFailedStatementNamesTheFunction)
{
    AddRow("config", "NULL", "NULL", "NULL");
    const StoreFault fault(SQLITE_READ, "Config");
    for (const NamedMetric& metric : METRICS) {
        EXPECT_EQ(ThrownBy(metric.read), std::string("2000 Failed to get data from ") + metric.name);
    }
}

TEST_F(StoreMetricsTest, ASizeBeyondAnIntIsOutOfRange)
{
    Host().Sql(
        "DROP TABLE Config; "
        "CREATE VIEW Config AS SELECT zeroblob(900000000) AS VitalValue FROM (VALUES (1), (2), (3))");
    EXPECT_EQ(ThrownBy(GetVitalConfigSize), "stoi");
}
