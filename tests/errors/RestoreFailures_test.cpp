#include <gmock/gmock.h>
#include <sqlite3.h>

#include "NimbConfigStore.h"
#include "StoreConnection.h"
#include "StoreFault.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
class RestoreFailuresTest : public HostTest
{
protected:
    RestoreFailuresTest() { Host().WithStores(); }

    void Declare(const std::string& name, int dspIntegrated, int kind)
    {
        Host().Sql(
            "INSERT INTO ConfigSchema (Component, ConfigGroup, Name, DSPIntegrated, SchemaType) VALUES ('nimb', "
            "'network', '" +
                name + "', " + std::to_string(dspIntegrated) + ", " + std::to_string(kind) + ")",
            DBStore::Type::SchemaStore);
    }

    void AddRow(const std::string& name, const std::string& identifier, const std::string& userValue, int success)
    {
        Host().Sql(
            "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue, Success) VALUES ('nimb', "
            "'network', '" +
            name + "', '" + identifier + "', " + userValue + ", " + std::to_string(success) + ")");
    }

    std::vector<std::string> Reported()
    {
        std::vector<std::string> objects;
        for (const FailureRecord& failure : GetBootTimeRestoreFailures()) {
            objects.push_back(failure.component + "/" + failure.configGroup + "/" + failure.name);
        }
        return objects;
    }
};
}  // namespace

TEST_F(RestoreFailuresTest, RowsThatWereNotAppliedAreReportedOncePerInstance)
{
    Declare("dns", 1, 0);
    Declare("vswitch", 1, 2);
    AddRow("dns", "", "'{}'", 0);
    AddRow("vswitch", "vSwitch0", "'{}'", 0);
    AddRow("vswitch", "vSwitch1", "'{}'", 0);
    EXPECT_THAT(Reported(),
                ::testing::UnorderedElementsAre("nimb/network/dns", "nimb/network/vswitch", "nimb/network/vswitch"));
}

TEST_F(RestoreFailuresTest, OtherRowsAreNot)
{
    Declare("applied", 1, 0);
    AddRow("applied", "", "'{}'", 1);
    Declare("no-user-value", 1, 0);
    AddRow("no-user-value", "", "NULL", 0);
    Declare("other-kind", 1, 1);
    AddRow("other-kind", "", "'{}'", 0);
    Declare("not-in-documents", 0, 0);
    AddRow("not-in-documents", "", "'{}'", 0);
    AddRow("unknown", "", "'{}'", 0);
    EXPECT_THAT(Reported(), IsEmpty());
}

TEST_F(RestoreFailuresTest, WithoutASchemaStoreItThrows)
{
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    EXPECT_EQ(ThrownBy(GetBootTimeRestoreFailures), "2000 Failed to attach schema store");
}

TEST_F(RestoreFailuresTest, AFailedStatementThrowsAndLeavesNothingAttached)
{
    Declare("dns", 1, 0);
    AddRow("dns", "", "'{}'", 0);
    const DBStore::ConnectionPtr kept = [] {
        const StoreFault fault(SQLITE_READ, "Config");
        const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
        EXPECT_EQ(ThrownBy(GetBootTimeRestoreFailures), "2000 Failed to read from config store.");
        return store;
    }();
    EXPECT_THAT(Reported(), ElementsAre("nimb/network/dns"));  // the same connection attaches once more
}

TEST_F(RestoreFailuresTest, AFailedDetachIsLoggedAndChangesNothing)
{
    Declare("dns", 1, 0);
    AddRow("dns", "", "'{}'", 0);
    const StoreFault fault(SQLITE_DETACH, "");
    EXPECT_THAT(Reported(), ElementsAre("nimb/network/dns"));
    EXPECT_THAT(Host().Log(), Contains("error Failed to detach schema store"));
}

TEST_F(RestoreFailuresTest, WithoutAConfigStoreItThrows)
{
    Host().Remove("/etc/talvor/configstore/current-store-1");
    EXPECT_EQ(ThrownBy(GetBootTimeRestoreFailures), "2000 Failed to connect to database");
}
