#include <dlfcn.h>
#include <gmock/gmock.h>

#include <new>

#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "TestHost.h"

using namespace NimbConfigStore;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace
{
std::string keyWithoutMemory;  // for which the store finds no memory

std::string Element(const std::string& key, const std::string& more = "", const std::string& schema = "{}")
{
    return R"({"component": "nimb", "group": "network", "key": ")" + key + R"(", "schema": )" + schema +
           (more.empty() ? "" : ", " + more) + "}";
}

class SchemaRegistrationTest : public HostTest
{
protected:
    void SetUp() override { Host().WithStores(); }
    void TearDown() override { keyWithoutMemory.clear(); }

    bool Process(const std::string& data)
    {
        Host().WithPackage("net", "1.0.0_0.1", data);
        return ProcessSchemas({});
    }

    std::vector<std::string> Registered()
    {
        std::vector<std::string> keys;
        for (const Row& row : Host().Sql("SELECT Name FROM ConfigSchema ORDER BY Name", DBStore::Type::SchemaStore)) {
            keys.push_back(row[0].value_or("NULL"));
        }
        return keys;
    }

    void ExpectFileFailed()
    {
        EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.schema.file.error"));
        EXPECT_THAT(Host().Log(), AllOf(Contains("error [SchemaProcessor] Schema file has errors."),
                                        Contains("info [SchemaProcessor] Schema processing completed: failure"),
                                        Not(Contains(HasSubstr("Schema file processed successfully")))));
    }
};

const std::string ONE_OF_EACH = "[" + Element("plain") + "," +
                                Element("shared", R"("smartnic": {"schema": "nimb-shared"})") + "," +
                                Element("only", R"("smartnic": {"schema": "nimbio-only"})") + "]";

TEST_F(SchemaRegistrationTest, WithoutThePlacementSwitchEveryElementIsRegistered)
{
    Host().WriteFile("/etc/.nimbio", "");
    EXPECT_TRUE(Process(ONE_OF_EACH));
    EXPECT_THAT(Registered(), ElementsAre("only", "plain", "shared"));
}

TEST_F(SchemaRegistrationTest, AnOrdinaryHostLeavesOutTheSmartnicsOwnElements)
{
    Host().WithFeatures(R"({"nimbioPlacement": true})");
    EXPECT_TRUE(Process(ONE_OF_EACH));
    EXPECT_THAT(Registered(), ElementsAre("plain", "shared"));
    EXPECT_THAT(Host().Log(), AllOf(Contains("info [SchemaProcessor]: Skipping schema nimb/network/only for nimbio=0"),
                                    Not(Contains("info [SchemaProcessor]: This is nimbio booting up."))));
}

TEST_F(SchemaRegistrationTest, ASmartnicLeavesOutElementsWithoutPlacement)
{
    Host().WithFeatures(R"({"nimbioPlacement": true})");
    Host().MakeFolder("/etc/.nimbio");
    EXPECT_TRUE(Process(ONE_OF_EACH));
    EXPECT_THAT(Registered(), ElementsAre("only", "shared"));
    EXPECT_THAT(Host().Log(),
                AllOf(Contains("info [SchemaProcessor]: This is nimbio booting up."),
                      Contains("info [SchemaProcessor]: Skipping schema nimb/network/plain for nimbio=1")));
}

TEST_F(SchemaRegistrationTest, AnyOtherPlacementIsSkippedOnBothSides)
{
    Host().WithFeatures(R"({"nimbioPlacement": true})");
    const std::string odd = "[" + Element("a", R"("smartnic": {"schema": "elsewhere"})") + "," +
                            Element("b", R"("smartnic": {})") + "," + Element("c", R"("smartnic": {"schema": 7})") +
                            "," + Element("d", R"("smartnic": "nimb-shared")") + "]";
    EXPECT_TRUE(Process(odd));
    Host().WriteFile("/etc/.nimbio", "");
    EXPECT_TRUE(ProcessSchemas({}));
    EXPECT_THAT(Registered(), IsEmpty());
    for (const char* side : {"0", "1"}) {
        for (const char* key : {"a", "b", "c", "d"}) {
            EXPECT_THAT(Host().Log(), Contains("info [SchemaProcessor]: Skipping schema nimb/network/" +
                                               std::string(key) + " for nimbio=" + side));
        }
    }
}

TEST_F(SchemaRegistrationTest, ElementsBeforeTheBadOneStayRegistered)
{
    EXPECT_FALSE(
        Process("[" + Element("a") + R"(, {"component": "nimb", "key": "b", "schema": {}}, )" + Element("c") + "]"));
    EXPECT_THAT(Registered(), ElementsAre("a"));
    ExpectFileFailed();
    EXPECT_THAT(Host().Log(), Contains(AllOf(HasSubstr("net-1.0.0_0.1.json"), HasSubstr("group"))));
}

TEST_F(SchemaRegistrationTest, ABrokenElementDoesNotCostThoseAfterItTheirEarlierSchemas)
{
    ASSERT_TRUE(Process("[" + Element("a") + "," + Element("c") + "]"));
    EXPECT_FALSE(Process("[" + Element("a") + R"(, {"component": "nimb"}, )" + Element("c") + "]"));
    EXPECT_THAT(Registered(), ElementsAre("a", "c"));
}

class BadElement : public SchemaRegistrationTest, public testing::WithParamInterface<std::string>
{};

TEST_P(BadElement, FailsItsFileAndIsReported)
{
    Host().WithFeatures(R"({"nimbioPlacement": true})");
    EXPECT_FALSE(Process(GetParam()));
    EXPECT_THAT(Registered(), IsEmpty());
    ExpectFileFailed();
}

INSTANTIATE_TEST_SUITE_P(
    SchemaRegistration, BadElement,
    testing::Values("{}", "null", "\"text\"", "[7]", "[null]", "[[]]", "[{}]",
                    R"([{"component": 1, "group": 2, "key": 3}])",
                    R"([{"component": "nimb", "group": "network", "key": ["a"], "schema": {}}])",
                    "[" + Element("a", "", "7") + "]", "[" + Element("a", R"("singleton": "no")") + "]",
                    "[" + Element("a", R"("unheardOf": 1)") + "]", "[" + Element("a", "", R"({"$ref": "#"})") + "]",
                    "[" + Element("a", "", R"({"definitions": {"x": {"$ref": "#/definitions/y"}, "y": {"$ref":
                        "#/definitions/x"}}, "$ref": "#/definitions/x"})") +
                        "]",
                    "[" + Element("a", "", R"({"$ref": "#/definitions/nowhere"})") + "]",
                    "[" + Element("a", "", R"({"type": "string", "pattern": "("})") + "]",
                    "[" + Element("a", "", R"({"type": 7})") + "]"));

TEST_F(SchemaRegistrationTest, AFailureOfAnyOtherKindFailsItsFileAndTheRestGoesOn)
{
    keyWithoutMemory = "b";
    Host().WithPackage("other", "1.0.0_0.1", "[" + Element("d") + "]");
    EXPECT_FALSE(Process("[" + Element("a") + "," + Element("b") + "," + Element("c") + "]"));
    EXPECT_THAT(Registered(), ElementsAre("a", "d"));
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.schema.file.error"));
    EXPECT_EQ(Host().Events()[0].args, std::vector<std::string>{"net-1.0.0_0.1.json"});
    EXPECT_THAT(Host().Log(), AllOf(Contains("error [SchemaProcessor] Failed to process schema file: std::bad_alloc"),
                                    Contains("info [SchemaProcessor] Schema processing completed: failure")));
}
}  // namespace

// The store's own function behind one that can run out of memory.
void NimbSchemaStore::SetSchema(const std::string& schemaId, const std::string& component, const std::string& group,
                                const std::string& key, const std::string& schemaJson, const SchemaStorePtr& store,
                                bool hasSmartnic)
{
    static const auto set = reinterpret_cast<decltype(&SetSchema)>(
        dlsym(RTLD_NEXT,
              "_ZN15NimbSchemaStore9SetSchemaERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES7_S7_S7_S7_"
              "RKSt10shared_ptrINS_11SchemaStoreEEb"));
    if (!key.empty() && key == keyWithoutMemory) {
        throw std::bad_alloc();
    }
    set(schemaId, component, group, key, schemaJson, store, hasSmartnic);
}
