#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "ConfigStoreException.h"
#include "JsonText.h"
#include "Preservation.h"
#include "RunStatement.h"
#include "Staging.h"
#include "StoreStatements.h"

namespace NimbConfigStore
{
namespace
{
using NimbSchemaStore::SchemaObjectCache;
using NimbSchemaStore::SchemaObjectId;
using NimbSchemaStore::SchemaObjectPtr;

constexpr const char* PERMISSIONS_GROUP = "authorization";
constexpr const char* PERMISSIONS = "permissions";
constexpr std::string_view SOLUTION_USER_PREFIX = "svc-qrm-";
constexpr const char* WELL_KNOWN_SOLUTION_USERS[] = {"druuser", "tcon"};

/// Null, after a log line, when the object is unknown.
SchemaObjectPtr FindSchema(const SchemaObjectCache& cache, const SchemaObjectId& id)
{
    SchemaObjectPtr schema = cache.Find(id);
    if (schema == nullptr) {
        CSLogger::Log(CSLogger::WARNING, "Schema not found for id='%s'", id.toString().c_str());
    }
    return schema;
}

/// The accounts that solutions log in with; none, after a log line, when the schema lists none.
std::unordered_set<std::string> SolutionUsers(const NimbSchemaStore::SchemaObject& accounts)
{
    const std::vector<std::string>& listed = accounts.GetSolutionUserInstances();
    const std::string id = accounts.GetId().toString();
    if (listed.empty()) {
        CSLogger::Log(CSLogger::WARNING, "SolutionUserInstances not found for id='%s'", id.c_str());
        return {};
    }
    CSLogger::Log(CSLogger::INFO, "Found %d solutionInstances for id='%s'", static_cast<int>(listed.size()),
                  id.c_str());
    for (const char* user : WELL_KNOWN_SOLUTION_USERS) {
        if (std::find(listed.begin(), listed.end(), user) == listed.end()) {
            CSLogger::Log(CSLogger::DEBUG, "'%s' is not among the solutionInstances of id='%s'", user, id.c_str());
        }
    }
    return {listed.begin(), listed.end()};
}

/// Whom a permission is given to.
std::string PrincipalOf(const LiveRow& row)
{
    if (!row.userValue) {
        CSLogger::Log(CSLogger::ERROR, "Permission[%s] does not have user-config", Shown(row.identifier));
        throw ConfigStoreException(CS_ERROR_OPERATION, "Invalid permission found in ConfigStore.");
    }
    JsonDocument permission;
    if (!ConfigStoreDocument::ParseText(*row.userValue, permission)) {
        CSLogger::Log(CSLogger::ERROR, "Permission[%s] user-config parsing failed.", Shown(row.identifier));
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to process permission from ConfigStore.");
    }
    if (!ConfigStoreDocument::ValueExists(permission, "principal") || !permission["principal"].IsString()) {
        CSLogger::Log(CSLogger::ERROR,
                      "Permission[%s] does not contain 'principal' property, not preserving the permissions.",
                      Shown(row.identifier));
        throw ConfigStoreException(CS_ERROR_OPERATION, "Invalid permission without 'principal' found in ConfigStore.");
    }
    return JsonText(permission["principal"]);
}

void StagePermission(const DBStore::ConnectionPtr& connection, const std::string& version, const LiveRow& row)
{
    RunOrThrow(connection, Statements::STAGE_PERMISSION, "Failed to preserve solution permission.",
               {row.identifier, PERMISSIONS, PERMISSIONS_GROUP, HOST_COMPONENT, version, row.userValue, row.vitalValue,
                BOOT_ACTION_SET});
}

void PreservePermissions(const DBStore::ConnectionPtr& connection, const std::string& version,
                         const std::unordered_set<std::string>& solutionUsers)
{
    const std::vector<LiveRow> rows =
        SelectLiveRows(connection, Statements::SELECT_LIVE_PERMISSIONS, "Failed to get permissions.");
    CSLogger::Log(CSLogger::INFO, "Found %d permissions in ConfigStore", static_cast<int>(rows.size()));
    for (const LiveRow& row : rows) {
        CSLogger::Log(CSLogger::INFO, "Permission[%s] has user-config=%s, vital-data=%s", Shown(row.identifier),
                      Shown(row.userValue), Shown(row.vitalValue));
        const std::string principal = PrincipalOf(row);
        if (principal.starts_with(SOLUTION_USER_PREFIX) || solutionUsers.contains(principal)) {
            CSLogger::Log(CSLogger::INFO, "Preserving solution-user permission for user=%s", principal.c_str());
            StagePermission(connection, version, row);
        }
    }
}
}  // namespace

void PreserveSolutionUserPermissions(const DBStore::ConnectionPtr& connection, const SchemaObjectCache& cache)
{
    const SchemaObjectPtr accounts = FindSchema(cache, {HOST_COMPONENT, "authentication", "user_accounts"});
    if (accounts == nullptr) {
        return;
    }
    const SchemaObjectPtr permissions = FindSchema(cache, {HOST_COMPONENT, PERMISSIONS_GROUP, PERMISSIONS});
    if (permissions == nullptr) {
        return;
    }
    const std::unordered_set<std::string> solutionUsers = SolutionUsers(*accounts);
    if (!solutionUsers.empty()) {
        PreservePermissions(connection, permissions->GetVersion(), solutionUsers);
    }
}
}  // namespace NimbConfigStore
