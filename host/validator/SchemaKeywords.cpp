#include "SchemaKeywords.h"

#include <array>
#include <cstddef>

namespace JsonSchema
{
namespace
{
using namespace JsonValidator;

constexpr Keyword KEYWORDS[] = {
    {"type", RULE_TYPES, Shape::TYPES},
    {"enum", RULE_TYPES, Shape::VALUES},
    {"const", RULE_TYPES, Shape::ANY},
    {"required", RULE_PRESENCE, Shape::TEXTS},
    {"dependencies", RULE_PRESENCE, Shape::DEPENDENCIES},
    {"minProperties", RULE_PRESENCE, Shape::COUNT},
    {"maxProperties", RULE_PRESENCE, Shape::COUNT},
    {"format", RULE_FORMATS, Shape::FORMAT},
    {"minimum", RULE_VALUES, Shape::NUMBER},
    {"maximum", RULE_VALUES, Shape::NUMBER},
    {"exclusiveMinimum", RULE_VALUES, Shape::NUMBER},
    {"exclusiveMaximum", RULE_VALUES, Shape::NUMBER},
    {"multipleOf", RULE_VALUES, Shape::DIVISOR},
    {"minLength", RULE_VALUES, Shape::COUNT},
    {"maxLength", RULE_VALUES, Shape::COUNT},
    {"pattern", RULE_VALUES, Shape::PATTERN},
    {"default", RULE_DEFAULTS, Shape::ANY},
    {"readOnly", RULE_READ_ONLY, Shape::BOOLEAN},
    {"deprecated", RULE_DEPRECATIONS, Shape::BOOLEAN},
    {"items", RULE_ARRAYS, Shape::SCHEMA_OR_SCHEMAS},
    {"additionalItems", RULE_ARRAYS, Shape::SCHEMA},
    {"minItems", RULE_ARRAYS, Shape::COUNT},
    {"maxItems", RULE_ARRAYS, Shape::COUNT},
    {"uniqueItems", RULE_ARRAYS, Shape::BOOLEAN},
    {"contains", RULE_ARRAYS, Shape::SCHEMA},
    {"properties", RULE_MEMBERS, Shape::SCHEMA_MAP},
    {"patternProperties", RULE_MEMBERS, Shape::PATTERN_MAP},
    {"additionalProperties", RULE_MEMBERS, Shape::SCHEMA},
    {"propertyNames", RULE_MEMBERS, Shape::SCHEMA},
    {"allOf", COMBINATOR, Shape::SCHEMAS},
    {"anyOf", COMBINATOR, Shape::SCHEMAS},
    {"oneOf", COMBINATOR, Shape::SCHEMAS},
    {"not", COMBINATOR, Shape::SCHEMA},
    {"if", COMBINATOR, Shape::SCHEMA},
    {"then", COMBINATOR, Shape::SCHEMA},
    {"else", COMBINATOR, Shape::SCHEMA},
    {"$ref", COMBINATOR, Shape::REFERENCE},
    {"definitions", DEFINITIONS, Shape::SCHEMA_MAP},
    {"$defs", DEFINITIONS, Shape::SCHEMA_MAP},
    {"title", ANNOTATION, Shape::TEXT},
    {"description", ANNOTATION, Shape::TEXT},
    {"examples", ANNOTATION, Shape::ARRAY},
    {"$comment", ANNOTATION, Shape::TEXT},
    {"$schema", ANNOTATION, Shape::TEXT},
    {"$id", ANNOTATION, Shape::TEXT},
    {"writeOnly", ANNOTATION, Shape::BOOLEAN},
    {"contentEncoding", ANNOTATION, Shape::TEXT},
    {"contentMediaType", ANNOTATION, Shape::TEXT},
    {"instanceId", ANNOTATION, Shape::BOOLEAN},
    {"vital", ANNOTATION, Shape::BOOLEAN},
    {"cached", ANNOTATION, Shape::BOOLEAN},
};

// Every member of every schema is looked up for every value, so the table is made by the compiler and probed with a
// few characters of the name.
constexpr std::size_t SLOTS = 256;
using SlotTable = std::array<const Keyword*, SLOTS>;

constexpr std::size_t SlotOf(std::string_view name)
{
    const auto at = [name](std::size_t place) {
        return static_cast<std::size_t>(static_cast<unsigned char>(name[place]));
    };
    return (name.size() * 17 + at(0) * 3 + at(name.size() / 2) * 5 + at(name.size() - 1) * 7) % SLOTS;
}

constexpr SlotTable FillSlots()
{
    SlotTable slots{};
    for (const Keyword& keyword : KEYWORDS) {
        std::size_t slot = SlotOf(keyword.name);
        while (slots[slot] != nullptr) {
            slot = (slot + 1) % SLOTS;
        }
        slots[slot] = &keyword;
    }
    return slots;
}

constexpr SlotTable KEYWORD_SLOTS = FillSlots();
}  // namespace

std::span<const Keyword> AllKeywords()
{
    return KEYWORDS;
}

const Keyword* FindKeyword(std::string_view name)
{
    if (name.empty()) {
        return nullptr;
    }
    std::size_t slot = SlotOf(name);
    while (KEYWORD_SLOTS[slot] != nullptr && KEYWORD_SLOTS[slot]->name != name) {
        slot = (slot + 1) % SLOTS;
    }
    return KEYWORD_SLOTS[slot];
}

const char* ExpectedOf(Shape shape)
{
    switch (shape) {
        case Shape::ANY:
            return "any value";
        case Shape::TEXT:
            return "a string";
        case Shape::BOOLEAN:
            return "a boolean";
        case Shape::NUMBER:
            return "a number";
        case Shape::DIVISOR:
            return "a number above 0";
        case Shape::COUNT:
            return "an integer of 0 or more";
        case Shape::TEXTS:
            return "an array of strings, each once";
        case Shape::ARRAY:
            return "an array";
        case Shape::VALUES:
            return "an array of at least one value";
        case Shape::TYPES:
            return "a type name or an array of type names (null, boolean, integer, number, string, array, object)";
        case Shape::PATTERN:
            return "a regular expression";
        case Shape::FORMAT:
            return "one of the formats date, time, date-time, ipv4, ipv6, hostname, uuid";
        case Shape::REFERENCE:
            return "a reference into this schema (\"#/definitions/NAME\")";
        case Shape::SCHEMA:
            return "a schema (an object or a boolean)";
        case Shape::SCHEMAS:
            return "an array of at least one schema";
        case Shape::SCHEMA_OR_SCHEMAS:
            return "a schema or an array of schemas";
        case Shape::SCHEMA_MAP:
        case Shape::PATTERN_MAP:
            return "an object of schemas";
        case Shape::DEPENDENCIES:
            return "an object of schemas and arrays of strings";
    }
    return "something else";
}

bool IsAuthorsOwn(std::string_view name)
{
    return name.substr(0, 2) == "x-";
}
}  // namespace JsonSchema
