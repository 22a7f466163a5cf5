#pragma once

#include <string>

#include "NimbSchemaStore.h"

namespace NimbConfigStore
{
/// What is wrong with one default-configuration file:
/// {"errors": [{"component", "group", "key", "identifier", "error"}]}.
class DefaultConfigErrors
{
public:
    DefaultConfigErrors();

    /// @param identifier  the instance; empty for the object, and with an empty @p id for the file as a whole.
    void Add(const NimbSchemaStore::SchemaObjectId& id, const std::string& identifier, const std::string& error);
    bool Empty() const;

    /// Replaces the error file of the default-configuration file @p name; a failure is logged.
    void Write(const std::string& name) const;

private:
    JsonDocument document_;
};

/// Removes the error files that earlier runs left, also those of files that have gone since. A failure is logged.
void RemoveDefaultConfigErrors();
}  // namespace NimbConfigStore
