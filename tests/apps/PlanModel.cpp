#include "PlanModel.h"

#include <gtest/gtest.h>
#include <rapidjson/pointer.h>

#include <algorithm>
#include <vector>

#include "ConfigStoreDocument.h"

using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace
{
constexpr const char* COLUMNS[] = {"version",    "revision",    "success",       "userValue",
                                   "vitalValue", "cachedValue", "autoConfValue", "desiredValue"};

/// The same text for the same value, whatever the order of its members.
std::string Canonical(const JsonValue& value)
{
    std::string text;
    if (value.IsObject()) {
        std::vector<std::string> members;
        for (const auto& member : value.GetObject()) {
            members.push_back(Canonical(member.name) + ":" + Canonical(member.value));
        }
        std::sort(members.begin(), members.end());
        for (const std::string& member : members) {
            text += (text.empty() ? "" : ",") + member;
        }
        return "{" + text + "}";
    }
    if (value.IsArray()) {
        for (const JsonValue& element : value.GetArray()) {
            text += (text.empty() ? "" : ",") + Canonical(element);
        }
        return "[" + text + "]";
    }
    ConfigStoreDocument::SerializeValue(value, text);
    return text;
}

JsonDocument Parsed(const std::string& text)
{
    JsonDocument document;
    if (!ConfigStoreDocument::ParseText(text, document)) {
        document.SetString(text.c_str(), document.GetAllocator());
    }
    return document;
}

std::string TextMember(const JsonValue& object, const char* name)
{
    return object[name].IsString() ? object[name].GetString() : "NULL";
}

std::string Key(const JsonValue& row)
{
    return TextMember(row, "component") + "/" + TextMember(row, "group") + "/" + TextMember(row, "key") + "/" +
           TextMember(row, "identifier");
}

void ApplyMember(JsonDocument& columns, const JsonValue& member)
{
    const rapidjson::Pointer place(member["pointer"].GetString());
    ASSERT_TRUE(place.IsValid());
    const JsonValue* old = place.Get(columns);
    ASSERT_EQ(old != nullptr, member.HasMember("old")) << member["pointer"].GetString();
    if (old != nullptr) {
        EXPECT_EQ(Canonical(*old), Canonical(member["old"]));
    }
    if (member.HasMember("new")) {
        place.Set(columns, member["new"], columns.GetAllocator());
    } else {
        place.Erase(columns);
    }
}
}  // namespace

PlanModel::PlanModel(const TestHost& host)
{
    for (const Row& row :
         host.Sql("SELECT Component || '/' || ConfigGroup || '/' || Name || '/' || COALESCE(Identifier, 'NULL'), "
                  "json_quote(Version), Revision, Success, UserValue, VitalValue, CachedValue, AutoConfValue, "
                  "DesiredValue FROM Config ORDER BY rowid")) {
        Columns& columns = rows_[FreeKey(*row[0])];
        for (std::size_t i = 0; i < std::size(COLUMNS); ++i) {
            if (row[i + 1] && !(i == 0 && row[1] == "null")) {
                columns[COLUMNS[i]] = Canonical(Parsed(*row[i + 1]));
            }
        }
    }
}

std::string PlanModel::FreeKey(const std::string& key) const
{
    int number = 0;
    while (rows_.count(key + "#" + std::to_string(number)) != 0) {
        ++number;
    }
    return key + "#" + std::to_string(number);
}

void PlanModel::ApplyRow(const JsonValue& row)
{
    const bool added = TextMember(row, "change") == "added";
    const std::string key = added ? FreeKey(Key(row)) : Key(row) + "#0";
    ASSERT_EQ(rows_.count(key), added ? 0 : 1) << key;
    JsonDocument columns(rapidjson::kObjectType);
    for (const auto& [name, text] : rows_[key]) {
        const JsonDocument value = Parsed(text);
        rapidjson::Pointer(("/" + name).c_str()).Set(columns, value, columns.GetAllocator());
    }
    // Backwards, so that elements that go from the end of an array do not move the others.
    const auto members = row["members"].GetArray();
    std::for_each(std::make_reverse_iterator(members.end()), std::make_reverse_iterator(members.begin()),
                  [&columns](const JsonValue& member) { ApplyMember(columns, member); });
    rows_.erase(key);
    if (TextMember(row, "change") != "removed") {
        for (const auto& column : columns.GetObject()) {
            rows_[key][column.name.GetString()] = Canonical(column.value);
        }
    } else {
        EXPECT_TRUE(columns.ObjectEmpty()) << key;
    }
}

void PlanModel::Apply(const JsonValue& plan)
{
    for (const JsonValue& row : plan["rows"].GetArray()) {
        EXPECT_FALSE(row["reasons"].Empty()) << Key(row);
        if (TextMember(row, "change") != "refused") {
            ApplyRow(row);
        }
    }
}

std::string PlanModel::Text() const
{
    std::string text;
    for (const auto& [key, columns] : rows_) {
        text += key + "\n";
        for (const auto& [name, value] : columns) {
            text += "  " + name + " " + value + "\n";
        }
    }
    return text;
}
