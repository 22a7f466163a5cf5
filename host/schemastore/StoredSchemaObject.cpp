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
const JsonValue& AnyValue()
{
    static const JsonValue schema(rapidjson::kObjectType);
    return schema;
}

const JsonValue* FindObject(const JsonValue& object, const char* name)
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

JsonValue ArrayOf(const JsonValue& instanceSchema, JsonAllocator& allocator)
{
    JsonValue schema(rapidjson::kObjectType);
    schema.AddMember("type", "array", allocator);
    schema.AddMember("items", JsonSchema::CopyToPlace(instanceSchema, {"items"}, allocator), allocator);
    return schema;
}
}  // namespace

const StoredSchemaObject::Content& StoredSchemaObject::Parsed() const
{
    if (content_ == nullptr) {
        content_ = Parse();
    }
    return *content_;
}

std::unique_ptr<StoredSchemaObject::Content> StoredSchemaObject::Parse() const
{
    auto content = std::make_unique<Content>();
    std::string reason;
    if (!ConfigStoreDocument::ParseText(row_->json, content->document, &reason) || !content->document.IsObject()) {
        throw NimbConfigStore::ConfigStoreException(
            NimbConfigStore::CS_ERROR_OPERATION,
            ("The schema store's entry of " + row_->id.toString() + " is damaged: " + reason).c_str());
    }
    const JsonValue& element = content->document;
    const JsonValue* schema = FindObject(element, "schema");
    content->instanceSchema = schema != nullptr ? schema : &AnyValue();  // a file may come without a schema
    content->file = FindObject(element, "file");
    content->instanceIdProperty = InstanceIdPropertyOf(*content->instanceSchema);
    content->excludedInstances = TextsOf(element, "excludedInstances");
    content->solutionUserInstances = TextsOf(element, "solutionUserInstances");
    if (IsMultiInstance()) {
        content->arraySchema = ArrayOf(*content->instanceSchema, content->document.GetAllocator());
    }
    return content;
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
