#include "ZelshOutput.h"

#include <algorithm>

#include "Utf8.h"
#include "ZelshPrint.h"
#include "ZelshText.h"
#include "ZelshValue.h"

using Utf8::DisplayWidth;
using Utf8::Padded;

namespace Zelsh
{
namespace
{
struct Line
{
    std::string name;
    std::string text;
};

std::string ScalarText(const Value& value, std::string (*escape)(std::string_view))
{
    const Scalar scalar = ReadScalar(value);
    return scalar.form == ScalarForm::BYTES ? Hexadecimal(scalar.text) : escape(scalar.text);
}

std::string PartName(const std::string& whole, const ZEL_Type& type, const std::string& part)
{
    return IsArray(type) ? whole + "[" + part + "]" : whole.empty() ? part : whole + "." + part;
}

// ---- For people ---------------------------------------------------------------------------------------------------

std::string PeopleText(const Value& value)
{
    const std::string text = ScalarText(value, EscapeControls);
    return text.empty() ? "\"\"" : *value.unit != '\0' ? text + " " + value.unit : text;
}

/// An array of plain values is one line.
bool IsOneLine(const ZEL_Type& type)
{
    return !IsStructure(type) && (!IsArray(type) || IsOneLine(*type.element));
}

std::string OneLine(const Value& value)
{
    if (!IsArray(*value.type)) {
        return PeopleText(value);
    }
    std::string line;
    for (const Part& part : Parts(value)) {
        line += (line.empty() ? "" : ", ") + OneLine(part.value);
    }
    return line.empty() ? "(none)" : line;
}

void AddLines(const std::string& name, const Value& value, std::vector<Line>& lines)
{
    if (IsOneLine(*value.type)) {
        lines.push_back({name, OneLine(value)});
        return;
    }
    for (const Part& part : Parts(value)) {
        AddLines(PartName(name, *value.type, part.name), part.value, lines);
    }
}

struct PeopleOutput final : ZELSHOutput
{
    void PrintTable(const Table& table) const override;
    void PrintText(const char*, const std::string& text) const override { Print(text + "\n"); }
    void PrintBytes(std::string_view bytes) const override { Print(Hexadecimal(bytes) + "\n"); }
    void PrintValue(const std::string& name, const Value& value) const override;
};

void PeopleOutput::PrintTable(const Table& table) const
{
    std::vector<std::size_t> widths(table.columns.size() + 1, 0);
    for (const Table::Row& row : table.rows) {
        widths[0] = std::max(widths[0], DisplayWidth(row.name + row.mark));
        for (std::size_t i = 0; i < row.cells.size(); ++i) {
            widths[i + 1] = std::max(widths[i + 1], DisplayWidth(row.cells[i]));
        }
    }
    for (const Table::Row& row : table.rows) {
        std::string line = Padded(row.name + row.mark, widths[0]);
        for (std::size_t i = 0; i < row.cells.size(); ++i) {
            line += "  " + Padded(row.cells[i], widths[i + 1]);
        }
        Print(line.substr(0, line.find_last_not_of(' ') + 1) + "\n");
    }
}

void PeopleOutput::PrintValue(const std::string& name, const Value& value) const
{
    if (IsOneLine(*value.type)) {
        Print(name + ": " + OneLine(value) + "\n");
        return;
    }
    std::vector<Line> lines;
    AddLines("", value, lines);
    std::size_t width = 0;
    for (const Line& line : lines) {
        width = std::max(width, DisplayWidth(line.name));
    }
    Print(name + ":\n");
    for (const Line& line : lines) {
        Print("  " + Padded(line.name, width) + "  " + line.text + "\n");
    }
}

// ---- For scripts --------------------------------------------------------------------------------------------------

struct RawOutput final : ZELSHOutput
{
    void PrintTable(const Table& table) const override;
    void PrintText(const char* name, const std::string& text) const override { PrintLine(name, EscapeValue(text)); }
    void PrintBytes(std::string_view bytes) const override { Print(Hexadecimal(bytes) + "\n"); }
    void PrintValue(const std::string& name, const Value& value) const override;

private:
    static void PrintLine(const std::string& name, const std::string& text) { Print(name + "=" + text + "\n"); }
};

void RawOutput::PrintTable(const Table& table) const
{
    for (const Table::Row& row : table.rows) {
        for (std::size_t i = 0; i < row.cells.size(); ++i) {
            const bool isOnly = table.columns.size() == 1;
            PrintLine(isOnly ? row.name : row.name + "." + table.columns[i], EscapeValue(row.cells[i]));
        }
    }
}

void RawOutput::PrintValue(const std::string& name, const Value& value) const
{
    if (!IsStructure(*value.type) && !IsArray(*value.type)) {
        PrintLine(name, ScalarText(value, EscapeValue));
        return;
    }
    for (const Part& part : Parts(value)) {
        PrintValue(PartName(name, *value.type, part.name), part.value);
    }
}

// ---- For Python ---------------------------------------------------------------------------------------------------

std::string Literal(const Value& value);

std::string ContainerLiteral(const Value& value)
{
    const bool isStructure = IsStructure(*value.type);
    std::string literal;
    for (const Part& part : Parts(value)) {
        literal += literal.empty() ? "" : ", ";
        literal += (isStructure ? PythonText(part.name) + ": " : "") + Literal(part.value);
    }
    return isStructure ? "{" + literal + "}" : "[" + literal + "]";
}

std::string Literal(const Value& value)
{
    if (IsStructure(*value.type) || IsArray(*value.type)) {
        return ContainerLiteral(value);
    }
    const Scalar scalar = ReadScalar(value);
    switch (scalar.form) {
        case ScalarForm::NUMBER:
            return scalar.text;
        case ScalarForm::BOOLEAN:
            return scalar.text == "true" ? "True" : "False";
        case ScalarForm::BYTES:
            return PythonBytes(scalar.text);
        default:
            return PythonText(scalar.text);
    }
}

std::string CellsLiteral(const Table& table, const Table::Row& row)
{
    if (table.columns.size() == 1) {
        return PythonText(row.cells[0]);
    }
    std::string literal;
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
        literal += (literal.empty() ? "" : ", ") + PythonText(table.columns[i]) + ": " + PythonText(row.cells[i]);
    }
    return "{" + literal + "}";
}

struct PythonOutput final : ZELSHOutput
{
    void PrintTable(const Table& table) const override;
    void PrintText(const char*, const std::string& text) const override { Print(PythonText(text) + "\n"); }
    void PrintBytes(std::string_view bytes) const override { Print(PythonBytes(bytes) + "\n"); }
    void BeginValues() const override { Print("{\n"); }
    void PrintValue(const std::string& name, const Value& value) const override
    {
        Print(PythonText(name) + ": " + Literal(value) + ",\n");
    }
    void EndValues() const override { Print("}\n"); }
};

void PythonOutput::PrintTable(const Table& table) const
{
    BeginValues();
    for (const Table::Row& row : table.rows) {
        Print(PythonText(row.name) + ": " + CellsLiteral(table, row) + ",\n");
    }
    EndValues();
}

const PeopleOutput PEOPLE_OUTPUT;
const RawOutput RAW_OUTPUT;
const PythonOutput PYTHON_OUTPUT;
}  // namespace
}  // namespace Zelsh

constinit ZELSHOptions options = {0, 0, 0, 1, &Zelsh::PEOPLE_OUTPUT};

constinit const ZELSHOutput* const zelshDefaultOutputPtr = &Zelsh::PEOPLE_OUTPUT;
constinit const ZELSHOutput* const zelshRawOutputPtr = &Zelsh::RAW_OUTPUT;
constinit const ZELSHOutput* const zelshPythonOutputPtr = &Zelsh::PYTHON_OUTPUT;

void ZELSHOutput_PrintBuf(const void* buffer, std::size_t size)
{
    if (buffer == nullptr && size != 0) {
        return;
    }
    try {
        options.output->PrintBytes({static_cast<const char*>(buffer), size});
    } catch (const std::bad_alloc&) {
        ZELSHError("Out of memory");
    }
}

ORV_ReturnStatus ZELSHOutput_PrintData(const char* name, const ZEL_Type* type, const void* data, std::size_t size)
{
    if (name == nullptr || type == nullptr || (data == nullptr && size != 0) || size < type->size) {
        return ORV_BAD_PARAM;
    }
    try {
        options.output->BeginValues();
        options.output->PrintValue(name, {type, {static_cast<const char*>(data), size}, ""});
        options.output->EndValues();
        return ORV_OK;
    } catch (const std::bad_alloc&) {
        return ORV_NO_MEMORY;
    }
}
