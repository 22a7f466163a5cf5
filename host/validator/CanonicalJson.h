#pragma once

#include <string>

#include "Json.h"

namespace JsonSchema
{
/// JSON text that two values share exactly when they are the same: the members of an object in order of name. 1 and
/// 1.0 are not the same.
std::string Canonical(const NimbConfigStore::JsonValue& value);
}  // namespace JsonSchema
