#pragma once

#include "Json.h"
#include "SchemaKeywords.h"

namespace JsonSchema
{
inline bool IsMap(Shape shape)
{
    return shape == Shape::SCHEMA_MAP || shape == Shape::PATTERN_MAP || shape == Shape::DEPENDENCIES;
}

/// Calls @p visit for each schema that a keyword of that shape holds; a value of another shape holds none.
template <class Value, class Visit>
void EachSubschema(Shape shape, Value& value, Visit&& visit)
{
    if (shape == Shape::SCHEMA || (shape == Shape::SCHEMA_OR_SCHEMAS && !value.IsArray())) {
        visit(value);
    } else if ((shape == Shape::SCHEMAS || shape == Shape::SCHEMA_OR_SCHEMAS) && value.IsArray()) {
        for (auto& schema : value.GetArray()) {
            visit(schema);
        }
    } else if (IsMap(shape) && value.IsObject()) {
        for (auto& member : value.GetObject()) {
            visit(member.value);
        }
    }
}
}  // namespace JsonSchema
