#include "RuleConstraints.h"

#include <algorithm>
#include <new>

#include <valijson/constraint_builder.hpp>

#include "CanonicalJson.h"

namespace JsonSchema
{
namespace
{
using NimbConfigStore::JsonValue;
using valijson::adapters::Adapter;

constexpr std::size_t SHOWN_VALUES = 8;

struct Rule
{
    std::string_view keyword;
    bool accepts;          ///< the values listed are the ones accepted, or the ones refused
    const char* expected;  ///< when nothing is listed, every value is refused
};

constexpr Rule RULES[] = {
    {"enum", true, "expected "},
    {"const", true, "expected "},
    {"default", false, "expected a value other than the default "},
    {"readOnly", false, "expected no value, because it is read-only"},
    {"deprecated", false, "expected no value, because it is deprecated"},
};

class ListConstraint : public RuleConstraint
{
public:
    ListConstraint(const Rule& rule, std::vector<std::string> texts)
        : rule_(&rule), texts_(std::move(texts)), known_(texts_.begin(), texts_.end())
    {}

    bool Holds(const JsonValue& value) const override
    {
        return !texts_.empty() && (known_.count(Canonical(value)) != 0) == rule_->accepts;
    }

    std::string Expected() const override
    {
        std::string text = rule_->expected + std::string(texts_.size() > 1 ? "one of " : "");
        for (std::size_t i = 0; i < std::min(texts_.size(), SHOWN_VALUES); ++i) {
            text += (i > 0 ? ", " : "") + texts_[i];
        }
        return text + (texts_.size() > SHOWN_VALUES ? ", ..." : "");
    }

private:
    Constraint* cloneInto(void* memory) const override { return new (memory) ListConstraint(*this); }
    std::size_t sizeOf() const override { return sizeof(ListConstraint); }

    const Rule* rule_;
    std::vector<std::string> texts_;
    std::unordered_set<std::string> known_;
};

class ListBuilder : public valijson::ConstraintBuilder
{
public:
    explicit ListBuilder(const Rule& rule) : rule_(rule) {}

    valijson::constraints::Constraint* make(const Adapter& values) const override
    {
        std::vector<std::string> texts;
        values.applyToArray([&texts](const Adapter& value) {
            texts.push_back(value.asString());
            return true;
        });
        return new ListConstraint(rule_, std::move(texts));
    }

private:
    const Rule& rule_;
};
}  // namespace

bool RuleConstraint::validate(const Adapter&, const std::vector<std::string>&, valijson::ValidationResults*) const
{
    return false;  // asked by valijson's own visitor only, which does not run here
}

std::string RuleMember(std::string_view keyword)
{
    const bool isRule = std::any_of(std::begin(RULES), std::end(RULES),
                                    [keyword](const Rule& rule) { return rule.keyword == keyword; });
    return isRule ? "rule:" + std::string(keyword) : "";
}

void AddRuleConstraints(valijson::SchemaParser& parser)
{
    for (const Rule& rule : RULES) {
        parser.addConstraintBuilder(RuleMember(rule.keyword), new ListBuilder(rule));
    }
}
}  // namespace JsonSchema
