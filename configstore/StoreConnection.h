#pragma once

#include <string>

#include "DBStore.h"

namespace NimbConfigStore
{
/// The thread's writable connection to a store. Without one: throws ConfigStoreException 2000 when @p required,
/// else gives null.
DBStore::ConnectionPtr GetDBConnection(DBStore::Type type, bool required);

/// The config store for the installer's text and the boot bank; their callers know its failure by another text.
/// @throws ConfigStoreException 2000 "Failed to connect to database."
DBStore::ConnectionPtr ConnectToConfigStore();

/// The value of a boot-state key; an absent key reads as empty.
/// @throws ConfigStoreException 2000 "Failed to read value for key KEY"
std::string ReadKey(const std::string& key, const DBStore::ConnectionPtr& connection);
}  // namespace NimbConfigStore
