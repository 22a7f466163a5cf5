#include <gtest/gtest.h>
#include <rapidjson/schema.h>

#include <random>
#include <string>

#include "Findings.h"

using NimbConfigStore::JsonDocument;

// RapidJSON's own validator reads these keywords alike, stops at the first finding and is another implementation: on
// random schemas and values both must give the same answer.

namespace
{
class Generator
{
public:
    explicit Generator(unsigned seed) : random_(seed) {}

    std::string Schema(int depth)
    {
        return "{" + List([&] { return Keyword(depth); }) + "}";
    }

    std::string Value(int depth)
    {
        switch (Below(depth > 0 ? 8 : 6)) {
            case 0:
                return "null";
            case 1:
                return Below(2) == 0 ? "true" : "false";
            case 2:
            case 3:
                return std::to_string(Below(7) - 3);
            case 4:
                return std::to_string(Below(4)) + ".5";
            case 5:
                return Text();
            case 6:
                return "[" + List([&] { return Value(depth - 1); }) + "]";
            default:
                return "{" + Members([&] { return Value(depth - 1); }) + "}";
        }
    }

private:
    int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
    std::string Text() { return "\"" + std::string(static_cast<std::size_t>(Below(4)), 'a') + "\""; }
    std::string Number() { return std::to_string(Below(5) - 2); }

    template <class One>
    std::string List(One&& one, int least = 0)
    {
        std::string list;
        for (int i = Below(3) + least; i > 0; --i) {
            list += (list.empty() ? "" : ", ") + one();
        }
        return list;
    }

    template <class One>
    std::string Members(One&& one)
    {
        std::string members;
        for (const char* name : {"a", "b", "c"}) {
            if (Below(2) == 0) {
                members += (members.empty() ? "\"" : ", \"") + std::string(name) + "\": " + one();
            }
        }
        return members;
    }

    std::string Keyword(int depth)
    {
        static const char* const TYPES[] = {"null", "boolean", "integer", "number", "string", "array", "object"};
        const auto inner = [&] { return Schema(depth - 1); };
        switch (Below(depth > 0 ? 18 : 10)) {
            case 0:
            case 1:
                return std::string("\"type\": \"") + TYPES[Below(7)] + "\"";
            case 2:
                return "\"enum\": [" + List([&] { return Below(2) == 0 ? Text() : Number(); }, 1) + "]";
            case 3:
                return "\"minimum\": " + Number();
            case 4:
                return "\"maximum\": " + Number();
            case 5:
                return "\"minLength\": " + std::to_string(Below(3));
            case 6:
                return "\"maxItems\": " + std::to_string(Below(3));
            case 7:
                return "\"uniqueItems\": true";
            case 8:
                return R"("required": ["a", "b"])";
            case 9:
                return "\"minProperties\": " + std::to_string(Below(3));
            case 10:
                return "\"items\": " + inner();
            case 11:
            case 12:
                return "\"properties\": {" + Members(inner) + "}";
            case 13:
                return Below(2) == 0 ? "\"additionalProperties\": false" : "\"additionalProperties\": " + inner();
            case 14:
                return "\"allOf\": [" + List(inner, 1) + "]";
            case 15:
                return "\"anyOf\": [" + List(inner, 1) + "]";
            case 16:
                return "\"oneOf\": [" + List(inner, 1) + "]";
            default:
                return "\"not\": " + inner();
        }
    }

    std::mt19937 random_;
};

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
        Generator generator(seed);
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
