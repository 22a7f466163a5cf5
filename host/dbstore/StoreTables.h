#pragma once

#include <span>
#include <string_view>

#include "DBStore.h"

// What each store database holds: its file, its tables and indexes, and the planner statistics that go with them.
namespace DBStore
{
/// One row of sqlite_stat1: how many rows the planner is to expect, in all and per value of each key prefix.
struct TableStatistics
{
    const char* table;
    const char* index;
    const char* expectation;
};

struct StoreDefinition
{
    const char* path;  // logical
    std::span<const char* const> tables;
    std::span<const char* const> definitions;  // statements that create what is missing, in order
    std::span<const TableStatistics> statistics;
};

/// Null for a number that is no store.
const StoreDefinition* DefinitionOf(Type type);

/// The store that a file of this base name (a backup, say) is a copy of.
const StoreDefinition& DefinitionForFile(std::string_view baseName);
}  // namespace DBStore
