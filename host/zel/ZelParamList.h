#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "ZEL.h"

struct ZEL_ParamList
{
    using Value = std::variant<std::string, std::int64_t>;

    std::size_t capacity;
    std::vector<Value> values;

    const std::string& Text(std::size_t index) const { return std::get<std::string>(values.at(index)); }
    std::int64_t Integer(std::size_t index) const { return std::get<std::int64_t>(values.at(index)); }
    /// An instance argument as it stands in a path.
    std::string Name(std::size_t index) const
    {
        const std::int64_t* number = std::get_if<std::int64_t>(&values.at(index));
        return number != nullptr ? std::to_string(static_cast<std::uint64_t>(*number)) : Text(index);
    }
};
