#pragma once

#include <string>

#include "Json.h"

namespace NimbConfigStore
{
/// The whole text of a string value, NULs included. @throws ConfigStoreException 1082 for any other value.
std::string JsonText(const JsonValue& value);

/// The text of the member @p name; empty when @p value has none that is a string.
std::string TextMember(const JsonValue& value, const char* name);

/// The same, but throws ConfigStoreException 1082, naming the member, when there is no such text.
std::string RequiredText(const JsonValue& value, const char* name);

/// The member @p name. @throws ConfigStoreException 1082, naming it, when @p value has none that is an array.
JsonValue& RequiredArray(JsonValue& value, const char* name);
}  // namespace NimbConfigStore
