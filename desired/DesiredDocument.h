#pragma once

#include <memory>

#include "DBStore.h"
#include "Json.h"

namespace NimbConfigStore
{
/// Stages a desired document for the next boot, in the caller's transaction, together with those parts of the live
/// and the default configuration that must outlast it.
/// @throws ConfigStoreException; what was staged until then is the caller's to cancel.
void ProcessDesiredDocument(JsonDocument& desired, const std::shared_ptr<DBStore::StoreConnection>& connection);
}  // namespace NimbConfigStore
