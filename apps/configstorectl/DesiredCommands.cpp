#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

#include "Commands.h"
#include "ConfigStoreDocument.h"
#include "InspectStatements.h"
#include "JsonValidator.h"
#include "NimbSchemaStore.h"
#include "StoreReader.h"

using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace ConfigStoreCtl
{
namespace
{
/// The whole text of a document that the caller hands over: a path of the caller's, not of the host; "-" is standard
/// input.
std::string ReadDocument(const std::string& file)
{
    std::ifstream opened;
    if (file != "-") {
        errno = 0;
        opened.open(file, std::ios::binary);
    }
    std::istream& stream = file == "-" ? std::cin : opened;
    std::string text;
    if (stream && stream.peek() != std::istream::traits_type::eof()) {
        text.assign(std::istreambuf_iterator<char>(stream), {});
    }
    if (stream.bad() || (file != "-" && !opened.is_open())) {
        throw CommandFailure(file, std::string("cannot be read: ") + std::strerror(errno));
    }
    return text;
}

void ParseDocument(const std::string& file, JsonDocument& document)
{
    std::string reason;
    if (!ConfigStoreDocument::ParseText(ReadDocument(file), document, &reason)) {
        throw CommandFailure(file, "is not a JSON document: " + reason);
    }
}

/// Every finding of the rules that ValidateDesiredDocument applies; that call only logs them.
void Validate(JsonDocument& desired, JsonDocument& report)
{
    RequireStore(DBStore::Type::SchemaStore);
    JsonDocument schema;
    JsonDocument scratch;
    NimbSchemaStore::GenerateSchemaDocument(desired, NimbSchemaStore::SchemaStore::GetStore(false)->GetCache(), schema,
                                            scratch);
    JsonValidator::Validate(schema, desired, report,
                            {JsonValidator::RULE_TYPES, JsonValidator::RULE_PRESENCE, JsonValidator::RULE_VALUES,
                             JsonValidator::RULE_ARRAYS, JsonValidator::RULE_MEMBERS},
                            "");
}
}  // namespace

void DesiredValidate(const Arguments& arguments, Output& output)
{
    const std::string& file = arguments.values[0];
    JsonDocument desired;
    JsonDocument report;
    ParseDocument(file, desired);
    Validate(desired, report);
    Listing listing{{{"FILE", "file"}, {"PLACE", "field"}, {"FINDING", "error"}}, {}};
    for (const JsonValue& finding : report.GetArray()) {
        listing.rows.push_back({file, finding["field"].GetString(), finding["error"].GetString()});
    }
    output.Table(listing, file + ": valid");
    if (!listing.rows.empty()) {
        output.Refuse(file + ": is not valid; findings: " + std::to_string(listing.rows.size()));
    }
}

void DesiredShow(const Arguments&, Output& output)
{
    Listing listing{{{"object", nullptr},
                     {nullptr, "component"},
                     {nullptr, "group"},
                     {nullptr, "key"},
                     {"identifier", "identifier"},
                     {"version", "version"},
                     {"action", "bootAction"},
                     {"value", "value"},
                     {"vital value", "vitalValue"},
                     {"cached value", "cachedValue"}},
                    {}};
    for (const StoreRow& row : ReadRowsBelow(Statements::SHOW_STAGED, "")) {
        listing.rows.push_back({ObjectOf(row), TextOf(row[0]), TextOf(row[1]), TextOf(row[2]), TextOf(row[3]),
                                TextOf(row[4]), TextOf(row[5]), JsonOf(row[6]), JsonOf(row[7]), JsonOf(row[8])});
    }
    output.Records(listing, "nothing is staged");
}
}  // namespace ConfigStoreCtl
