#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ConfigStoreException.h"
#include "Findings.h"

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace
{
/// "{"definitions": {"0": …, "N": …}, …}": each definition refers to the next as @p step says.
std::string Chain(int length, const std::string& step)
{
    std::string definitions;
    for (int i = 0; i < length; ++i) {
        const std::string next = "{\"$ref\": \"#/definitions/" + std::to_string(i + 1) + "\"}";
        std::string body = step;
        for (std::size_t at = body.find('*'); at != std::string::npos; at = body.find('*', at)) {
            body.replace(at, 1, next);
        }
        definitions += "\"" + std::to_string(i) + "\": " + body + ", ";
    }
    return R"({"$ref": "#/definitions/0", "definitions": {)" + definitions + "\"" + std::to_string(length) +
           "\": {\"type\": \"string\"}}}";
}
}  // namespace

TEST(CheckSchema, ASoundSchemaWithAnnotationsAndMarksHasNoProblem)
{
    EXPECT_EQ(ProblemOf(R"({"$schema": "http://json-schema.org/draft-07/schema#", "$id": "x", "title": "t",
        "description": "d", "$comment": "c", "examples": [1], "default": {}, "type": "object", "x-owner": 5,
        "properties": {"id": {"type": "string", "instanceId": true, "readOnly": true},
            "v": {"vital": true, "cached": false, "deprecated": false, "writeOnly": true,
                  "contentEncoding": "base64", "contentMediaType": "text/plain"}}})"),
              "");
    EXPECT_EQ(ProblemOf("true"), "");
}

TEST(CheckSchema, AReferenceThatDanglesOrLeavesTheDocumentIsRefusedByPlace)
{
    for (const char* reference : {"#/definitions/none", "http://example.com/x", "other.json#/a", "#name", "",
                                  "definitions/a", "#/definitions/a/type", "#definitions/a", "#/definitions/a b"}) {
        const std::string schema = R"({"properties": {"p": {"$ref": ")" + std::string(reference) +
                                   R"("}}, "definitions": {"a": {"type": "string"}}})";
        EXPECT_THAT(ProblemOf(schema), AllOf(StartsWith("at \"/properties/p/$ref\": the reference"),
                                             HasSubstr("leads to no schema of this document")))
            << reference;
    }
}

TEST(CheckSchema, AReferenceCycleIsRefused)
{
    for (
        const char* schema :
        {R"({"$ref": "#"})", R"({"properties": {"child": {"$ref": "#"}}})",
         R"({"$ref": "#/definitions/a", "definitions": {"a": {"$ref": "#/definitions/b"}, "b": {"$ref": "#/definitions/a"}}})",
         R"({"definitions": {"unused": {"items": {"$ref": "#/definitions/unused"}}}})",
         R"({"properties": {"a": {"not": {"$ref": "#/properties/a"}}}})"}) {
        EXPECT_THAT(ProblemOf(schema), HasSubstr("leads back to itself")) << schema;
    }
}

TEST(CheckSchema, OneDefinitionUsedTwiceIsNoCycle)
{
    EXPECT_EQ(ProblemOf(R"({"properties": {"a": {"$ref": "#/definitions/x"}, "b": {"$ref": "#/definitions/x"}},
        "definitions": {"x": {"type": "string"}}})"),
              "");
}

TEST(CheckSchema, ReferencesThatNestTooDeeplyOrMultiplyAreRefused)
{
    EXPECT_EQ(ProblemOf(Chain(100, R"({"allOf": [*]})")), "");
    EXPECT_THAT(ProblemOf(Chain(300, R"({"allOf": [*]})")), HasSubstr("nested too deeply"));
    EXPECT_THAT(ProblemOf(Chain(20000, "*")), HasSubstr("nested too deeply"));
    EXPECT_THAT(ProblemOf(Chain(60, R"({"allOf": [*, *]})")), HasSubstr("too large"));
}

TEST(CheckSchema, APatternThatDoesNotCompileIsRefusedByPlace)
{
    EXPECT_THAT(ProblemOf(R"({"pattern": "("})"), StartsWith("at \"/pattern\": the pattern \"(\" does not compile: "));
    EXPECT_THAT(ProblemOf(R"({"patternProperties": {"[": true}})"), StartsWith("at \"/patternProperties/[\": "));
    EXPECT_THAT(ProblemOf(R"({"pattern": "(a)\\1"})"), HasSubstr("does not compile"));
}

TEST(CheckSchema, APatternThatWouldExhaustTheMatcherIsRefused)
{
    const std::string repeated = R"({"pattern": "^((a?){1000}){1000}$"})";
    EXPECT_THAT(ProblemOf(repeated), HasSubstr("too large"));
    EXPECT_THAT(ProblemOf("{\"pattern\": \"" + std::string(100000, '(') + "\"}"), HasSubstr("too large"));
    const std::string many = R"({"pattern": "^(a?){400}$"})";
    EXPECT_EQ(ProblemOf(many), "");
    EXPECT_FALSE(Accepts(many, "\"" + std::string(50, 'a') + "b\""));
}

TEST(CheckSchema, AQuantifierDirectlyBehindAnotherOneIsRefused)
{
    for (const char* pattern : {"(a?)+{40}+{40}+{8}", "a{40}{40}", "a**", "a+?+", "a???", "(?:a)?{2}", "[a]{2}?{2}"}) {
        EXPECT_THAT(ProblemOf(R"({"pattern": ")" + std::string(pattern) + "\"}"),
                    HasSubstr("a quantifier stands directly behind another one"))
            << pattern;
    }
    EXPECT_EQ(ProblemOf(R"({"pattern": "^(?:a+?b*?c??d{2,3}?)+(?=e)(?!f)\\?+[?*+{]+\\c?+$"})"), "");
}

TEST(CheckSchema, WhatASetHoldsHidesNoRepetitionFromTheLimit)
{
    // Each set holds what would end it, or open a group, were it read differently.
    const std::string large = "(b?){300}";
    for (const char* set : {"[[:alpha:](]", "[[.].](]", "[[=]=](]", R"([\\c](])", R"([\\](])", "[^](]", "[](]"}) {
        const std::string pattern = "(" + large + set + "){1000}";
        EXPECT_NE(ProblemOf(R"({"pattern": ")" + pattern + "\"}"), "") << pattern;
    }
    EXPECT_THAT(ProblemOf(R"({"pattern": "((b?){300}[[:alpha:](]){1000}"})"), HasSubstr("too large"));
    EXPECT_THAT(ProblemOf(R"({"pattern": "((b?){300}\\c(){1000}"})"), HasSubstr("too large"));
    EXPECT_THAT(ProblemOf(R"({"pattern": "((b?){300}[\\c](]){1000}"})"), HasSubstr("too large"));
    EXPECT_EQ(ProblemOf(R"({"pattern": "^[[:alpha:]_][[:alnum:]_]{0,100}$"})"), "");
}

TEST(CheckSchema, TheLargestPatternsThatAreTakenMatchWithoutOverflowingTheStack)
{
    const std::string text = "\"" + std::string(120, 'a') + "b\"";
    const auto repeated = [](std::string piece, int times, std::string whole = "") {
        for (int i = 0; i < times; ++i) {
            whole += piece;
        }
        return whole;
    };
    for (const std::string& pattern :
         {std::string("^(a?){500}b$"), std::string("^((((a?)?)?)?){150}b$"), repeated("a?", 1000, "^") + "b$",
          repeated("(", 400, "^") + "a" + repeated(")?", 400), repeated("(?=a", 100) + repeated(")", 100)}) {
        const std::string schema = R"({"pattern": ")" + pattern + "\"}";
        ASSERT_EQ(ProblemOf(schema), "") << pattern;
        EXPECT_TRUE(Accepts(schema, text)) << pattern;
    }
}

TEST(CheckSchema, ANameThatStandsTwiceInAMapIsRefusedByPlace)
{
    for (const char* map : {"properties", "patternProperties", "dependencies", "definitions", "$defs"}) {
        EXPECT_EQ(ProblemOf("{\"" + std::string(map) + R"(": {"a": {}, "b": true, "a": {"type": "string"}}})"),
                  "at \"/" + std::string(map) + "/a\": the member stands twice");
    }
    EXPECT_THAT(ProblemOf(R"({"dependencies": {"a": ["b"], "a": ["c"]}})"), HasSubstr("stands twice"));
    EXPECT_EQ(ProblemOf(R"({"default": {"a": 1, "a": 2}})"), "");
}

TEST(CheckSchema, ANameOrPatternThatHoldsANulIsRefusedByPlace)
{
    const std::string cut = R"("a\u0000b" holds a NUL, at which it would be cut)";
    for (const char* map : {"properties", "patternProperties", "dependencies", "definitions", "$defs"}) {
        EXPECT_EQ(ProblemOf("{\"" + std::string(map) + R"(": {"a\u0000b": {}}})"),
                  "at \"/" + std::string(map) + "\": " + cut);
    }
    EXPECT_EQ(ProblemOf(R"({"dependencies": {"c": ["a\u0000b"]}})"), "at \"/dependencies/c\": " + cut);
    EXPECT_EQ(ProblemOf(R"({"required": ["c", "a\u0000b"]})"), "at \"/required\": " + cut);
    EXPECT_EQ(ProblemOf(R"({"pattern": "a\u0000b"})"), "at \"/pattern\": " + cut);
    EXPECT_EQ(ProblemOf(R"({"const": "a\u0000b", "enum": ["a\u0000b"], "default": {"a\u0000b": 1}})"), "");
}

TEST(CheckSchema, AReferenceIntoAPlaceThatHasNoSchemaIsRefused)
{
    for (const char* holder : {R"("x-shared": {"p": {"type": "string"}})", R"("examples": [{"p": {}}])",
                               R"("default": {"p": {}})", R"("const": {"p": {}})", R"("enum": [{"p": {}}])",
                               R"("x-shared": {"definitions": {"p": {}}})", R"("properties": {"p": {}})"}) {
        const std::string name = std::string(holder).substr(1, std::string(holder).find('"', 1) - 1);
        const std::string place = *(std::string(holder).rbegin()) == ']' ? name + "/0" : name;
        const bool isSchema = name == "properties";
        for (const std::string& target : {place + "/p", place + "/definitions/p", place}) {
            const std::string schema = "{" + std::string(holder) + R"(, "items": {"$ref": "#/)" + target + "\"}}";
            const std::string problem = ProblemOf(schema);
            EXPECT_EQ(problem.empty(), isSchema && target == "properties/p") << schema << problem;
        }
    }
}

TEST(CheckSchema, ASchemaLeavesRoomForTheLevelsOfAWholeDocument)
{
    int longest = 0;
    while (ProblemOf(Chain(longest + 1, "*")).empty()) {
        ++longest;
    }
    std::string nested = Chain(longest, "*");
    NimbConfigStore::JsonDocument object;
    ParseInto(object, nested);
    // A document's schema is not checked for room of its own: it may be as deep as any.
    NimbConfigStore::JsonDocument report;
    EXPECT_NO_THROW(JsonValidator::Validate(object, object, report, VALUE_RULES, ""));
    ParseInto(object, Chain(longest + 6, "*"));
    EXPECT_NO_THROW(JsonValidator::Validate(object, object, report, VALUE_RULES, ""));
    ParseInto(object, Chain(longest + 7, "*"));
    EXPECT_THROW(JsonValidator::Validate(object, object, report, VALUE_RULES, ""),
                 NimbConfigStore::ConfigStoreException);
}

TEST(CheckSchema, AnUnknownKeywordIsRefusedByPlace)
{
    EXPECT_EQ(ProblemOf(R"({"properties": {"a": {"minimun": 5}}})"),
              R"(at "/properties/a/minimun": unknown keyword "minimun")");
    EXPECT_NE(ProblemOf(R"({"id": "x"})"), "");
    EXPECT_NE(ProblemOf(R"({"format": "telephone"})"), "");
    EXPECT_NE(ProblemOf(R"({"type": "string", "type": "null"})"), "");
}

TEST(CheckSchema, AKeywordBesideAReferenceIsRefusedBecauseItWouldNotApply)
{
    const std::string definitions = R"("definitions": {"a": {"type": "string"}})";
    EXPECT_THAT(ProblemOf(R"({"properties": {"p": {"$ref": "#/definitions/a", "minLength": 5}}, )" + definitions + "}"),
                HasSubstr("beside a reference the keyword \"minLength\" is not applied"));
    EXPECT_EQ(ProblemOf(R"({"properties": {"p": {"$ref": "#/definitions/a", "vital": true}}, )" + definitions + "}"),
              "");
}

TEST(CheckSchema, AKeywordsValueMustHaveItsShape)
{
    const char* const schemas[] = {
        R"({"type": "text"})",
        R"({"type": []})",
        R"({"type": 5})",
        R"({"enum": []})",
        R"({"enum": "a"})",
        R"({"required": ["a", "a"]})",
        R"({"required": "a"})",
        R"({"required": true})",
        R"({"minimum": "1"})",
        R"({"exclusiveMinimum": true})",
        R"({"multipleOf": 0})",
        R"({"multipleOf": -1})",
        R"({"minLength": -1})",
        R"({"maxItems": 1.5})",
        R"({"maxItems": 18446744073709551615})",
        R"({"uniqueItems": 1})",
        R"({"pattern": 5})",
        R"({"items": 5})",
        R"({"items": [5]})",
        R"({"properties": []})",
        R"({"properties": {"a": "string"}})",
        R"({"additionalProperties": "no"})",
        R"({"allOf": []})",
        R"({"anyOf": {}})",
        R"({"oneOf": [1]})",
        R"({"not": null})",
        R"({"if": []})",
        R"({"dependencies": {"a": "b"}})",
        R"({"dependencies": {"a": [1]}})",
        R"({"title": 5})",
        R"({"instanceId": "yes"})",
        R"({"vital": 1})",
        R"({"definitions": {"a": 5}})",
        R"({"examples": {}})",
        R"({"$ref": 5})",
        "5",
    };
    for (const char* schema : schemas) {
        EXPECT_THAT(ProblemOf(schema), HasSubstr("expected ")) << schema;
    }
}

TEST(CheckSchema, ValidatingAgainstAnUnusableSchemaThrowsItsProblem)
{
    try {
        FindingsOf(R"({"$ref": "#"})", "1");
        FAIL() << "accepted";
    } catch (const NimbConfigStore::ConfigStoreException& error) {
        EXPECT_EQ(error.code(), 2000);
        EXPECT_STREQ(error.what(), "Unusable schema: at \"/$ref\": the reference leads back to itself");
    }
}
