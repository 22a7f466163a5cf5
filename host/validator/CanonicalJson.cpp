#include "CanonicalJson.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "ConfigStoreDocument.h"

using NimbConfigStore::JsonValue;

namespace JsonSchema
{
namespace
{
using Member = JsonValue::Member;

void Append(const JsonValue& value, std::string& out);

std::string_view Name(const Member* member)
{
    return {member->name.GetString(), member->name.GetStringLength()};
}

void AppendObject(const JsonValue& object, std::string& out)
{
    std::vector<const Member*> members;
    for (const Member& member : object.GetObject()) {
        members.push_back(&member);
    }
    std::sort(members.begin(), members.end(), [](const Member* a, const Member* b) { return Name(a) < Name(b); });
    char separator = '{';
    for (const Member* member : members) {
        out += separator;
        Append(member->name, out);
        out += ':';
        Append(member->value, out);
        separator = ',';
    }
    out += members.empty() ? "{}" : "}";
}

void AppendArray(const JsonValue& array, std::string& out)
{
    char separator = '[';
    for (const JsonValue& element : array.GetArray()) {
        out += separator;
        Append(element, out);
        separator = ',';
    }
    out += array.Empty() ? "[]" : "]";
}

void Append(const JsonValue& value, std::string& out)
{
    if (value.IsObject()) {
        AppendObject(value, out);
    } else if (value.IsArray()) {
        AppendArray(value, out);
    } else {
        std::string text;
        ConfigStoreDocument::SerializeValue(value, text);
        out += text;
    }
}
}  // namespace

std::string Canonical(const JsonValue& value)
{
    std::string text;
    Append(value, text);
    return text;
}
}  // namespace JsonSchema
