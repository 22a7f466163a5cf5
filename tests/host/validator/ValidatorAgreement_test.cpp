#include <gtest/gtest.h>
#include <rapidjson/schema.h>

#include <string>

#include "Findings.h"
#include "RandomSchemas.h"

using NimbConfigStore::JsonDocument;

// RapidJSON's own validator reads these keywords alike, stops at the first finding and is another implementation: on
// random schemas and values both must give the same answer.

namespace
{
bool RapidJsonAccepts(const JsonDocument& schema, const JsonDocument& value)
{
    const rapidjson::SchemaDocument compiled(schema);
    rapidjson::SchemaValidator validator(compiled);
    return value.Accept(validator);
}
}  // namespace

TEST(ValidatorAgreement, AnotherImplementationGivesTheSameAnswerOnRandomSchemas)
{
    int accepted = 0;
    int compared = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
        RandomSchemas generator(seed);
        JsonDocument schema;
        const std::string schemaText = generator.Schema(3);
        ParseInto(schema, schemaText);
        if (!JsonValidator::CheckSchema(schema).empty()) {
            continue;  // a keyword came out twice
        }
        for (int i = 0; i < 10; ++i) {
            JsonDocument value;
            const std::string valueText = generator.Value(3);
            ParseInto(value, valueText);
            const bool theirs = RapidJsonAccepts(schema, value);
            EXPECT_EQ(FindingsOf(schema, value).empty(), theirs) << schemaText << "\n" << valueText;
            accepted += theirs ? 1 : 0;
            ++compared;
        }
    }
    EXPECT_GT(accepted, compared / 10);
    EXPECT_GT(compared - accepted, compared / 10);
}

/// Nothing is seen at a glance beside "not", so that the whole schema is compiled and every value visited.
TEST(ValidatorAgreement, WhatIsAcceptedAtAGlanceHasNoFindings)
{
    int accepted = 0;
    int compared = 0;
    for (unsigned seed = 0; seed < 1500; ++seed) {
        RandomSchemas generator(seed, RandomSchemas::Keywords::ALL);
        const std::string definitions = R"("definitions": {"x": )" + generator.Schema(0) + "}";
        const std::string schema = generator.Schema(3);
        const std::string plain = R"({"allOf": [)" + schema + "], " + definitions + "}";
        const std::string visited = R"({"allOf": [)" + schema + R"(], "not": false, )" + definitions + "}";
        if (!ProblemOf(plain).empty()) {
            continue;  // a keyword came out twice, or a reference leads back to itself
        }
        for (int i = 0; i < 8; ++i) {
            const std::string value = generator.Value(3);
            const std::set<int> rules = generator.Rules();
            const std::vector<std::string> findings = FindingsOf(visited, value, rules);
            EXPECT_EQ(FindingsOf(plain, value, rules), findings) << schema << "\n" << value;
            accepted += findings.empty() ? 1 : 0;
            ++compared;
        }
    }
    EXPECT_GT(accepted, compared / 10);
    EXPECT_GT(compared - accepted, compared / 10);
}

TEST(ValidatorAgreement, AReferenceToASchemaFindsWhatTheSchemaItselfFinds)
{
    int accepted = 0;
    int compared = 0;
    for (unsigned seed = 0; seed < 1000; ++seed) {
        RandomSchemas generator(seed, RandomSchemas::Keywords::ALL);
        const std::string other = R"(, "x": )" + generator.Schema(0) + "}}";
        const std::string schema = generator.Schema(3);
        const std::string written = R"({"properties": {"a": )" + schema + R"(}, "definitions": {"m": {})" + other;
        const std::string referred =
            R"({"properties": {"a": {"$ref": "#/definitions/m"}}, "definitions": {"m": )" + schema + other;
        if (!ProblemOf(referred).empty()) {
            continue;  // a keyword came out twice, or a reference leads back to itself
        }
        for (int i = 0; i < 8; ++i) {
            const std::string value = R"({"a": )" + generator.Value(3) + "}";
            const std::vector<std::string> findings = FindingsOf(written, value);
            EXPECT_EQ(FindingsOf(referred, value), findings) << schema << "\n" << value;
            accepted += findings.empty() ? 1 : 0;
            ++compared;
        }
    }
    EXPECT_GT(accepted, compared / 10);
    EXPECT_GT(compared - accepted, compared / 10);
}
