#include <gmock/gmock.h>

#include "ConfigStoreDocument.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace
{
JsonDocument Parsed(const std::string& text)
{
    JsonDocument document;
    EXPECT_TRUE(ConfigStoreDocument::ParseText(text, document)) << text;
    return document;
}

class ValidationTest : public HostTest
{
protected:
    static bool Check(const std::string& report) { return checkValidationErrors(Parsed(report)); }

    static bool ValidateObject(const std::string& schema, const std::string& value, bool allowDeleteDefault)
    {
        return ValidateUserObject(Parsed(schema), Parsed(value), "nimb/network/dns", allowDeleteDefault);
    }
};

TEST_F(ValidationTest, AnEmptyReportIsTrueAndLogsNothing)
{
    EXPECT_TRUE(Check("[]"));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(ValidationTest, EveryFindingOfAReportIsLogged)
{
    EXPECT_FALSE(Check(R"([{"field": "/a", "error": "first"}, {"field": "/b", "error": "second", "more": 1},
                           {"field": "", "error": "third"}])"));
    EXPECT_THAT(Host().Log(), ElementsAre("error Validation error at /a: first", "error Validation error at /b: second",
                                          "error Validation error at : third"));
}

class MalformedReport : public ValidationTest, public testing::WithParamInterface<const char*>
{};

TEST_P(MalformedReport, IsAJsonError)
{
    EXPECT_THAT(ThrownBy([] { (void)Check(GetParam()); }), StartsWith("1082 JSON error:"));
}

INSTANTIATE_TEST_SUITE_P(Validation, MalformedReport,
                         testing::Values("{}", "null", R"("text")", "[7]", "[{}]", R"([{"field": "/a"}])",
                                         R"([{"error": "first"}])", R"([{"field": 7, "error": "first"}])",
                                         R"([{"field": "/a", "error": null}])"));

TEST_F(ValidationTest, FindingsBeforeAMalformedOneAreLogged)
{
    EXPECT_THAT(ThrownBy([] { (void)Check(R"([{"field": "/a", "error": "first"}, {}])"); }), StartsWith("1082 "));
    EXPECT_THAT(Host().Log(), SizeIs(1));
}

TEST_F(ValidationTest, WhereItIsAllowedDeleteDefaultIsTheOnlyTextWhateverTheSchema)
{
    EXPECT_TRUE(ValidateObject(R"({"type": "object"})", R"("DELETE_DEFAULT")", true));
    for (const char* text : {R"("delete_default")", R"("DELETE_DEFAULT ")", R"("DELETE_DEFAULT\u0000")", R"("")"}) {
        EXPECT_FALSE(ValidateObject(R"({"type": "string"})", text, true)) << text;
    }
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(ValidationTest, ATextIsThenJudgedWithoutConsultingTheSchema)
{
    const std::string unusable = R"({"type": "nonsense"})";
    EXPECT_THAT(ThrownBy([&] { (void)ValidateObject(unusable, "{}", true); }), StartsWith("2000 Unusable schema"));
    EXPECT_TRUE(ValidateObject(unusable, R"("DELETE_DEFAULT")", true));
    EXPECT_FALSE(ValidateObject(unusable, R"("anything")", true));
}

TEST_F(ValidationTest, ElsewhereATextIsCheckedLikeAnyOtherValue)
{
    EXPECT_FALSE(ValidateObject(R"({"type": "object"})", R"("DELETE_DEFAULT")", false));
    EXPECT_TRUE(ValidateObject(R"({"type": "string"})", R"("anything")", false));
}

TEST_F(ValidationTest, EveryFindingOfAnObjectIsLoggedUnderItsName)
{
    EXPECT_FALSE(ValidateObject(R"({"properties": {"a": {"type": "string"}, "b": {"minimum": 1}}, "required": ["c"],
                                    "additionalProperties": false})",
                                R"({"a": 1, "b": 0, "d": 2})", true));
    for (const char* place : {"/a", "/b"}) {
        EXPECT_THAT(Host().Log(), Contains(AllOf(HasSubstr("nimb/network/dns"), HasSubstr(place))));
    }
    EXPECT_THAT(Host().Log(), SizeIs(4));
}

TEST_F(ValidationTest, FormatsAreNoRuleHere)
{
    EXPECT_TRUE(ValidateObject(R"({"format": "ipv4"})", R"("no address")", false));
}

class DocumentValidationTest : public ValidationTest
{
protected:
    void SetUp() override
    {
        Host().WithStores().WithPackage("net", "1.0.0_0.1", R"([
            {"component": "nimb", "group": "network", "key": "dns", "mutableDefaultConfig": true, "dspIntegrated": true,
             "schema": {"type": "object", "properties": {"ttl": {"type": "integer"}}}},
            {"component": "nimb", "group": "network", "key": "nics", "singleton": false, "dspIntegrated": true,
             "schema": {"type": "object", "properties": {"id": {"type": "string", "instanceId": true}},
             "required": ["id"]}}])");
        ASSERT_TRUE(ProcessSchemas({}));
        Host().ClearLogs();
    }

    static bool Validate(const std::string& text)
    {
        JsonDocument desired = Parsed(text);
        return ValidateDesiredDocument(desired, NimbSchemaStore::SchemaStore::GetStore(false)->GetCache());
    }
};

TEST_F(DocumentValidationTest, AGoodDocumentIsAccepted)
{
    EXPECT_TRUE(Validate(R"({"nimb": {"network": {"dns": {"ttl": 3}, "nics": [{"id": "a"}]}}})"));
    EXPECT_TRUE(Validate(R"({"profile": {"nimb": {"network": {"dns": "DELETE_DEFAULT"}}}})"));
    EXPECT_TRUE(Validate("{}"));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(DocumentValidationTest, WithoutACacheNothingIsJudged)
{
    JsonDocument desired = Parsed("{}");
    EXPECT_EQ(ThrownBy([&] { (void)ValidateDesiredDocument(desired, nullptr); }),
              "2000 A desired document cannot be validated without schemas");
}

TEST_F(DocumentValidationTest, EveryBadObjectIsNamed)
{
    EXPECT_FALSE(Validate(R"({"nimb": {"network": {"dns": {"ttl": "x"}, "nics": [{"id": "a"}, {}]}}})"));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("/nimb/network/dns/ttl")));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("/nimb/network/nics/1")));
}

TEST_F(DocumentValidationTest, AnUnknownObjectIsRefused)
{
    EXPECT_FALSE(Validate(R"({"nimb": {"network": {"unheard": {}}}})"));
    EXPECT_FALSE(Validate(R"({"nimb": {"network": {"nics": "DELETE_DEFAULT"}}})"));
}
}  // namespace
