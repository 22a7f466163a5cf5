#include "DesiredInstances.h"

#include "ConfigStoreDocument.h"

using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;
using NimbSchemaStore::SchemaObjectCache;
using NimbSchemaStore::SchemaObjectId;

namespace ConfigStoreCtl
{
namespace
{
std::string TextOf(const JsonValue& value)
{
    return {value.GetString(), value.GetStringLength()};
}

const JsonValue& Root(const JsonDocument& document, bool profile)
{
    return profile && ConfigStoreDocument::ValueExists(document, "profile") ? document["profile"] : document;
}

DesiredInstance InstanceOf(const SchemaObjectId& object, const JsonValue& given, const JsonValue& staged)
{
    DesiredInstance instance{object, Serialized(staged), {}};
    CompareJson(given, staged, "", instance.filledIn);
    return instance;
}

void AddObject(const SchemaObjectId& object, const JsonValue& given, const JsonValue& staged,
               const SchemaObjectCache& cache, std::vector<DesiredInstance>& instances)
{
    if (!staged.IsArray() || !cache.Get(object)->IsMultiInstance()) {
        instances.push_back(InstanceOf(object, given, staged));
        return;
    }
    for (rapidjson::SizeType i = 0; i < staged.Size(); ++i) {
        instances.push_back(InstanceOf(object, given[i], staged[i]));
    }
}

/// Staging adds members to instances alone, so down to them both documents have the same members in the same order.
template <class Visit>
void ForEachMember(const JsonValue& given, const JsonValue& staged, Visit&& visit)
{
    auto twin = given.MemberBegin();
    for (const auto& member : staged.GetObject()) {
        visit(TextOf(member.name), (twin++)->value, member.value);
    }
}
}  // namespace

std::vector<DesiredInstance> InstancesOf(const JsonDocument& given, const JsonDocument& staged,
                                         const SchemaObjectCache& cache, bool profile)
{
    std::vector<DesiredInstance> instances;
    const auto addGroups = [&](const std::string& component, const JsonValue& was, const JsonValue& is) {
        ForEachMember(was, is, [&](const std::string& group, const JsonValue& keysBefore, const JsonValue& keys) {
            ForEachMember(keysBefore, keys, [&](const std::string& key, const JsonValue& value, const JsonValue& now) {
                AddObject({component, group, key}, value, now, cache, instances);
            });
        });
    };
    ForEachMember(Root(given, profile), Root(staged, profile), addGroups);
    return instances;
}
}  // namespace ConfigStoreCtl
