#pragma once

#include <string>
#include <string_view>

#include "Json.h"

#pragma GCC visibility push(default)

/// JSON text in and out, the same way for every document that the store reads or writes.
namespace ConfigStoreDocument
{
/// Documents nested deeper than this are refused as unparsable.
inline constexpr unsigned MAX_DEPTH = 256;

/// True when @p value is an object that has the member @p name; false for every other value.
bool ValueExists(const NimbConfigStore::JsonValue& value, const char* name);

/// Writes @p value as compact JSON text into @p out (replacing what it held).
void SerializeValue(const NimbConfigStore::JsonValue& value, std::string& out);

/// Parses one JSON text (surrounding white space allowed, nothing else) into @p document, on the document's own
/// allocator. The text ends at its first NUL or at its end. The depth of the text never becomes stack depth.
/// @param reason  when given, receives why and where (byte offset) the text was refused.
/// @return false, with @p document null, when the text does not parse or is nested too deeply.
bool ParseText(std::string_view text, NimbConfigStore::JsonDocument& document, std::string* reason = nullptr);

/// The same for the file with the logical path @p path, read through one fixed buffer. A file that cannot be
/// opened or read is refused like an empty one, and so is, without waiting, a pipe or a device in its place.
bool ParseFile(const std::string& path, NimbConfigStore::JsonDocument& document, std::string* reason = nullptr);
}  // namespace ConfigStoreDocument

namespace NimbConfigStore
{
/// Fills in the generated identifier of one instance: when @p schema (an instance schema) names the
/// identifier property "cs_generated_id" and @p value lacks it, adds it, a UUID derived from the value's
/// content: the same value always gets the same identifier. Everything else is left alone.
void PopulateGeneratedInstanceId(const JsonValue& schema, JsonValue& value, JsonAllocator& allocator);
}  // namespace NimbConfigStore

#pragma GCC visibility pop
