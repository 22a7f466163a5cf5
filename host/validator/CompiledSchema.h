#pragma once

#include <set>

#include <valijson/schema.hpp>

#include "Json.h"

namespace JsonSchema
{
/// A checked schema, compiled by valijson without the keywords of the rule families that are not wanted.
class CompiledSchema
{
public:
    CompiledSchema(const NimbConfigStore::JsonValue& schema, const std::set<int>& rules);

    const valijson::Subschema& Root() const { return compiled_; }

private:
    valijson::Schema compiled_;
};
}  // namespace JsonSchema
