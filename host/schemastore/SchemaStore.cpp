#include <optional>

#include "ConfigStoreException.h"
#include "NimbSchemaStore.h"
#include "RegistrationRun.h"
#include "StoredSchemaCache.h"

using NimbConfigStore::ConfigStoreException;

namespace NimbSchemaStore
{
SchemaObjectId::SchemaObjectId(std::string componentName, std::string groupName, std::string objectName)
    : component(std::move(componentName)), group(std::move(groupName)), name(std::move(objectName))
{}

std::string SchemaObjectId::toString() const
{
    return component + "/" + group + "/" + name;
}

SchemaObject::~SchemaObject() = default;
SchemaObjectCache::~SchemaObjectCache() = default;
SchemaStore::~SchemaStore() = default;

namespace
{
class OpenSchemaStore final : public SchemaStore
{
public:
    OpenSchemaStore(DBStore::ConnectionPtr connection, bool writable) : connection_(std::move(connection))
    {
        if (writable) {
            run_.emplace(connection_);
        }
    }

    SchemaObjectCachePtr GetCache() override { return Cache(); }

    SchemaObjectPtr GetSchema(const std::string& component, const std::string& group, const std::string& key) override
    {
        return Cache()->Find({component, group, key});
    }

    std::vector<SchemaObjectPtr> GetObjectsOfKind(int kind) override { return Cache()->OfKind(kind); }

    std::vector<SchemaObjectPtr> GetObjectsOfComponent(const std::string& component) override
    {
        return Cache()->OfComponent(component);
    }

    RegistrationRun& Run()
    {
        if (!run_) {
            throw ConfigStoreException(NimbConfigStore::CS_ERROR_OPERATION, "The schema store is not open for writing");
        }
        return *run_;
    }

private:
    const std::shared_ptr<StoredSchemaCache>& Cache()
    {
        if (cache_ == nullptr) {
            cache_ = std::make_shared<StoredSchemaCache>(connection_);
            connection_.reset();  // a run keeps its own handle
        }
        return cache_;
    }

    DBStore::ConnectionPtr connection_;
    std::optional<RegistrationRun> run_;
    std::shared_ptr<StoredSchemaCache> cache_;
};

RegistrationRun& RunOf(const SchemaStorePtr& store)
{
    auto* open = dynamic_cast<OpenSchemaStore*>(store.get());
    if (open == nullptr) {
        throw ConfigStoreException(NimbConfigStore::CS_ERROR_OPERATION, "There is no schema store to register in");
    }
    return open->Run();
}
}  // namespace

SchemaStorePtr SchemaStore::GetStore(bool writable)
{
    DBStore::ConnectionPtr connection = DBStore::GetConnection(DBStore::Type::SchemaStore, writable);
    if (connection == nullptr) {
        throw ConfigStoreException(
            NimbConfigStore::CS_ERROR_OPERATION,
            (std::string("Failed to open the schema store ") + DBStore::StorePath(DBStore::Type::SchemaStore)).c_str());
    }
    return std::make_shared<OpenSchemaStore>(std::move(connection), writable);
}

SchemaObjectPtr GetSchema(const std::string& component, const std::string& group, const std::string& key,
                          const SchemaStorePtr& store)
{
    return store->GetSchema(component, group, key);
}

void SetSchema(const std::string& schemaId, const std::string& component, const std::string& group,
               const std::string& key, const std::string& schemaJson, const SchemaStorePtr& store, bool hasSmartnic)
{
    RunOf(store).Register(schemaId, {component, group, key}, schemaJson, hasSmartnic);
}

void RemoveUndeclaredSchemas(const std::unordered_set<std::string>& expectedIds, const SchemaStorePtr& store)
{
    RegistrationRun& run = RunOf(store);
    run.RemoveUndeclared(expectedIds);
    run.Commit();
}
}  // namespace NimbSchemaStore
