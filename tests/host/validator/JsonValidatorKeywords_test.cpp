#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Findings.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// ---- Types --------------------------------------------------------------------------------------------------------

TEST(JsonValidatorKeywords, AnIntegerIsWrittenAsOneAndFitsSixtyFourBits)
{
    const std::string integer = R"({"type": "integer"})";
    for (const char* value : {"0", "-9223372036854775808", "18446744073709551615"}) {
        EXPECT_TRUE(Accepts(integer, value)) << value;
    }
    for (const char* value : {"1.0", "1e2", "18446744073709551616", "\"1\"", "null"}) {
        EXPECT_FALSE(Accepts(integer, value)) << value;
    }
    EXPECT_TRUE(Accepts(R"({"type": "number"})", "18446744073709551616"));
}

TEST(JsonValidatorKeywords, AListOfTypesNamesThemAll)
{
    EXPECT_TRUE(Accepts(R"({"type": ["string", "null"]})", "null"));
    EXPECT_THAT(FindingsOf(R"({"type": ["string", "null"]})", "true"),
                ElementsAre(": expected the type null or string, found true"));
}

TEST(JsonValidatorKeywords, EnumAndConstCompareWholeValuesWhateverTheOrderOfMembers)
{
    EXPECT_TRUE(Accepts(R"({"enum": [{"a": 1, "b": [2]}]})", R"({"b": [2], "a": 1})"));
    EXPECT_TRUE(Accepts(R"({"const": 18446744073709551615})", "18446744073709551615"));
    EXPECT_FALSE(Accepts(R"({"const": 18446744073709551615})", "-1"));
    EXPECT_FALSE(Accepts(R"({"const": 1})", "1.0"));
    EXPECT_FALSE(Accepts(R"({"const": "1"})", "1"));
    EXPECT_THAT(FindingsOf(R"({"const": {"b": 1, "a": "x"}})", "[]"),
                ElementsAre(": expected {\"a\":\"x\",\"b\":1}, found an array of 0 elements"));
}

TEST(JsonValidatorKeywords, ALongEnumIsShownInPart)
{
    EXPECT_THAT(FindingsOf(R"({"enum": [1,2,3,4,5,6,7,8,9,10]})", "0"),
                ElementsAre(": expected one of 1, 2, 3, 4, 5, 6, 7, 8, ..., found 0"));
}

// ---- Values -------------------------------------------------------------------------------------------------------

TEST(JsonValidatorKeywords, BoundsApplyToNumbersOfEverySize)
{
    EXPECT_TRUE(Accepts(R"({"minimum": 0})", "18446744073709551615"));
    EXPECT_TRUE(Accepts(R"({"minimum": 1.5})", "1.5"));
    EXPECT_FALSE(Accepts(R"({"exclusiveMinimum": 1.5})", "1.5"));
    EXPECT_TRUE(Accepts(R"({"minimum": 5})", "\"a string is no number\""));
    EXPECT_THAT(FindingsOf(R"({"exclusiveMaximum": 3})", "3"), ElementsAre(": expected less than 3, found 3"));
    EXPECT_THAT(FindingsOf(R"({"maximum": 0.5})", "0.75"), ElementsAre(": expected at most 0.5, found 0.75"));
}

TEST(JsonValidatorKeywords, BoundsBeyondTheLargestSignedIntegerKeepTheirSign)
{
    for (const char* limit : {"9223372036854775808", "18446744073709551615"}) {
        for (const char* aside : {"", R"(, "oneOf": [true])"}) {
            const auto bound = [&](const char* keyword) {
                return "{\"" + std::string(keyword) + "\": " + limit + aside + "}";
            };
            EXPECT_TRUE(Accepts(bound("maximum"), "5")) << limit << aside;
            EXPECT_TRUE(Accepts(bound("exclusiveMaximum"), "5")) << limit << aside;
            EXPECT_FALSE(Accepts(bound("minimum"), "5")) << limit << aside;
            EXPECT_FALSE(Accepts(bound("exclusiveMinimum"), "5")) << limit << aside;
            EXPECT_TRUE(Accepts(bound("minimum"), "18446744073709551615")) << limit << aside;
        }
    }
}

TEST(JsonValidatorKeywords, ABoundBeyondTheLargestSignedIntegerIsNoFindingBesideAnother)
{
    for (const char* limit : {"9223372036854775808", "18446744073709551615"}) {
        for (const char* keyword : {"maximum", "exclusiveMaximum"}) {
            const std::string schema = "{\"" + std::string(keyword) + "\": " + limit + R"(, "not": {}})";
            EXPECT_THAT(FindingsOf(schema, "5"), SizeIs(1)) << schema;
        }
        for (const char* keyword : {"minimum", "exclusiveMinimum"}) {
            const std::string schema = "{\"" + std::string(keyword) + "\": " + limit + R"(, "not": {}})";
            EXPECT_THAT(FindingsOf(schema, "5"), SizeIs(2)) << schema;
        }
    }
    EXPECT_THAT(FindingsOf(R"({"minimum": 9223372036854775808})", "5"),
                ElementsAre(": expected at least 9.223372036854776e+18, found 5"));
}

TEST(JsonValidatorKeywords, MultiplesAreExactForIntegersAndForgivingForFractions)
{
    EXPECT_TRUE(Accepts(R"({"multipleOf": 5})", "18446744073709551615"));
    EXPECT_FALSE(Accepts(R"({"multipleOf": 2})", "18446744073709551615"));
    EXPECT_FALSE(Accepts(R"({"multipleOf": 4})", "-9223372036854775807"));
    EXPECT_TRUE(Accepts(R"({"multipleOf": 0.1})", "0.3"));
    EXPECT_FALSE(Accepts(R"({"multipleOf": 0.1})", "0.35"));
}

TEST(JsonValidatorKeywords, LengthsCountCharactersNotBytes)
{
    EXPECT_TRUE(Accepts(R"({"maxLength": 2})", "\"\xC3\xA4\xF0\x9F\x98\x80\""));
    EXPECT_FALSE(Accepts(R"({"minLength": 3})", "\"\xC3\xA4\xF0\x9F\x98\x80\""));
    EXPECT_THAT(FindingsOf(R"({"minLength": 1})", "\"\""), ElementsAre(": expected at least 1 character, found \"\""));
}

TEST(JsonValidatorKeywords, APatternMatchesAnywhereUnlessAnchored)
{
    EXPECT_TRUE(Accepts(R"({"pattern": "b+"})", "\"abbc\""));
    EXPECT_TRUE(Accepts(R"j({"pattern": "^\\d{3}(?=x)"})j", "\"123x\""));
    EXPECT_THAT(FindingsOf(R"({"pattern": "^b+$"})", "\"abbc\""),
                ElementsAre(": expected a string that matches \"^b+$\", found \"abbc\""));
}

TEST(JsonValidatorKeywords, AnEnormousTextIsMatchedWithoutRecursionAndWithoutBacktracking)
{
    const std::string text(100000, 'a');
    EXPECT_TRUE(Accepts(R"({"pattern": "^(a|b)*$"})", "\"" + text + "\""));
    EXPECT_THAT(FindingsOf(R"({"pattern": "^(a+)+$"})", "\"" + text + "!\""), SizeIs(1));
    EXPECT_THAT(FindingsOf(R"({"patternProperties": {"^(a|b)*$": false}})", "{\"" + text + "\": 1}"), SizeIs(1));
}

TEST(JsonValidatorKeywords, FormatsAreChecked)
{
    struct Case
    {
        const char* format;
        std::vector<const char*> good;
        std::vector<const char*> bad;
    };
    const Case cases[] = {
        {"date", {"2024-02-29", "2000-02-29", "2023-12-31"}, {"2023-02-29", "1900-02-29", "2023-04-31", "23-01-01"}},
        {"time", {"23:59:60Z", "01:02:03.5+02:00"}, {"24:00:00Z", "01:02:03"}},
        {"date-time", {"2024-02-29T01:02:03Z"}, {"2023-02-29T01:02:03Z", "2024-02-29 01:02:03Z"}},
        {"ipv4", {"10.0.0.1"}, {"10.0.0", "256.0.0.1", ""}},
        {"ipv6", {"::1", "fe80::1"}, {"1", ":::"}},
        {"hostname", {"a", "host-1.example.com"}, {"-a", "a..b", "a_b", ""}},
        {"uuid", {"5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11"}, {"5f0d6f4e7a644c0e9d6e0c3a5b1f2a11"}},
    };
    for (const Case& one : cases) {
        const std::string schema = std::string(R"({"format": ")") + one.format + "\"}";
        EXPECT_TRUE(Accepts(schema, "5")) << "a number has no format";
        for (const char* text : one.good) {
            EXPECT_TRUE(Accepts(schema, "\"" + std::string(text) + "\"")) << one.format << " " << text;
        }
        for (const char* text : one.bad) {
            EXPECT_FALSE(Accepts(schema, "\"" + std::string(text) + "\"")) << one.format << " " << text;
        }
    }
    EXPECT_FALSE(Accepts(R"({"format": "hostname"})", "\"" + std::string(64, 'a') + "\""));
}

// ---- Arrays -------------------------------------------------------------------------------------------------------

TEST(JsonValidatorKeywords, ItemsAreCheckedOneByOneOrByPosition)
{
    EXPECT_THAT(FindingsOf(R"({"items": {"type": "string"}})", R"([1, "a", 2])"),
                ElementsAre("/0: expected the type string, found 1", "/2: expected the type string, found 2"));
    EXPECT_THAT(FindingsOf(R"({"items": [{"type": "string"}], "additionalItems": {"type": "null"}})", R"([1, 2])"),
                ElementsAre("/0: expected the type string, found 1", "/1: expected the type null, found 2"));
    EXPECT_THAT(FindingsOf(R"({"items": [true], "additionalItems": false})", R"([1, 2, 3])"),
                ElementsAre("/1: expected no such element, found 2", "/2: expected no such element, found 3"));
    EXPECT_TRUE(Accepts(R"({"items": [{"type": "string"}]})", R"(["a", 1])"));
}

TEST(JsonValidatorKeywords, ARepeatedElementIsNamedWithTheOneItRepeats)
{
    EXPECT_THAT(FindingsOf(R"({"uniqueItems": true})", R"([{"a": 1, "b": 2}, 1, {"b": 2, "a": 1}, 1.0, "1"])"),
                ElementsAre("/2: expected no element twice, but element 0 is the same, found an object of 2 members"));
    EXPECT_TRUE(Accepts(R"({"uniqueItems": false})", "[1, 1]"));
}

TEST(JsonValidatorKeywords, AHundredThousandUniqueInstancesAreCheckedInTime)
{
    std::string list = "[";
    for (int i = 0; i < 100000; ++i) {
        list += (i > 0 ? ",{\"id\":" : "{\"id\":") + std::to_string(i) + "}";
    }
    EXPECT_THAT(FindingsOf(R"({"uniqueItems": true})", list + "]"), IsEmpty());
    EXPECT_THAT(FindingsOf(R"({"uniqueItems": true})", list + ",{\"id\":5}]"), SizeIs(1));
}

TEST(JsonValidatorKeywords, ContainsNeedsOneElementThatKeepsToItsSchema)
{
    EXPECT_TRUE(Accepts(R"({"contains": {"minimum": 5}})", "[1, 9]"));
    EXPECT_THAT(FindingsOf(R"({"contains": {"minimum": 5}})", "[1, 2]"), SizeIs(1));
    EXPECT_THAT(FindingsOf(R"({"contains": true})", "[]"), SizeIs(1));
}

// ---- Members ------------------------------------------------------------------------------------------------------

TEST(JsonValidatorKeywords, AMemberIsCheckedByNameAndByEveryPatternThatMatches)
{
    const std::string schema = R"({"properties": {"ab": {"minimum": 5}}, "patternProperties": {
        "^a": {"multipleOf": 2}, "b$": {"maximum": 1}}, "additionalProperties": {"type": "null"}})";
    EXPECT_THAT(FindingsOf(schema, R"({"ab": 3})"), SizeIs(3));
    EXPECT_THAT(FindingsOf(schema, R"({"x": 3})"), ElementsAre("/x: expected the type null, found 3"));
}

TEST(JsonValidatorKeywords, NamesOfMembersAreCheckedAtTheMember)
{
    EXPECT_THAT(FindingsOf(R"({"propertyNames": {"pattern": "^[a-z]+$"}})", R"({"ok": 1, "Not": 2})"),
                ElementsAre("/Not: expected a string that matches \"^[a-z]+$\", found \"Not\""));
}

TEST(JsonValidatorKeywords, DependenciesNameWhatIsMissingAndWhy)
{
    EXPECT_THAT(FindingsOf(R"({"dependencies": {"ip": ["mask", "gw"]}})", R"({"ip": 1, "gw": 2})"),
                ElementsAre(": expected the member \"mask\", because \"ip\" is there, found an object of 2 members"));
    EXPECT_THAT(FindingsOf(R"({"dependencies": {"ip": {"properties": {"mask": {"type": "integer"}}}}})",
                           R"({"ip": 1, "mask": "x"})"),
                ElementsAre("/mask: expected the type integer, found \"x\""));
    EXPECT_TRUE(Accepts(R"({"dependencies": {"ip": ["mask"]}})", R"({"gw": 2})"));
}

TEST(JsonValidatorKeywords, AMemberNameMayHoldAnyByte)
{
    EXPECT_FALSE(Accepts(R"({"properties": {"": {"type": "string"}}})", R"({"": 1})"));
    EXPECT_TRUE(Accepts(R"({"required": ["a/b~c%20d"]})", R"({"a/b~c%20d": 1})"));
}
