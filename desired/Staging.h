#pragma once

#include <string>

#include "DBStore.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "StoreTransaction.h"

// The steps that the ways of staging a configuration have in common. All work in the caller's transaction.
namespace NimbConfigStore
{
/// What the boot does with a staged row. (A row without any of the words takes part in whole documents only.)
inline constexpr const char* BOOT_ACTION_SET = "SET";
inline constexpr const char* BOOT_ACTION_DELETE = "DELETE";

/// Removes whatever was staged before. @throws ConfigStoreException 2000
void EmptyStaging(const DBStore::ConnectionPtr& connection);

/// Stages an action on a whole object. The row has no identifier, so every call adds one. False when that failed.
[[nodiscard]] bool StageAction(const DBStore::ConnectionPtr& connection, const NimbSchemaStore::SchemaObjectId& id,
                               const char* action);

/// SetBootMode, which does not say when its write failed, and a look at what it wrote: rows must not be committed
/// without the mode that applies them. @throws ConfigStoreException 2000 when the mode is not the one asked for.
void StageBootMode(BOOTMODE mode);

/// @throws ConfigStoreException 2000
void CommitStaging(StoreTransaction& change);

/// The failure that a caller of the exported operation @p call sees.
ConfigStoreException StagingFailure(const char* call, const std::exception& reason);
}  // namespace NimbConfigStore
