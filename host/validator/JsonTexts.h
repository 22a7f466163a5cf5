#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "Json.h"

namespace JsonSchema
{
/// The bytes of a string.
inline std::string_view TextOf(const NimbConfigStore::JsonValue& value)
{
    return {value.GetString(), value.GetStringLength()};
}

/// How many characters UTF-8 text has.
inline std::size_t Characters(std::string_view text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}
}  // namespace JsonSchema
