#include "SchemaCheck.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <vector>

#include "ConfigStoreDocument.h"
#include "JsonTexts.h"
#include "SchemaFormats.h"
#include "SchemaReferences.h"
#include "Subschemas.h"

using NimbConfigStore::JsonValue;

namespace JsonSchema
{
namespace
{
// References can make a small schema stand for an endless one.
constexpr double MAX_SCHEMAS = 10'000'000;

[[noreturn]] void Refuse(const Place* place, const std::string& why)
{
    throw SchemaProblem("at \"" + PointerTo(place) + "\": " + why);
}

/// valijson reads names and patterns up to the first NUL.
void RefuseNul(const JsonValue& text, const Place* place)
{
    if (TextOf(text).find('\0') != std::string_view::npos) {
        Refuse(place, Described(text) + " holds a NUL, at which it would be cut");
    }
}

void RefuseNulIn(const JsonValue& texts, const Place* place)
{
    for (const JsonValue& text : texts.GetArray()) {
        RefuseNul(text, place);
    }
}

void RefuseNulInLists(const JsonValue& dependencies, const Place* place)
{
    for (const auto& member : dependencies.GetObject()) {
        if (member.value.IsArray()) {
            const Place here{place, TextOf(member.name)};
            RefuseNulIn(member.value, &here);
        }
    }
}

/// Tells names that stand twice in an object: few are compared with each other, many are looked up.
class EarlierNames
{
public:
    explicit EarlierNames(const JsonValue& object) : object_(object), areMany_(object.MemberCount() > 32) {}

    /// To be asked for each member in turn.
    bool Hold(const JsonValue::Member& member)
    {
        if (areMany_) {
            return !seen_.insert(TextOf(member.name)).second;
        }
        return std::any_of(&*object_.MemberBegin(), &member,
                           [&member](const auto& earlier) { return TextOf(earlier.name) == TextOf(member.name); });
    }

private:
    const JsonValue& object_;
    const bool areMany_;
    std::unordered_set<std::string_view> seen_;
};

bool IsSchema(const JsonValue& value)
{
    return value.IsObject() || value.IsBool();
}

bool IsTypeName(const JsonValue& value)
{
    constexpr std::string_view NAMES[] = {"null", "boolean", "integer", "number", "string", "array", "object"};
    return value.IsString() && std::find(std::begin(NAMES), std::end(NAMES), TextOf(value)) != std::end(NAMES);
}

bool AreTexts(const JsonValue& value)
{
    if (!value.IsArray() || !std::all_of(value.Begin(), value.End(), [](const auto& one) { return one.IsString(); })) {
        return false;
    }
    std::vector<std::string_view> texts(value.Size());
    std::transform(value.Begin(), value.End(), texts.begin(), TextOf);
    std::sort(texts.begin(), texts.end());
    return std::adjacent_find(texts.begin(), texts.end()) == texts.end();
}

bool AreTypes(const JsonValue& value)
{
    return IsTypeName(value) ||
           (value.IsArray() && !value.Empty() && std::all_of(value.Begin(), value.End(), IsTypeName));
}

bool AreDependencies(const JsonValue& value)
{
    return value.IsObject() && std::all_of(value.MemberBegin(), value.MemberEnd(), [](const auto& member) {
               return IsSchema(member.value) || AreTexts(member.value);
           });
}

bool IsCount(const JsonValue& value)
{
    return value.IsUint64() && value.GetUint64() <= std::numeric_limits<std::int64_t>::max();
}

bool IsDivisor(const JsonValue& value)
{
    return value.IsNumber() && value.GetDouble() > 0 && (!value.IsUint64() || value.IsInt64());
}
}  // namespace

SchemaCheck::SchemaCheck(const JsonValue& root, SchemaPatterns& patterns, unsigned levelsAbove)
    : root_(root), patterns_(patterns), depth_(levelsAbove)
{}

void SchemaCheck::Run()
{
    Schema(root_, nullptr);
}

/// Each target is read once more than it stands, however often it is named.
SchemaCheck::Extent SchemaCheck::Target(const Value& schema, const Place* place)
{
    if (std::find(underWay_.begin(), underWay_.end(), &schema) != underWay_.end()) {
        Refuse(place, "the reference leads back to itself");
    }
    const auto known = targets_.find(&schema);
    return known != targets_.end() ? known->second : targets_[&schema] = Schema(schema, place);
}

SchemaCheck::Extent SchemaCheck::Schema(const Value& schema, const Place* place)
{
    if (schema.IsBool()) {
        return {};
    }
    if (!schema.IsObject()) {
        Refuse(place, std::string("expected ") + ExpectedOf(Shape::SCHEMA) + ", found " + Described(schema));
    }
    ++depth_;
    underWay_.push_back(&schema);
    Extent extent = Keywords(schema, place);
    underWay_.pop_back();
    --depth_;
    ++extent.levels;
    if (depth_ + extent.levels > ConfigStoreDocument::MAX_DEPTH || extent.schemas > MAX_SCHEMAS) {
        Refuse(place, "the schema is nested too deeply, or too large, when its references are followed");
    }
    return extent;
}

SchemaCheck::Extent SchemaCheck::Keywords(const Value& schema, const Place* place)
{
    if (depth_ > ConfigStoreDocument::MAX_DEPTH) {
        Refuse(place, "the schema is nested too deeply when its references are followed");
    }
    Extent whole;
    EarlierNames earlier(schema);
    for (const auto& member : schema.GetObject()) {
        const Place here{place, TextOf(member.name)};
        const Keyword* keyword = FindKeyword(here.member);
        if (earlier.Hold(member)) {
            Refuse(&here, "the keyword stands twice");
        }
        if (keyword == nullptr && !IsAuthorsOwn(here.member)) {
            Refuse(&here, "unknown keyword " + Quoted(here.member));
        }
        if (keyword == nullptr) {
            continue;
        }
        Shaped(*keyword, member.value, &here);
        const Extent inner = keyword->shape == Shape::REFERENCE ? ReferenceKeyword(schema, member.value, &here)
                                                                : SubschemasOf(keyword->shape, member.value, &here);
        if (keyword->family != DEFINITIONS) {
            whole.levels = std::max(whole.levels, inner.levels);
            whole.schemas += inner.schemas;
        }
    }
    return whole;
}

SchemaCheck::Extent SchemaCheck::ReferenceKeyword(const Value& schema, const Value& reference, const Place* place)
{
    if (positions_.empty()) {
        positions_ = SchemaPositions(root_);
    }
    const Value* target = ResolveReference(root_, reference);
    if (positions_.count(target) == 0 || !IsSchema(*target)) {
        Refuse(place, "the reference " + Described(reference) + " leads to no schema of this document");
    }
    for (const auto& member : schema.GetObject()) {
        const Keyword* keyword = FindKeyword(TextOf(member.name));
        if (keyword != nullptr && keyword->family > ANNOTATION && keyword->shape != Shape::REFERENCE) {
            Refuse(place, "beside a reference the keyword " + Quoted(keyword->name) + " is not applied");
        }
    }
    return Target(*target, place);
}

SchemaCheck::Extent SchemaCheck::SubschemasOf(Shape shape, const Value& value, const Place* place)
{
    Extent whole{1, 0};
    const auto include = [&](const Value& schema, const Place& here) {
        const Extent inner = Schema(schema, &here);
        whole.levels = std::max(whole.levels, inner.levels);
        whole.schemas += inner.schemas;
    };
    if (shape == Shape::SCHEMA || (shape == Shape::SCHEMA_OR_SCHEMAS && !value.IsArray())) {
        include(value, *place);
    } else if (shape == Shape::SCHEMAS || shape == Shape::SCHEMA_OR_SCHEMAS) {
        for (rapidjson::SizeType i = 0; i < value.Size(); ++i) {
            include(value[i], Place{place, {}, i, true});
        }
    } else if (IsMap(shape)) {
        for (const auto& member : value.GetObject()) {
            if (!member.value.IsArray()) {
                include(member.value, Place{place, TextOf(member.name)});
            }
        }
    }
    return whole;
}

void SchemaCheck::Shaped(const Keyword& keyword, const Value& value, const Place* place)
{
    if (!HasShape(keyword.shape, value)) {
        Refuse(place, std::string("expected ") + ExpectedOf(keyword.shape) + ", found " + Described(value));
    }
    if (IsMap(keyword.shape)) {
        Names(value, place);
    }
    if (keyword.shape == Shape::TEXTS) {
        RefuseNulIn(value, place);
    }
    if (keyword.shape == Shape::DEPENDENCIES) {
        RefuseNulInLists(value, place);
    }
    if (keyword.shape == Shape::PATTERN) {
        Pattern(value, place);
    }
    if (keyword.shape == Shape::PATTERN_MAP) {
        PatternNames(value, place);
    }
}

bool SchemaCheck::HasShape(Shape shape, const Value& value) const
{
    switch (shape) {
        case Shape::TEXT:
        case Shape::PATTERN:
        case Shape::REFERENCE:
            return value.IsString();
        case Shape::BOOLEAN:
            return value.IsBool();
        case Shape::NUMBER:
            return value.IsNumber();
        case Shape::DIVISOR:
            return IsDivisor(value);
        case Shape::COUNT:
            return IsCount(value);
        case Shape::TEXTS:
            return AreTexts(value);
        case Shape::ARRAY:
            return value.IsArray();
        case Shape::VALUES:
        case Shape::SCHEMAS:
            return value.IsArray() && !value.Empty();
        case Shape::TYPES:
            return AreTypes(value);
        case Shape::FORMAT:
            return value.IsString() && IsKnownFormat(TextOf(value));
        case Shape::SCHEMA_MAP:
        case Shape::PATTERN_MAP:
            return value.IsObject();
        case Shape::DEPENDENCIES:
            return AreDependencies(value);
        case Shape::ANY:
        case Shape::SCHEMA:
        case Shape::SCHEMA_OR_SCHEMAS:
            return true;
    }
    return false;
}

void SchemaCheck::Names(const Value& map, const Place* place)
{
    EarlierNames earlier(map);
    for (const auto& member : map.GetObject()) {
        const Place here{place, TextOf(member.name)};
        RefuseNul(member.name, place);
        if (earlier.Hold(member)) {
            Refuse(&here, "the member stands twice");
        }
    }
}

void SchemaCheck::PatternNames(const Value& map, const Place* place)
{
    for (const auto& member : map.GetObject()) {
        const Place here{place, TextOf(member.name)};
        Pattern(member.name, &here);
    }
}

void SchemaCheck::Pattern(const Value& text, const Place* place)
{
    RefuseNul(text, place);
    try {
        patterns_.Compiled(TextOf(text));
    } catch (const std::runtime_error& error) {
        Refuse(place, "the pattern " + Described(text) + " does not compile: " + error.what());
    }
}
}  // namespace JsonSchema
