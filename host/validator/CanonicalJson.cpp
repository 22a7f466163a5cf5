#include "CanonicalJson.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <string_view>
#include <vector>

using NimbConfigStore::JsonValue;

namespace JsonSchema
{
namespace
{
using Member = JsonValue::Member;
using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

std::string_view Name(const Member* member)
{
    return {member->name.GetString(), member->name.GetStringLength()};
}

std::vector<const Member*> InOrder(const JsonValue& object)
{
    std::vector<const Member*> members;
    members.reserve(object.MemberCount());
    for (const Member& member : object.GetObject()) {
        members.push_back(&member);
    }
    std::sort(members.begin(), members.end(), [](const Member* a, const Member* b) { return Name(a) < Name(b); });
    return members;
}

void Write(const JsonValue& value, Writer& writer)
{
    if (value.IsObject()) {
        writer.StartObject();
        for (const Member* member : InOrder(value)) {
            writer.Key(member->name.GetString(), member->name.GetStringLength());
            Write(member->value, writer);
        }
        writer.EndObject();
    } else if (value.IsArray()) {
        writer.StartArray();
        for (const JsonValue& element : value.GetArray()) {
            Write(element, writer);
        }
        writer.EndArray();
    } else {
        value.Accept(writer);
    }
}
}  // namespace

std::string Canonical(const JsonValue& value)
{
    rapidjson::StringBuffer text;
    Writer writer(text);
    Write(value, writer);
    return {text.GetString(), text.GetSize()};
}
}  // namespace JsonSchema
