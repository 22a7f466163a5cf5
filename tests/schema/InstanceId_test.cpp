#include "InstanceId.h"

#include <gmock/gmock.h>

#include "ConfigStoreDocument.h"
#include "NimbConfigStore.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{
/// An object "one" without identifier and an object "many" that is identified by "id".
class InstanceIdTest : public HostTest
{
protected:
    void SetUp() override
    {
        Host().WithStores().WithPackage("net", "1.0.0_0.1", R"([
            {"component": "nimb", "group": "network", "key": "one", "schema": {"type": "object"}},
            {"component": "nimb", "group": "network", "key": "many", "singleton": false, "schema": {"type": "object",
             "properties": {"id": {"type": "string", "instanceId": true}}}}])");
        ASSERT_TRUE(ProcessSchemas({}));
    }

    static std::string IdOf(const std::string& text, const char* key)
    {
        JsonDocument value;
        EXPECT_TRUE(ConfigStoreDocument::ParseText(text, value));
        const auto store = NimbSchemaStore::SchemaStore::GetStore(false);
        return GetInstanceIdFromValue(value, store->GetSchema("nimb", "network", key));
    }
};

TEST_F(InstanceIdTest, TheIdentifierIsTheTextOfTheMemberThatTheSchemaNames)
{
    EXPECT_EQ(IdOf(R"({"id": "vmk0"})", "many"), "vmk0");
    EXPECT_EQ(IdOf(R"({"id": ""})", "many"), "");
    EXPECT_EQ(IdOf(R"({"id": "a\u0000b"})", "many"), std::string("a\0b", 3));
}

TEST_F(InstanceIdTest, WithoutSuchAMemberInTheSchemaItIsEmpty)
{
    EXPECT_EQ(IdOf(R"({"id": "vmk0"})", "one"), "");
    EXPECT_EQ(IdOf("7", "one"), "");
}

TEST_F(InstanceIdTest, AValueThatLacksTheMemberThrowsItsName)
{
    for (const char* value : {"{}", "[]", "7", "null", R"({"ID": "vmk0"})"}) {
        EXPECT_THAT(ThrownBy([&] { (void)IdOf(value, "many"); }), AllOf(StartsWith("1032 "), HasSubstr("id"))) << value;
    }
}

TEST_F(InstanceIdTest, AnIdentifierThatIsNoTextIsAJsonError)
{
    EXPECT_THAT(ThrownBy([] { (void)IdOf(R"({"id": 7})", "many"); }), StartsWith("1082 JSON error:"));
}
}  // namespace
