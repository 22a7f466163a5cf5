#include "BootHost.h"
#include "StagingTest.h"
#include "StoreConnection.h"

using namespace NimbConfigStore;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace
{
constexpr const char* DONE = "info Desired configuration set for smartnic.";
constexpr const char* INVALID =
    "2000 SetDesiredSmartnicConfiguration failed: Failed to validate smartnic configuration, Check logs for specific "
    "validation errors.";

/// Objects of group "nic", all but "private" shared with the SmartNIC: "ports" are instances, "clock" has a default
/// that users may change, "name" is a text, "list" an array.
class SmartnicConfigTest : public StagingTest
{
protected:
    SmartnicConfigTest()
    {
        Host().WithPackage(
            "nic", "1.0.0_0.1",
            "[" + Instances("nic", "ports", SHARED) +
                R"(,{"component": "nimb", "group": "nic", "key": "clock", "mutableDefaultConfig": true,)" + SHARED +
                R"("schema": {"type": "object", "properties": {"zone": {"type": "string"}}}},
                               {"component": "nimb", "group": "nic", "key": "name", )" +
                SHARED + R"("schema": {"type": "string"}},
                               {"component": "nimb", "group": "nic", "key": "list", "schema": {"type": "array"}},
                               {"component": "nimb", "group": "nic", "key": "private",
                                "smartnic": {"schema": "nimbio-only"}, "schema": {"type": "object"}}])");
        RegisterSchemas();
    }

    static void Set(const std::string& text)
    {
        JsonDocument document = Parsed(text);
        SetDesiredSmartnicConfiguration(document);
    }

    static void SetNic(const std::string& keys) { Set(R"({"nimb": {"nic": {)" + keys + "}}}"); }

    static std::string Failure(const std::string& text = "{}")
    {
        return ThrownBy([&] { Set(text); });
    }
    static std::string NicFailure(const std::string& keys)
    {
        return ThrownBy([&] { SetNic(keys); });
    }

    static constexpr const char* SHARED = R"("smartnic": {"schema": "nimb-shared"},)";
};

TEST_F(SmartnicConfigTest, AnEmptyDocumentStagesADefaultOrADeleteForEverySharedObject)
{
    StageEarlier();
    Set("{}");
    EXPECT_THAT(Staged(), ElementsAre("clock/NULL NULL NULL SET_DEFAULT", "name/NULL NULL NULL DELETE",
                                      "ports/NULL NULL NULL DELETE"));
    EXPECT_EQ(BootMode(), "3");
    EXPECT_THAT(Host().Log(), ElementsAre("info Next boot mode set to 3", DONE));
}

TEST_F(SmartnicConfigTest, WhatTheDocumentHoldsIsStagedAndNotMarked)
{
    SetNic(R"("ports": [{"id": "b"}, {"id": "a"}], "clock": {"zone": "UTC"}, "list": [1])");
    EXPECT_THAT(Staged(),
                ElementsAre(R"(clock/ {"zone":"UTC"} NULL SET)", "list/ [1] NULL SET", "name/NULL NULL NULL DELETE",
                            R"(ports/a {"id":"a"} NULL SET)", R"(ports/b {"id":"b"} NULL SET)"));
    EXPECT_EQ(Host().SqlValue("SELECT Version FROM DesiredUserConfig WHERE Name = 'clock'"), "1.0.0_0.1");
}

TEST_F(SmartnicConfigTest, DeleteDefaultStagesADelete)
{
    SetNic(R"("clock": "DELETE_DEFAULT", "ports": [{"id": "a"}])");
    EXPECT_THAT(Staged(), ElementsAre("clock/NULL NULL NULL DELETE", "name/NULL NULL NULL DELETE",
                                      R"(ports/a {"id":"a"} NULL SET)"));
}

TEST_F(SmartnicConfigTest, AnEmptyListOfInstancesIsAnObjectThatTheDocumentLeavesOut)
{
    SetNic(R"("ports": [])");
    EXPECT_THAT(Staged(), Contains("ports/NULL NULL NULL DELETE"));
}

TEST_F(SmartnicConfigTest, StagingTwiceIsStagingOnce)
{
    // Rows without an identifier are never duplicates to the database.
    for (int i = 0; i < 2; ++i) {
        SetNic(R"("clock": "DELETE_DEFAULT")");
        EXPECT_THAT(Staged(), ElementsAre("clock/NULL NULL NULL DELETE", "name/NULL NULL NULL DELETE",
                                          "ports/NULL NULL NULL DELETE"));
    }
}

TEST_F(SmartnicConfigTest, NothingOfTheLiveConfigurationIsPreserved)
{
    Live("('network_gnx', 'switches', 's', '{}', 'v'), ('authorization', 'permissions', 'p', 'malformed', NULL)");
    Set("{}");
    EXPECT_THAT(Host().Log(), ElementsAre("info Next boot mode set to 3", DONE));
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM DesiredUserConfig WHERE ConfigGroup <> 'nic'"), "0");
}

TEST_F(SmartnicConfigTest, EveryInvalidKeyIsLoggedBeforeTheDocumentFailsOnce)
{
    StageEarlier();
    EXPECT_EQ(NicFailure(R"("clock": {"zone": 7}, "ports": {"id": "a"}, "list": [])"), INVALID);
    ExpectEarlier();
    EXPECT_THAT(Host().Log(), Contains("error Validation failed for configuration {nimb/nic/clock}"));
    EXPECT_THAT(Host().Log(), Contains("error Validation failed for configuration {nimb/nic/ports}"));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("nimb/nic/clock/zone")));
    EXPECT_THAT(Host().Log(), Not(Contains("error Validation failed for configuration {nimb/nic/list}")));
}

TEST_F(SmartnicConfigTest, AnUnknownObjectIsInvalidAndNamedAndAProfileIsOne)
{
    StageEarlier();
    EXPECT_EQ(NicFailure(R"("unheard": {}, "clock": {"zone": 7})"), INVALID);
    EXPECT_THAT(Host().Log(), Contains("error Schema not found for nimb/nic/unheard"));
    EXPECT_THAT(Host().Log(), Contains("error Validation failed for configuration {nimb/nic/unheard}"));
    EXPECT_THAT(Host().Log(), Contains("error Validation failed for configuration {nimb/nic/clock}"));
    EXPECT_EQ(Failure(R"({"profile": {"nimb": {"nic": {}}}})"), INVALID);
    EXPECT_THAT(Host().Log(), Contains("error Schema not found for profile/nimb/nic"));
    ExpectEarlier();
}

TEST_F(SmartnicConfigTest, AValueThatCannotBeStagedIsInvalid)
{
    for (const char* key : {R"("clock": "delete_default")", R"("ports": "DELETE_DEFAULT")", R"("name": "text")",
                            R"("name": "DELETE_DEFAULT")"}) {
        EXPECT_EQ(NicFailure(key), INVALID) << key;
    }
    EXPECT_THAT(Staged(), IsEmpty());
}

TEST_F(SmartnicConfigTest, AnInstanceWithoutItsIdentifierOrALevelThatIsNoObjectFailsTheDocument)
{
    StageEarlier();
    EXPECT_THAT(NicFailure(R"("ports": [{"id": "a"}, {}])"),
                StartsWith("2000 SetDesiredSmartnicConfiguration failed: "));
    EXPECT_EQ(Failure(R"({"nimb": []})"),
              "2000 SetDesiredSmartnicConfiguration failed: JSON error: /nimb is not an object");
    ExpectEarlier();
}

TEST_F(SmartnicConfigTest, WithoutASchemaStoreNothingIsBegun)
{
    StageEarlier();
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    EXPECT_EQ(Failure(), "2000 Failed to attach schema store");
    ExpectEarlier();
}

TEST_F(SmartnicConfigTest, AFailedDetachIsLoggedAndTheStagingStands)
{
    const StoreFault fault(SQLITE_DETACH, "");
    Set("{}");
    EXPECT_EQ(BootMode(), "3");
    EXPECT_THAT(Host().Log(), Contains("error Failed to detach schema store"));
    EXPECT_EQ(Host().Log().back(), DONE);
}

TEST_F(SmartnicConfigTest, AFailedDetachAfterAFailureIsLoggedAndTheFailureReported)
{
    StageEarlier();
    {
        const StoreFault fault(SQLITE_DETACH, "");
        EXPECT_EQ(NicFailure(R"("clock": 7)"), INVALID);
    }
    EXPECT_EQ(Host().Log().back(), "error Failed to detach schema store");
    ExpectEarlier();
}

TEST_F(SmartnicConfigTest, EveryEndOfTheCallReleasesTheStores)
{
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    Set("{}");
    EXPECT_EQ(NicFailure(R"("clock": 7)"), INVALID);
    ASSERT_EQ(DBStore::BeginTransaction(store), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::CancelTransaction(store), DBStore::SUCCESS);
    EXPECT_EQ(DBStore::AttachSchemaStore(store), DBStore::SUCCESS);
    EXPECT_EQ(Failure(), "2000 Failed to attach schema store");
    EXPECT_EQ(DBStore::DetachSchemaStore(store), DBStore::SUCCESS);
}

// ---- A database library that takes words in double quotes for names only -------------------------------------------

// SQLite declares the entry of an extension without parameters and calls it with these.
int TakeDoubleQuotesForNames(sqlite3* database, const char**, const void*)
{
    return sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
}

/// As such a library opens its connections.
class DoubleQuotesAreNames
{
public:
    DoubleQuotesAreNames() { sqlite3_auto_extension(Entry()); }
    ~DoubleQuotesAreNames() { sqlite3_cancel_auto_extension(Entry()); }
    DoubleQuotesAreNames(const DoubleQuotesAreNames&) = delete;
    DoubleQuotesAreNames& operator=(const DoubleQuotesAreNames&) = delete;

private:
    static void (*Entry())() { return reinterpret_cast<void (*)()>(TakeDoubleQuotesForNames); }
};

TEST_F(SmartnicConfigTest, ADatabaseLibraryThatTakesDoubleQuotesForNamesIsToldToTakeThemForTexts)
{
    const DoubleQuotesAreNames names;
    ASSERT_THROW(Host().Sql("SELECT \"SET_DEFAULT\""), std::runtime_error);
    Set("{}");
    EXPECT_THAT(Staged(), ElementsAre("clock/NULL NULL NULL SET_DEFAULT", "name/NULL NULL NULL DELETE",
                                      "ports/NULL NULL NULL DELETE"));
}

// ---- Failures -----------------------------------------------------------------------------------------------------

class RefusedSmartnicStaging : public SmartnicConfigTest, public testing::WithParamInterface<Refusal>
{};

TEST_P(RefusedSmartnicStaging, LeavesTheEarlierStagingAndItsMode)
{
    StageEarlier();
    {
        const StoreFault fault(GetParam().action, GetParam().argument);
        EXPECT_EQ(NicFailure(R"("clock": "DELETE_DEFAULT")"), GetParam().failure);
    }
    ExpectEarlier();
}

INSTANTIATE_TEST_SUITE_P(
    SmartnicConfig, RefusedSmartnicStaging,
    testing::Values(
        Refusal{SQLITE_TRANSACTION, "BEGIN", "2000 Failed to start set desired transaction"},
        Refusal{SQLITE_DELETE, "DesiredUserConfig",
                "2000 SetDesiredSmartnicConfiguration failed: Failed to cleanup desired configuration."},
        Refusal{SQLITE_INSERT, "DesiredUserConfig",
                "2000 SetDesiredSmartnicConfiguration failed: Write desired config failed"},
        Refusal{SQLITE_READ, "SmartnicSchema",
                "2000 SetDesiredSmartnicConfiguration failed: Failed to initialize the configuration for smartnic."},
        Refusal{SQLITE_INSERT, "KeyValue", "2000 SetDesiredSmartnicConfiguration failed: Failed to set boot mode 3"},
        Refusal{SQLITE_TRANSACTION, "COMMIT",
                "2000 SetDesiredSmartnicConfiguration failed: Failed to commit set desired transaction"}));

// ---- Into the next boot -------------------------------------------------------------------------------------------

class SmartnicBootTest : public BootHostTest
{
protected:
    static void Set(const std::string& text)
    {
        JsonDocument document;
        ASSERT_TRUE(ConfigStoreDocument::ParseText(text, document));
        SetDesiredSmartnicConfiguration(document);
    }
};

TEST_F(SmartnicBootTest, TheNextBootAppliesWhatWasStaged)
{
    AddRow("network/vswitch", "gone", R"({"name":"gone"})");
    AddRow("network/vswitch", "kept", R"({"name":"kept"})");
    AddRow("security/accounts", "guest", R"({"name":"guest"})");
    Set(R"({"nimb": {"network": {"vswitch": [{"name": "kept", "mtu": 9000}, {"name": "new"}],
                                 "dns": "DELETE_DEFAULT"}}})");
    EXPECT_EQ(UserValue("network/vswitch", "new"), "none");
    ASSERT_EQ(LoadStore(false), 0);
    EXPECT_EQ(UserValue("network/vswitch", "gone"), "none");
    EXPECT_EQ(UserValue("network/vswitch", "kept"), R"({"name":"kept","mtu":9000})");
    EXPECT_EQ(UserValue("network/vswitch", "new"), R"({"name":"new"})");
    EXPECT_EQ(UserValue("security/accounts", "guest"), R"({"name":"guest"})");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
}

TEST_F(SmartnicBootTest, AnEmptyDocumentRemovesSharedRowsAtTheNextBoot)
{
    AddRow("network/vswitch", "gone", R"({"name":"gone"})");
    AddRow("network/dns", "", R"({"hostname":"kept"})");
    Set("{}");
    ASSERT_EQ(LoadStore(false), 0);
    EXPECT_EQ(UserValue("network/vswitch", "gone"), "none");
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname":"kept"})");
}
}  // namespace
