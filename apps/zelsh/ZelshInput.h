#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "ZELSH.h"

namespace Zelsh
{
/// One parameter of a SET: an integer, or what is handed over as a text.
using Parameter = std::variant<std::int64_t, std::string>;

/// Nothing when @p text is no value of @p type.
std::optional<Parameter> ParseParameter(const ZEL_Type& type, const std::string& text);

/// What ParseParameter takes, in words: "an integer from 0 to 255".
std::string ExpectationOf(const ZEL_Type& type);
}  // namespace Zelsh
