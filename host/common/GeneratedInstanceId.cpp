#include <uuid/uuid.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "ConfigStoreDocument.h"

using NimbConfigStore::JsonValue;

namespace
{
const char* const GENERATED_ID = "cs_generated_id";

// Names the identifiers derived here; a change would give every stored instance another identifier.
const char* const NAME_SPACE = "6f0c1d0e-4f0b-5c57-9a53-8f2f3a1d7be2";

std::string Canonical(const JsonValue& value);

std::string Join(char open, const std::vector<std::string>& parts, char close)
{
    std::string text(1, open);
    for (const std::string& part : parts) {
        text += part + ",";
    }
    return text + close;
}

std::string CanonicalObject(const JsonValue& object)
{
    std::vector<std::string> members;
    for (const auto& member : object.GetObject()) {
        members.push_back(Canonical(member.name) + ":" + Canonical(member.value));
    }
    std::sort(members.begin(), members.end());
    return Join('{', members, '}');
}

std::string CanonicalArray(const JsonValue& array)
{
    std::vector<std::string> elements;
    for (const JsonValue& element : array.GetArray()) {
        elements.push_back(Canonical(element));
    }
    return Join('[', elements, ']');
}

bool IsWhole(const JsonValue& value)
{
    constexpr double EXACT = 9007199254740992.0;  // 2^53
    return value.IsDouble() && std::trunc(value.GetDouble()) == value.GetDouble() &&
           std::abs(value.GetDouble()) <= EXACT;
}

// One text for all values that compare equal: members sorted, 1.0 written like 1.
std::string Canonical(const JsonValue& value)
{
    if (value.IsObject()) {
        return CanonicalObject(value);
    }
    if (value.IsArray()) {
        return CanonicalArray(value);
    }
    if (IsWhole(value)) {
        return std::to_string(static_cast<std::int64_t>(value.GetDouble()));
    }
    std::string text;
    ConfigStoreDocument::SerializeValue(value, text);
    return text;
}

bool IsGeneratedIdProperty(const JsonValue& schema)
{
    using ConfigStoreDocument::ValueExists;
    if (!ValueExists(schema, "properties") || !ValueExists(schema["properties"], GENERATED_ID)) {
        return false;
    }
    const JsonValue& property = schema["properties"][GENERATED_ID];
    return ValueExists(property, "instanceId") && property["instanceId"].IsTrue();
}

std::string IdentifierOf(const JsonValue& value)
{
    const std::string content = Canonical(value);
    uuid_t nameSpace;
    uuid_t identifier;
    uuid_parse(NAME_SPACE, nameSpace);
    uuid_generate_sha1(identifier, nameSpace, content.data(), content.size());
    char text[UUID_STR_LEN];
    uuid_unparse_lower(identifier, text);
    return text;
}
}  // namespace

namespace NimbConfigStore
{
void PopulateGeneratedInstanceId(const JsonValue& schema, JsonValue& value, JsonAllocator& allocator)
{
    if (!value.IsObject() || value.HasMember(GENERATED_ID) || !IsGeneratedIdProperty(schema)) {
        return;
    }
    JsonValue identifier(IdentifierOf(value).c_str(), allocator);
    value.AddMember(rapidjson::StringRef(GENERATED_ID), identifier, allocator);
}
}  // namespace NimbConfigStore
