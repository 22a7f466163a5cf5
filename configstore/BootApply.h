#pragma once

#include "DBStore.h"

// Turns the configuration that was staged for this boot into rows of Config.
//
// Each function works inside the caller's transaction on the config store, with the schema store attached, and throws
// ConfigStoreException 2000, naming the step, at the first statement that fails. The caller then cancels the
// transaction, and the store is as it was before the boot.
namespace NimbConfigStore
{
/// Mode 1: the staged document replaces the user configuration of every object that takes part in desired documents,
/// except solution users' accounts and the instances that the schemas exclude. Empties the staging table.
void ApplyDesiredDocumentConfig(const DBStore::ConnectionPtr& connection);

/// Mode 3: values shared with a SmartNIC. The staging table stays as it is.
void ApplySmartnicBootConfig(const DBStore::ConnectionPtr& connection);

/// Mode 4: changes of single objects. The staging table stays as it is.
void ApplyHostApiConfig(const DBStore::ConnectionPtr& connection);

/// Every mode: DesiredValue becomes the UserValue, and Success says what the object's schema says (NULL without one).
void FoldDesiredValues(const DBStore::ConnectionPtr& connection);
}  // namespace NimbConfigStore
