#pragma once

#include <map>
#include <string>

#include "Json.h"

// Splitting a configuration value into the parts that its schema's property classes name.
namespace NimbConfigStore
{
/// The part of an instance for each of "user", "vital" and "cached"; a class that nothing belongs to is absent.
/// @param schema  the schema of the instance.
/// @param allocator  of the parts.
/// @throws ConfigStoreException 1082 when a class mark or "instanceId" that decides is not a boolean.
std::map<std::string, JsonValue> SplitConfig(const JsonValue& value, const JsonValue& schema, JsonAllocator& allocator);

/// Removes from @p value what does not belong to @p className. @return whether the rest belongs to the class at all.
/// Members that @p schema does not describe bear no mark, and so belong to "user".
bool ProcessConfig(JsonValue& value, const JsonValue& schema, const char* className);
}  // namespace NimbConfigStore
