#include <gmock/gmock.h>

#include "ConfigStoreDocument.h"

using namespace NimbConfigStore;
using testing::MatchesRegex;

namespace
{
const char* const SCHEMA = R"({"properties": {"cs_generated_id": {"type": "string", "instanceId": true}}})";

JsonDocument Parse(const char* text)
{
    JsonDocument document;
    EXPECT_TRUE(ConfigStoreDocument::ParseText(text, document)) << text;
    return document;
}

std::string Populated(const char* schema, const char* text)
{
    JsonDocument value = Parse(text);
    PopulateGeneratedInstanceId(Parse(schema), value, value.GetAllocator());
    std::string out;
    ConfigStoreDocument::SerializeValue(value, out);
    return out;
}

std::string IdOf(const char* text)
{
    const JsonDocument value = Parse(Populated(SCHEMA, text).c_str());
    return value["cs_generated_id"].GetString();
}
}  // namespace

TEST(PopulateGeneratedInstanceId, AddsANameBasedUuid)
{
    EXPECT_THAT(IdOf(R"({"a": 1})"),
                MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-5[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"));
}

TEST(PopulateGeneratedInstanceId, StoredIdentifiersStayWhatTheyAre)
{
    EXPECT_EQ(IdOf(R"({"a": 1})"), "55170a88-15a1-5076-91bf-cbb58da52a60");
}

TEST(PopulateGeneratedInstanceId, EqualValuesGetTheSameIdentifier)
{
    const std::string id = IdOf(R"({"a": 1, "b": {"c": [1, 2], "d": "x"}})");
    EXPECT_EQ(IdOf(R"({"b": {"d": "x", "c": [1, 2]}, "a": 1})"), id);
    EXPECT_EQ(IdOf(R"({"a": 1.0, "b": {"c": [1, 2e0], "d": "\u0078"}})"), id);
}

TEST(PopulateGeneratedInstanceId, DifferentValuesGetDifferentIdentifiers)
{
    EXPECT_NE(IdOf(R"({"a": [1, 2]})"), IdOf(R"({"a": [2, 1]})"));
    EXPECT_NE(IdOf(R"({"a": "1"})"), IdOf(R"({"a": 1})"));
    EXPECT_NE(IdOf(R"({"a": {"b": 1}})"), IdOf(R"({"a": {}, "b": 1})"));
    EXPECT_NE(IdOf(R"({"a": 1.5})"), IdOf(R"({"a": 1})"));
    EXPECT_NE(IdOf("{}"), IdOf(R"({"a": null})"));
}

TEST(PopulateGeneratedInstanceId, AnIdentifierThatIsThereStays)
{
    EXPECT_EQ(Populated(SCHEMA, R"({"cs_generated_id": "mine"})"), R"({"cs_generated_id":"mine"})");
}

TEST(PopulateGeneratedInstanceId, OtherSchemasAndValuesAreLeftAlone)
{
    EXPECT_EQ(Populated(R"({"properties": {"name": {"instanceId": true}}})", "{}"), "{}");
    EXPECT_EQ(Populated(R"({"properties": {"cs_generated_id": {"type": "string"}}})", "{}"), "{}");
    EXPECT_EQ(Populated(R"({"properties": {"cs_generated_id": {"instanceId": false}}})", "{}"), "{}");
    EXPECT_EQ(Populated(R"({"properties": [1]})", "{}"), "{}");
    EXPECT_EQ(Populated("true", "{}"), "{}");
    EXPECT_EQ(Populated(SCHEMA, "[{}]"), "[{}]");
    EXPECT_EQ(Populated(SCHEMA, R"("text")"), R"("text")");
}
