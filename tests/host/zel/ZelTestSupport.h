#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "ZEL.h"

/// A parameter list for the length of a test.
struct Params
{
    Params(int isInstance, const std::vector<std::variant<std::int64_t, std::string>>& values)
        : list(ZEL_ParamListCreate(isInstance, static_cast<int>(values.size())))
    {
        for (const auto& value : values) {
            if (const auto* text = std::get_if<std::string>(&value)) {
                (void)ZEL_ParamListAddString(list, text->c_str());  // the list is as long as the values
            } else {
                (void)ZEL_ParamListAddInt(list, std::get<std::int64_t>(value));
            }
        }
    }
    ~Params() { ZEL_ParamListDestroy(list); }
    Params(const Params&) = delete;
    Params& operator=(const Params&) = delete;

    ZEL_ParamList* list;
};
