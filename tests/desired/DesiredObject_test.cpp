#include "DesiredObject.h"

#include "NimbSchemaStore.h"
#include "StagingTest.h"
#include "StoreConnection.h"

using namespace NimbConfigStore;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace
{
constexpr const char* CONNECTED = "info Desired Orvnic {vmk0} is connected to GNX";

class DesiredObjectTest : public StagingTest
{
protected:
    static NimbSchemaStore::SchemaObjectPtr Schema(const std::string& key)
    {
        return NimbSchemaStore::SchemaStore::GetStore(false)->GetCache()->Get({"nimb", "network", key});
    }

    /// Stages one instance of an object of group "network".
    static void Stage(const std::string& key, JsonDocument& value, const char* version = "1")
    {
        ProcessDesiredObject(value.GetAllocator(), GetDBConnection(DBStore::Type::ConfigStore, true), version, "nimb",
                             "network", key.c_str(), Schema(key), value);
    }

    /// The same. @return the value as it then is.
    static std::string Stage(const std::string& key, const std::string& text)
    {
        JsonDocument value = Parsed(text);
        Stage(key, value);
        return TextOf(value);
    }

    /// An adapter that is connected to a switch.
    static std::string Adapter(const std::string& port, const std::string& type = "\"GNX\"")
    {
        return R"({"id":"vmk0","port_connection_type":)" + type + R"(,"gnx_port":)" + port + "}";
    }

    void LiveAdapter(const std::string& userValue) { Live("('network', 'orvnics', 'vmk0', " + userValue + ", NULL)"); }
};

TEST_F(DesiredObjectTest, ASingletonIsStagedWithTheEmptyIdentifier)
{
    Stage("dns", R"({ "ttl" : 3 })");
    EXPECT_THAT(Host().Sql("SELECT Component, ConfigGroup, Name, Identifier, Version, Value, VitalValue, CachedValue, "
                           "BootAction FROM DesiredUserConfig"),
                ElementsAre(Row{"nimb", "network", "dns", "", "1", R"({"ttl":3})", std::nullopt, std::nullopt, "SET"}));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(DesiredObjectTest, StagingAnInstanceAgainReplacesItsRow)
{
    for (const char* value : {R"({"id": "a", "x": 1})", R"({"id": "b"})", R"({"id": "a", "x": 2})"}) {
        Stage("orvnics", value);
    }
    EXPECT_THAT(Staged(), ElementsAre(R"(orvnics/a {"id":"a","x":2} NULL SET)", R"(orvnics/b {"id":"b"} NULL SET)"));
}

TEST_F(DesiredObjectTest, StagingASingletonAgainReplacesItsRow)
{
    Stage("dns", R"({"ttl": 1})");
    Stage("dns", R"({"ttl": 2})");
    EXPECT_THAT(Staged(), ElementsAre(R"(dns/ {"ttl":2} NULL SET)"));
}

TEST_F(DesiredObjectTest, AnInstanceGetsItsGeneratedIdentifierAndKeepsItWhenStagedAgain)
{
    JsonDocument route = Parsed(R"({"to": "a"})");
    Stage("routes", route);
    ASSERT_TRUE(route.HasMember("cs_generated_id"));
    const std::string identifier = route["cs_generated_id"].GetString();
    Stage("routes", route);
    Stage("routes", R"({"to": "a"})");
    EXPECT_THAT(Staged(), ElementsAre("routes/" + identifier + " " + TextOf(route) + " NULL SET"));
}

TEST_F(DesiredObjectTest, AnIdentifierIsKeptToItsLastByte)
{
    Stage("orvnics", R"({"id": "a\u0000b ' \" ü"})");
    EXPECT_EQ(Host().SqlValue("SELECT hex(Identifier) FROM DesiredUserConfig"),
              "61006220272022"
              "20C3BC");
}

TEST_F(DesiredObjectTest, AnInstanceWithoutItsIdentifierIsRefused)
{
    EXPECT_THAT(ThrownBy([] { Stage("orvnics", "{}"); }), StartsWith("1032 "));
    EXPECT_THAT(ThrownBy([] { Stage("orvnics", R"({"id": 7})"); }), StartsWith("1082 "));
    EXPECT_THAT(ThrownBy([] { Stage("orvnics", "7"); }), StartsWith("1032 "));
    EXPECT_THAT(Staged(), IsEmpty());
}

TEST_F(DesiredObjectTest, AFailedWriteIsAFailure)
{
    const StoreFault fault(SQLITE_INSERT, "DesiredUserConfig");
    EXPECT_EQ(ThrownBy([] { Stage("dns", "{}"); }), "2000 Write desired config failed");
}

TEST_F(DesiredObjectTest, TheCallersTransactionDecides)
{
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    ASSERT_EQ(DBStore::BeginTransaction(store), DBStore::SUCCESS);
    Stage("dns", "{}");
    EXPECT_THAT(ThrownBy([] { Stage("orvnics", "{}"); }), StartsWith("1032 "));
    ASSERT_EQ(DBStore::CancelTransaction(store), DBStore::SUCCESS);
    EXPECT_THAT(Staged(), IsEmpty());
}

TEST_F(DesiredObjectTest, EachElementOfAnArrayIsAnInstanceAndTheLastOneWins)
{
    JsonDocument value = Parsed(R"([{"id": "b", "x": 1}, {"id": "a"}, {"id": "b", "x": 2}])");
    ProcessDesiredInstances(value.GetAllocator(), GetDBConnection(DBStore::Type::ConfigStore, true), Schema("orvnics"),
                            value);
    EXPECT_THAT(Staged(), ElementsAre(R"(orvnics/a {"id":"a"} NULL SET)", R"(orvnics/b {"id":"b","x":2} NULL SET)"));
}

TEST_F(DesiredObjectTest, AnArrayThatIsASingletonsValueIsOneRow)
{
    JsonDocument value = Parsed(R"(["a", "b"])");
    ProcessDesiredInstances(value.GetAllocator(), GetDBConnection(DBStore::Type::ConfigStore, true), Schema("list"),
                            value);
    EXPECT_THAT(Staged(), ElementsAre(R"(list/ ["a","b"] NULL SET)"));
}

TEST_F(DesiredObjectTest, AnAdapterWithoutALiveRowIsStagedUnchanged)
{
    const std::string adapter = Adapter(R"({"port_key":"7"})");
    EXPECT_EQ(Stage("orvnics", adapter), adapter);
    EXPECT_THAT(Staged(), ElementsAre("orvnics/vmk0 " + adapter + " NULL SET"));
    EXPECT_THAT(Host().Log(),
                ElementsAre(CONNECTED, "info Orvnic {vmk0} not found on NIMB host, no GNX configuration to preserve."));
}

class LiveAdapterWithoutPort : public DesiredObjectTest, public testing::WithParamInterface<const char*>
{};

TEST_P(LiveAdapterWithoutPort, HasNothingToPreserve)
{
    LiveAdapter(GetParam());
    const std::string adapter = Adapter("{}");
    EXPECT_EQ(Stage("orvnics", adapter), adapter);
    EXPECT_THAT(Staged(), ElementsAre("orvnics/vmk0 " + adapter + " NULL SET"));
    EXPECT_THAT(Host().Log(),
                ElementsAre(CONNECTED, "info Orvnic {vmk0} not found on NIMB host, no GNX configuration to preserve."));
}
INSTANTIATE_TEST_SUITE_P(DesiredObject, LiveAdapterWithoutPort,
                         testing::Values("NULL", "'{}'", "''", "'{'", "'{} x'", "'[] []'", "'mark for deletion'"));

TEST_F(DesiredObjectTest, TheLivePortBindingReplacesTheDesiredOne)
{
    const std::string port = R"({"switch_uuid":"s","port_key":"k","connection_cookie":12345678901})";
    LiveAdapter("'" + Adapter(port) + "'");
    const std::string staged = Stage("orvnics", Adapter(R"({"port_key":"old","other":true})"));
    EXPECT_EQ(staged, Adapter(R"({"port_key":"k","other":true,"switch_uuid":"s","connection_cookie":12345678901})"));
    EXPECT_THAT(Staged(), ElementsAre("orvnics/vmk0 " + staged + " NULL SET"));
    EXPECT_THAT(Host().Log(), ElementsAre(CONNECTED, "info Orvnic {vmk0} GNX switch_uuid perserved.",
                                          "info Orvnic {vmk0} GNX port_key perserved.",
                                          "info Orvnic {vmk0} GNX connection_cookie perserved."));
}

TEST_F(DesiredObjectTest, AMemberThatTheLivePortLacksKeepsItsDesiredValue)
{
    LiveAdapter("'" + Adapter(R"({"port_key":"live"})") + "'");
    EXPECT_EQ(Stage("orvnics", Adapter(R"({"switch_uuid":"s","port_key":"k","connection_cookie":1})")),
              Adapter(R"({"switch_uuid":"s","port_key":"live","connection_cookie":1})"));
    EXPECT_THAT(Host().Log(), ElementsAre(CONNECTED, "info Orvnic {vmk0} GNX port_key perserved."));
}

TEST_F(DesiredObjectTest, WhatIsPreservedBelongsToTheDocument)
{
    // Longer than what a JSON value holds within itself, so that it lies in the pool of whoever owns it.
    const std::string uuid(500, 'u');
    LiveAdapter("'" + Adapter(R"({"switch_uuid":[")" + uuid + R"("]})") + "'");
    JsonDocument adapter = Parsed(Adapter("{}"));
    Stage("orvnics", adapter);
    EXPECT_EQ(TextOf(adapter), Adapter(R"({"switch_uuid":[")" + uuid + R"("]})"));
}

TEST_F(DesiredObjectTest, ADesiredPortThatIsNoObjectIsReplacedByTheBinding)
{
    LiveAdapter("'" + Adapter(R"({"port_key":"k"})") + "'");
    EXPECT_EQ(Stage("orvnics", Adapter("null")), Adapter(R"({"port_key":"k"})"));
}

struct Unpreserved
{
    const char* live;
    const char* desired;
};
[[maybe_unused]] void PrintTo(const Unpreserved& adapters, std::ostream* out)
{
    *out << adapters.desired;
}
class PortNotPreserved : public DesiredObjectTest, public testing::WithParamInterface<Unpreserved>
{};

TEST_P(PortNotPreserved, WhereEitherSideHoldsNoPortOfASwitch)
{
    LiveAdapter("'" + std::string(GetParam().live) + "'");
    EXPECT_EQ(Stage("orvnics", GetParam().desired), GetParam().desired);
    EXPECT_THAT(Host().Log(), ElementsAre(CONNECTED));
}

constexpr const char* BOUND = R"({"id":"vmk0","port_connection_type":"GNX","gnx_port":{"port_key":"k"}})";
INSTANTIATE_TEST_SUITE_P(
    DesiredObject, PortNotPreserved,
    testing::Values(Unpreserved{BOUND, R"({"id":"vmk0"})"},
                    Unpreserved{BOUND, R"({"id":"vmk0","port_connection_type":"GNX"})"},
                    Unpreserved{BOUND, R"({"id":"vmk0","gnx_port":{}})"},
                    Unpreserved{BOUND, R"({"id":"vmk0","port_connection_type":"gnx","gnx_port":{}})"},
                    Unpreserved{BOUND, R"({"id":"vmk0","port_connection_type":7,"gnx_port":{}})"},
                    Unpreserved{R"({"port_connection_type":"GNX"})", BOUND},
                    Unpreserved{R"({"gnx_port":{"port_key":"x"}})", BOUND},
                    Unpreserved{R"({"port_connection_type":"STD","gnx_port":{"port_key":"x"}})", BOUND},
                    Unpreserved{R"({"port_connection_type":["GNX"],"gnx_port":{"port_key":"x"}})", BOUND},
                    Unpreserved{R"({"port_connection_type":"GNX","gnx_port":"x"})", BOUND},
                    Unpreserved{R"({"port_connection_type":"GNX","gnx_port":{}})", BOUND}));

class InvalidLiveAdapter : public DesiredObjectTest, public testing::WithParamInterface<const char*>
{};

TEST_P(InvalidLiveAdapter, FailsTheStaging)
{
    LiveAdapter("'" + std::string(GetParam()) + "'");
    EXPECT_EQ(ThrownBy([] { Stage("orvnics", BOUND); }), "2000 Orvnic configuration is invalid.");
    EXPECT_THAT(Staged(), IsEmpty());
}
INSTANTIATE_TEST_SUITE_P(DesiredObject, InvalidLiveAdapter,
                         testing::Values("[]", "[{}]", "7", "null", "\"{}\"", "true"));

TEST_F(DesiredObjectTest, ALiveAdapterThatCannotBeReadFailsTheStaging)
{
    const StoreFault fault(SQLITE_READ, "Config");
    EXPECT_EQ(ThrownBy([] { Stage("orvnics", BOUND); }), "2000 Read orvnic configuration failed");
}

TEST_F(DesiredObjectTest, AFailureLeavesTheValueFitToBeStagedAgain)
{
    LiveAdapter("'" + Adapter(R"({"port_key":"live"})") + "'");
    JsonDocument adapter = Parsed(Adapter(R"({"port_key":"k"})"));
    {
        const StoreFault fault(SQLITE_INSERT, "DesiredUserConfig");
        EXPECT_EQ(ThrownBy([&] { Stage("orvnics", adapter); }), "2000 Write desired config failed");
    }
    Stage("orvnics", adapter);
    EXPECT_THAT(Staged(), ElementsAre("orvnics/vmk0 " + Adapter(R"({"port_key":"live"})") + " NULL SET"));
}
}  // namespace
