#include <string_view>

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "Errors.h"
#include "Json.h"
#include "NimbConfigStore.h"

namespace
{
// Small documents are many; the pool grows by what a value needs.
constexpr std::size_t CHUNK_CAPACITY = 64;
constexpr std::size_t STACK_CAPACITY = 1024;
}  // namespace

namespace NimbConfigStore
{
namespace
{
JsonValue& FindMember(JsonValue& parent, const JsonNode& node)
{
    if (!ConfigStoreDocument::ValueExists(parent, node.name)) {
        CSLogger::Log(CSLogger::ERROR, "Cannot find subobject %s", node.name != nullptr ? node.name : "");
        throw ConfigStoreException(CS_ERROR_OPERATION, "Subobject does not exists.");
    }
    return parent[node.name];
}

JsonValue& FindInstance(JsonValue& instances, const JsonNode& node)
{
    RAPIDJSON_ASSERT(node.key != nullptr);
    for (JsonValue& instance : instances.GetArray()) {
        const JsonValue& key = instance[node.key];
        if (key.IsString() && std::string_view(key.GetString(), key.GetStringLength()) == node.value) {
            return instance;
        }
    }
    CSLogger::Log(CSLogger::ERROR, "Cannot find subobject instance %s=%s", node.key, node.value.c_str());
    throw ConfigStoreException(CS_ERROR_OPERATION, "Subobject instance does not exists.");
}
}  // namespace

JsonDoc::JsonDoc()
{
    allocator = std::make_shared<JsonAllocator>(CHUNK_CAPACITY);
    document = std::make_shared<JsonDocument>(allocator.get(), STACK_CAPACITY);
}

JsonDoc::~JsonDoc()
{
    document.reset();
    allocator.reset();
}

JsonValue* JsonDoc::GetJsonValuePtr()
{
    JsonValue* value = document.get();
    for (const JsonNode& node : path) {
        value = &FindMember(*value, node);
        if (value->IsArray()) {
            value = &FindInstance(*value, node);
        }
    }
    return value;
}

std::shared_ptr<JsonDoc> CreateDocument()
{
    return std::make_shared<JsonDoc>();
}

std::shared_ptr<JsonDoc> CreateDocumentFromFile(const std::string& path)
{
    std::shared_ptr<JsonDoc> doc = CreateDocument();
    std::string reason;
    if (!ConfigStoreDocument::ParseFile(path, *doc->document, &reason)) {
        CSLogger::Log(CSLogger::DEBUG, "%s: %s", path.c_str(), reason.c_str());
        ThrowException<InvalidArgumentException, const char*>(CS_ERROR_JSON_FILE, path.c_str());
    }
    return doc;
}

std::shared_ptr<JsonDoc> CreateDocumentFromString(const std::string& text)
{
    std::shared_ptr<JsonDoc> doc = CreateDocument();
    if (!ConfigStoreDocument::ParseText(text, *doc->document)) {
        ThrowException<InvalidArgumentException>(CS_ERROR_JSON_TEXT);
    }
    return doc;
}
}  // namespace NimbConfigStore
