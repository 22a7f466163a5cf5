#pragma once

#include <string_view>

#include "SchemaPatterns.h"

namespace JsonSchema
{
/// True when the keyword "format" knows the name.
bool IsKnownFormat(std::string_view format);

/// True when @p text has the format; a known one.
bool HasFormat(std::string_view format, std::string_view text, SchemaPatterns& patterns);
}  // namespace JsonSchema
