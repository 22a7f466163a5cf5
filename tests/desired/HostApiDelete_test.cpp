#include "BootHost.h"
#include "StagingTest.h"
#include "StoreConnection.h"

using namespace NimbConfigStore;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace
{
class HostApiDeleteTest : public StagingTest
{
protected:
    static std::string Failure(const char* key = "dns")
    {
        return ThrownBy([key] { DeleteHostAPIConfiguration("nimb", "network", key); });
    }
};

TEST_F(HostApiDeleteTest, ADeleteIsStagedWithItsMode)
{
    DeleteHostAPIConfiguration("nimb", "network", "dns");
    EXPECT_THAT(Host().Sql("SELECT Component, ConfigGroup, Name, Identifier, Version, Value, VitalValue, CachedValue, "
                           "BootAction FROM DesiredUserConfig"),
                ElementsAre(Row{"nimb", "network", "dns", std::nullopt, std::nullopt, std::nullopt, std::nullopt,
                                std::nullopt, "DELETE"}));
    EXPECT_EQ(BootMode(), "4");
    EXPECT_THAT(Host().Log(), ElementsAre("info Next boot mode set to 4"));
}

TEST_F(HostApiDeleteTest, DeletesAccumulateBesideWhatIsStaged)
{
    Host().Sql(
        "INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, Value, BootAction) VALUES "
        "('nimb', 'network', 'orvnics', 'a', '{}', 'SET')");
    DeleteHostAPIConfiguration("nimb", "network", "dns");
    DeleteHostAPIConfiguration("nimb", "network", "routes");
    EXPECT_THAT(Staged(),
                ElementsAre("dns/NULL NULL NULL DELETE", "orvnics/a {} NULL SET", "routes/NULL NULL NULL DELETE"));
}

TEST_F(HostApiDeleteTest, ARepeatedDeleteIsOneMoreRow)
{
    // Rows without an identifier are never duplicates to the database.
    DeleteHostAPIConfiguration("nimb", "network", "dns");
    DeleteHostAPIConfiguration("nimb", "network", "dns");
    EXPECT_THAT(Staged(), ElementsAre("dns/NULL NULL NULL DELETE", "dns/NULL NULL NULL DELETE"));
}

TEST_F(HostApiDeleteTest, ADocumentTakesDeletesBack)
{
    DeleteHostAPIConfiguration("nimb", "network", "dns");
    JsonDocument document(rapidjson::kObjectType);
    SetDesiredUserConfig(document);
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_EQ(BootMode(), "1");
}

TEST_F(HostApiDeleteTest, AnUnknownObjectIsRefused)
{
    EXPECT_EQ(Failure("unheard"), "2000 Schema not found for nimb/network/unheard");
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    EXPECT_THAT(Failure(), StartsWith("2000 "));
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_EQ(BootMode(), "");
}

TEST_F(HostApiDeleteTest, ANullArgumentIsRefused)
{
    EXPECT_THROW(DeleteHostAPIConfiguration(nullptr, "network", "dns"), InvalidArgumentException);
    EXPECT_THROW(DeleteHostAPIConfiguration("nimb", nullptr, "dns"), InvalidArgumentException);
    EXPECT_EQ(Failure(nullptr), "2000 A component, a group and a key are needed");
    EXPECT_THAT(Staged(), IsEmpty());
}

TEST_F(HostApiDeleteTest, WithoutAStoreThereIsNothingToStageIn)
{
    Host().Remove(DBStore::StorePath(DBStore::Type::ConfigStore));
    EXPECT_EQ(Failure(), "2000 Failed to connect to database");
}

class RefusedDelete : public HostApiDeleteTest, public testing::WithParamInterface<Refusal>
{};

TEST_P(RefusedDelete, LeavesTheEarlierStagingAndItsMode)
{
    StageEarlier();
    {
        const StoreFault fault(GetParam().action, GetParam().argument);
        EXPECT_EQ(Failure(), GetParam().failure);
    }
    ExpectEarlier();
}

constexpr const char* NOT_STAGED = "1005 desired configuration for component nimb group network key dns";
INSTANTIATE_TEST_SUITE_P(HostApiDelete, RefusedDelete,
                         testing::Values(Refusal{SQLITE_TRANSACTION, "BEGIN",
                                                 "2000 Failed to start Delete HostAPI transaction"},
                                         Refusal{SQLITE_INSERT, "DesiredUserConfig", NOT_STAGED},
                                         Refusal{SQLITE_INSERT, "KeyValue", NOT_STAGED},
                                         Refusal{SQLITE_TRANSACTION, "COMMIT",
                                                 "1012 for component nimb group network key dns in Delete HostAPI"}));

TEST_F(HostApiDeleteTest, AModeThatCannotBeWrittenAgainAfterTheCommitChangesNothing)
{
    // The mode is absent before, so that the first write of it inserts and the second one updates.
    Host().Sql("CREATE TRIGGER refuse BEFORE UPDATE ON KeyValue BEGIN SELECT RAISE(ABORT, 'refused by the test'); END");
    EXPECT_EQ(Failure(), "nothing");
    EXPECT_THAT(Staged(), ElementsAre("dns/NULL NULL NULL DELETE"));
    EXPECT_EQ(BootMode(), "4");
    EXPECT_THAT(Host().Log(), testing::Contains(testing::HasSubstr("refused by the test")));
}

// ---- Into the next boot -------------------------------------------------------------------------------------------

class HostApiBootTest : public BootHostTest
{};

TEST_F(HostApiBootTest, TheNextBootRemovesEveryInstanceOfADeletedObject)
{
    AddRow("network/vswitch", "a", R"({"name":"a"})");
    AddRow("network/vswitch", "b", R"({"name":"b"})");
    AddRow("network/dns", "", R"({"hostname":"kept"})");
    DeleteHostAPIConfiguration("nimb", "network", "vswitch");
    DeleteHostAPIConfiguration("nimb", "network", "vswitch");
    EXPECT_EQ(UserValue("network/vswitch", "a"), R"({"name":"a"})");
    ASSERT_EQ(LoadStore(false), 0);
    EXPECT_EQ(UserValue("network/vswitch", "a"), "none");
    EXPECT_EQ(UserValue("network/vswitch", "b"), "none");
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname":"kept"})");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
}

TEST_F(HostApiBootTest, ADeleteAfterADocumentTurnsTheDocumentIntoChangesOfItsObjects)
{
    AddRow("network/vswitch", "live", R"({"name":"live"})");
    AddRow("system/keyboard", "", R"({"layout":"us"})");
    AddRow("security/accounts", "guest", R"({"name":"guest"})");
    JsonDocument document;
    ASSERT_TRUE(ConfigStoreDocument::ParseText(
        R"({"nimb": {"network": {"vswitch": [{"name": "staged"}], "dns": {"hostname": "h"}}}})", document));
    SetDesiredUserConfig(document);
    DeleteHostAPIConfiguration("nimb", "system", "keyboard");
    DeleteHostAPIConfiguration("nimb", "network", "vswitch");
    ASSERT_EQ(LoadStore(false), 0);
    EXPECT_EQ(UserValue("system/keyboard"), "none");
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname":"h"})");
    EXPECT_EQ(UserValue("network/vswitch", "live"), "none");
    EXPECT_EQ(UserValue("network/vswitch", "staged"), R"({"name":"staged"})");  // a staged value outlives a delete
    EXPECT_EQ(UserValue("security/accounts", "guest"), R"({"name":"guest"})");  // no whole document any more
}
}  // namespace
