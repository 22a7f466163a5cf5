#include "DesiredFindings.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

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
/// Of a value that no row can hold, though its schema takes it or never sees it: the log tells the key alone.
constexpr const char* NOT_STAGEABLE =
    "expected an object, an array, or \"DELETE_DEFAULT\" where the object has a mutable default";

const std::vector<Column> COLUMNS = {{"FILE", "file"}, {"PLACE", "field"}, {"FINDING", "error"}};

std::string Unescaped(const std::string& pointer)
{
    std::string text;
    for (std::size_t at = 0; at < pointer.size(); ++at) {
        const bool escaped = pointer[at] == '~' && at + 1 < pointer.size();
        text += escaped ? (pointer[++at] == '1' ? '/' : '~') : pointer[at];
    }
    return text;
}

/// What stands behind @p words in a line that begins with them. Lines may be of any length, which the matcher of
/// regular expressions is not made for.
std::optional<std::string> Behind(std::string_view words, const std::string& line)
{
    return line.starts_with(words) ? std::optional<std::string>(line.substr(words.size())) : std::nullopt;
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
    Listing findings{COLUMNS, {}};
    std::size_t earlier = 0;  // findings of other keys
    for (const std::string& line : errorLines) {
        if (const auto invalid = Behind("Validation error at ", line)) {
            const std::size_t end = invalid->find(": ");
            const std::string error = end != std::string::npos ? invalid->substr(end + 2) : "";
            findings.rows.push_back({file, "/" + invalid->substr(0, end), error});
        } else if (const auto unknown = Behind("Schema not found for ", line)) {
            const std::string place = "/" + *unknown;
            findings.rows.push_back({file, place, FindingText(place, "expected no such member")});
        } else if (const auto key = Behind("Validation failed for configuration {", line)) {
            if (findings.rows.size() == earlier) {
                findings.rows.push_back({file, "/" + key->substr(0, key->rfind('}')), NOT_STAGEABLE});
            }
            earlier = findings.rows.size();
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
