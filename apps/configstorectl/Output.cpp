#include "Output.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <algorithm>
#include <cerrno>
#include <ostream>

#include "ConfigStoreDocument.h"
#include "TerminalText.h"

using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace ConfigStoreCtl
{
namespace
{
using PrettyWriter = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

// ---- JSON ---------------------------------------------------------------------------------------------------------

template <class Writer>
void WriteText(Writer& writer, const std::string& text)
{
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

/// Writes one field as JSON.
template <class Writer>
struct JsonField
{
    Writer& writer;

    void operator()(std::monostate) const { writer.Null(); }
    void operator()(bool value) const { writer.Bool(value); }
    void operator()(std::int64_t value) const { writer.Int64(value); }
    void operator()(const std::string& value) const { WriteText(writer, value); }

    void operator()(const JsonText& value) const
    {
        JsonDocument document;
        if (ConfigStoreDocument::ParseText(value.text, document)) {
            document.Accept(writer);
        } else {
            WriteText(writer, value.text);
        }
    }

    void operator()(const std::vector<std::string>& values) const
    {
        writer.StartArray();
        for (const std::string& value : values) {
            WriteText(writer, value);
        }
        writer.EndArray();
    }
};

template <class Writer>
void WriteObject(Writer& writer, const Listing& listing, const std::vector<Field>& row)
{
    writer.StartObject();
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (listing.columns[i].member != nullptr) {
            writer.Key(listing.columns[i].member);
            std::visit(JsonField<Writer>{writer}, row[i]);
        }
    }
    writer.EndObject();
}

std::string JsonArray(const Listing& listing)
{
    rapidjson::StringBuffer buffer;
    PrettyWriter writer(buffer);
    writer.SetIndent(' ', 2);
    writer.StartArray();
    for (const std::vector<Field>& row : listing.rows) {
        WriteObject(writer, listing, row);
    }
    writer.EndArray();
    return EscapeJsonControls(buffer.GetString()) + "\n";
}

std::string JsonObject(const Listing& listing)
{
    rapidjson::StringBuffer buffer;
    PrettyWriter writer(buffer);
    writer.SetIndent(' ', 2);
    WriteObject(writer, listing, listing.rows.at(0));
    return EscapeJsonControls(buffer.GetString()) + "\n";
}

std::string JsonLines(const Listing& listing)
{
    std::string lines;
    for (const std::vector<Field>& row : listing.rows) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        WriteObject(writer, listing, row);
        lines += EscapeJsonControls(buffer.GetString()) + "\n";
    }
    return lines;
}

std::string PrettyJson(const JsonValue& value)
{
    rapidjson::StringBuffer buffer;
    PrettyWriter writer(buffer);
    writer.SetIndent(' ', 2);
    value.Accept(writer);
    return EscapeJsonControls(buffer.GetString());
}

// ---- Text ---------------------------------------------------------------------------------------------------------

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
};

/// One field as the lines of a record: JSON is laid out, a list has a line per element.
std::vector<std::string> RecordField(const Field& field)
{
    std::vector<std::string> lines;
    JsonDocument document;
    if (const auto* json = std::get_if<JsonText>(&field);
        json != nullptr && ConfigStoreDocument::ParseText(json->text, document)) {
        std::string rest = PrettyJson(document);
        for (std::size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
            lines.push_back(rest.substr(0, end));
            rest.erase(0, end + 1);
        }
        lines.push_back(rest);
        return lines;
    }
    if (const auto* texts = std::get_if<std::vector<std::string>>(&field); texts != nullptr && !texts->empty()) {
        for (const std::string& text : *texts) {
            lines.push_back(EscapeControls(text));
        }
        return lines;
    }
    return {std::visit(TextField{}, field)};
}

std::vector<std::vector<std::string>> TextRows(const Listing& listing)
{
    std::vector<std::vector<std::string>> rows;
    for (const std::vector<Field>& row : listing.rows) {
        std::vector<std::string>& cells = rows.emplace_back();
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (listing.columns[i].title != nullptr) {
                cells.push_back(std::visit(TextField{}, row[i]));
            }
        }
    }
    return rows;
}

std::string Padded(const std::string& text, std::size_t width)
{
    const std::size_t taken = DisplayWidth(text);
    return taken < width ? text + std::string(width - taken, ' ') : text;
}
}  // namespace

std::string Output::Bold(const std::string& text) const
{
    return style_.colour ? "\x1b[1m" + text + "\x1b[0m" : text;
}

void Output::TableLine(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths, bool bold)
{
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        line += i + 1 < cells.size() ? Padded(cells[i], widths[i]) + "  " : cells[i];
    }
    text_ += (bold ? Bold(line) : line) + "\n";
}

void Output::Stream(const Listing& listing, bool first)
{
    if (style_.json) {
        text_ += JsonLines(listing);
        return;
    }
    std::vector<std::string> titles;
    std::vector<std::size_t> widths;
    for (const Column& column : listing.columns) {
        if (column.title != nullptr) {
            titles.emplace_back(column.title);
            widths.push_back(std::max(column.width, titles.back().size()));
        }
    }
    const std::vector<std::vector<std::string>> rows = TextRows(listing);
    for (const std::vector<std::string>& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
        }
    }
    if (first) {
        TableLine(titles, widths, true);
    }
    for (const std::vector<std::string>& row : rows) {
        TableLine(row, widths, false);
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

void Output::RecordLines(const Listing& listing, const std::vector<Field>& row)
{
    std::size_t width = 0;
    for (const Column& column : listing.columns) {
        width = std::max(width, column.title != nullptr ? std::string(column.title).size() : 0);
    }
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (listing.columns[i].title == nullptr) {
            continue;
        }
        std::string title = listing.columns[i].title;
        for (const std::string& line : RecordField(row[i])) {
            const std::string name = Padded(title, width);
            text_ += (title.empty() ? name : Bold(name)) + "  " + line + "\n";
            title.clear();
        }
    }
}

void Output::Record(const Listing& listing)
{
    if (style_.json) {
        text_ += JsonObject(listing);
    } else {
        RecordLines(listing, listing.rows.at(0));
    }
}

void Output::Records(const Listing& listing, const std::string& whenEmpty)
{
    if (style_.json || listing.rows.empty()) {
        Table(listing, whenEmpty);
        return;
    }
    for (const std::vector<Field>& row : listing.rows) {
        text_ += text_.empty() ? "" : "\n";
        RecordLines(listing, row);
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
