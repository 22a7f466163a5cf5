#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Findings.h"

using NimbConfigStore::JsonDocument;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

// ---- Reports ------------------------------------------------------------------------------------------------------

TEST(JsonValidator, AValueThatKeepsToItsSchemaGivesAnEmptyReport)
{
    EXPECT_THAT(FindingsOf(R"({"type": "object", "properties": {"port": {"type": "integer"}}})", R"({"port": 22})"),
                IsEmpty());
}

TEST(JsonValidator, EveryFindingIsReportedOnceAndWithoutItsParents)
{
    const std::string schema = R"({"type": "object", "required": ["name"], "additionalProperties": false,
        "properties": {"name": {"type": "string"}, "nic": {"type": "object", "properties": {
            "mtu": {"type": "integer", "minimum": 68}, "mode": {"enum": ["on", "off"]}}}}})";
    EXPECT_THAT(FindingsOf(schema, R"({"nic": {"mtu": 10, "mode": "auto"}, "speed": 5})"),
                UnorderedElementsAre(": expected the member \"name\", found an object of 2 members",
                                     "/nic/mtu: expected at least 68, found 10",
                                     "/nic/mode: expected one of \"on\", \"off\", found \"auto\"",
                                     "/speed: expected no such member, found 5"));
}

TEST(JsonValidator, APlaceIsAnEscapedPointerBehindTheName)
{
    const std::string schema = R"({"properties": {"a/b": {"properties": {"c~d": {"items": {"type": "string"}}}}}})";
    EXPECT_THAT(FindingsOf(schema, R"({"a/b": {"c~d": ["x", 1]}})", VALUE_RULES, "nimb/network/dns"),
                ElementsAre("nimb/network/dns/a~1b/c~0d/1: expected the type string, found 1"));
}

TEST(JsonValidator, ALongValueIsCutWhereACharacterEnds)
{
    std::string text;
    for (int i = 0; i < 60; ++i) {
        text += "\xC3\xA4";
    }
    const std::vector<std::string> findings = FindingsOf(R"({"type": "integer"})", "\"" + text + "\"");
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0], ": expected the type integer, found \"" + text.substr(0, 80) + "\"...");
}

TEST(JsonValidator, TheReportReplacesWhatTheDocumentHeld)
{
    JsonDocument schema;
    JsonDocument value;
    JsonDocument report;
    ParseInto(schema, "{}");
    ParseInto(value, "1");
    ParseInto(report, R"([{"field": "old"}])");
    JsonValidator::Validate(schema, value, report, VALUE_RULES, "");
    ASSERT_TRUE(report.IsArray());
    EXPECT_EQ(report.Size(), 0u);
}

// ---- Rules --------------------------------------------------------------------------------------------------------

TEST(JsonValidator, ARuleThatIsNotInTheSetIsNotApplied)
{
    struct Case
    {
        int rule;
        const char* schema;
        const char* value;
    };
    const Case cases[] = {
        {0, R"({"type": "string"})", "1"},
        {0, R"({"enum": [1]})", "2"},
        {0, R"({"const": 1})", "2"},
        {1, R"({"required": ["a"]})", "{}"},
        {1, R"({"dependencies": {"a": ["b"]}})", R"({"a": 1})"},
        {1, R"({"dependencies": {"a": {"required": ["b"]}}})", R"({"a": 1})"},
        {1, R"({"minProperties": 1})", "{}"},
        {1, R"({"maxProperties": 0})", R"({"a": 1})"},
        {2, R"({"format": "ipv4"})", R"("1.2.3")"},
        {3, R"({"minimum": 2})", "1"},
        {3, R"({"maximum": 2})", "3"},
        {3, R"({"exclusiveMinimum": 2})", "2"},
        {3, R"({"exclusiveMaximum": 2})", "2"},
        {3, R"({"multipleOf": 2})", "3"},
        {3, R"({"minLength": 2})", R"("a")"},
        {3, R"({"maxLength": 1})", R"("ab")"},
        {3, R"({"pattern": "^a$"})", R"("b")"},
        {4, R"({"default": 5})", "5"},
        {5, R"({"readOnly": true})", "5"},
        {6, R"({"deprecated": true})", "5"},
        {7, R"({"items": false})", "[1]"},
        {7, R"({"items": [true], "additionalItems": false})", "[1, 2]"},
        {7, R"({"minItems": 1})", "[]"},
        {7, R"({"maxItems": 0})", "[1]"},
        {7, R"({"uniqueItems": true})", "[1, 1]"},
        {7, R"({"contains": false})", "[1]"},
        {8, R"({"properties": {"a": false}})", R"({"a": 1})"},
        {8, R"({"patternProperties": {"^a": false}})", R"({"ab": 1})"},
        {8, R"({"additionalProperties": false})", R"({"a": 1})"},
        {8, R"({"propertyNames": false})", R"({"a": 1})"},
    };
    const std::set<int> every{0, 1, 2, 3, 4, 5, 6, 7, 8};
    for (const Case& one : cases) {
        std::set<int> others = every;
        others.erase(one.rule);
        EXPECT_EQ(FindingsOf(one.schema, one.value, {one.rule}).size(), 1u) << one.schema;
        EXPECT_THAT(FindingsOf(one.schema, one.value, others), IsEmpty()) << one.schema;
    }
}

TEST(JsonValidator, CombinatorsApplyUnderEverySetOfRules)
{
    for (const char* schema :
         {R"({"allOf": [false]})", R"({"anyOf": [false]})", R"({"oneOf": [true, true]})", R"({"not": true})",
          R"({"if": true, "then": false})", R"({"if": false, "else": false})"}) {
        EXPECT_EQ(FindingsOf(schema, "1", {}).size(), 1u) << schema;
    }
}
