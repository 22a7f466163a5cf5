#include "BootHost.h"
#include "StagingTest.h"
#include "StoreConnection.h"

using namespace NimbConfigStore;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace
{
constexpr const char* DONE = "info Desired configuration set";

class DesiredUserConfigTest : public StagingTest
{
protected:
    static void Set(const std::string& text)
    {
        JsonDocument document = Parsed(text);
        SetDesiredUserConfig(document);
    }

    static std::string Failure(const std::string& text = "{}")
    {
        return ThrownBy([&] { Set(text); });
    }
};

TEST_F(DesiredUserConfigTest, ADocumentReplacesWhatWasStagedAndSetsTheMode)
{
    StageEarlier();
    Set(R"({"nimb": {"network": {"dns": {"ttl": 1}}}})");
    EXPECT_THAT(Staged(), ElementsAre(R"(dns/ {"ttl":1} NULL SET)"));
    EXPECT_EQ(BootMode(), "1");
    EXPECT_THAT(Host().Log(), SizeIs(testing::Ge(2U)));
    EXPECT_EQ(Host().Log().rbegin()[1], "info Next boot mode set to 1");
    EXPECT_EQ(Host().Log().back(), DONE);
}

TEST_F(DesiredUserConfigTest, ADocumentThatStagesNothingStillEmptiesTheStagingAndSetsTheMode)
{
    StageEarlier();
    Set("{}");
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_EQ(BootMode(), "1");
    EXPECT_EQ(Host().Log().back(), DONE);
}

TEST_F(DesiredUserConfigTest, StagingTheSameDocumentTwiceIsStagingItOnce)
{
    JsonDocument document = Parsed(R"({"nimb": {"network": {"routes": [{"to": "a"}, {"to": "b"}], "dns": {}}}})");
    SetDesiredUserConfig(document);
    const std::vector<std::string> staged = Staged();
    EXPECT_THAT(staged, SizeIs(3));
    SetDesiredUserConfig(document);
    EXPECT_EQ(Staged(), staged);
    Set(R"({"nimb": {"network": {"routes": [{"to": "a"}, {"to": "b"}], "dns": {}}}})");
    EXPECT_EQ(Staged(), staged);
}

TEST_F(DesiredUserConfigTest, AFailureHalfWayLeavesTheEarlierStagingAndItsMode)
{
    StageEarlier();
    EXPECT_EQ(Failure(R"({"nimb": {"network": {"dns": {}, "unheard": {}}}})"),
              "2000 SetDesiredUserConfig failed: Schema not found for nimb/network/unheard");
    ExpectEarlier();
    EXPECT_EQ(Failure("[]"), "2000 SetDesiredUserConfig failed: JSON error: the document is not an object");
    ExpectEarlier();
    EXPECT_THAT(Failure(R"({"nimb": {"network": {"dns": {}, "orvnics": [{}]}}})"),
                StartsWith("2000 SetDesiredUserConfig failed: "));
    ExpectEarlier();
}

TEST_F(DesiredUserConfigTest, OneMalformedLivePermissionFailsTheWholeDocument)
{
    StageEarlier();
    Live("('authorization', 'permissions', 'p', '{}', NULL)");
    EXPECT_EQ(Failure(R"({"nimb": {"network": {"dns": {}}}})"),
              "2000 SetDesiredUserConfig failed: Invalid permission without 'principal' found in ConfigStore.");
    ExpectEarlier();
}

TEST_F(DesiredUserConfigTest, ADocumentThatStagesAnOptionOfTheAgentFailsWhole)
{
    StageEarlier();
    Live("('advanced_options', 'user_vars', 'BRX_IP', '{}', NULL)");
    EXPECT_EQ(Failure(R"({"nimb": {"advanced_options": {"user_vars": [{"id": "BRX_IP"}]}}})"),
              "2000 SetDesiredUserConfig failed: Failed to preserve BRX user-var advanced options");
    ExpectEarlier();
}

TEST_F(DesiredUserConfigTest, AFailedCallLeavesADocumentThatCanBeSetAgain)
{
    JsonDocument document = Parsed(R"({"nimb": {"network": {"routes": [{"to": "a"}], "unheard": {}, "dns": {}}}})");
    EXPECT_THAT(ThrownBy([&] { SetDesiredUserConfig(document); }), StartsWith("2000 "));
    document["nimb"]["network"].RemoveMember("unheard");
    SetDesiredUserConfig(document);
    const std::vector<std::string> staged = Staged();
    Set(R"({"nimb": {"network": {"routes": [{"to": "a"}], "dns": {}}}})");
    EXPECT_EQ(Staged(), staged);
}

TEST_F(DesiredUserConfigTest, ATransactionThatIsUnderWayIsNeitherJoinedNorEnded)
{
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    ASSERT_EQ(DBStore::BeginTransaction(store), DBStore::SUCCESS);
    EXPECT_EQ(Failure(), "2000 Failed to start set desired transaction");
    EXPECT_EQ(DBStore::CommitTransaction(store), DBStore::SUCCESS);
    EXPECT_EQ(BootMode(), "");
}

TEST_F(DesiredUserConfigTest, WithoutAStoreThereIsNothingToStageIn)
{
    Host().Remove(DBStore::StorePath(DBStore::Type::ConfigStore));
    EXPECT_EQ(Failure(), "2000 Failed to connect to database");
}

class RefusedStaging : public DesiredUserConfigTest, public testing::WithParamInterface<Refusal>
{};

TEST_P(RefusedStaging, LeavesTheEarlierStagingAndItsMode)
{
    StageEarlier();
    {
        const StoreFault fault(GetParam().action, GetParam().argument);
        EXPECT_EQ(Failure(R"({"nimb": {"network": {"dns": {}}}})"), GetParam().failure);
    }
    ExpectEarlier();
}

INSTANTIATE_TEST_SUITE_P(
    DesiredUserConfig, RefusedStaging,
    testing::Values(Refusal{SQLITE_TRANSACTION, "BEGIN", "2000 Failed to start set desired transaction"},
                    Refusal{SQLITE_DELETE, "DesiredUserConfig",
                            "2000 SetDesiredUserConfig failed: Failed to cleanup desired configuration."},
                    Refusal{SQLITE_INSERT, "DesiredUserConfig",
                            "2000 SetDesiredUserConfig failed: Write desired config failed"},
                    Refusal{SQLITE_INSERT, "KeyValue", "2000 SetDesiredUserConfig failed: Failed to set boot mode 1"},
                    Refusal{SQLITE_TRANSACTION, "COMMIT",
                            "2000 SetDesiredUserConfig failed: Failed to commit set desired transaction"}));

// ---- Into the next boot -------------------------------------------------------------------------------------------

class DesiredBootTest : public BootHostTest
{
protected:
    static void Set(const std::string& keys)
    {
        JsonDocument document;
        ASSERT_TRUE(ConfigStoreDocument::ParseText(R"({"profile": {"nimb": )" + keys + "}}", document));
        SetDesiredUserConfig(document);
    }
};

TEST_F(DesiredBootTest, TheNextBootAppliesTheDocumentAndNothingChangesBefore)
{
    AddRow("network/vswitch", "gone", R"({"name":"gone"})");
    AddRow("security/accounts", "root", R"({"name":"root"})");
    AddRow("security/accounts", "guest", R"({"name":"guest"})");
    Set(R"({"network": {"vswitch": [{"name": "new", "mtu": 1500}], "dns": {"hostname": "h"}}})");
    EXPECT_EQ(UserValue("network/vswitch", "gone"), R"({"name":"gone"})");
    EXPECT_EQ(UserValue("network/vswitch", "new"), "none");
    ASSERT_EQ(LoadStore(false), 0);
    EXPECT_EQ(UserValue("network/vswitch", "gone"), "none");
    EXPECT_EQ(UserValue("network/vswitch", "new"), R"({"name":"new","mtu":1500})");
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname":"h"})");
    EXPECT_EQ(UserValue("security/accounts", "root"), R"({"name":"root"})");
    EXPECT_EQ(UserValue("security/accounts", "guest"), "none");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM DesiredUserConfig"), "0");
}

TEST_F(DesiredBootTest, AnUnmentionedObjectGoesBackToItsDefaultAndADeletedDefaultIsGone)
{
    AddRow("network/dns", "", R"({"hostname":"mine"})");
    Set("{}");
    ASSERT_EQ(LoadStore(false), 0);
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname":"localhost"})");
    Set(R"({"network": {"dns": "DELETE_DEFAULT"}})");
    ASSERT_EQ(LoadStore(false), 0);
    EXPECT_EQ(UserValue("network/dns"), "none");
}

TEST_F(DesiredBootTest, OfTwoDocumentsTheSecondIsApplied)
{
    Set(R"({"network": {"vswitch": [{"name": "first"}]}})");
    Set(R"({"network": {"vswitch": [{"name": "second"}]}})");
    ASSERT_EQ(LoadStore(false), 0);
    EXPECT_EQ(UserValue("network/vswitch", "first"), "none");
    EXPECT_EQ(UserValue("network/vswitch", "second"), R"({"name":"second"})");
}

TEST_F(DesiredBootTest, SettingTheLiveConfigurationAgainChangesNothing)
{
    Set(R"({"network": {"vswitch": [{"name": "a"}, {"name": "b"}], "dns": {"hostname": "h"}}})");
    ASSERT_EQ(LoadStore(false), 0);
    const std::string booted = DumpStore(DBStore::Type::ConfigStore);
    Set(R"({"network": {"vswitch": [{"name": "a"}, {"name": "b"}], "dns": {"hostname": "h"}}})");
    ASSERT_EQ(LoadStore(false), 0);
    EXPECT_EQ(DumpStore(DBStore::Type::ConfigStore), booted);
}
}  // namespace
