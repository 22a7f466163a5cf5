#pragma once

#include <set>
#include <string>
#include <string_view>
#include <unordered_set>

#include "DBStore.h"
#include "NimbSchemaStore.h"
#include "SchemaElement.h"

namespace NimbSchemaStore
{
/// One registration run: a transaction on the schema store, cancelled unless it is committed.
class RegistrationRun
{
public:
    /// @throws ConfigStoreException 2000 when another run holds the store.
    explicit RegistrationRun(DBStore::ConnectionPtr connection);
    ~RegistrationRun();
    RegistrationRun(const RegistrationRun&) = delete;
    RegistrationRun& operator=(const RegistrationRun&) = delete;

    void Register(const std::string& schemaId, const SchemaObjectId& id, const std::string& json, bool hasSmartnic);
    void RemoveUndeclared(const std::unordered_set<std::string>& expectedIds);
    void Commit();

private:
    void Write(const std::string& schemaId, const SchemaObjectId& id, const std::string& json,
               const SchemaElement& element);
    void WriteObject(const std::string& schemaId, const SchemaObjectId& id, const std::string& json,
                     const SchemaElement& element);
    void WritePlacement(const SchemaObjectId& id, const std::string& placement);
    std::set<std::string> StoredSchemaIds();
    bool IsKept(const std::string& schemaId, const std::unordered_set<std::string>& expectedIds) const;
    bool IsComplete(const std::string& schemaId) const;
    void RequireOpen() const;

    DBStore::ConnectionPtr connection_;
    bool open_ = true;
    std::set<std::string> registered_;  ///< identifiers that registered something in this run
    std::set<std::string> failed_;      ///< identifiers with an element that was refused or could not be written
};
}  // namespace NimbSchemaStore
