#include "DesiredWalk.h"

#include <string>

#include "ConfigStoreDocument.h"
#include "ConfigStoreException.h"
#include "JsonText.h"

namespace NimbConfigStore
{
namespace
{
JsonValue::Object MembersOf(JsonValue& value, const std::string& place)
{
    if (!value.IsObject()) {
        throw ConfigStoreException(CS_ERROR_JSON_TYPE, ("JSON error: " + place + " is not an object").c_str());
    }
    return value.GetObject();
}
}  // namespace

JsonValue& Profile(JsonValue& root)
{
    return ConfigStoreDocument::ValueExists(root, "profile") ? root["profile"] : root;
}

void ForEachObject(JsonValue& root,
                   const std::function<void(const NimbSchemaStore::SchemaObjectId& id, JsonValue& value)>& visit)
{
    for (auto& component : MembersOf(root, "the document")) {
        const std::string componentName = JsonText(component.name);
        for (auto& group : MembersOf(component.value, "/" + componentName)) {
            const std::string groupName = JsonText(group.name);
            for (auto& key : MembersOf(group.value, "/" + componentName + "/" + groupName)) {
                visit({componentName, groupName, JsonText(key.name)}, key.value);
            }
        }
    }
}
}  // namespace NimbConfigStore
