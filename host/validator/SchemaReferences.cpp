#include "SchemaReferences.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

#include <rapidjson/pointer.h>
#include <rapidjson/stringbuffer.h>

#include "JsonPlace.h"
#include "JsonTexts.h"
#include "Subschemas.h"

using NimbConfigStore::JsonAllocator;
using NimbConfigStore::JsonValue;

namespace JsonSchema
{
namespace
{
std::string FragmentOf(const std::vector<std::string>& place)
{
    rapidjson::Pointer pointer;
    for (const std::string& name : place) {
        pointer = pointer.Append(name.c_str(), static_cast<rapidjson::SizeType>(name.size()));
    }
    rapidjson::StringBuffer text;
    pointer.StringifyUriFragment(text);
    return {text.GetString(), text.GetSize()};
}

/// Moves every reference of @p schema, which stand under keywords only: elsewhere "$ref" is a value like any other.
void MoveReferences(JsonValue& schema, const std::string& fragment, JsonAllocator& allocator)
{
    if (!schema.IsObject()) {
        return;
    }
    for (auto& member : schema.GetObject()) {
        const Keyword* keyword = FindKeyword({member.name.GetString(), member.name.GetStringLength()});
        if (keyword != nullptr && keyword->shape == Shape::REFERENCE) {
            member.value = TextValue(fragment + (member.value.GetString() + 1), allocator);
        } else if (keyword != nullptr) {
            EachSubschema(keyword->shape, member.value,
                          [&](JsonValue& inner) { MoveReferences(inner, fragment, allocator); });
        }
    }
}

/// @p text with each %XX replaced by the byte it stands for; nothing when a "%" stands for none.
std::optional<std::string> PercentDecoded(std::string_view text)
{
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += text[at];
            continue;
        }
        unsigned byte = 0;
        const std::string_view digits = text.substr(at + 1, 2);
        const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16).ptr;
        if (digits.size() != 2 || end != digits.data() + 2) {
            return std::nullopt;
        }
        decoded += static_cast<char>(byte);
        at += 2;
    }
    return decoded;
}
}  // namespace

bool MentionsReference(const JsonValue& schema)
{
    if (schema.IsArray()) {
        return std::any_of(schema.Begin(), schema.End(), MentionsReference);
    }
    return schema.IsObject() && std::any_of(schema.MemberBegin(), schema.MemberEnd(), [](const auto& member) {
               return TextOf(member.name) == "$ref" || MentionsReference(member.value);
           });
}

std::unordered_set<const JsonValue*> SchemaPositions(const JsonValue& root)
{
    std::unordered_set<const JsonValue*> positions;
    std::vector<const JsonValue*> unread{&root};
    while (!unread.empty()) {
        const JsonValue& schema = *unread.back();
        unread.pop_back();
        positions.insert(&schema);
        if (!schema.IsObject()) {
            continue;
        }
        for (const auto& member : schema.GetObject()) {
            if (const Keyword* keyword = FindKeyword({member.name.GetString(), member.name.GetStringLength()})) {
                EachSubschema(keyword->shape, member.value, [&](const JsonValue& inner) { unread.push_back(&inner); });
            }
        }
    }
    return positions;
}

const JsonValue* ResolveReference(const JsonValue& root, const JsonValue& reference)
{
    if (reference.GetString()[0] != '#') {
        return nullptr;
    }
    // RapidJSON's own reading of a fragment would refuse the plain "$" of "#/$defs".
    const auto path = PercentDecoded({reference.GetString() + 1, reference.GetStringLength() - 1});
    if (!path) {
        return nullptr;
    }
    const rapidjson::Pointer pointer(path->data(), path->size());
    return pointer.IsValid() ? pointer.Get(root) : nullptr;
}

JsonValue CopyToPlace(const JsonValue& schema, const std::vector<std::string>& place, JsonAllocator& allocator)
{
    JsonValue copy(schema, allocator);
    if (MentionsReference(copy)) {
        MoveReferences(copy, FragmentOf(place), allocator);
    }
    return copy;
}
}  // namespace JsonSchema
