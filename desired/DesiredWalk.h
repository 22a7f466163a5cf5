#pragma once

#include <functional>

#include "Json.h"
#include "NimbSchemaStore.h"

// How a desired document is laid out: component, group, key, value.
namespace NimbConfigStore
{
/// What a document says: the member "profile" of its root where there is one, else the root itself.
JsonValue& Profile(JsonValue& root);

/// Calls @p visit for every value of a document, in the document's order.
/// @throws ConfigStoreException 1082, naming the place, when a level above the values is not an object.
void ForEachObject(JsonValue& root,
                   const std::function<void(const NimbSchemaStore::SchemaObjectId& id, JsonValue& value)>& visit);
}  // namespace NimbConfigStore
