#include "OutputJson.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "ConfigStoreDocument.h"
#include "TerminalText.h"

using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace ConfigStoreCtl
{
namespace
{
using PrettyWriter = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

template <class Writer>
void WriteArray(Writer& writer, const Listing& listing);

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

    void operator()(const TextLines& value) const { (*this)(value.texts); }
    void operator()(const ListingPtr& listing) const { WriteArray(writer, *listing); }
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

template <class Writer>
void WriteArray(Writer& writer, const Listing& listing)
{
    writer.StartArray();
    for (const std::vector<Field>& row : listing.rows) {
        WriteObject(writer, listing, row);
    }
    writer.EndArray();
}
}  // namespace

std::string JsonArray(const Listing& listing)
{
    rapidjson::StringBuffer buffer;
    PrettyWriter writer(buffer);
    writer.SetIndent(' ', 2);
    WriteArray(writer, listing);
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
}  // namespace ConfigStoreCtl
