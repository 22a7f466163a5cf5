#include "DesiredFindings.h"

#include <algorithm>
#include <array>
#include <regex>

#include "HostEvents.h"
#include "JsonValidator.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "ScratchHost.h"
#include "StoreReader.h"

using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

namespace ConfigStoreCtl
{
namespace
{
const std::vector<Column> COLUMNS = {{"FILE", "file"}, {"PLACE", "field"}, {"FINDING", "error"}};

std::string Unescaped(const std::string& pointer)
{
    return std::regex_replace(std::regex_replace(pointer, std::regex("~1"), "/"), std::regex("~0"), "~");
}

/// A component, group or object that no schema describes is a superfluous member to the validator; people want it
/// named. @param place  below "profile" when the document has that.
std::string FindingText(const std::string& place, const std::string& error)
{
    static constexpr std::array<const char*, 4> LEVELS = {"", "component", "group", "object"};
    const auto level = static_cast<std::size_t>(std::count(place.begin(), place.end(), '/'));
    if (level == 0 || level >= LEVELS.size() || !error.starts_with("expected no such member")) {
        return error;
    }
    return std::string("expected ") + (level == 3 ? "an " : "a ") + LEVELS[level] +
           " that a schema describes, found the unknown " + LEVELS[level] + " " + Unescaped(place.substr(1));
}
}  // namespace

Listing SchemaFindings(const std::string& file, const JsonDocument& desired)
{
    RequireStore(DBStore::Type::SchemaStore);
    JsonDocument schema;
    JsonDocument scratch;
    NimbSchemaStore::GenerateSchemaDocument(desired, NimbSchemaStore::SchemaStore::GetStore(false)->GetCache(), schema,
                                            scratch);
    JsonDocument report;
    JsonValidator::Validate(schema, desired, report,
                            {JsonValidator::RULE_TYPES, JsonValidator::RULE_PRESENCE, JsonValidator::RULE_VALUES,
                             JsonValidator::RULE_ARRAYS, JsonValidator::RULE_MEMBERS},
                            "");
    const std::string profile = desired.IsObject() && desired.HasMember("profile") ? "/profile" : "";
    Listing findings{COLUMNS, {}};
    for (const JsonValue& finding : report.GetArray()) {
        const std::string field = finding["field"].GetString();
        const std::string place = field.starts_with(profile) ? field.substr(profile.size()) : field;
        findings.rows.push_back({file, field, FindingText(place, finding["error"].GetString())});
    }
    return findings;
}

std::string WhyNotStaged(const std::exception& failure, const std::vector<std::string>& errorLines)
{
    return failure.what() + (errorLines.empty() ? "" : " (" + Joined(errorLines) + ")");
}

Listing StagingFindings(const std::string& file, const JsonDocument& desired)
{
    JsonDocument copy;
    copy.CopyFrom(desired, copy.GetAllocator());
    const ScratchHost host;
    CallWatch watch;
    try {
        NimbConfigStore::SetDesiredUserConfig(copy);
    } catch (const std::exception& failure) {
        return {COLUMNS, {{file, "", "cannot be staged: " + WhyNotStaged(failure, watch.ErrorLines())}}};
    }
    return {COLUMNS, {}};
}

Listing LoggedFindings(const std::string& file, const std::vector<std::string>& errorLines)
{
    const std::regex invalid("Validation error at (.*?): (.*)");
    const std::regex unknown("Schema not found for (.*)");
    Listing findings{COLUMNS, {}};
    for (const std::string& line : errorLines) {
        std::smatch match;
        if (std::regex_match(line, match, invalid)) {
            findings.rows.push_back({file, "/" + match[1].str(), match[2].str()});
        } else if (std::regex_match(line, match, unknown)) {
            const std::string place = "/" + match[1].str();
            findings.rows.push_back({file, place, FindingText(place, "expected no such member")});
        }
    }
    return findings;
}

void RefuseDocument(const std::string& file, const Listing& findings, const std::string& consequence, Output& output)
{
    output.Table(findings);
    output.Refuse(file + ": is not valid; findings: " + std::to_string(findings.rows.size()) + consequence);
}
}  // namespace ConfigStoreCtl
