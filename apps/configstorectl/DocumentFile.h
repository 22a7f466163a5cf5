#pragma once

#include <string>

#include "Json.h"

namespace ConfigStoreCtl
{
/// Reads a JSON document that the caller hands over: a path of the caller's, not of the host; "-" is standard input.
/// @throws CommandFailure naming @p file and why it cannot be read or does not parse.
void ParseDocument(const std::string& file, NimbConfigStore::JsonDocument& document);
}  // namespace ConfigStoreCtl
