#include "PlainAcceptance.h"

#include <algorithm>
#include <string>
#include <vector>

#include "CanonicalJson.h"
#include "JsonTexts.h"
#include "SchemaFormats.h"
#include "SchemaKeywords.h"
#include "SchemaReferences.h"

using NimbConfigStore::JsonValue;

namespace JsonSchema
{
namespace
{
using Walk = PlainAcceptance;

/// Finds names in the order in which they stand at no cost; out of order it looks only so far, so that a large object
/// never costs the square of its members.
class NameSearch
{
public:
    explicit NameSearch(const JsonValue& object) : object_(object), next_(object.MemberBegin()) {}

    /// Null for a name that is not there, or too far away: then GaveUp.
    const JsonValue* Find(std::string_view name)
    {
        const rapidjson::SizeType count = object_.MemberCount();
        for (rapidjson::SizeType steps = std::min(count, FARTHEST); steps > 0; --steps) {
            next_ = next_ == object_.MemberEnd() ? object_.MemberBegin() : next_;
            const auto& member = *next_++;
            if (TextOf(member.name) == name) {
                return &member.value;
            }
        }
        gaveUp_ = gaveUp_ || count > FARTHEST;
        return nullptr;
    }

    bool GaveUp() const { return gaveUp_; }

private:
    static constexpr rapidjson::SizeType FARTHEST = 64;

    const JsonValue& object_;
    JsonValue::ConstMemberIterator next_;
    bool gaveUp_ = false;
};

bool IsOfType(std::string_view type, const JsonValue& value)
{
    switch (type[0]) {
        case 's':
            return value.IsString();
        case 'o':
            return value.IsObject();
        case 'a':
            return value.IsArray();
        case 'b':
            return value.IsBool();
        case 'i':
            return value.IsInt64() || value.IsUint64();
        default:
            return type == "null" ? value.IsNull() : value.IsNumber();
    }
}

bool Same(const JsonValue& a, const JsonValue& b)
{
    return a.IsString() && b.IsString() ? TextOf(a) == TextOf(b)
                                        : a.GetType() == b.GetType() && Canonical(a) == Canonical(b);
}

bool HasAll(const JsonValue& object, const JsonValue& names)
{
    NameSearch search(object);
    return std::all_of(names.Begin(), names.End(),
                       [&search](const JsonValue& name) { return search.Find(TextOf(name)) != nullptr; });
}

template <class Text>
bool AreDifferent(std::vector<Text> texts)
{
    std::sort(texts.begin(), texts.end());
    return std::adjacent_find(texts.begin(), texts.end()) == texts.end();
}

bool AreUnique(const JsonValue& elements)
{
    if (std::all_of(elements.Begin(), elements.End(), [](const JsonValue& element) { return element.IsString(); })) {
        std::vector<std::string_view> texts(elements.Size());
        std::transform(elements.Begin(), elements.End(), texts.begin(), TextOf);
        return AreDifferent(std::move(texts));
    }
    std::vector<std::string> texts(elements.Size());
    std::transform(elements.Begin(), elements.End(), texts.begin(), Canonical);
    return AreDifferent(std::move(texts));
}

template <class Holds>
bool ForEach(const JsonValue& array, Holds&& holds)
{
    return std::all_of(array.Begin(), array.End(), holds);
}

// ---- One keyword, one reading -------------------------------------------------------------------------------------

/// Whether @p value is seen to keep to a keyword whose value is @p rule.
using Reading = bool (*)(const Walk& walk, const JsonValue& rule, const JsonValue& value);

struct KeywordReading
{
    std::string_view name;
    Reading reading;
};

constexpr KeywordReading READINGS[] = {
    {"type",
     [](const Walk&, const JsonValue& rule, const JsonValue& value) {
         return rule.IsString() ? IsOfType(TextOf(rule), value)
                                : std::any_of(rule.Begin(), rule.End(),
                                              [&value](const JsonValue& one) { return IsOfType(TextOf(one), value); });
     }},
    {"enum",
     [](const Walk&, const JsonValue& rule, const JsonValue& value) {
         return std::any_of(rule.Begin(), rule.End(), [&value](const JsonValue& one) { return Same(one, value); });
     }},
    {"const", [](const Walk&, const JsonValue& rule, const JsonValue& value) { return Same(rule, value); }},
    {"required", [](const Walk&, const JsonValue& rule,
                    const JsonValue& value) { return !value.IsObject() || HasAll(value, rule); }},
    {"dependencies",
     [](const Walk& walk, const JsonValue& rule, const JsonValue& value) {
         return !value.IsObject() ||
                std::all_of(rule.MemberBegin(), rule.MemberEnd(), [&](const JsonValue::Member& dependency) {
                    return value.FindMember(dependency.name) == value.MemberEnd() ||
                           (dependency.value.IsArray() ? HasAll(value, dependency.value)
                                                       : walk.KeepsTo(dependency.value, value));
                });
     }},
    {"minProperties",
     [](const Walk&, const JsonValue& rule, const JsonValue& value) {
         return !value.IsObject() || value.MemberCount() >= rule.GetUint64();
     }},
    {"maxProperties",
     [](const Walk&, const JsonValue& rule, const JsonValue& value) {
         return !value.IsObject() || value.MemberCount() <= rule.GetUint64();
     }},
    {"format",
     [](const Walk& walk, const JsonValue& rule, const JsonValue& value) {
         return !value.IsString() || HasFormat(TextOf(rule), TextOf(value), walk.Patterns());
     }},
    {"minimum", [](const Walk&, const JsonValue& rule,
                   const JsonValue& value) { return !value.IsNumber() || value.GetDouble() >= rule.GetDouble(); }},
    {"maximum", [](const Walk&, const JsonValue& rule,
                   const JsonValue& value) { return !value.IsNumber() || value.GetDouble() <= rule.GetDouble(); }},
    {"exclusiveMinimum",
     [](const Walk&, const JsonValue& rule, const JsonValue& value) {
         return !value.IsNumber() || value.GetDouble() > rule.GetDouble();
     }},
    {"exclusiveMaximum",
     [](const Walk&, const JsonValue& rule, const JsonValue& value) {
         return !value.IsNumber() || value.GetDouble() < rule.GetDouble();
     }},
    // Fractions are rounded with care elsewhere.
    {"multipleOf",
     [](const Walk&, const JsonValue& rule, const JsonValue& value) {
         return !value.IsNumber() || (rule.IsInt64() && value.IsInt64() && value.GetInt64() % rule.GetInt64() == 0);
     }},
    {"minLength",
     [](const Walk&, const JsonValue& rule, const JsonValue& value) {
         return !value.IsString() || Characters(TextOf(value)) >= rule.GetUint64();
     }},
    {"maxLength",
     [](const Walk&, const JsonValue& rule, const JsonValue& value) {
         return !value.IsString() || Characters(TextOf(value)) <= rule.GetUint64();
     }},
    {"pattern",
     [](const Walk& walk, const JsonValue& rule, const JsonValue& value) {
         return !value.IsString() || walk.Patterns().Matches(TextOf(rule), TextOf(value));
     }},
    {"items",
     [](const Walk& walk, const JsonValue& rule, const JsonValue& value) {
         return !value.IsArray() || (!rule.IsArray() && ForEach(value, [&](const JsonValue& element) {
             return walk.KeepsTo(rule, element);
         }));
     }},
    {"minItems", [](const Walk&, const JsonValue& rule,
                    const JsonValue& value) { return !value.IsArray() || value.Size() >= rule.GetUint64(); }},
    {"maxItems", [](const Walk&, const JsonValue& rule,
                    const JsonValue& value) { return !value.IsArray() || value.Size() <= rule.GetUint64(); }},
    {"uniqueItems", [](const Walk&, const JsonValue& rule,
                       const JsonValue& value) { return !rule.GetBool() || !value.IsArray() || AreUnique(value); }},
    {"allOf",
     [](const Walk& walk, const JsonValue& rule, const JsonValue& value) {
         return ForEach(rule, [&](const JsonValue& schema) { return walk.KeepsTo(schema, value); });
     }},
    {"anyOf",
     [](const Walk& walk, const JsonValue& rule, const JsonValue& value) {
         return std::any_of(rule.Begin(), rule.End(),
                            [&](const JsonValue& schema) { return walk.KeepsTo(schema, value); });
     }},
    {"$ref", [](const Walk& walk, const JsonValue& rule,
                const JsonValue& value) { return walk.KeepsTo(*ResolveReference(walk.Root(), rule), value); }},
};

// ---- All that a schema says ---------------------------------------------------------------------------------------

/// Null for a keyword that is left to the FindingVisitor.
Reading ReadingOf(const Keyword& keyword)
{
    static const std::vector<Reading> readings = [] {
        std::vector<Reading> all(AllKeywords().size());
        for (const KeywordReading& one : READINGS) {
            all[static_cast<std::size_t>(FindKeyword(one.name) - AllKeywords().data())] = one.reading;
        }
        return all;
    }();
    return readings[static_cast<std::size_t>(&keyword - AllKeywords().data())];
}
}  // namespace

/// The three keywords that are read as one.
struct PlainAcceptance::MemberSchemas
{
    const JsonValue* named = nullptr;
    const JsonValue* patterns = nullptr;
    const JsonValue* others = nullptr;

    bool Take(std::string_view keyword, const JsonValue& schemas)
    {
        const JsonValue** place = keyword == "properties"             ? &named
                                  : keyword == "patternProperties"    ? &patterns
                                  : keyword == "additionalProperties" ? &others
                                                                      : nullptr;
        if (place != nullptr) {
            *place = &schemas;
        }
        return place != nullptr;
    }
};

PlainAcceptance::PlainAcceptance(const JsonValue& schema, const std::set<int>& rules, SchemaPatterns& patterns)
    : root_(schema), patterns_(patterns)
{
    for (const int rule : rules) {
        if (rule >= JsonValidator::RULE_TYPES && rule <= JsonValidator::RULE_MEMBERS) {
            rules_ |= 1U << rule;
        }
    }
}

bool PlainAcceptance::IsAsked(int family) const
{
    return family == COMBINATOR || (family >= 0 && ((rules_ >> family) & 1U) != 0);
}

bool PlainAcceptance::KeepsTo(const JsonValue& schema, const JsonValue& value) const
{
    if (schema.IsBool()) {
        return schema.GetBool();
    }
    MemberSchemas members;
    for (const auto& keyword : schema.GetObject()) {
        const Keyword* known = FindKeyword(TextOf(keyword.name));
        if (known == nullptr || !IsAsked(known->family)) {
            continue;
        }
        const Reading reading = ReadingOf(*known);
        if (!(reading != nullptr ? reading(*this, keyword.value, value) : members.Take(known->name, keyword.value))) {
            return false;
        }
    }
    return !value.IsObject() || MembersKeep(members, value);
}

bool PlainAcceptance::MembersKeep(const MemberSchemas& schemas, const JsonValue& object) const
{
    static const JsonValue none(rapidjson::kObjectType);
    NameSearch search(schemas.named != nullptr ? *schemas.named : none);
    for (const auto& member : object.GetObject()) {
        const JsonValue* named = search.Find(TextOf(member.name));
        if (search.GaveUp() || (named != nullptr && !KeepsTo(*named, member.value)) ||
            !OtherKeeps(schemas, member, named != nullptr)) {
            return false;
        }
    }
    return true;
}

bool PlainAcceptance::OtherKeeps(const MemberSchemas& schemas, const JsonValue::Member& member, bool isKnown) const
{
    if (schemas.patterns != nullptr) {
        for (const auto& pattern : schemas.patterns->GetObject()) {
            const bool applies = patterns_.Matches(TextOf(pattern.name), TextOf(member.name));
            isKnown = isKnown || applies;
            if (applies && !KeepsTo(pattern.value, member.value)) {
                return false;
            }
        }
    }
    return isKnown || schemas.others == nullptr || KeepsTo(*schemas.others, member.value);
}
}  // namespace JsonSchema
