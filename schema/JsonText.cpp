#include "JsonText.h"

#include "ConfigStoreDocument.h"
#include "ConfigStoreException.h"

namespace NimbConfigStore
{
namespace
{
[[noreturn]] void ThrowMemberError(const char* name, const char* type)
{
    const std::string text = "JSON error: member \"" + std::string(name) + "\" is missing or not " + type;
    throw ConfigStoreException(CS_ERROR_JSON_TYPE, text.c_str());
}
}  // namespace

std::string JsonText(const JsonValue& value)
{
    return {value.GetString(), value.GetStringLength()};
}

std::string RequiredText(const JsonValue& object, const char* name)
{
    if (!ConfigStoreDocument::ValueExists(object, name) || !object[name].IsString()) {
        ThrowMemberError(name, "a text");
    }
    return JsonText(object[name]);
}

JsonValue& RequiredArray(JsonValue& object, const char* name)
{
    if (!ConfigStoreDocument::ValueExists(object, name) || !object[name].IsArray()) {
        ThrowMemberError(name, "an array");
    }
    return object[name];
}
}  // namespace NimbConfigStore
