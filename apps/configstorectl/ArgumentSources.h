#pragma once

#include <string>
#include <vector>

// What a shell may offer for an argument. Those that ask a store throw when it cannot be read.
namespace ConfigStoreCtl
{
std::vector<std::string> BootModeNames();
std::vector<std::string> Truths();

/// COMPONENT/GROUP/KEY of every object with a row in the config store, with default configuration, with a schema.
std::vector<std::string> StoredObjects();
std::vector<std::string> DefaultObjects();
std::vector<std::string> SchemaObjects();
}  // namespace ConfigStoreCtl
