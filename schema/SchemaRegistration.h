#pragma once

#include <string>
#include <unordered_set>

#include "NimbSchemaStore.h"
#include "SchemaFiles.h"

namespace NimbConfigStore
{
/// What one registration run works with.
struct RegistrationRun
{
    NimbSchemaStore::SchemaStorePtr store;  ///< open for writing
    std::unordered_set<std::string> expectedIds;
    bool nimbio = false;     ///< this host is the SmartNIC side
    bool placement = false;  ///< elements are registered by their "smartnic" placement
};

/// Registers the schemas of one file; reads the file first unless its document is there.
/// @return false, after an event and log lines, when the file does not parse or one of its elements could not be
///         registered; those before it stay registered. A file without an identity, or with one that is not
///         expected, is reported, registers nothing and gives true.
bool ProcessSchemaFile(SchemaFile& file, const RegistrationRun& run);
}  // namespace NimbConfigStore
