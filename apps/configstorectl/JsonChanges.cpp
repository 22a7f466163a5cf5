#include "JsonChanges.h"

#include <map>
#include <string_view>

#include "ConfigStoreDocument.h"

using NimbConfigStore::JsonAllocator;
using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace ConfigStoreCtl
{
namespace
{
using Members = std::map<std::string_view, const JsonValue*>;

Members MembersOf(const JsonValue& object)
{
    Members members;
    for (const auto& member : object.GetObject()) {
        members.emplace(std::string_view(member.name.GetString(), member.name.GetStringLength()), &member.value);
    }
    return members;
}

void CompareMembers(const Members& before, const Members& after, const std::string& place, MemberChanges& changes)
{
    for (const auto& [name, value] : before) {
        const std::string pointer = PointerTo(place, std::string(name));
        if (const auto found = after.find(name); found != after.end()) {
            CompareJson(*value, *found->second, pointer, changes);
        } else {
            changes.push_back({pointer, Serialized(*value), std::nullopt});
        }
    }
    for (const auto& [name, value] : after) {
        if (before.count(name) == 0) {
            changes.push_back({PointerTo(place, std::string(name)), std::nullopt, Serialized(*value)});
        }
    }
}

void CompareElements(const JsonValue& before, const JsonValue& after, const std::string& place, MemberChanges& changes)
{
    for (rapidjson::SizeType i = 0; i < before.Size() || i < after.Size(); ++i) {
        const std::string pointer = place + "/" + std::to_string(i);
        if (i < before.Size() && i < after.Size()) {
            CompareJson(before[i], after[i], pointer, changes);
        } else if (i < before.Size()) {
            changes.push_back({pointer, Serialized(before[i]), std::nullopt});
        } else {
            changes.push_back({pointer, std::nullopt, Serialized(after[i])});
        }
    }
}

JsonValue TextValue(const std::string& text, JsonAllocator& allocator)
{
    return JsonValue(text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator);
}

/// The text as the store keeps it, parsed.
void ParseStored(const std::string& text, JsonDocument& document)
{
    if (!ConfigStoreDocument::ParseText(text, document)) {
        static_cast<JsonValue&>(document) = TextValue(text, document.GetAllocator());
    }
}

std::optional<std::string> StoredAsJson(const std::optional<std::string>& text)
{
    if (!text) {
        return std::nullopt;
    }
    JsonDocument document;
    ParseStored(*text, document);
    return Serialized(document);
}

void AddMember(JsonValue& record, const char* name, const std::optional<std::string>& text, JsonAllocator& allocator)
{
    if (text) {
        JsonDocument value(&allocator);
        ParseStored(*text, value);
        record.AddMember(rapidjson::StringRef(name), static_cast<JsonValue&>(value), allocator);
    }
}
}  // namespace

std::string Serialized(const JsonValue& value)
{
    std::string text;
    ConfigStoreDocument::SerializeValue(value, text);
    return text;
}

std::string Quoted(const std::string& text)
{
    JsonDocument document;
    static_cast<JsonValue&>(document) = TextValue(text, document.GetAllocator());
    return Serialized(document);
}

std::string PointerTo(const std::string& place, const std::string& name)
{
    std::string pointer = place + "/";
    for (const char c : name) {
        pointer += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    }
    return pointer;
}

void CompareJson(const JsonValue& before, const JsonValue& after, const std::string& place, MemberChanges& changes)
{
    if (before.IsObject() && after.IsObject()) {
        const Members left = MembersOf(before);
        const Members right = MembersOf(after);
        // A name that stands twice has no place of its own: such an object is compared as a whole.
        if (left.size() == before.MemberCount() && right.size() == after.MemberCount()) {
            CompareMembers(left, right, place, changes);
            return;
        }
    } else if (before.IsArray() && after.IsArray()) {
        CompareElements(before, after, place, changes);
        return;
    }
    const std::string left = Serialized(before);
    const std::string right = Serialized(after);
    if (left != right) {
        changes.push_back({place, left, right});
    }
}

void CompareTexts(const std::optional<std::string>& before, const std::optional<std::string>& after,
                  const std::string& place, MemberChanges& changes)
{
    if (before == after) {
        return;
    }
    if (!before || !after) {
        changes.push_back({place, StoredAsJson(before), StoredAsJson(after)});
        return;
    }
    JsonDocument left;
    JsonDocument right;
    ParseStored(*before, left);
    ParseStored(*after, right);
    CompareJson(left, right, place, changes);
}

TextLines ChangeLines(const MemberChanges& changes)
{
    TextLines lines;
    for (const MemberChange& change : changes) {
        lines.texts.push_back(change.pointer + "  " + change.before.value_or("(none)") + " -> " +
                              change.after.value_or("(none)"));
    }
    return lines;
}

JsonText ChangeRecords(const MemberChanges& changes)
{
    JsonDocument records(rapidjson::kArrayType);
    for (const MemberChange& change : changes) {
        JsonValue record(rapidjson::kObjectType);
        record.AddMember("pointer", TextValue(change.pointer, records.GetAllocator()), records.GetAllocator());
        AddMember(record, "old", change.before, records.GetAllocator());
        AddMember(record, "new", change.after, records.GetAllocator());
        records.PushBack(record, records.GetAllocator());
    }
    return {Serialized(records)};
}
}  // namespace ConfigStoreCtl
