#pragma once

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "Json.h"

#pragma GCC visibility push(default)

/// The schema store: what each installed package's schemas declare. docs/file-formats.md describes a schema file.
namespace NimbSchemaStore
{
/// Names one configuration object.
struct SchemaObjectId
{
    std::string component;  ///< whose configuration it is
    std::string group;      ///< within the component
    std::string name;       ///< the key, within the group

    /// All three parts are needed to name an object.
    SchemaObjectId(std::string componentName, std::string groupName, std::string objectName);
    /// "component/group/name"
    std::string toString() const;
    /// By component, then group, then name.
    auto operator<=>(const SchemaObjectId&) const = default;
};

/// One configuration object as its schema declares it. JSON is parsed on first use, and what it answers by reference
/// lives as long as the object. Not for sharing between threads.
class SchemaObject
{
public:
    virtual ~SchemaObject();

    /// What a whole value is validated against: the instance schema, or an array of it for a multi-instance object.
    virtual const NimbConfigStore::JsonValue& GetSchema() const = 0;

    /// The JSON Schema of one instance, with the store's marks (instanceId, vital, cached).
    virtual const NimbConfigStore::JsonValue& GetInstanceSchema() const = 0;

    /// Its component, group and key.
    virtual const SchemaObjectId& GetId() const = 0;

    /// The version that rows of the object carry.
    virtual const std::string& GetVersion() const = 0;

    /// True for an object whose value is an array of instances.
    virtual bool IsMultiInstance() const = 0;

    /// The property that identifies an instance; empty when the schema names none.
    virtual const std::string& GetInstanceIdProperty() const = 0;

    /// True when the object has a default that users may change: "DELETE_DEFAULT" is then an accepted value.
    virtual bool HasMutableDefaultConfig() const = 0;

    /// Instances that a whole desired document leaves alone.
    virtual const std::vector<std::string>& GetExcludedInstances() const = 0;

    /// Instances that are users of installed solutions; their permissions outlive a whole desired document.
    virtual const std::vector<std::string>& GetSolutionUserInstances() const = 0;

    /// The file that an object of component "files" declares. Each query is false when the schema does not say.
    /// @{
    virtual bool GetFileEnabled(bool& enabled) const = 0;
    virtual bool GetFilePersistence(std::string& persistence) const = 0;
    virtual bool GetFilePath(std::string& path) const = 0;
    /// @}
};
using SchemaObjectPtr = std::shared_ptr<SchemaObject>;

/// Every schema object of the store as it stood when the cache was read; keeps no connection open.
class SchemaObjectCache
{
public:
    virtual ~SchemaObjectCache();

    /// @throws ConfigStoreException 2000 "Schema not found for COMPONENT/GROUP/NAME" for an unknown object.
    virtual SchemaObjectPtr Get(const SchemaObjectId& id) const = 0;

    /// Null for an unknown object.
    virtual SchemaObjectPtr Find(const SchemaObjectId& id) const = 0;

    /// The objects whose default configuration users may change, in order of identity.
    virtual std::vector<SchemaObjectId> GetMutableDefaultConfigIds() const = 0;

    /// All objects, in order of identity.
    virtual std::vector<SchemaObjectId> GetIds() const = 0;
};
using SchemaObjectCachePtr = std::shared_ptr<SchemaObjectCache>;

/// The open schema store. Opened for writing it is one registration run in one transaction, which
/// RemoveUndeclaredSchemas commits; destroyed before that, the schemas of the previous run stand.
class SchemaStore
{
public:
    virtual ~SchemaStore();

    /// @throws ConfigStoreException 2000 when the store is not there or cannot be opened, or, for writing, when
    ///         another registration run holds it for more than 3000 ms.
    static std::shared_ptr<SchemaStore> GetStore(bool writable);

    /// The cache, read once per store object. @throws ConfigStoreException 2000 when the store cannot be read.
    virtual SchemaObjectCachePtr GetCache() = 0;

    /// The object, or null. @throws as GetCache.
    virtual SchemaObjectPtr GetSchema(const std::string& component, const std::string& group,
                                      const std::string& key) = 0;

    /// The objects of one kind, or of one component, in order of identity. @throws as GetCache.
    /// @{
    virtual std::vector<SchemaObjectPtr> GetObjectsOfKind(int kind) = 0;
    virtual std::vector<SchemaObjectPtr> GetObjectsOfComponent(const std::string& component) = 0;
    /// @}
};
using SchemaStorePtr = std::shared_ptr<SchemaStore>;

/// The object, or null: store->GetSchema.
SchemaObjectPtr GetSchema(const std::string& component, const std::string& group, const std::string& key,
                          const SchemaStorePtr& store);

/// Registers one element of a schema file's "data" (its whole JSON text) in the run of @p store, replacing what
/// stood under the same identity.
/// @param schemaId  the file's identifier (package name, "-", package version).
/// @throws ConfigStoreException 2000 naming the element and the member when the element does not keep to the
///         format or its schema is unusable (dangling or cyclic reference, pattern that does not compile, keyword
///         that nobody implements); nothing of the element is then registered. 2000 too when a write fails, and for
///         every further element once a failure (a full disk, say) has made the database undo the run.
void SetSchema(const std::string& schemaId, const std::string& component, const std::string& group,
               const std::string& key, const std::string& schemaJson, const SchemaStorePtr& store, bool hasSmartnic);

/// Ends a registration run: drops the schemas of packages that @p expectedIds no longer declares, but keeps the last
/// good schemas of a package whose new version registered nothing in this run, or not all that it tried; drops nothing
/// when @p expectedIds is empty. Then commits. @throws ConfigStoreException 2000 when that fails or the database has
/// undone the run; the previous run's schemas then stand.
void RemoveUndeclaredSchemas(const std::unordered_set<std::string>& expectedIds, const SchemaStorePtr& store);

/// Builds the one schema that covers a whole desired document: every object that @p desired mentions must be known
/// and keep to its schema (or be "DELETE_DEFAULT" where its default is mutable). A root member "profile" is
/// descended into, and its siblings are not read. @p schema owns all that it holds; @p scratch comes back null.
void GenerateSchemaDocument(const NimbConfigStore::JsonDocument& desired, const SchemaObjectCachePtr& cache,
                            NimbConfigStore::JsonDocument& schema, NimbConfigStore::JsonDocument& scratch);
}  // namespace NimbSchemaStore

#pragma GCC visibility pop
