#pragma once

#include <memory>
#include <string>
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

/// One look-up's view of a row: what it parses goes with it, so that reading every schema does not hold them all.
class StoredSchemaObject final : public SchemaObject
{
public:
    explicit StoredSchemaObject(std::shared_ptr<const SchemaRow> row) : row_(std::move(row)) {}

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
    /// What the JSON text says, read on first use.
    struct Content
    {
        NimbConfigStore::JsonDocument document;
        NimbConfigStore::JsonValue arraySchema;  ///< of an object of many instances
        const NimbConfigStore::JsonValue* instanceSchema;
        const NimbConfigStore::JsonValue* file;
        std::string instanceIdProperty;
        std::vector<std::string> excludedInstances;
        std::vector<std::string> solutionUserInstances;
    };
    const Content& Parsed() const;
    std::unique_ptr<Content> Parse() const;
    bool GetFileText(const char* member, std::string& text) const;

    std::shared_ptr<const SchemaRow> row_;
    mutable std::unique_ptr<Content> content_;
};
}  // namespace NimbSchemaStore
