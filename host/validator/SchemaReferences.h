#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "Json.h"

namespace JsonSchema
{
/// The value inside @p root that the reference (a string) names; null for one that leads nowhere, or outside.
const NimbConfigStore::JsonValue* ResolveReference(const NimbConfigStore::JsonValue& root,
                                                   const NimbConfigStore::JsonValue& reference);

/// The values inside @p root that stand where its keywords have schemas; @p root itself is one. What stands under a
/// member that means nothing here ("x-...") or is a value like any other ("default", "examples") is none of them.
std::unordered_set<const NimbConfigStore::JsonValue*> SchemaPositions(const NimbConfigStore::JsonValue& root);

/// False when nothing in @p schema, not even a value, has a member of the name "$ref".
bool MentionsReference(const NimbConfigStore::JsonValue& schema);

/// A copy of the checked schema @p schema that may stand at @p place (member names from the root) of a larger one:
/// its references lead there.
NimbConfigStore::JsonValue CopyToPlace(const NimbConfigStore::JsonValue& schema, const std::vector<std::string>& place,
                                       NimbConfigStore::JsonAllocator& allocator);
}  // namespace JsonSchema
