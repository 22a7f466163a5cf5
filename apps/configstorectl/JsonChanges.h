#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Json.h"
#include "Output.h"

namespace ConfigStoreCtl
{
/// What differs at one place of a document: the JSON texts of before and after, none where there was no value.
struct MemberChange
{
    std::string pointer;  ///< JSON Pointer
    std::optional<std::string> before;
    std::optional<std::string> after;
    bool operator==(const MemberChange&) const = default;
};
using MemberChanges = std::vector<MemberChange>;

/// Adds to @p changes where two values differ, member by member and element by element; @p place is the JSON Pointer
/// of both. The order of members and the way a text is escaped make no difference; 1 and 1.0 do.
void CompareJson(const NimbConfigStore::JsonValue& before, const NimbConfigStore::JsonValue& after,
                 const std::string& place, MemberChanges& changes);

/// The same for texts that the store keeps; one that is not JSON counts as a JSON string.
void CompareTexts(const std::optional<std::string>& before, const std::optional<std::string>& after,
                  const std::string& place, MemberChanges& changes);

/// "/place  BEFORE -> AFTER" of each, for people.
TextLines ChangeLines(const MemberChanges& changes);

/// [{"pointer", "old", "new"}], a missing value left out, for programs.
JsonText ChangeRecords(const MemberChanges& changes);

/// A value as compact JSON text.
std::string Serialized(const NimbConfigStore::JsonValue& value);

/// A text as JSON.
std::string Quoted(const std::string& text);

/// The pointer to the member @p name below @p place.
std::string PointerTo(const std::string& place, const std::string& name);
}  // namespace ConfigStoreCtl
