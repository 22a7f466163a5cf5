#include "StoredSchemaObject.h"

#include "ConfigStoreDocument.h"
#include "ConfigStoreException.h"
#include "SchemaElement.h"
#include "SchemaReferences.h"

using NimbConfigStore::JsonAllocator;
using NimbConfigStore::JsonValue;

namespace NimbSchemaStore
{
namespace
{
constexpr std::size_t MAX_KEPT = 256;

const JsonValue& AnyValue()
{
    static const JsonValue schema(rapidjson::kObjectType);
    return schema;
}

JsonValue* FindObject(JsonValue& object, const char* name)
{
    const auto member = object.FindMember(name);
    return member != object.MemberEnd() && member->value.IsObject() ? &member->value : nullptr;
}

std::vector<std::string> TextsOf(const JsonValue& object, const char* name)
{
    std::vector<std::string> texts;
    if (object.HasMember(name)) {
        for (const JsonValue& text : object[name].GetArray()) {
            texts.emplace_back(text.GetString(), text.GetStringLength());
        }
    }
    return texts;
}

JsonValue ArrayOf(JsonValue instanceSchema, JsonAllocator& allocator)
{
    JsonValue schema(rapidjson::kObjectType);
    schema.AddMember("type", "array", allocator);
    schema.AddMember("items", instanceSchema, allocator);
    return schema;
}

SchemaContentPtr Parse(const SchemaRow& row)
{
    auto content = std::make_shared<SchemaContent>(row.json.size());
    std::string reason;
    if (!ConfigStoreDocument::ParseText(row.json, content->document, &reason) || !content->document.IsObject()) {
        throw NimbConfigStore::ConfigStoreException(
            NimbConfigStore::CS_ERROR_OPERATION,
            ("The schema store's entry of " + row.id.toString() + " is damaged: " + reason).c_str());
    }
    JsonValue& element = content->document;
    JsonValue* schema = FindObject(element, "schema");
    content->instanceSchema = schema != nullptr ? schema : &AnyValue();  // a file may come without a schema
    content->file = FindObject(element, "file");
    content->instanceIdProperty = InstanceIdPropertyOf(*content->instanceSchema);
    content->excludedInstances = TextsOf(element, "excludedInstances");
    content->solutionUserInstances = TextsOf(element, "solutionUserInstances");
    if (!row.singleton) {
        // References lead elsewhere from inside the array's schema; without any, the instance's may as well be moved.
        const bool isMoved = schema != nullptr && !JsonSchema::MentionsReference(*schema);
        JsonAllocator& allocator = content->allocator;
        content->arraySchema = ArrayOf(
            isMoved ? std::move(*schema) : JsonSchema::CopyToPlace(*content->instanceSchema, {"items"}, allocator),
            allocator);
        content->instanceSchema = isMoved ? &content->arraySchema["items"] : content->instanceSchema;
    }
    return content;
}
}  // namespace

SchemaContentPtr ParsedSchemas::Of(const SchemaRow& row)
{
    SchemaContentPtr content = Find(row);
    if (content == nullptr) {
        content = Parse(row);
        const std::lock_guard lock(mutex_);
        if (kept_.size() < MAX_KEPT) {
            kept_.emplace(&row, content);
        }
    }
    return content;
}

SchemaContentPtr ParsedSchemas::Find(const SchemaRow& row)
{
    const std::lock_guard lock(mutex_);
    const auto found = kept_.find(&row);
    return found != kept_.end() ? found->second : nullptr;
}

const SchemaContent& StoredSchemaObject::Parsed() const
{
    if (content_ == nullptr) {
        content_ = parsed_->Of(*row_);
    }
    return *content_;
}

const JsonValue& StoredSchemaObject::GetSchema() const
{
    return IsMultiInstance() ? Parsed().arraySchema : GetInstanceSchema();
}

const JsonValue& StoredSchemaObject::GetInstanceSchema() const
{
    return *Parsed().instanceSchema;
}

const std::string& StoredSchemaObject::GetInstanceIdProperty() const
{
    return Parsed().instanceIdProperty;
}

const std::vector<std::string>& StoredSchemaObject::GetExcludedInstances() const
{
    return Parsed().excludedInstances;
}

const std::vector<std::string>& StoredSchemaObject::GetSolutionUserInstances() const
{
    return Parsed().solutionUserInstances;
}

bool StoredSchemaObject::GetFileEnabled(bool& enabled) const
{
    const JsonValue* file = Parsed().file;
    if (file == nullptr || !file->HasMember("enabled")) {
        return false;
    }
    enabled = (*file)["enabled"].GetBool();
    return true;
}

bool StoredSchemaObject::GetFilePersistence(std::string& persistence) const
{
    return GetFileText("persistence", persistence);
}

bool StoredSchemaObject::GetFilePath(std::string& path) const
{
    return GetFileText("path", path);
}

bool StoredSchemaObject::GetFileText(const char* member, std::string& text) const
{
    const JsonValue* file = Parsed().file;
    if (file == nullptr || !file->HasMember(member)) {
        return false;
    }
    text = (*file)[member].GetString();
    return true;
}
}  // namespace NimbSchemaStore
