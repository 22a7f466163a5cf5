#pragma once

#include <map>
#include <string>

#include "Json.h"
#include "TestHost.h"

/// The rows of a config store as a plan speaks of them: by identity, each a JSON object of its columns' values.
class PlanModel
{
public:
    explicit PlanModel(const TestHost& host);

    /// Does to the rows what @p plan, the JSON document of the command, says that the boot does.
    void Apply(const NimbConfigStore::JsonValue& plan);

    bool operator==(const PlanModel&) const = default;

    /// For a failed test.
    std::string Text() const;

private:
    using Columns = std::map<std::string, std::string>;  // canonical JSON text by the column's name

    void ApplyRow(const NimbConfigStore::JsonValue& row);
    std::string FreeKey(const std::string& key) const;

    std::map<std::string, Columns> rows_;  // rows without identifier may share one, so the key ends with a number
};
