#include <gmock/gmock.h>

#include "ConfigStoreException.h"
#include "NimbSchemaStore.h"
#include "TestHost.h"

using namespace NimbSchemaStore;
using NimbConfigStore::ConfigStoreException;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{
const char* const DNS = R"({"component": "nimb", "group": "network", "key": "dns", "version": "3.1",
    "schemaType": 2, "dspIntegrated": true, "mutableDefaultConfig": true, "preserveNonUser": true, "noRestore": 0,
    "smartnic": {"schema": "nimb-shared"},
    "schema": {"type": "object", "properties": {"servers": {"type": "array", "items": {"type": "string"}}}}})";

const char* const USERS = R"({"component": "nimb", "group": "auth", "key": "users", "singleton": false,
    "schemaType": 5, "excludedInstances": ["root", "dcui"], "solutionUserInstances": ["svc"],
    "schema": {"type": "object", "properties": {"name": {"$ref": "#/definitions/n"},
        "login": {"type": "string", "instanceId": true}}, "definitions": {"n": {"type": "string"}}}})";

const char* const HOSTS = R"({"component": "files", "group": "host", "key": "hosts",
    "file": {"enabled": true, "persistence": "vital", "path": "/etc/hosts"}})";

const char* const SAMPLES = R"({"component": "perf", "group": "data", "key": "samples", "dataFile": true})";

std::string Singleton(const std::string& group, const std::string& key)
{
    return R"({"component": "nimb", "group": ")" + group + R"(", "key": ")" + key +
           R"(", "schema": {"type": "object"}})";
}

class SchemaStoreTest : public HostTest
{
protected:
    SchemaStoreTest() { Host().WithStores(); }

    static void Set(const SchemaStorePtr& run, const std::string& schemaId, const char* json, const SchemaObjectId& id,
                    bool hasSmartnic = false)
    {
        SetSchema(schemaId, id.component, id.group, id.name, json, run, hasSmartnic);
    }

    static void SetKey(const SchemaStorePtr& run, const std::string& schemaId, const std::string& key)
    {
        Set(run, schemaId, Singleton("g", key).c_str(), {"nimb", "g", key});
    }

    static void SetAll(const SchemaStorePtr& run)
    {
        Set(run, "net-1.2.0_1.0", DNS, {"nimb", "network", "dns"}, true);
        Set(run, "auth-2.0.0_1.0", USERS, {"nimb", "auth", "users"});
        Set(run, "files-1.0.0_1.0", HOSTS, {"files", "host", "hosts"});
        Set(run, "perf-1.0.0_1.0", SAMPLES, {"perf", "data", "samples"});
    }

    static void RegisterAll()
    {
        const SchemaStorePtr run = SchemaStore::GetStore(true);
        SetAll(run);
        RemoveUndeclaredSchemas({}, run);
    }

    std::vector<Row> Rows(const std::string& sql) { return Host().Sql(sql, DBStore::Type::SchemaStore); }

    std::vector<std::string> Keys()
    {
        std::vector<std::string> keys;
        for (const SchemaObjectId& id : SchemaStore::GetStore(false)->GetCache()->GetIds()) {
            keys.push_back(id.name);
        }
        return keys;
    }
};
}  // namespace

// ---- What is registered -------------------------------------------------------------------------------------------

TEST_F(SchemaStoreTest, AnElementsFlagsBecomeColumns)
{
    RegisterAll();
    EXPECT_THAT(Rows("SELECT DSPIntegrated, SchemaType, MutableDefaultConfig, PreserveNonUser, NoRestore, Singleton, "
                     "Version, SchemaId FROM ConfigSchema WHERE Name = 'dns'"),
                ElementsAre(Row{"1", "2", "1", "1", "0", "1", "3.1", "net-1.2.0_1.0"}));
    EXPECT_EQ(Host().SqlValue("SELECT SchemaJson FROM ConfigSchema WHERE Name = 'dns'", DBStore::Type::SchemaStore),
              DNS);
}

TEST_F(SchemaStoreTest, DefaultsApplyToWhatAnElementLeavesOut)
{
    RegisterAll();
    EXPECT_THAT(Rows("SELECT DSPIntegrated, SchemaType, MutableDefaultConfig, PreserveNonUser, NoRestore, Singleton, "
                     "Version FROM ConfigSchema WHERE Name = 'hosts'"),
                ElementsAre(Row{"0", "0", "0", "0", "1", "1", "1.0.0_1.0"}));
}

TEST_F(SchemaStoreTest, APlacementIsKeptAndForgottenWithTheElementThatSaysIt)
{
    RegisterAll();
    EXPECT_THAT(Rows("SELECT * FROM SmartnicSchema"), ElementsAre(Row{"nimb", "network", "dns", "nimb-shared"}));
    const SchemaStorePtr run = SchemaStore::GetStore(true);
    Set(run, "net-1.2.0_1.0", Singleton("network", "dns").c_str(), {"nimb", "network", "dns"});
    RemoveUndeclaredSchemas({}, run);
    EXPECT_THAT(Rows("SELECT * FROM SmartnicSchema"), IsEmpty());
}

TEST_F(SchemaStoreTest, ADataFileKeyIsNoConfigurationObject)
{
    RegisterAll();
    EXPECT_THAT(Rows("SELECT Component, KEY, SchemaId FROM DataFileSchema"),
                ElementsAre(Row{"perf", "samples", "perf-1.0.0_1.0"}));
    EXPECT_THAT(Keys(), ElementsAre("hosts", "users", "dns"));
}

// ---- Schema objects -----------------------------------------------------------------------------------------------

TEST_F(SchemaStoreTest, ASingletonIsValidatedAgainstItsInstanceSchema)
{
    RegisterAll();
    const SchemaStorePtr store = SchemaStore::GetStore(false);
    const SchemaObjectPtr dns = GetSchema("nimb", "network", "dns", store);
    ASSERT_NE(dns, nullptr);
    EXPECT_FALSE(dns->IsMultiInstance());
    EXPECT_TRUE(dns->HasMutableDefaultConfig());
    EXPECT_EQ(dns->GetVersion(), "3.1");
    EXPECT_EQ(dns->GetId().toString(), "nimb/network/dns");
    EXPECT_EQ(dns->GetInstanceIdProperty(), "");
    EXPECT_EQ(&dns->GetSchema(), &dns->GetInstanceSchema());
    EXPECT_STREQ(dns->GetSchema()["type"].GetString(), "object");
}

TEST_F(SchemaStoreTest, AnObjectOfManyInstancesIsValidatedAgainstAnArray)
{
    RegisterAll();
    const SchemaObjectPtr users = SchemaStore::GetStore(false)->GetCache()->Get({"nimb", "auth", "users"});
    EXPECT_TRUE(users->IsMultiInstance());
    EXPECT_EQ(users->GetInstanceIdProperty(), "login");
    EXPECT_THAT(users->GetExcludedInstances(), ElementsAre("root", "dcui"));
    EXPECT_THAT(users->GetSolutionUserInstances(), ElementsAre("svc"));
    EXPECT_STREQ(users->GetSchema()["type"].GetString(), "array");
    EXPECT_STREQ(users->GetInstanceSchema()["properties"]["name"]["$ref"].GetString(), "#/definitions/n");
    EXPECT_STREQ(users->GetSchema()["items"]["properties"]["name"]["$ref"].GetString(), "#/items/definitions/n");
}

TEST_F(SchemaStoreTest, AFileAnswersWhatItsElementSays)
{
    RegisterAll();
    const SchemaStorePtr store = SchemaStore::GetStore(false);
    const SchemaObjectPtr hosts = store->GetSchema("files", "host", "hosts");
    bool enabled = false;
    std::string persistence;
    std::string path;
    EXPECT_TRUE(hosts->GetFileEnabled(enabled) && hosts->GetFilePersistence(persistence) && hosts->GetFilePath(path));
    EXPECT_TRUE(enabled);
    EXPECT_EQ(persistence, "vital");
    EXPECT_EQ(path, "/etc/hosts");
    const SchemaObjectPtr dns = store->GetSchema("nimb", "network", "dns");
    EXPECT_FALSE(dns->GetFileEnabled(enabled) || dns->GetFilePersistence(persistence) || dns->GetFilePath(path));
}

// ---- Look-ups -----------------------------------------------------------------------------------------------------

TEST_F(SchemaStoreTest, AnUnknownObjectIsNullToFindAndAnErrorToGet)
{
    RegisterAll();
    const SchemaStorePtr store = SchemaStore::GetStore(false);
    EXPECT_EQ(GetSchema("nimb", "network", "none", store), nullptr);
    EXPECT_EQ(store->GetCache()->Find({"nimb", "network", "none"}), nullptr);
    try {
        (void)store->GetCache()->Get({"nimb", "network", "none"});
        FAIL() << "found";
    } catch (const ConfigStoreException& error) {
        EXPECT_EQ(error.code(), 2000);
        EXPECT_STREQ(error.what(), "Schema not found for nimb/network/none");
    }
}

TEST_F(SchemaStoreTest, ObjectsAreFoundByKindByComponentAndByTheirDefault)
{
    RegisterAll();
    const SchemaStorePtr store = SchemaStore::GetStore(false);
    ASSERT_EQ(store->GetObjectsOfKind(5).size(), 1u);
    EXPECT_EQ(store->GetObjectsOfKind(5)[0]->GetId().name, "users");
    EXPECT_THAT(store->GetObjectsOfKind(7), IsEmpty());
    ASSERT_EQ(store->GetObjectsOfComponent("files").size(), 1u);
    EXPECT_EQ(store->GetObjectsOfComponent("nimb").size(), 2u);
    EXPECT_THAT(store->GetObjectsOfComponent("nim"), IsEmpty());
    EXPECT_THAT(store->GetCache()->GetMutableDefaultConfigIds(), ElementsAre(SchemaObjectId("nimb", "network", "dns")));
}

TEST_F(SchemaStoreTest, ACacheOutlivesItsStoreAndTheStoresFile)
{
    RegisterAll();
    const SchemaObjectCachePtr cache = SchemaStore::GetStore(false)->GetCache();
    Host().Remove("/var/lib/talvor/configstore/schema-store");
    EXPECT_EQ(cache->Get({"nimb", "auth", "users"})->GetInstanceIdProperty(), "login");
}

// ---- Registration runs --------------------------------------------------------------------------------------------

TEST_F(SchemaStoreTest, ARunThatIsDroppedLeavesTheSchemasOfThePreviousOne)
{
    RegisterAll();
    {
        const SchemaStorePtr run = SchemaStore::GetStore(true);
        SetKey(run, "net-2.0.0_1.0", "new");
        Set(run, "net-2.0.0_1.0", Singleton("network", "dns").c_str(), {"nimb", "network", "dns"});
    }
    EXPECT_THAT(Keys(), ElementsAre("hosts", "users", "dns"));
    EXPECT_EQ(SchemaStore::GetStore(false)->GetSchema("nimb", "network", "dns")->GetVersion(), "3.1");
}

TEST_F(SchemaStoreTest, SchemasOfUndeclaredPackagesAreDroppedWithTheirPlacements)
{
    RegisterAll();
    const SchemaStorePtr run = SchemaStore::GetStore(true);
    RemoveUndeclaredSchemas({"auth-2.0.0_1.0"}, run);
    EXPECT_THAT(Keys(), ElementsAre("users"));
    EXPECT_THAT(Rows("SELECT * FROM SmartnicSchema"), IsEmpty());
    EXPECT_THAT(Rows("SELECT * FROM DataFileSchema"), IsEmpty());
}

TEST_F(SchemaStoreTest, AnEmptyExpectationDropsNothing)
{
    RegisterAll();
    RemoveUndeclaredSchemas({}, SchemaStore::GetStore(true));
    EXPECT_THAT(Keys(), ElementsAre("hosts", "users", "dns"));
}

TEST_F(SchemaStoreTest, ANewerVersionReplacesAllSchemasOfTheOlder)
{
    const SchemaStorePtr first = SchemaStore::GetStore(true);
    SetKey(first, "net-drv-1.0.0_1.0", "kept");
    SetKey(first, "net-drv-1.0.0_1.0", "gone");
    RemoveUndeclaredSchemas({"net-drv-1.0.0_1.0"}, first);
    const SchemaStorePtr second = SchemaStore::GetStore(true);
    SetKey(second, "net-drv-1.1.0_1.0", "kept");
    SetKey(second, "net-drv-1.1.0_1.0", "new");
    RemoveUndeclaredSchemas({"net-drv-1.1.0_1.0"}, second);
    EXPECT_THAT(Keys(), ElementsAre("kept", "new"));
}

TEST_F(SchemaStoreTest, APackageWhoseNewFileRegistersNothingKeepsItsLastGoodSchemas)
{
    const SchemaStorePtr first = SchemaStore::GetStore(true);
    SetKey(first, "net-drv-1.0.0_1.0", "a");
    SetKey(first, "net-1.0.0_1.0", "b");
    RemoveUndeclaredSchemas({"net-drv-1.0.0_1.0", "net-1.0.0_1.0"}, first);
    RemoveUndeclaredSchemas({"net-drv-1.1.0_1.0"}, SchemaStore::GetStore(true));
    EXPECT_THAT(Keys(), ElementsAre("a")) << "a package whose name only begins alike is another package";
}

TEST_F(SchemaStoreTest, APackageWhoseNewFileIsBrokenInTheMiddleKeepsWhatTheFileDidNotReplace)
{
    const SchemaStorePtr first = SchemaStore::GetStore(true);
    SetKey(first, "net-1.0.0_1.0", "a");
    SetKey(first, "net-1.0.0_1.0", "b");
    RemoveUndeclaredSchemas({"net-1.0.0_1.0"}, first);
    const SchemaStorePtr second = SchemaStore::GetStore(true);
    SetKey(second, "net-1.1.0_1.0", "a");
    EXPECT_THROW(Set(second, "net-1.1.0_1.0", R"({"component": "nimb"})", {"nimb", "g", "b"}), ConfigStoreException);
    RemoveUndeclaredSchemas({"net-1.1.0_1.0"}, second);
    EXPECT_THAT(Rows("SELECT Name, SchemaId FROM ConfigSchema ORDER BY Name"),
                ElementsAre(Row{"a", "net-1.1.0_1.0"}, Row{"b", "net-1.0.0_1.0"}));
}

TEST_F(SchemaStoreTest, ARunThatHasEndedOrNeverBeganTakesNothing)
{
    const SchemaStorePtr run = SchemaStore::GetStore(true);
    RemoveUndeclaredSchemas({}, run);
    EXPECT_THROW(SetKey(run, "net-1.0.0_1.0", "a"), ConfigStoreException);
    EXPECT_THROW(RemoveUndeclaredSchemas({}, run), ConfigStoreException);
    EXPECT_THROW(SetKey(SchemaStore::GetStore(false), "net-1.0.0_1.0", "a"), ConfigStoreException);
    EXPECT_THROW(SetKey(nullptr, "net-1.0.0_1.0", "a"), ConfigStoreException);
}

TEST_F(SchemaStoreTest, ARunSeesWhatItRegistered)
{
    const SchemaStorePtr run = SchemaStore::GetStore(true);
    SetKey(run, "net-1.0.0_1.0", "a");
    EXPECT_NE(run->GetSchema("nimb", "g", "a"), nullptr);
    SetKey(run, "net-1.0.0_1.0", "b");
    RemoveUndeclaredSchemas({}, run);
    EXPECT_THAT(Keys(), ElementsAre("a", "b"));
}

class NoSchemaStoreTest : public HostTest
{};

TEST_F(NoSchemaStoreTest, AMissingStoreIsAnErrorThatNamesItAndCreatesNothing)
{
    for (const bool writable : {false, true}) {
        try {
            (void)SchemaStore::GetStore(writable);
            FAIL() << "opened";
        } catch (const ConfigStoreException& error) {
            EXPECT_EQ(error.code(), 2000);
            EXPECT_THAT(error.what(), HasSubstr("/var/lib/talvor/configstore/schema-store"));
        }
    }
    EXPECT_FALSE(Host().Exists("/var/lib/talvor/configstore/schema-store"));
}
