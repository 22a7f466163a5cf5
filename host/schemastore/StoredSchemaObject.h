#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "NimbSchemaStore.h"

namespace NimbSchemaStore
{
/// One row of ConfigSchema.
struct SchemaRow
{
    SchemaObjectId id;
    int schemaType;
    bool mutableDefaultConfig;
    bool singleton;
    std::string version;
    std::string json;  ///< the element, as the schema file gave it
};

/// What a row's JSON text says. Never changed once it is made.
struct SchemaContent
{
    explicit SchemaContent(std::size_t textBytes) : allocator(2 * textBytes + 1024), document(&allocator) {}

    NimbConfigStore::JsonAllocator allocator;  ///< one chunk of about the size needed
    NimbConfigStore::JsonDocument document;
    NimbConfigStore::JsonValue arraySchema;  ///< of an object of many instances
    const NimbConfigStore::JsonValue* instanceSchema;
    const NimbConfigStore::JsonValue* file;
    std::string instanceIdProperty;
    std::vector<std::string> excludedInstances;
    std::vector<std::string> solutionUserInstances;
};
using SchemaContentPtr = std::shared_ptr<const SchemaContent>;

/// What has been parsed of a cache's rows, kept for later look-ups as long as it is little: validating document after
/// document parses no schema twice, and reading every schema does not hold them all. For use by several threads.
class ParsedSchemas
{
public:
    /// Parses the row unless that was done. @throws ConfigStoreException 2000 for a damaged row.
    SchemaContentPtr Of(const SchemaRow& row);

private:
    SchemaContentPtr Find(const SchemaRow& row);

    std::mutex mutex_;
    std::unordered_map<const SchemaRow*, SchemaContentPtr> kept_;
};

/// One look-up's view of a row, parsed when the object is first asked for what only the text says.
class StoredSchemaObject final : public SchemaObject
{
public:
    StoredSchemaObject(std::shared_ptr<const SchemaRow> row, std::shared_ptr<ParsedSchemas> parsed)
        : row_(std::move(row)), parsed_(std::move(parsed))
    {}

    const NimbConfigStore::JsonValue& GetSchema() const override;
    const NimbConfigStore::JsonValue& GetInstanceSchema() const override;
    const SchemaObjectId& GetId() const override { return row_->id; }
    const std::string& GetVersion() const override { return row_->version; }
    bool IsMultiInstance() const override { return !row_->singleton; }
    const std::string& GetInstanceIdProperty() const override;
    bool HasMutableDefaultConfig() const override { return row_->mutableDefaultConfig; }
    const std::vector<std::string>& GetExcludedInstances() const override;
    const std::vector<std::string>& GetSolutionUserInstances() const override;
    bool GetFileEnabled(bool& enabled) const override;
    bool GetFilePersistence(std::string& persistence) const override;
    bool GetFilePath(std::string& path) const override;

private:
    const SchemaContent& Parsed() const;
    bool GetFileText(const char* member, std::string& text) const;

    std::shared_ptr<const SchemaRow> row_;
    std::shared_ptr<ParsedSchemas> parsed_;
    mutable SchemaContentPtr content_;
};
}  // namespace NimbSchemaStore
