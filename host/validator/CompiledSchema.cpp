#include "CompiledSchema.h"

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <valijson/adapters/rapidjson_adapter.hpp>
#include <valijson/schema_parser.hpp>

#include "CanonicalJson.h"
#include "JsonPlace.h"
#include "RuleConstraints.h"
#include "SchemaKeywords.h"
#include "SchemaReferences.h"

using NimbConfigStore::JsonAllocator;
using NimbConfigStore::JsonValue;

namespace valijson::adapters
{
// valijson's own look-up, written for old releases of RapidJSON, steps past a null pointer.
template <>
inline RapidJsonObject::iterator RapidJsonObject::find(const std::string& name) const
{
    const JsonValue text(rapidjson::StringRef(name.data(), static_cast<rapidjson::SizeType>(name.size())));
    return m_value.FindMember(text);
}
}  // namespace valijson::adapters

namespace JsonSchema
{
namespace
{
const char* const DEFINITIONS_MEMBER = "definitions";

/// Copies a schema without what is not wanted, in the form that valijson reads.
class Pruning
{
public:
    Pruning(const JsonValue& schema, const std::set<int>& rules, JsonAllocator& allocator)
        : source_(schema), rules_(rules), allocator_(allocator)
    {}

    JsonValue Whole()
    {
        JsonValue root = Schema(source_);
        JsonValue definitions(rapidjson::kObjectType);
        for (std::size_t i = 0; i < targets_.size(); ++i)  // copying a target may add further ones
        {
            definitions.AddMember(Text(std::to_string(i)), Schema(*targets_[i]), allocator_);
        }
        if (!targets_.empty()) {
            root.AddMember(rapidjson::StringRef(DEFINITIONS_MEMBER), definitions, allocator_);
        }
        return root;
    }

private:
    JsonValue Text(const std::string& text) { return TextValue(text, allocator_); }

    JsonValue Schema(const JsonValue& schema)
    {
        if (schema.IsBool()) {
            return JsonValue(schema.GetBool());
        }
        const auto reference = schema.FindMember("$ref");
        return reference != schema.MemberEnd() ? Reference(reference->value) : Keywords(schema);
    }

    JsonValue Keywords(const JsonValue& schema)
    {
        JsonValue pruned(rapidjson::kObjectType);
        for (const auto& member : schema.GetObject()) {
            const Keyword* keyword = FindKeyword({member.name.GetString(), member.name.GetStringLength()});
            if (keyword == nullptr || !IsWanted(*keyword, member.value)) {
                continue;
            }
            const std::string rule = RuleMember(keyword->name);
            pruned.AddMember(rule.empty() ? JsonValue(member.name, allocator_) : Text(rule),
                             rule.empty() ? Kept(*keyword, member.value) : Values(*keyword, member.value), allocator_);
        }
        return pruned;
    }

    bool IsWanted(const Keyword& keyword, const JsonValue& value) const
    {
        const bool isMark =
            keyword.family == JsonValidator::RULE_READ_ONLY || keyword.family == JsonValidator::RULE_DEPRECATIONS;
        const bool isAsked = keyword.family >= 0 && rules_.count(keyword.family) != 0;
        return keyword.family == COMBINATOR || (isAsked && (!isMark || value.GetBool()));
    }

    JsonValue Reference(const JsonValue& reference) { return ReferenceTo(*ResolveReference(source_, reference)); }

    /// References are numbered anew, so that nothing depends on how valijson reads a JSON Pointer.
    JsonValue ReferenceTo(const JsonValue& target)
    {
        const auto [entry, isNew] = numbers_.emplace(&target, targets_.size());
        if (isNew) {
            targets_.push_back(&target);
        }
        JsonValue pruned(rapidjson::kObjectType);
        const std::string path = std::string("#/") + DEFINITIONS_MEMBER + "/" + std::to_string(entry->second);
        pruned.AddMember("$ref", Text(path), allocator_);
        return pruned;
    }

    JsonValue Values(const Keyword& keyword, const JsonValue& value)
    {
        JsonValue texts(rapidjson::kArrayType);
        if (keyword.shape == Shape::VALUES) {
            for (const JsonValue& one : value.GetArray()) {
                texts.PushBack(Text(Canonical(one)), allocator_);
            }
        } else if (keyword.shape == Shape::ANY) {
            texts.PushBack(Text(Canonical(value)), allocator_);
        }
        return texts;
    }

    JsonValue Kept(const Keyword& keyword, const JsonValue& value)
    {
        // valijson gives the schema of names the place of the one around it, and takes the one for the other.
        return keyword.name == "propertyNames" ? ReferenceTo(value) : Shaped(keyword.shape, value);
    }

    JsonValue Shaped(Shape shape, const JsonValue& value)
    {
        switch (shape) {
            case Shape::SCHEMA:
                return Schema(value);
            case Shape::SCHEMA_OR_SCHEMAS:
                return value.IsArray() ? Schemas(value) : Schema(value);
            case Shape::SCHEMAS:
                return Schemas(value);
            case Shape::SCHEMA_MAP:
            case Shape::PATTERN_MAP:
            case Shape::DEPENDENCIES:
                return SchemaMap(value);
            case Shape::NUMBER:
                // valijson reads every integer as a signed one.
                return value.IsInt64() ? JsonValue(value.GetInt64()) : JsonValue(value.GetDouble());
            default:
                return JsonValue(value, allocator_);
        }
    }

    JsonValue Schemas(const JsonValue& schemas)
    {
        JsonValue pruned(rapidjson::kArrayType);
        for (const JsonValue& schema : schemas.GetArray()) {
            pruned.PushBack(Schema(schema), allocator_);
        }
        return pruned;
    }

    JsonValue SchemaMap(const JsonValue& schemas)
    {
        JsonValue pruned(rapidjson::kObjectType);
        for (const auto& member : schemas.GetObject()) {
            // An array is a list of names, under "dependencies".
            pruned.AddMember(JsonValue(member.name, allocator_),
                             member.value.IsArray() ? JsonValue(member.value, allocator_) : Schema(member.value),
                             allocator_);
        }
        return pruned;
    }

    const JsonValue& source_;
    const std::set<int>& rules_;
    JsonAllocator& allocator_;
    std::unordered_map<const JsonValue*, std::size_t> numbers_;
    std::vector<const JsonValue*> targets_;
};
}  // namespace

CompiledSchema::CompiledSchema(const JsonValue& schema, const std::set<int>& rules)
{
    JsonAllocator allocator;
    const JsonValue pruned = Pruning(schema, rules, allocator).Whole();
    valijson::SchemaParser parser;
    AddRuleConstraints(parser);
    parser.populateSchema(valijson::adapters::RapidJsonAdapter(pruned), compiled_);
}
}  // namespace JsonSchema
