#pragma once

#include <span>
#include <string_view>

#include "JsonValidator.h"

/// The keywords of JSON Schema draft 7 that a schema may use, and the store's own marks on properties.
namespace JsonSchema
{
/// What a keyword's value must be.
enum class Shape
{
    ANY,
    TEXT,
    BOOLEAN,
    NUMBER,
    DIVISOR,
    COUNT,
    TEXTS,
    ARRAY,
    VALUES,
    TYPES,
    PATTERN,
    FORMAT,
    REFERENCE,
    SCHEMA,
    SCHEMAS,
    SCHEMA_OR_SCHEMAS,
    SCHEMA_MAP,
    PATTERN_MAP,
    DEPENDENCIES,
};

/// Beside the rule families of JsonValidator::Rule.
inline constexpr int COMBINATOR = -1;
inline constexpr int ANNOTATION = -2;
inline constexpr int DEFINITIONS = -3;

struct Keyword
{
    std::string_view name;
    int family;
    Shape shape;
};

std::span<const Keyword> AllKeywords();

/// Null when nobody implements a keyword of that name.
const Keyword* FindKeyword(std::string_view name);

/// What a keyword of that shape must be, in words: "a string", "a schema".
const char* ExpectedOf(Shape shape);

/// A name that begins with "x-" belongs to the schema's author and means nothing here.
bool IsAuthorsOwn(std::string_view name);
}  // namespace JsonSchema
