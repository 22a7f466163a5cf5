#pragma once

#include <set>
#include <string>

#include "Json.h"

#pragma GCC visibility push(default)

/// JSON Schema validation that reports every finding.
namespace JsonValidator
{
/// Families of schema keywords. A family that is not in the rule set is not applied; combinators (allOf, anyOf,
/// oneOf, not, if) always are. Numbers count as they are written: 1.0 is no integer and not the same as 1. A pattern
/// sees bytes and has no back references; a length counts characters.
enum Rule : int
{
    RULE_TYPES = 0,         ///< type, enum, const
    RULE_PRESENCE = 1,      ///< required, dependencies, minProperties, maxProperties
    RULE_FORMATS = 2,       ///< format: date, time, date-time, ipv4, ipv6, hostname, uuid
    RULE_VALUES = 3,        ///< minimum, maximum, exclusive bounds, multipleOf, minLength, maxLength, pattern
    RULE_DEFAULTS = 4,      ///< default: a value that only repeats it is a finding
    RULE_READ_ONLY = 5,     ///< readOnly: any value is a finding
    RULE_DEPRECATIONS = 6,  ///< deprecated: any value is a finding
    RULE_ARRAYS = 7,        ///< items, additionalItems, minItems, maxItems, uniqueItems, contains
    RULE_MEMBERS = 8,       ///< properties, patternProperties, additionalProperties, propertyNames
};

/// Checks @p value against @p schema and makes @p report an array with one object per finding:
/// "field" (the place as a JSON Pointer, behind @p name when that is not empty) and "error" (what was expected and
/// what was found). An empty array means that the value keeps to the schema.
/// @throws ConfigStoreException 2000 when the schema itself is unusable.
void Validate(const NimbConfigStore::JsonValue& schema, const NimbConfigStore::JsonValue& value,
              NimbConfigStore::JsonDocument& report, const std::set<int>& rules, const std::string& name);

/// Why @p schema is unusable: an unresolvable or cyclic reference, a pattern that does not compile, a keyword with a
/// value of the wrong type or one that nobody implements, a name that stands twice, a name or pattern that holds a NUL,
/// more levels than leave room for the schema in that of a whole document. Empty when it is sound. The text names the
/// place in the schema as a JSON Pointer.
std::string CheckSchema(const NimbConfigStore::JsonValue& schema);
}  // namespace JsonValidator

#pragma GCC visibility pop
