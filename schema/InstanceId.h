#pragma once

#include <memory>
#include <string>

#include "Json.h"
#include "NimbSchemaStore.h"

namespace NimbConfigStore
{
/// The identifier of one instance: the text of the member that the schema names; empty when it names none.
/// @throws ConfigStoreException 1032, naming the member, when @p value lacks it; 1082 when it is not a string.
std::string GetInstanceIdFromValue(const JsonValue& value,
                                   const std::shared_ptr<NimbSchemaStore::SchemaObject>& schema);
}  // namespace NimbConfigStore
