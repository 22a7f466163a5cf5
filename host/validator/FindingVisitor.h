#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <valijson/constraints/concrete_constraints.hpp>
#include <valijson/constraints/constraint_visitor.hpp>
#include <valijson/subschema.hpp>

#include "Json.h"
#include "JsonPlace.h"
#include "SchemaPatterns.h"

namespace JsonSchema
{
/// One way in which a value does not keep to its schema.
struct Finding
{
    std::string place;  ///< a JSON Pointer
    std::string expected;
    std::string found;
    bool isKind = false;  ///< the value as a whole is another: type, enum or const
};
using Findings = std::vector<Finding>;

/// What one validation keeps between the values it visits.
class ValidationState
{
public:
    explicit ValidationState(SchemaPatterns& patterns) : patterns_(patterns) {}

    /// The sub-schemas of an object's members, looked up by name.
    struct MemberTable
    {
        std::unordered_map<std::string_view, const valijson::Subschema*> named;
        std::vector<std::pair<std::string_view, const valijson::Subschema*>> patterns;
        const valijson::Subschema* others;  ///< null when no other members are allowed
    };
    const MemberTable& TableOf(const valijson::constraints::PropertiesConstraint& constraint);

    SchemaPatterns& Patterns() { return patterns_; }

private:
    std::unordered_map<const void*, MemberTable> tables_;
    SchemaPatterns& patterns_;
};

/// Visits the constraints of compiled schemas for one value. valijson's own visitor reports every failed parent
/// beside the failure itself, without a word about what it expected, and compares unique items pair by pair.
class FindingVisitor final : public valijson::constraints::ConstraintVisitor
{
public:
    /// @param findings  receives every finding; null when only the answer counts, which then ends at the first.
    FindingVisitor(ValidationState& state, const NimbConfigStore::JsonValue& value, const Place* place,
                   Findings* findings)
        : state_(state), value_(value), place_(place), findings_(findings)
    {}

    /// True when the value keeps to @p schema.
    bool Check(const valijson::Subschema& schema);

    bool visit(const AllOfConstraint&) override;
    bool visit(const AnyOfConstraint&) override;
    bool visit(const ConditionalConstraint&) override;
    bool visit(const ConstConstraint&) override;
    bool visit(const ContainsConstraint&) override;
    bool visit(const DependenciesConstraint&) override;
    bool visit(const EnumConstraint&) override;
    bool visit(const FormatConstraint&) override;
    bool visit(const LinearItemsConstraint&) override;
    bool visit(const MaximumConstraint&) override;
    bool visit(const MaxItemsConstraint&) override;
    bool visit(const MaxLengthConstraint&) override;
    bool visit(const MaxPropertiesConstraint&) override;
    bool visit(const MinimumConstraint&) override;
    bool visit(const MinItemsConstraint&) override;
    bool visit(const MinLengthConstraint&) override;
    bool visit(const MinPropertiesConstraint&) override;
    bool visit(const MultipleOfDoubleConstraint&) override;
    bool visit(const MultipleOfIntConstraint&) override;
    bool visit(const NotConstraint&) override;
    bool visit(const OneOfConstraint&) override;
    bool visit(const PatternConstraint&) override;
    bool visit(const PolyConstraint&) override;
    bool visit(const PropertiesConstraint&) override;
    bool visit(const PropertyNamesConstraint&) override;
    bool visit(const RequiredConstraint&) override;
    bool visit(const SingularItemsConstraint&) override;
    bool visit(const TypeConstraint&) override;
    bool visit(const UniqueItemsConstraint&) override;

private:
    using Value = NimbConfigStore::JsonValue;
    using Alternatives = std::vector<const valijson::Subschema*>;

    /// True when @p holds; else notes a finding, whose text is only made when somebody wants it.
    template <class Text>
    bool Require(bool holds, Text&& expected, bool isKind = false)
    {
        if (!holds && findings_ != nullptr) {
            findings_->push_back({PointerTo(place_), expected(), Described(value_), isKind});
        }
        return holds;
    }
    /// True when the check should go on after this answer.
    bool GoesOn(bool answer) const { return answer || findings_ != nullptr; }

    bool Keeps(const valijson::Subschema& schema) const;
    bool CheckElement(rapidjson::SizeType index, const valijson::Subschema& schema);
    bool CheckMember(const Value::Member& member, const ValidationState::MemberTable& table);
    bool CheckAt(const Value& value, const Place& place, const valijson::Subschema& schema);
    bool NoAlternative(const Alternatives& alternatives);
    bool NotExpected(const Value& value, const Place& place, const char* what);
    bool HasMember(std::string_view name) const;

    ValidationState& state_;
    const Value& value_;
    const Place* place_;
    Findings* findings_;
};
}  // namespace JsonSchema
