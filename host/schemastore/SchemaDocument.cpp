#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "JsonPlace.h"
#include "JsonTexts.h"
#include "NimbSchemaStore.h"
#include "SchemaReferences.h"

// The one schema that covers a whole desired document.

using NimbConfigStore::JsonAllocator;
using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace NimbSchemaStore
{
namespace
{
const char* const DELETE_DEFAULT = "DELETE_DEFAULT";

/// An object whose members are exactly those of @p properties.
JsonValue ObjectOf(JsonValue properties, JsonAllocator& allocator)
{
    JsonValue schema(rapidjson::kObjectType);
    schema.AddMember("type", "object", allocator);
    schema.AddMember("properties", properties, allocator);
    schema.AddMember("additionalProperties", false, allocator);
    return schema;
}

/// The values of one name, which a document may hold more than once.
using SameNamed = std::vector<const JsonValue*>;

SameNamed ValuesOf(const JsonValue& object, std::string_view name)
{
    SameNamed values;
    for (const auto& member : object.GetObject()) {
        if (JsonSchema::TextOf(member.name) == name) {
            values.push_back(&member.value);
        }
    }
    return values;
}

/// What all of @p parts hold together: each name once, where it stands first.
std::vector<std::pair<std::string, SameNamed>> MembersOf(const SameNamed& parts)
{
    std::vector<std::pair<std::string, SameNamed>> members;
    std::unordered_map<std::string, std::size_t> places;
    for (const JsonValue* part : parts) {
        if (!part->IsObject()) {
            continue;
        }
        for (const auto& member : part->GetObject()) {
            const auto [place, isNew] = places.emplace(JsonSchema::TextOf(member.name), members.size());
            if (isNew) {
                members.push_back({place->first, {}});
            }
            members[place->second].second.push_back(&member.value);
        }
    }
    return members;
}

/// Builds the levels of the document that @p cache knows; what it does not know is left out, and so refused by name.
class DocumentSchema
{
public:
    DocumentSchema(const SchemaObjectCache& cache, JsonAllocator& allocator) : cache_(cache), allocator_(allocator)
    {
        for (const SchemaObjectId& id : cache.GetIds()) {
            known_.insert({id.component, ""});
            known_.insert({id.component, id.group});
        }
    }

    JsonValue Of(const JsonValue& document)
    {
        if (document.IsObject() && document.HasMember("profile")) {
            Enter("profile");
            JsonValue schema(rapidjson::kObjectType);
            JsonValue properties(rapidjson::kObjectType);
            properties.AddMember("profile", Components(ValuesOf(document, "profile")), allocator_);
            schema.AddMember("properties", properties, allocator_);  // other members are not read
            return schema;
        }
        return Components({&document});
    }

private:
    JsonValue Components(const SameNamed& documents)
    {
        return Level(documents, [this](const std::string& component, const SameNamed& groups, JsonValue& properties) {
            AddKnown(component, "", properties, [&] { return Groups(component, groups); });
        });
    }

    JsonValue Groups(const std::string& component, const SameNamed& groups)
    {
        return Level(groups, [&](const std::string& group, const SameNamed& keys, JsonValue& properties) {
            AddKnown(component, group, properties, [&] { return Keys(component, group, keys); });
        });
    }

    JsonValue Keys(const std::string& component, const std::string& group, const SameNamed& keys)
    {
        return Level(keys, [&](const std::string& key, const SameNamed&, JsonValue& properties) {
            if (const SchemaObjectPtr object = cache_.Find({component, group, key})) {
                Add(key, properties, [&] { return Object(*object); });
            }
        });
    }

    template <class AddMember>
    JsonValue Level(const SameNamed& parts, AddMember&& addMember)
    {
        JsonValue properties(rapidjson::kObjectType);
        for (const auto& [name, values] : MembersOf(parts)) {
            addMember(name, values, properties);
        }
        return ObjectOf(std::move(properties), allocator_);
    }

    template <class Schema>
    void AddKnown(const std::string& component, const std::string& group, JsonValue& properties, Schema&& schema)
    {
        if (known_.count({component, group}) != 0) {
            Add(group.empty() ? component : group, properties, schema);
        }
    }

    template <class Schema>
    void Add(const std::string& name, JsonValue& properties, Schema&& schema)
    {
        Enter(name);
        JsonValue value = schema();
        Leave();
        properties.AddMember(JsonSchema::TextValue(name, allocator_), value, allocator_);
    }

    JsonValue Object(const SchemaObject& object)
    {
        if (!object.HasMutableDefaultConfig()) {
            return JsonSchema::CopyToPlace(object.GetSchema(), place_, allocator_);
        }
        place_.insert(place_.end(), {"anyOf", "0"});
        JsonValue own = JsonSchema::CopyToPlace(object.GetSchema(), place_, allocator_);
        place_.resize(place_.size() - 2);
        JsonValue deletion(rapidjson::kObjectType);
        deletion.AddMember("const", rapidjson::StringRef(DELETE_DEFAULT), allocator_);
        JsonValue alternatives(rapidjson::kArrayType);
        alternatives.PushBack(own, allocator_).PushBack(deletion, allocator_);
        JsonValue schema(rapidjson::kObjectType);
        schema.AddMember("anyOf", alternatives, allocator_);
        return schema;
    }

    void Enter(const std::string& name) { place_.insert(place_.end(), {"properties", name}); }
    void Leave() { place_.resize(place_.size() - 2); }

    const SchemaObjectCache& cache_;
    JsonAllocator& allocator_;
    std::set<std::pair<std::string, std::string>> known_;
    std::vector<std::string> place_;
};
}  // namespace

void GenerateSchemaDocument(const JsonDocument& desired, const SchemaObjectCachePtr& cache, JsonDocument& schema,
                            JsonDocument& scratch)
{
    scratch.SetNull();  // the schema document owns all that it holds
    JsonValue whole = DocumentSchema(*cache, schema.GetAllocator()).Of(desired);
    static_cast<JsonValue&>(schema) = whole;
}
}  // namespace NimbSchemaStore
