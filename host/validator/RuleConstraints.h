#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <valijson/constraints/concrete_constraints.hpp>
#include <valijson/schema_parser.hpp>

#include "Json.h"

namespace JsonSchema
{
/// A keyword that valijson either does not apply ("default", "readOnly", "deprecated") or compares without being able
/// to say with what ("enum", "const"). All custom constraints of a compiled schema are of this type.
class RuleConstraint : public valijson::constraints::PolyConstraint
{
public:
    virtual bool Holds(const NimbConfigStore::JsonValue& value) const = 0;
    virtual std::string Expected() const = 0;

    bool validate(const valijson::adapters::Adapter& target, const std::vector<std::string>& context,
                  valijson::ValidationResults* results) const override;
};

/// The member under which a compiled schema carries such a keyword's values, as an array of canonical JSON texts.
/// Empty for any other keyword.
std::string RuleMember(std::string_view keyword);

/// Teaches @p parser these members.
void AddRuleConstraints(valijson::SchemaParser& parser);
}  // namespace JsonSchema
