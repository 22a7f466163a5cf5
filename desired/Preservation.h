#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "DBStore.h"
#include "NimbSchemaStore.h"

// What a desired document carries over from the live and the default configuration, so that applying it cuts the host
// off from nothing that it depends on. Every step works in the caller's transaction and throws ConfigStoreException
// 2000 when it fails.
namespace NimbConfigStore
{
inline constexpr const char* HOST_COMPONENT = "nimb";
inline constexpr const char* SWITCHES_GROUP = "network_gnx";
inline constexpr const char* SWITCHES = "switches";

/// A row of Config that may be carried over; nothing stands for NULL.
struct LiveRow
{
    std::optional<std::string> identifier;
    std::optional<std::string> userValue;
    std::optional<std::string> vitalValue;
};

/// The rows of a statement that selects these three columns. @throws ConfigStoreException 2000 @p failure.
std::vector<LiveRow> SelectLiveRows(const DBStore::ConnectionPtr& connection, const char* sql, const char* failure);

/// The text as a log line shows it; NULL is shown as nothing.
const char* Shown(const std::optional<std::string>& text);

/// Stages the live adapters and switches as they are, in place of the document's.
void PreserveNetwork(const DBStore::ConnectionPtr& connection);

/// Stages the live switches that the document would delete, reduced to their names, with what the system keeps of them.
void PreserveSwitches(const DBStore::ConnectionPtr& connection, const NimbSchemaStore::SchemaObjectCache& cache);

/// Stages the default configuration of @p unmentioned objects, without the instances that documents leave alone.
void StageMutableDefaults(const DBStore::ConnectionPtr& connection, const NimbSchemaStore::SchemaObjectCache& cache,
                          const std::set<NimbSchemaStore::SchemaObjectId>& unmentioned);

/// Stages the live permissions of solution users, over what the document says of them. Strict: one malformed
/// permission fails the document, for nobody could say whom it belongs to.
void PreserveSolutionUserPermissions(const DBStore::ConnectionPtr& connection,
                                     const NimbSchemaStore::SchemaObjectCache& cache);

/// Stages the live options of the network virtualisation agent; the document must not stage them itself.
void PreserveAgentOptions(const DBStore::ConnectionPtr& connection);
}  // namespace NimbConfigStore
