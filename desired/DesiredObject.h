#pragma once

#include <memory>

#include "DBStore.h"
#include "Json.h"
#include "NimbSchemaStore.h"

namespace NimbConfigStore
{
/// The host's own network adapters, which hold ports of distributed switches.
inline constexpr const char* ORVNICS = "orvnics";

/// Stages one instance of a configuration object for the next boot, in the caller's transaction. Into @p value go the
/// instance's generated identifier and, for an adapter that stays on the same kind of switch, its live port binding.
/// @param allocator  of the document that owns @p value.
/// @param version  of the object's schema.
/// @throws ConfigStoreException 1032 when the instance lacks its identifier, 2000 when it cannot be written or the
///         live adapter cannot be read.
void ProcessDesiredObject(JsonAllocator& allocator, const std::shared_ptr<DBStore::StoreConnection>& connection,
                          const char* version, const char* component, const char* group, const char* key,
                          const std::shared_ptr<NimbSchemaStore::SchemaObject>& schemaObject, JsonValue& value);

/// Stages every instance of a key's value, an object or an array. An array is the instances of a multi-instance
/// object; that of any other object is its one value.
void ProcessDesiredInstances(JsonAllocator& allocator, const std::shared_ptr<DBStore::StoreConnection>& connection,
                             const std::shared_ptr<NimbSchemaStore::SchemaObject>& schemaObject, JsonValue& value);
}  // namespace NimbConfigStore
