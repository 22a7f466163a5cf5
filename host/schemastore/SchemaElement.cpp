#include "SchemaElement.h"

#include <algorithm>
#include <bitset>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "ConfigStoreDocument.h"
#include "ConfigStoreException.h"
#include "JsonPlace.h"
#include "JsonTexts.h"
#include "JsonValidator.h"

using JsonSchema::TextOf;
using NimbConfigStore::ConfigStoreException;
using NimbConfigStore::JsonAllocator;
using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace NimbSchemaStore
{
namespace
{
bool IsName(const JsonValue& value)
{
    return value.IsString() && !TextOf(value).empty() && TextOf(value).find('\0') == std::string_view::npos;
}

bool AreNames(const JsonValue& value)
{
    return value.IsArray() && std::all_of(value.Begin(), value.End(), IsName);
}

bool IsFlag(const JsonValue& value)
{
    return value.IsInt() && (value.GetInt() == 0 || value.GetInt() == 1);
}

bool IsPlacement(const JsonValue& value)
{
    const auto schema = value.IsObject() ? value.FindMember("schema") : JsonValue::ConstMemberIterator();
    return value.IsObject() && schema != value.MemberEnd() && schema->value.IsString() &&
           (TextOf(schema->value) == "nimb-shared" || TextOf(schema->value) == "nimbio-only");
}

bool IsFileMember(const JsonValue::Member& member)
{
    const std::string_view name = TextOf(member.name);
    if (name == "enabled") {
        return member.value.IsBool();
    }
    if (name == "path") {
        return IsName(member.value) && *member.value.GetString() == '/';
    }
    constexpr std::string_view CLASSES[] = {"vital", "cached", "config"};
    return name == "persistence" && member.value.IsString() &&
           std::find(std::begin(CLASSES), std::end(CLASSES), TextOf(member.value)) != std::end(CLASSES);
}

bool IsFile(const JsonValue& value)
{
    return value.IsObject() && std::all_of(value.MemberBegin(), value.MemberEnd(), IsFileMember);
}

bool IsBoolean(const JsonValue& value)
{
    return value.IsBool();
}
bool IsInteger(const JsonValue& value)
{
    return value.IsInt();
}
bool IsObject(const JsonValue& value)
{
    return value.IsObject();
}

/// A member that an element may have.
struct MemberRule
{
    std::string_view name;
    bool (*holds)(const JsonValue&);
    const char* expected;
};

constexpr MemberRule MEMBERS[] = {
    {"component", IsName, "a string that is not empty and holds no NUL"},
    {"group", IsName, "a string that is not empty and holds no NUL"},
    {"key", IsName, "a string that is not empty and holds no NUL"},
    {"schema", IsObject, "a JSON Schema (an object)"},
    {"singleton", IsBoolean, "a boolean"},
    {"version", IsName, "a string that is not empty and holds no NUL"},
    {"schemaType", IsInteger, "an integer"},
    {"dspIntegrated", IsBoolean, "a boolean"},
    {"mutableDefaultConfig", IsBoolean, "a boolean"},
    {"preserveNonUser", IsBoolean, "a boolean"},
    {"noRestore", IsFlag, "0 or 1"},
    {"excludedInstances", AreNames, "an array of strings that are not empty and hold no NUL"},
    {"solutionUserInstances", AreNames, "an array of strings that are not empty and hold no NUL"},
    {"smartnic", IsPlacement, "{\"schema\": \"nimb-shared\" or \"nimbio-only\"}"},
    {"file", IsFile,
     "{\"enabled\": boolean, \"persistence\": \"vital\", \"cached\" or \"config\", \"path\": \"/...\"}"},
    {"dataFile", IsBoolean, "a boolean"},
    {"description", [](const JsonValue& value) { return value.IsString(); }, "a string"},
};

/// Checks one parsed element; every refusal names it.
class ElementCheck
{
public:
    ElementCheck(const SchemaObjectId& id, const JsonValue& element) : id_(id), element_(element) {}

    void Run() const
    {
        std::bitset<std::size(MEMBERS)> seen;
        for (const auto& member : element_.GetObject()) {
            const std::size_t rule = CheckMember(TextOf(member.name), member.value);
            Require(!seen[rule], TextOf(member.name), "stands twice");
            seen.set(rule);
        }
        CheckIdentity("component", id_.component);
        CheckIdentity("group", id_.group);
        CheckIdentity("key", id_.name);
        Require(Find("file") == nullptr || id_.component == "files", "file", "is for component \"files\" only");
        const JsonValue* dataFile = Find("dataFile");
        const bool needsNone = Find("file") != nullptr || (dataFile != nullptr && dataFile->GetBool());
        Require(needsNone || Find("schema") != nullptr, "schema", "is missing");
        if (const JsonValue* schema = Find("schema")) {
            const std::string problem = JsonValidator::CheckSchema(*schema);
            Require(problem.empty(), "schema", "is unusable " + problem);
            CheckInstanceId(*schema);
        }
    }

private:
    /// @return the place of the member's rule.
    std::size_t CheckMember(std::string_view name, const JsonValue& value) const
    {
        const auto rule = std::find_if(std::begin(MEMBERS), std::end(MEMBERS),
                                       [name](const MemberRule& one) { return one.name == name; });
        Require(rule != std::end(MEMBERS), name, "is unknown");
        if (!rule->holds(value)) {
            Refuse(name, std::string("expected ") + rule->expected + ", found " + JsonSchema::Described(value));
        }
        return static_cast<std::size_t>(rule - std::begin(MEMBERS));
    }

    void CheckIdentity(const char* member, const std::string& expected) const
    {
        const JsonValue* value = Find(member);
        Require(!expected.empty() && value != nullptr && TextOf(*value) == expected, member,
                "does not name the object registered");
    }

    void CheckInstanceId(const JsonValue& schema) const
    {
        int marked = 0;
        const auto properties = schema.FindMember("properties");
        if (properties != schema.MemberEnd()) {
            for (const auto& property : properties->value.GetObject()) {
                marked += CheckMark(property) ? 1 : 0;
            }
        }
        Require(marked <= 1, "schema", "marks more than one property with \"instanceId\"");
        const JsonValue* singleton = Find("singleton");
        Require(marked == 1 || singleton == nullptr || singleton->GetBool(), "schema",
                "marks no property with \"instanceId\", which an object of many instances needs");
    }

    /// True for the property that identifies an instance.
    bool CheckMark(const JsonValue::Member& property) const
    {
        const JsonValue& schema = property.value;
        if (!ConfigStoreDocument::ValueExists(schema, "instanceId") || !schema["instanceId"].GetBool()) {
            return false;
        }
        const auto type = schema.FindMember("type");
        Require(type != schema.MemberEnd() && type->value.IsString() && TextOf(type->value) == "string", "schema",
                "marks the property " + JsonSchema::Quoted(TextOf(property.name)) +
                    " with \"instanceId\", whose type is not \"string\"");
        return true;
    }

    const JsonValue* Find(const char* name) const
    {
        const auto member = element_.FindMember(name);
        return member == element_.MemberEnd() ? nullptr : &member->value;
    }

    void Require(bool holds, std::string_view member, std::string_view why) const
    {
        if (!holds) {
            Refuse(member, why);
        }
    }

    [[noreturn]] void Refuse(std::string_view member, std::string_view why) const
    {
        std::string text = "Schema element " + id_.toString() + ": member " + JsonSchema::Quoted(member) + " ";
        text += why;
        std::replace(text.begin(), text.end(), '\0', ' ');  // a name may hold it, which would cut the text off
        throw ConfigStoreException(NimbConfigStore::CS_ERROR_OPERATION, text.c_str());
    }

    const SchemaObjectId& id_;
    const JsonValue& element_;
};

void Read(const JsonValue& element, const char* member, bool& value)
{
    const auto found = element.FindMember(member);
    value = found != element.MemberEnd() ? found->value.GetBool() : value;
}

void Read(const JsonValue& element, const char* member, int& value)
{
    const auto found = element.FindMember(member);
    value = found != element.MemberEnd() ? found->value.GetInt() : value;
}
}  // namespace

SchemaElement ReadSchemaElement(const SchemaObjectId& id, const std::string& json, const std::string& version)
{
    JsonAllocator allocator(2 * json.size() + 1024);  // one chunk of about the size needed
    JsonDocument root(&allocator);
    std::string reason;
    if (!ConfigStoreDocument::ParseText(json, root, &reason) || !root.IsObject()) {
        throw ConfigStoreException(
            NimbConfigStore::CS_ERROR_OPERATION,
            ("Schema element " + id.toString() + " is no JSON object" + (reason.empty() ? "" : ": ") + reason).c_str());
    }
    ElementCheck(id, root).Run();
    SchemaElement element;
    Read(root, "singleton", element.singleton);
    Read(root, "dspIntegrated", element.dspIntegrated);
    Read(root, "mutableDefaultConfig", element.mutableDefaultConfig);
    Read(root, "preserveNonUser", element.preserveNonUser);
    Read(root, "dataFile", element.dataFile);
    Read(root, "schemaType", element.schemaType);
    Read(root, "noRestore", element.noRestore);
    element.version = root.HasMember("version") ? root["version"].GetString() : version;
    element.placement = root.HasMember("smartnic") ? root["smartnic"]["schema"].GetString() : "";
    return element;
}

std::string InstanceIdPropertyOf(const JsonValue& instanceSchema)
{
    const auto properties = instanceSchema.FindMember("properties");
    if (properties == instanceSchema.MemberEnd()) {
        return "";
    }
    for (const auto& property : properties->value.GetObject()) {
        if (ConfigStoreDocument::ValueExists(property.value, "instanceId") && property.value["instanceId"].IsTrue()) {
            return std::string(TextOf(property.name));
        }
    }
    return "";
}
}  // namespace NimbSchemaStore
