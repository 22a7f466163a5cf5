#pragma once

#include <string>

#include "Json.h"
#include "Output.h"

// Results as JSON, indented by two, control characters escaped. Each ends with a line feed.
namespace ConfigStoreCtl
{
/// An array with an object for each row.
std::string JsonArray(const Listing& listing);

/// The one row of @p listing.
std::string JsonObject(const Listing& listing);

/// One object per row and line.
std::string JsonLines(const Listing& listing);

/// A value alone, without a line feed at its end.
std::string PrettyJson(const NimbConfigStore::JsonValue& value);
}  // namespace ConfigStoreCtl
