#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Findings.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(JsonValidatorCombinators, EveryPartOfAllOfReportsItsOwnFindings)
{
    EXPECT_THAT(FindingsOf(R"({"allOf": [{"minimum": 5}, {"multipleOf": 2}, {"maximum": 9}]})", "3"),
                ElementsAre(": expected at least 5, found 3", ": expected a multiple of 2, found 3"));
}

TEST(JsonValidatorCombinators, TheOnlyAlternativeOfTheValuesKindReportsItsFindings)
{
    const std::string schema = R"({"anyOf": [{"type": "object", "properties": {"port": {"type": "integer"}}},
        {"const": "DELETE_DEFAULT"}]})";
    EXPECT_TRUE(Accepts(schema, "\"DELETE_DEFAULT\""));
    EXPECT_THAT(FindingsOf(schema, R"({"port": "x"})"), ElementsAre("/port: expected the type integer, found \"x\""));
    EXPECT_THAT(FindingsOf(schema, R"("delete_default")"),
                ElementsAre(": expected the type object; or expected \"DELETE_DEFAULT\", found \"delete_default\""));
}

TEST(JsonValidatorCombinators, SeveralNearAlternativesGiveOneFinding)
{
    EXPECT_THAT(FindingsOf(R"({"anyOf": [{"required": ["a"]}, {"properties": {"b": false}}]})", R"({"b": 1})"),
                ElementsAre(": expected the member \"a\"; or expected no value at /b, found an object of 1 member"));
}

TEST(JsonValidatorCombinators, OneOfWantsExactlyOne)
{
    const std::string schema = R"({"oneOf": [{"minimum": 5}, {"multipleOf": 2}]})";
    EXPECT_TRUE(Accepts(schema, "7"));
    EXPECT_THAT(FindingsOf(schema, "6"), ElementsAre(": expected exactly one of 2 alternatives, but 2 apply, found 6"));
    EXPECT_THAT(FindingsOf(schema, "3"), SizeIs(1));
}

TEST(JsonValidatorCombinators, NotTurnsTheAnswerRound)
{
    EXPECT_TRUE(Accepts(R"({"not": {"type": "string"}})", "1"));
    EXPECT_THAT(FindingsOf(R"({"not": {"type": "string"}})", "\"a\""), SizeIs(1));
    EXPECT_TRUE(Accepts(R"({"not": {"not": {"type": "string"}}})", "\"a\""));
}

TEST(JsonValidatorCombinators, AConditionChoosesTheSchemaThatReports)
{
    const std::string schema = R"({"if": {"properties": {"dhcp": {"const": true}}}, "then": {"maxProperties": 1},
        "else": {"required": ["address"]}})";
    EXPECT_TRUE(Accepts(schema, R"({"dhcp": true})"));
    EXPECT_THAT(FindingsOf(schema, R"({"dhcp": true, "address": 1})"),
                ElementsAre(": expected at most 1 member, found an object of 2 members"));
    EXPECT_THAT(FindingsOf(schema, R"({"dhcp": false})"),
                ElementsAre(": expected the member \"address\", found an object of 1 member"));
    EXPECT_TRUE(Accepts(R"({"then": false})", "1"));
}

TEST(JsonValidatorCombinators, ReferencesLeadIntoTheSameSchema)
{
    const std::string schema = R"({"properties": {"a": {"$ref": "#/definitions/port"}, "b": {"$ref": "#/$defs/p%20q"},
        "c": {"$ref": "#/properties/d"}, "d": {"type": "string"}},
        "definitions": {"port": {"$ref": "#/$defs/p%20q"}}, "$defs": {"p q": {"type": "integer"}}})";
    EXPECT_THAT(FindingsOf(schema, R"({"a": "x", "b": "y", "c": 5, "d": "z"})"),
                ElementsAre("/a: expected the type integer, found \"x\"", "/b: expected the type integer, found \"y\"",
                            "/c: expected the type string, found 5"));
}

TEST(JsonValidatorCombinators, ASchemaMayBeAReferenceAsAWhole)
{
    const std::string schema = R"({"$ref": "#/definitions/a~1b", "definitions": {"a/b": {"minimum": 5}}})";
    EXPECT_THAT(FindingsOf(schema, "3"), ElementsAre(": expected at least 5, found 3"));
    EXPECT_THAT(FindingsOf(schema, "7"), IsEmpty());
}

TEST(JsonValidatorCombinators, PropertiesWhosePathsLookAlikeKeepTheirOwnSchemas)
{
    const std::string schema = R"({"properties": {"a": {"properties": {"b": {"$ref": "#/definitions/0"}}},
        "a/properties/b": {"type": "string"}}, "definitions": {"0": {"type": "integer"}}})";
    EXPECT_TRUE(Accepts(schema, R"({"a": {"b": 1}, "a/properties/b": "x"})"));
    EXPECT_FALSE(Accepts(schema, R"({"a": {"b": "x"}})"));
    EXPECT_FALSE(Accepts(schema, R"({"a/properties/b": 1})"));
}

TEST(JsonValidatorCombinators, NamesAreCheckedWhereverTheirSchemaStands)
{
    for (const char* type : {"", R"("type": "object", )"}) {
        for (const char* holder : {R"({"properties": {"p": {"$ref": "#/definitions/m"}}, "definitions": {"m": *}})",
                                   R"({"properties": {"p": {"$ref": "#/definitions/l"}},
                                       "definitions": {"l": {"$ref": "#/definitions/m"}, "m": *}})",
                                   R"({"properties": {"p": *}})"}) {
            std::string schema = holder;
            schema.replace(schema.find('*'), 1, "{" + std::string(type) + R"("propertyNames": {"pattern": "^a"}})");
            EXPECT_THAT(FindingsOf(schema, R"({"p": {"a": 1}})"), IsEmpty()) << schema;
            EXPECT_THAT(FindingsOf(schema, R"({"p": {"a": 1, "b": {}}})"),
                        ElementsAre("/p/b: expected a string that matches \"^a\", found \"b\""))
                << schema;
        }
    }
}

TEST(JsonValidatorCombinators, TheSchemaOfNamesMayBeAReferenceABooleanOrReferredTo)
{
    const std::string definitions = R"(, "definitions": {"m": {"propertyNames": *}, "short": {"maxLength": 1}}})";
    const auto accepts = [&](const std::string& names, const std::string& value, const std::string& more = "") {
        std::string schema = R"({"properties": {"p": {"$ref": "#/definitions/m"})" + more + "}" + definitions;
        schema.replace(schema.find('*'), 1, names);
        return Accepts(schema, value);
    };
    EXPECT_TRUE(accepts(R"({"$ref": "#/definitions/short"})", R"({"p": {"a": 1}})"));
    EXPECT_FALSE(accepts(R"({"$ref": "#/definitions/short"})", R"({"p": {"ab": 1}})"));
    EXPECT_TRUE(accepts("false", R"({"p": {}})"));
    EXPECT_FALSE(accepts("false", R"({"p": {"a": 1}})"));
    EXPECT_TRUE(accepts("true", R"({"p": {"a": 1}})"));
    const std::string referring = R"(, "q": {"$ref": "#/definitions/m/propertyNames"})";
    EXPECT_TRUE(accepts(R"({"type": "string", "maxLength": 1})", R"({"p": {"a": 1}, "q": "b"})", referring));
    EXPECT_FALSE(accepts(R"({"type": "string", "maxLength": 1})", R"({"p": {"a": 1}, "q": "bc"})", referring));
}

TEST(JsonValidatorCombinators, ARuleThatIsNoneChangesNothing)
{
    const std::string schema = R"({"properties": {"p": {"$ref": "#/definitions/1"}},
        "definitions": {"0": {"type": "string"}, "1": {"type": "integer"}}})";
    for (const int none : {-3, -2, -1, 9, 31, 32, 1000}) {
        EXPECT_THAT(FindingsOf(schema, R"({"p": 1})", {0, 8, none}), IsEmpty()) << none;
        EXPECT_THAT(FindingsOf(schema, R"({"p": "x"})", {0, 8, none}),
                    ElementsAre("/p: expected the type integer, found \"x\""))
            << none;
    }
}
