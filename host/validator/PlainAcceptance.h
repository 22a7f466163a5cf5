#pragma once

#include <set>

#include "Json.h"
#include "SchemaPatterns.h"

namespace JsonSchema
{
/// Sees that a value keeps to its schema by walking both at once. Nothing is compiled, which costs more than most
/// values do; what it cannot see at a glance it leaves to the FindingVisitor, which also says what is wrong.
class PlainAcceptance
{
public:
    /// @param schema  a checked one, which must outlive this object.
    PlainAcceptance(const NimbConfigStore::JsonValue& schema, const std::set<int>& rules, SchemaPatterns& patterns);

    /// True when the value keeps to the schema. False says nothing: it may keep to it all the same.
    bool Keeps(const NimbConfigStore::JsonValue& value) const { return KeepsTo(root_, value); }

    /// The same for a schema inside the whole.
    bool KeepsTo(const NimbConfigStore::JsonValue& schema, const NimbConfigStore::JsonValue& value) const;

    const NimbConfigStore::JsonValue& Root() const { return root_; }
    SchemaPatterns& Patterns() const { return patterns_; }

private:
    struct MemberSchemas;

    bool IsAsked(int family) const;
    bool MembersKeep(const MemberSchemas& schemas, const NimbConfigStore::JsonValue& object) const;
    bool OtherKeeps(const MemberSchemas& schemas, const NimbConfigStore::JsonValue::Member& member, bool isKnown) const;

    const NimbConfigStore::JsonValue& root_;
    unsigned rules_ = 0;  ///< a bit for each
    SchemaPatterns& patterns_;
};
}  // namespace JsonSchema
