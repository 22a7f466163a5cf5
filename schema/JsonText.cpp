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

std::string TextMember(const JsonValue& value, const char* name)
{
    return ConfigStoreDocument::ValueExists(value, name) && value[name].IsString() ? JsonText(value[name]) : "";
}

std::string RequiredText(const JsonValue& value, const char* name)
{
    if (!ConfigStoreDocument::ValueExists(value, name) || !value[name].IsString()) {
        ThrowMemberError(name, "a text");
    }
    return JsonText(value[name]);
}

JsonValue& RequiredArray(JsonValue& value, const char* name)
{
    if (!ConfigStoreDocument::ValueExists(value, name) || !value[name].IsArray()) {
        ThrowMemberError(name, "an array");
    }
    return value[name];
}
}  // namespace NimbConfigStore
