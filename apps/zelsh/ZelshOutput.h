#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ZELSH.h"

namespace Zelsh
{
/// A listing: a name for each row, and its cells.
struct Table
{
    struct Row
    {
        std::string name;
        const char* mark;  ///< behind the name, for people
        std::vector<std::string> cells;
    };
    std::vector<const char*> columns;  ///< of the cells
    std::vector<Row> rows;
};

/// A value as it was read.
struct Value
{
    const ZEL_Type* type;
    std::string_view bytes;
    const char* unit;
};
}  // namespace Zelsh

/// One output format.
struct ZELSHOutput
{
    virtual void PrintTable(const Zelsh::Table& table) const = 0;
    virtual void PrintText(const char* name, const std::string& text) const = 0;
    virtual void PrintBytes(std::string_view bytes) const = 0;

    /// Values stand between a begin and an end, each under its name.
    virtual void BeginValues() const {}
    virtual void PrintValue(const std::string& name, const Zelsh::Value& value) const = 0;
    virtual void EndValues() const {}

    ZELSHOutput() = default;
    ZELSHOutput(const ZELSHOutput&) = delete;
    ZELSHOutput& operator=(const ZELSHOutput&) = delete;

protected:
    ~ZELSHOutput() = default;
};
