#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Json.h"

/// Where in a JSON document something stands, and how a value is shown in a message.
namespace JsonSchema
{
/// One step below a parent place; a chain of these lives on the stack of a walk and costs nothing until it is shown.
struct Place
{
    const Place* parent;
    std::string_view member;  ///< of an object
    std::size_t index = 0;    ///< of an array, when isElement
    bool isElement = false;
};

/// The JSON Pointer of a place; null is the root, "".
std::string PointerTo(const Place* place);

/// @p token with "~" and "/" escaped for a JSON Pointer.
std::string EscapedToken(std::string_view token);

/// The value in a few words: a scalar as JSON text, cut when long; arrays and objects by their size.
std::string Described(const NimbConfigStore::JsonValue& value);

/// "1 member", "2 members".
std::string Counted(std::uint64_t count, const char* thing);

/// @p text as a JSON string of its own.
NimbConfigStore::JsonValue TextValue(const std::string& text, NimbConfigStore::JsonAllocator& allocator);

/// @p text in quotes, escaped, cut when long.
std::string Quoted(std::string_view text);
}  // namespace JsonSchema
