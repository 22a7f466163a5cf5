#include "ConfigSplit.h"

#include <string_view>

#include "ConfigStoreDocument.h"

namespace NimbConfigStore
{
namespace
{
constexpr const char* CLASSES[] = {"user", "vital", "cached"};

bool IsUser(const char* className)
{
    return std::string_view(className) == "user";
}

/// Null when @p object is none, or has no such member.
const JsonValue* Find(const JsonValue& object, const char* name)
{
    if (!object.IsObject()) {
        return nullptr;
    }
    const auto member = object.FindMember(name);
    return member != object.MemberEnd() ? &member->value : nullptr;
}

bool IsTrue(const JsonValue& schema, const char* mark)
{
    const JsonValue* value = Find(schema, mark);
    return value != nullptr && value->GetBool();
}

const JsonValue& PropertySchema(const JsonValue& schema, const JsonValue& name)
{
    static const JsonValue UNMARKED(rapidjson::kObjectType);
    const JsonValue* properties = Find(schema, "properties");
    if (properties == nullptr) {
        return UNMARKED;
    }
    const auto property = properties->FindMember(name);
    return property != properties->MemberEnd() ? property->value : UNMARKED;
}

/// An object that holds nothing but its instance identifier carries nothing of the class.
bool IsIdentifierAlone(const JsonValue& object, const JsonValue& schema, const char* className)
{
    if (object.MemberCount() != 1) {
        return false;
    }
    const JsonValue& property = PropertySchema(schema, object.MemberBegin()->name);
    return !IsTrue(property, className) && IsTrue(property, "instanceId");
}

bool ProcessObject(JsonValue& object, const JsonValue& schema, const char* className)
{
    if (object.ObjectEmpty()) {
        return IsUser(className);
    }
    for (auto member = object.MemberBegin(); member != object.MemberEnd();) {
        if (ProcessConfig(member->value, PropertySchema(schema, member->name), className)) {
            ++member;
        } else {
            member = object.RemoveMember(member);  // the last member has moved into its place
        }
    }
    if (object.ObjectEmpty()) {
        return false;
    }
    return IsUser(className) || !IsIdentifierAlone(object, schema, className);
}

bool HoldsObjects(const JsonValue& arraySchema)
{
    if (!ConfigStoreDocument::ValueExists(arraySchema, "items")) {
        return false;
    }
    const JsonValue& items = arraySchema["items"];
    return ConfigStoreDocument::ValueExists(items, "type") && items["type"].IsString() &&
           std::string_view(items["type"].GetString()) == "object";
}

bool ProcessArray(JsonValue& array, const JsonValue& itemSchema, const char* className)
{
    // Kept elements move up in one pass: erasing one at a time would be quadratic.
    auto kept = array.Begin();
    for (JsonValue& element : array.GetArray()) {
        if (ProcessConfig(element, itemSchema, className)) {
            if (kept != &element) {
                *kept = element;
            }
            ++kept;
        }
    }
    array.Erase(kept, array.End());
    return !array.Empty();
}
}  // namespace

std::map<std::string, JsonValue> SplitConfig(const JsonValue& value, const JsonValue& schema, JsonAllocator& allocator)
{
    std::map<std::string, JsonValue> parts;
    for (const char* className : CLASSES) {
        JsonValue part(value, allocator);
        if (ProcessConfig(part, schema, className)) {
            parts.emplace(className, std::move(part));
        }
    }
    return parts;
}

bool ProcessConfig(JsonValue& value, const JsonValue& schema, const char* className)
{
    if (IsTrue(schema, "instanceId")) {
        return true;
    }
    if (IsUser(className)) {
        if (ConfigStoreDocument::ValueExists(schema, "vital") || ConfigStoreDocument::ValueExists(schema, "cached")) {
            return false;
        }
    } else if (ConfigStoreDocument::ValueExists(schema, className)) {
        return true;
    }
    if (value.IsObject()) {
        return ProcessObject(value, schema, className);
    }
    if (value.IsArray() && !value.Empty() && HoldsObjects(schema)) {
        return ProcessArray(value, schema["items"], className);
    }
    return IsUser(className);
}
}  // namespace NimbConfigStore
