#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "ConfigStoreDocument.h"
#include "JsonValidator.h"

// What the tests of the validator ask it.

inline const std::set<int> VALUE_RULES{0, 1, 2, 3, 7, 8};

inline void ParseInto(NimbConfigStore::JsonDocument& document, const std::string& text)
{
    std::string reason;
    ASSERT_TRUE(ConfigStoreDocument::ParseText(text, document, &reason)) << reason << ": " << text;
}

/// Each finding as "FIELD: ERROR".
inline std::vector<std::string> FindingsOf(const NimbConfigStore::JsonValue& schema,
                                           const NimbConfigStore::JsonValue& value,
                                           const std::set<int>& rules = VALUE_RULES, const std::string& name = "")
{
    NimbConfigStore::JsonDocument report;
    JsonValidator::Validate(schema, value, report, rules, name);
    std::vector<std::string> findings;
    for (const auto& finding : report.GetArray()) {
        findings.push_back(std::string(finding["field"].GetString()) + ": " + finding["error"].GetString());
    }
    return findings;
}

inline std::vector<std::string> FindingsOf(const std::string& schemaText, const std::string& valueText,
                                           const std::set<int>& rules = VALUE_RULES, const std::string& name = "")
{
    NimbConfigStore::JsonDocument schema;
    NimbConfigStore::JsonDocument value;
    ParseInto(schema, schemaText);
    ParseInto(value, valueText);
    return FindingsOf(schema, value, rules, name);
}

inline bool Accepts(const std::string& schema, const std::string& value)
{
    return FindingsOf(schema, value).empty();
}

inline std::string ProblemOf(const std::string& schemaText)
{
    NimbConfigStore::JsonDocument schema;
    ParseInto(schema, schemaText);
    return JsonValidator::CheckSchema(schema);
}
