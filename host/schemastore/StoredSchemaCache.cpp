#include "StoredSchemaCache.h"

#include <cstdlib>

#include "ConfigStoreException.h"
#include "SchemaStatements.h"

namespace NimbSchemaStore
{
StoredSchemaCache::StoredSchemaCache(const DBStore::ConnectionPtr& connection)
{
    const DBStore::StatementPtr select =
        DBStore::internal::Prepare(connection, Statements::SELECT_OBJECTS, DBStore::WAIT_LIMIT_MS);
    if (DBStore::ExecuteStmt(connection, select, TakeRow, this, DBStore::WAIT_LIMIT_MS) != DBStore::SUCCESS) {
        throw NimbConfigStore::ConfigStoreException(NimbConfigStore::CS_ERROR_OPERATION,
                                                    "Failed to read the schema store");
    }
}

int StoredSchemaCache::TakeRow(void* cache, int, char** values, char**)
{
    SchemaObjectId id(values[0], values[1], values[2]);
    SchemaRow row{id, std::atoi(values[3]), std::atoi(values[4]) != 0, std::atoi(values[5]) != 0, values[6], values[7]};
    auto& rows = static_cast<StoredSchemaCache*>(cache)->rows_;
    rows.emplace_hint(rows.end(), std::move(id), std::make_shared<const SchemaRow>(std::move(row)));
    return 0;
}

SchemaObjectPtr StoredSchemaCache::Get(const SchemaObjectId& id) const
{
    SchemaObjectPtr object = Find(id);
    if (object == nullptr) {
        throw NimbConfigStore::ConfigStoreException(NimbConfigStore::CS_ERROR_OPERATION,
                                                    ("Schema not found for " + id.toString()).c_str());
    }
    return object;
}

SchemaObjectPtr StoredSchemaCache::Find(const SchemaObjectId& id) const
{
    const auto found = rows_.find(id);
    return found != rows_.end() ? std::make_shared<StoredSchemaObject>(found->second, parsed_) : nullptr;
}

std::vector<SchemaObjectId> StoredSchemaCache::GetMutableDefaultConfigIds() const
{
    std::vector<SchemaObjectId> ids;
    for (const auto& [id, row] : rows_) {
        if (row->mutableDefaultConfig) {
            ids.push_back(id);
        }
    }
    return ids;
}

std::vector<SchemaObjectId> StoredSchemaCache::GetIds() const
{
    std::vector<SchemaObjectId> ids;
    for (const auto& entry : rows_) {
        ids.push_back(entry.first);
    }
    return ids;
}

std::vector<SchemaObjectPtr> StoredSchemaCache::OfKind(int kind) const
{
    std::vector<SchemaObjectPtr> found;
    for (const auto& entry : rows_) {
        if (entry.second->schemaType == kind) {
            found.push_back(std::make_shared<StoredSchemaObject>(entry.second, parsed_));
        }
    }
    return found;
}

std::vector<SchemaObjectPtr> StoredSchemaCache::OfComponent(const std::string& component) const
{
    std::vector<SchemaObjectPtr> found;
    for (auto entry = rows_.lower_bound({component, "", ""});
         entry != rows_.end() && entry->first.component == component; ++entry) {
        found.push_back(std::make_shared<StoredSchemaObject>(entry->second, parsed_));
    }
    return found;
}
}  // namespace NimbSchemaStore
