#pragma once

#include <string>

#include "Json.h"

namespace NimbConfigStore
{
/// The whole text of a string value, NULs included. @throws ConfigStoreException 1082 for any other value.
std::string JsonText(const JsonValue& value);

/// The text of the member @p name. @throws ConfigStoreException 1082, naming the member, when @p object has none
/// that is a string.
std::string RequiredText(const JsonValue& object, const char* name);

/// The member @p name. @throws ConfigStoreException 1082, naming the member, when @p object has none that is an array.
JsonValue& RequiredArray(JsonValue& object, const char* name);
}  // namespace NimbConfigStore
