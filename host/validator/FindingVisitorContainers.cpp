#include <algorithm>

#include "CanonicalJson.h"
#include "FindingVisitor.h"
#include "JsonTexts.h"

// What the visitor does with arrays and objects.

namespace JsonSchema
{
namespace
{
using NimbConfigStore::JsonValue;
using valijson::Subschema;

template <class String>
std::string_view View(const String& text)
{
    return {text.data(), text.size()};
}

}  // namespace

const ValidationState::MemberTable& ValidationState::TableOf(
    const valijson::constraints::PropertiesConstraint& constraint)
{
    const auto [entry, isNew] = tables_.try_emplace(&constraint);
    MemberTable& table = entry->second;
    if (isNew) {
        constraint.applyToProperties([&table](const auto& name, const Subschema* schema) {
            return table.named.emplace(View(name), schema).second;
        });
        constraint.applyToPatternProperties([&table](const auto& pattern, const Subschema* schema) {
            table.patterns.emplace_back(View(pattern), schema);
            return true;
        });
        table.others = constraint.getAdditionalPropertiesSubschema();
    }
    return table;
}

// ---- Arrays -------------------------------------------------------------------------------------------------------

bool FindingVisitor::CheckElement(rapidjson::SizeType index, const Subschema& schema)
{
    return CheckAt(value_[index], Place{place_, {}, index, true}, schema);
}

bool FindingVisitor::visit(const SingularItemsConstraint& constraint)
{
    bool holds = true;
    const rapidjson::SizeType count = value_.IsArray() ? value_.Size() : 0;
    for (rapidjson::SizeType i = 0; i < count && GoesOn(holds); ++i) {
        holds = CheckElement(i, *constraint.getItemsSubschema()) && holds;
    }
    return holds;
}

bool FindingVisitor::visit(const LinearItemsConstraint& constraint)
{
    std::vector<const Subschema*> schemas;
    constraint.applyToItemSubschemas([&schemas](unsigned, const Subschema* schema) {
        schemas.push_back(schema);
        return true;
    });
    bool holds = true;
    const rapidjson::SizeType count = value_.IsArray() ? value_.Size() : 0;
    for (rapidjson::SizeType i = 0; i < count && GoesOn(holds); ++i) {
        const Subschema* schema = i < schemas.size() ? schemas[i] : constraint.getAdditionalItemsSubschema();
        holds = (schema != nullptr ? CheckElement(i, *schema)
                                   : NotExpected(value_[i], Place{place_, {}, i, true}, "element")) &&
                holds;
    }
    return holds;
}

bool FindingVisitor::visit(const MinItemsConstraint& constraint)
{
    return Require(!value_.IsArray() || value_.Size() >= constraint.getMinItems(),
                   [&] { return "expected at least " + Counted(constraint.getMinItems(), "element"); });
}

bool FindingVisitor::visit(const MaxItemsConstraint& constraint)
{
    return Require(!value_.IsArray() || value_.Size() <= constraint.getMaxItems(),
                   [&] { return "expected at most " + Counted(constraint.getMaxItems(), "element"); });
}

bool FindingVisitor::visit(const ContainsConstraint& constraint)
{
    const bool holds = !value_.IsArray() || std::any_of(value_.Begin(), value_.End(), [&](const JsonValue& element) {
        return FindingVisitor(state_, element, place_, nullptr).Check(*constraint.getSubschema());
    });
    return Require(holds, [] { return "expected an element that keeps to the schema under \"contains\""; });
}

bool FindingVisitor::visit(const UniqueItemsConstraint&)
{
    bool holds = true;
    std::unordered_map<std::string, rapidjson::SizeType> seen;
    const rapidjson::SizeType count = value_.IsArray() ? value_.Size() : 0;
    for (rapidjson::SizeType i = 0; i < count && GoesOn(holds); ++i) {
        const rapidjson::SizeType first = seen.emplace(Canonical(value_[i]), i).first->second;
        const Place place{place_, {}, i, true};
        holds = FindingVisitor(state_, value_[i], &place, findings_).Require(first == i, [first] {
            return "expected no element twice, but element " + std::to_string(first) + " is the same";
        }) && holds;
    }
    return holds;
}

// ---- Objects ------------------------------------------------------------------------------------------------------

bool FindingVisitor::HasMember(std::string_view name) const
{
    const JsonValue text(rapidjson::StringRef(name.data(), static_cast<rapidjson::SizeType>(name.size())));
    return value_.FindMember(text) != value_.MemberEnd();
}

bool FindingVisitor::visit(const PropertiesConstraint& constraint)
{
    if (!value_.IsObject()) {
        return true;
    }
    const ValidationState::MemberTable& table = state_.TableOf(constraint);
    bool holds = true;
    for (auto member = value_.MemberBegin(); member != value_.MemberEnd() && GoesOn(holds); ++member) {
        holds = CheckMember(*member, table) && holds;
    }
    return holds;
}

bool FindingVisitor::CheckMember(const Value::Member& member, const ValidationState::MemberTable& table)
{
    const Place place{place_, TextOf(member.name)};
    bool holds = true;
    bool isKnown = false;
    const auto check = [&](const Subschema& schema) {
        isKnown = true;
        holds = CheckAt(member.value, place, schema) && holds;
    };
    if (const auto named = table.named.find(place.member); named != table.named.end()) {
        check(*named->second);
    }
    for (const auto& [pattern, schema] : table.patterns) {
        if (state_.Patterns().Matches(pattern, place.member)) {
            check(*schema);
        }
    }
    if (!isKnown && table.others == nullptr) {
        return NotExpected(member.value, place, "member");
    }
    return isKnown ? holds : CheckAt(member.value, place, *table.others);
}

bool FindingVisitor::NotExpected(const Value& value, const Place& place, const char* what)
{
    return FindingVisitor(state_, value, &place, findings_).Require(false, [what] {
        return std::string("expected no such ") + what;
    });
}

bool FindingVisitor::visit(const PropertyNamesConstraint& constraint)
{
    bool holds = true;
    for (auto member = value_.IsObject() ? value_.MemberBegin() : JsonValue::ConstMemberIterator();
         value_.IsObject() && member != value_.MemberEnd() && GoesOn(holds); ++member) {
        holds = CheckAt(member->name, Place{place_, TextOf(member->name)}, *constraint.getSubschema()) && holds;
    }
    return holds;
}

bool FindingVisitor::visit(const RequiredConstraint& constraint)
{
    bool holds = true;
    const auto require = [&](const auto& name) {
        holds = Require(HasMember(View(name)), [&] { return "expected the member " + Quoted(View(name)); }) && holds;
        return GoesOn(holds);
    };
    if (value_.IsObject()) {
        constraint.applyToRequiredProperties(require);
    }
    return holds;
}

bool FindingVisitor::visit(const DependenciesConstraint& constraint)
{
    if (!value_.IsObject()) {
        return true;
    }
    bool holds = true;
    const auto requireAll = [&](const auto& name, const auto& others) {
        const bool applies = HasMember(View(name));
        for (const auto& other : others) {
            holds = Require(!applies || HasMember(View(other)),
                            [&] {
                                return "expected the member " + Quoted(View(other)) + ", because " +
                                       Quoted(View(name)) + " is there";
                            }) &&
                    holds;
        }
        return GoesOn(holds);
    };
    const auto checkAll = [&](const auto& name, const Subschema* schema) {
        return GoesOn(holds = (!HasMember(View(name)) || Check(*schema)) && holds);
    };
    constraint.applyToPropertyDependencies(requireAll);
    constraint.applyToSchemaDependencies(checkAll);
    return holds;
}

bool FindingVisitor::visit(const MinPropertiesConstraint& constraint)
{
    return Require(!value_.IsObject() || value_.MemberCount() >= constraint.getMinProperties(),
                   [&] { return "expected at least " + Counted(constraint.getMinProperties(), "member"); });
}

bool FindingVisitor::visit(const MaxPropertiesConstraint& constraint)
{
    return Require(!value_.IsObject() || value_.MemberCount() <= constraint.getMaxProperties(),
                   [&] { return "expected at most " + Counted(constraint.getMaxProperties(), "member"); });
}
}  // namespace JsonSchema
