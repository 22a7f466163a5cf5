#include "FindingVisitor.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include <fmt/format.h>

#include "JsonTexts.h"
#include "RuleConstraints.h"
#include "SchemaFormats.h"

namespace JsonSchema
{
namespace
{
using NimbConfigStore::JsonValue;
using valijson::Subschema;

template <class Constraint>
std::vector<const Subschema*> SubschemasOf(const Constraint& constraint)
{
    std::vector<const Subschema*> all;
    constraint.applyToSubschemas([&all](unsigned, const Subschema* schema) {
        all.push_back(schema);
        return true;
    });
    return all;
}

bool IsMultipleOf(const JsonValue& value, std::int64_t divisor)
{
    if (value.IsInt64()) {
        return value.GetInt64() % divisor == 0;
    }
    return value.IsUint64() ? value.GetUint64() % static_cast<std::uint64_t>(divisor) == 0
                            : std::fmod(value.GetDouble(), static_cast<double>(divisor)) == 0;
}

/// 0.3 counts as a multiple of 0.1, though neither is what it says in binary.
bool IsMultipleOf(double value, double divisor)
{
    const double quotient = value / divisor;
    return std::abs(quotient - std::round(quotient)) <= 4 * DBL_EPSILON * std::max(1.0, std::abs(quotient));
}
}  // namespace

bool FindingVisitor::Check(const Subschema& schema)
{
    if (schema.getAlwaysInvalid()) {
        return Require(false, [] { return "expected no value"; });
    }
    Subschema::ApplyFunction visitOne = [this](const valijson::constraints::Constraint& constraint) {
        return constraint.accept(*this);
    };
    return findings_ != nullptr ? schema.apply(visitOne) : schema.applyStrict(visitOne);
}

bool FindingVisitor::Keeps(const Subschema& schema) const
{
    return FindingVisitor(state_, value_, place_, nullptr).Check(schema);
}

bool FindingVisitor::CheckAt(const Value& value, const Place& place, const Subschema& schema)
{
    return FindingVisitor(state_, value, &place, findings_).Check(schema);
}

// ---- The value as a whole -----------------------------------------------------------------------------------------

bool FindingVisitor::visit(const TypeConstraint& constraint)
{
    using Type = TypeConstraint::JsonType;
    bool holds = false;
    std::string names;
    constraint.applyToNamedTypes([&](Type type) {
        static const char* const NAMES[] = {"any", "array", "boolean", "integer", "null", "number", "object", "string"};
        const bool matches[] = {true,
                                value_.IsArray(),
                                value_.IsBool(),
                                value_.IsInt64() || value_.IsUint64(),
                                value_.IsNull(),
                                value_.IsNumber(),
                                value_.IsObject(),
                                value_.IsString()};
        holds = holds || matches[type];
        names += (names.empty() ? "" : " or ") + std::string(NAMES[type]);
        return !holds;
    });
    return Require(
        holds, [&] { return "expected the type " + names; }, true);
}

bool FindingVisitor::visit(const PolyConstraint& constraint)
{
    const auto& rule = static_cast<const RuleConstraint&>(constraint);
    return Require(
        rule.Holds(value_), [&] { return rule.Expected(); }, true);
}

// Compiled schemas carry these two as rule constraints.
bool FindingVisitor::visit(const EnumConstraint&)
{
    return true;
}
bool FindingVisitor::visit(const ConstConstraint&)
{
    return true;
}

// ---- Numbers and texts --------------------------------------------------------------------------------------------

bool FindingVisitor::visit(const MinimumConstraint& constraint)
{
    const double limit = constraint.getMinimum();
    const bool exclusive = constraint.getExclusiveMinimum();
    const bool holds = !value_.IsNumber() || (exclusive ? value_.GetDouble() > limit : value_.GetDouble() >= limit);
    return Require(holds, [&] { return fmt::format("expected {} {}", exclusive ? "more than" : "at least", limit); });
}

bool FindingVisitor::visit(const MaximumConstraint& constraint)
{
    const double limit = constraint.getMaximum();
    const bool exclusive = constraint.getExclusiveMaximum();
    const bool holds = !value_.IsNumber() || (exclusive ? value_.GetDouble() < limit : value_.GetDouble() <= limit);
    return Require(holds, [&] { return fmt::format("expected {} {}", exclusive ? "less than" : "at most", limit); });
}

bool FindingVisitor::visit(const MultipleOfIntConstraint& constraint)
{
    return Require(!value_.IsNumber() || IsMultipleOf(value_, constraint.getDivisor()),
                   [&] { return fmt::format("expected a multiple of {}", constraint.getDivisor()); });
}

bool FindingVisitor::visit(const MultipleOfDoubleConstraint& constraint)
{
    return Require(!value_.IsNumber() || IsMultipleOf(value_.GetDouble(), constraint.getDivisor()),
                   [&] { return fmt::format("expected a multiple of {}", constraint.getDivisor()); });
}

bool FindingVisitor::visit(const MinLengthConstraint& constraint)
{
    const std::uint64_t limit = constraint.getMinLength();
    return Require(!value_.IsString() || Characters(TextOf(value_)) >= limit,
                   [&] { return "expected at least " + Counted(limit, "character"); });
}

bool FindingVisitor::visit(const MaxLengthConstraint& constraint)
{
    const std::uint64_t limit = constraint.getMaxLength();
    return Require(!value_.IsString() || Characters(TextOf(value_)) <= limit,
                   [&] { return "expected at most " + Counted(limit, "character"); });
}

bool FindingVisitor::visit(const PatternConstraint& constraint)
{
    std::string pattern;
    constraint.getPattern(pattern);
    return Require(!value_.IsString() || state_.Patterns().Matches(pattern, TextOf(value_)),
                   [&] { return "expected a string that matches " + Quoted(pattern); });
}

bool FindingVisitor::visit(const FormatConstraint& constraint)
{
    return Require(!value_.IsString() || HasFormat(constraint.getFormat(), TextOf(value_), state_.Patterns()),
                   [&] { return "expected the format " + constraint.getFormat(); });
}

// ---- Combinators --------------------------------------------------------------------------------------------------

bool FindingVisitor::visit(const AllOfConstraint& constraint)
{
    bool holds = true;
    constraint.applyToSubschemas(
        [&](unsigned, const Subschema* schema) { return GoesOn(holds = Check(*schema) && holds); });
    return holds;
}

bool FindingVisitor::visit(const AnyOfConstraint& constraint)
{
    const Alternatives all = SubschemasOf(constraint);
    return std::any_of(all.begin(), all.end(), [this](const Subschema* one) { return Keeps(*one); }) ||
           NoAlternative(all);
}

bool FindingVisitor::visit(const OneOfConstraint& constraint)
{
    const Alternatives all = SubschemasOf(constraint);
    const auto kept = std::count_if(all.begin(), all.end(), [this](const Subschema* one) { return Keeps(*one); });
    if (kept == 0) {
        return NoAlternative(all);
    }
    return Require(kept == 1, [&] {
        return fmt::format("expected exactly one of {} alternatives, but {} apply", all.size(), kept);
    });
}

/// The findings of the one alternative that is about this kind of value, if there is such a one; else a finding that
/// names what each alternative misses first.
bool FindingVisitor::NoAlternative(const Alternatives& alternatives)
{
    if (findings_ == nullptr) {
        return false;
    }
    const std::string here = PointerTo(place_);
    std::vector<Findings> near;
    std::string expectations;
    for (const Subschema* alternative : alternatives) {
        Findings misses;
        FindingVisitor(state_, value_, place_, &misses).Check(*alternative);
        expectations += (expectations.empty() ? "" : "; or ") + misses.front().expected;
        if (misses.front().place != here) {
            expectations += " at " + misses.front().place;
        }
        const bool otherKind = std::any_of(misses.begin(), misses.end(),
                                           [&here](const Finding& miss) { return miss.isKind && miss.place == here; });
        if (!otherKind) {
            near.push_back(std::move(misses));
        }
    }
    if (near.size() == 1) {
        findings_->insert(findings_->end(), near[0].begin(), near[0].end());
        return false;
    }
    return Require(
        false, [&] { return expectations; }, near.empty());
}

bool FindingVisitor::visit(const NotConstraint& constraint)
{
    return Require(!Keeps(*constraint.getSubschema()),
                   [] { return "expected a value that the schema under \"not\" refuses"; });
}

bool FindingVisitor::visit(const ConditionalConstraint& constraint)
{
    const Subschema* next =
        Keeps(*constraint.getIfSubschema()) ? constraint.getThenSubschema() : constraint.getElseSubschema();
    return next == nullptr || Check(*next);
}
}  // namespace JsonSchema
