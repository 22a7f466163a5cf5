#include "Output.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <limits>
#include <ostream>

#include "ConfigStoreDocument.h"
#include "OutputJson.h"
#include "TerminalText.h"
#include "Utf8.h"

using NimbConfigStore::JsonDocument;
using Utf8::DisplayWidth;
using Utf8::Padded;

namespace ConfigStoreCtl
{
namespace
{
std::string OrDash(const std::string& text)
{
    return text.empty() ? "-" : text;
}

std::string Joined(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : " ") + text;
    }
    return joined;
}

/// One field as one line of text.
struct TextField
{
    std::string operator()(std::monostate) const { return "-"; }
    std::string operator()(bool value) const { return value ? "yes" : "no"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(const std::string& value) const { return OrDash(EscapeControls(value)); }
    std::string operator()(const JsonText& value) const { return OrDash(EscapeControls(value.text)); }
    std::string operator()(const std::vector<std::string>& values) const
    {
        return OrDash(EscapeControls(Joined(values)));
    }
    std::string operator()(const TextLines& value) const { return (*this)(value.texts); }
    std::string operator()(const ListingPtr&) const { return "-"; }
};

using TextRow = std::vector<std::string>;

/// The lines of one field in a table.
std::vector<std::string> CellLines(const Field& field)
{
    const auto* lines = std::get_if<TextLines>(&field);
    if (lines == nullptr || lines->texts.empty()) {
        return {std::visit(TextField{}, field)};
    }
    std::vector<std::string> texts;
    std::transform(lines->texts.begin(), lines->texts.end(), std::back_inserter(texts), EscapeControls);
    return texts;
}

/// One row of a listing; a field of several lines makes as many rows, empty but for its column.
void AppendTextRows(const Listing& listing, const std::vector<Field>& row, std::vector<TextRow>& rows)
{
    const auto hasTitle = [](const Column& column) { return column.title != nullptr; };
    const TextRow empty(
        static_cast<std::size_t>(std::count_if(listing.columns.begin(), listing.columns.end(), hasTitle)));
    const std::size_t first = rows.size();
    std::size_t cell = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (!hasTitle(listing.columns[i])) {
            continue;
        }
        const std::vector<std::string> lines = CellLines(row[i]);
        rows.resize(std::max(rows.size(), first + lines.size()), empty);
        for (std::size_t line = 0; line < lines.size(); ++line) {
            rows[first + line][cell] = lines[line];
        }
        ++cell;
    }
}

std::vector<TextRow> TextRows(const Listing& listing)
{
    std::vector<TextRow> rows;
    for (const std::vector<Field>& row : listing.rows) {
        AppendTextRows(listing, row, rows);
    }
    return rows;
}

const std::string GAP = "  ";  // between two cells

std::string TableLine(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths)
{
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        line += i + 1 < cells.size() ? Padded(cells[i], widths[i]) + GAP : cells[i];
    }
    return line;
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines(1);
    for (const char c : text) {
        if (c == '\n') {
            lines.emplace_back();
        } else {
            lines.back() += c;
        }
    }
    return lines;
}

std::vector<std::string> PlainTable(const Listing& listing, bool heading)
{
    std::vector<std::vector<std::string>> table = TextRows(listing);
    std::vector<std::string> titles;
    std::vector<std::size_t> widths;
    for (const Column& column : listing.columns) {
        if (column.title != nullptr) {
            titles.emplace_back(column.title);
            widths.push_back(std::max(column.width, titles.back().size()));
        }
    }
    for (const std::vector<std::string>& row : table) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
        }
    }
    if (heading) {
        table.insert(table.begin(), titles);
    }
    std::vector<std::string> lines;
    lines.reserve(table.size());
    for (const std::vector<std::string>& row : table) {
        lines.push_back(TableLine(row, widths));
    }
    return lines;
}

std::size_t Widest(const std::vector<std::string>& lines)
{
    std::size_t width = 0;
    for (const std::string& line : lines) {
        width = std::max(width, DisplayWidth(line));
    }
    return width;
}

/// One field as the lines of a record: JSON is laid out, a list has a line per element.
std::vector<std::string> RecordField(const Field& field)
{
    JsonDocument document;
    if (const auto* json = std::get_if<JsonText>(&field);
        json != nullptr && ConfigStoreDocument::ParseText(json->text, document)) {
        return Lines(PrettyJson(document));
    }
    if (const auto* texts = std::get_if<std::vector<std::string>>(&field); texts != nullptr && !texts->empty()) {
        std::vector<std::string> lines;
        std::transform(texts->begin(), texts->end(), std::back_inserter(lines), EscapeControls);
        return lines;
    }
    return CellLines(field);
}
}  // namespace

std::size_t Output::Limit() const
{
    return style_.columns == 0 ? std::numeric_limits<std::size_t>::max() : style_.columns;
}

std::string Output::Bold(const std::string& text) const
{
    return style_.colour ? "\x1b[1m" + text + "\x1b[0m" : text;
}

void Output::Append(const LineList& lines)
{
    for (const std::string& line : lines) {
        text_ += line + "\n";
    }
}

/// A table, or records when that is wider than @p columns.
std::vector<std::string> Output::TableLines(const Listing& listing, bool heading, std::size_t columns) const
{
    LineList lines = PlainTable(listing, heading);
    if (Widest(lines) > columns && !listing.rows.empty()) {
        return RecordList(listing, columns);
    }
    if (heading) {
        lines.front() = Bold(lines.front());
    }
    return lines;
}

/// A listing in a record: a table beside its title, or below it where the terminal is too narrow for that.
std::vector<std::string> Output::NestedLines(const std::string& title, const Listing& nested, std::size_t indent,
                                             std::size_t columns) const
{
    const bool beside = Widest(PlainTable(nested, true)) + indent + GAP.size() <= columns;
    LineList lines = TableLines(nested, true, columns - GAP.size() - (beside ? indent : 0));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string name = !beside || i > 0 ? std::string(beside ? indent : 0, ' ') : Bold(Padded(title, indent));
        lines[i] = lines[i].empty() ? "" : name + GAP + lines[i];
    }
    if (!beside) {
        lines.insert(lines.begin(), Bold(title));
    }
    return lines;
}

std::vector<std::string> Output::RecordLines(const Listing& listing, const std::vector<Field>& row,
                                             std::size_t columns) const
{
    std::size_t width = 0;
    for (const Column& column : listing.columns) {
        width = std::max(width, column.title != nullptr ? std::string(column.title).size() : 0);
    }
    LineList lines;
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (listing.columns[i].title == nullptr) {
            continue;
        }
        std::string title = listing.columns[i].title;
        if (const auto* nested = std::get_if<ListingPtr>(&row[i]); nested != nullptr && !(*nested)->rows.empty()) {
            const LineList below = NestedLines(title, **nested, width, columns);
            lines.insert(lines.end(), below.begin(), below.end());
            continue;
        }
        for (const std::string& line : RecordField(row[i])) {
            const std::string name = Padded(title, width);
            lines.push_back((title.empty() ? name : Bold(name)) + GAP + line);
            title.clear();
        }
    }
    return lines;
}

std::vector<std::string> Output::RecordList(const Listing& listing, std::size_t columns) const
{
    LineList lines;
    for (const std::vector<Field>& row : listing.rows) {
        if (!lines.empty()) {
            lines.emplace_back();
        }
        const LineList record = RecordLines(listing, row, columns);
        lines.insert(lines.end(), record.begin(), record.end());
    }
    return lines;
}

void Output::Stream(const Listing& listing, bool first)
{
    if (style_.json) {
        text_ += JsonLines(listing);
    } else {
        Append(TableLines(listing, first, Limit()));
    }
}

void Output::Rows(const Listing& listing)
{
    if (style_.json) {
        text_ += JsonArray(listing);
    } else {
        Append(PlainTable(listing, false));
    }
}

void Output::Table(const Listing& listing, const std::string& whenEmpty)
{
    if (style_.json) {
        text_ += JsonArray(listing);
    } else if (listing.rows.empty() && !whenEmpty.empty()) {
        text_ += EscapeControls(whenEmpty) + "\n";
    } else {
        Stream(listing, true);
    }
}

void Output::Report(const Listing& table, const std::string& summary, const Listing& facts)
{
    if (style_.json) {
        Listing report{{{nullptr, "summary"}}, {{summary}}};
        report.columns.insert(report.columns.end(), facts.columns.begin(), facts.columns.end());
        report.columns.push_back({nullptr, "rows"});
        report.rows[0].insert(report.rows[0].end(), facts.rows.at(0).begin(), facts.rows.at(0).end());
        report.rows[0].push_back(Nested(table));
        text_ += JsonObject(report);
        return;
    }
    if (!table.rows.empty()) {
        Stream(table, true);
        text_ += "\n";
    }
    text_ += EscapeControls(summary) + "\n";
}

void Output::Record(const Listing& listing)
{
    if (style_.json) {
        text_ += JsonObject(listing);
    } else {
        Append(RecordLines(listing, listing.rows.at(0), Limit()));
    }
}

void Output::Records(const Listing& listing, const std::string& whenEmpty)
{
    if (style_.json || listing.rows.empty()) {
        Table(listing, whenEmpty);
    } else {
        Append(RecordList(listing, Limit()));
    }
}

void Output::Flush()
{
    errno = 0;
    stream_ << text_ << std::flush;
    if (!stream_) {
        throw OutputFailure(errno != 0 ? errno : EIO);
    }
    text_.clear();
}
}  // namespace ConfigStoreCtl
