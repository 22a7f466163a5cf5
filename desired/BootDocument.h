#pragma once

#include <memory>

#include "DBStore.h"

namespace NimbConfigStore
{
/// Writes the boot configuration document's values into Config as user values, in the caller's transaction. Without
/// the file nothing happens; a bad object is logged and skipped.
/// @throws InvalidArgumentException 1081 when the file does not parse, ConfigStoreException 2000 when the schemas
///         cannot be read.
void ApplyBootDocument(const std::shared_ptr<DBStore::StoreConnection>& connection);
}  // namespace NimbConfigStore
