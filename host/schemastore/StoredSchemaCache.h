#pragma once

#include <map>
#include <memory>
#include <vector>

#include "DBStore.h"
#include "NimbSchemaStore.h"
#include "StoredSchemaObject.h"

namespace NimbSchemaStore
{
class StoredSchemaCache final : public SchemaObjectCache
{
public:
    /// Reads every row. @throws ConfigStoreException 2000 when that fails.
    explicit StoredSchemaCache(const DBStore::ConnectionPtr& connection);

    SchemaObjectPtr Get(const SchemaObjectId& id) const override;
    SchemaObjectPtr Find(const SchemaObjectId& id) const override;
    std::vector<SchemaObjectId> GetMutableDefaultConfigIds() const override;
    std::vector<SchemaObjectId> GetIds() const override;

    std::vector<SchemaObjectPtr> OfKind(int kind) const;
    std::vector<SchemaObjectPtr> OfComponent(const std::string& component) const;

private:
    static int TakeRow(void* cache, int columns, char** values, char** names);

    std::map<SchemaObjectId, std::shared_ptr<const SchemaRow>> rows_;
    std::shared_ptr<ParsedSchemas> parsed_ = std::make_shared<ParsedSchemas>();
};
}  // namespace NimbSchemaStore
