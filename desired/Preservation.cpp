#include "Preservation.h"

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "ConfigStoreException.h"
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

constexpr const char* GENERATED_ID = "cs_generated_id";

std::optional<std::string> TextOf(const char* value)
{
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

int CollectRow(void* context, int, char** values, char**)
{
    static_cast<std::vector<LiveRow>*>(context)->push_back({TextOf(values[0]), TextOf(values[1]), TextOf(values[2])});
    return 0;
}

/// {"name": the switch's identifier}
std::string ReducedSwitch(const LiveRow& row)
{
    JsonDocument value(rapidjson::kObjectType);
    JsonValue name(row.identifier.value_or("").c_str(), value.GetAllocator());
    value.AddMember("name", name, value.GetAllocator());
    std::string text;
    ConfigStoreDocument::SerializeValue(value, text);
    return text;
}

void PreserveSwitch(const DBStore::ConnectionPtr& connection, const std::string& version, const LiveRow& row)
{
    CSLogger::Log(CSLogger::INFO, "Preserve Gnx[%s] user-config=%s, vital-data=%s", Shown(row.identifier),
                  Shown(row.userValue), Shown(row.vitalValue));
    const std::string value = ReducedSwitch(row);
    RunOrThrow(
        connection, Statements::STAGE_PRESERVED_ROW, "Failed to preserve GNX configruation.",
        {row.identifier, SWITCHES, SWITCHES_GROUP, HOST_COMPONENT, version, value, row.vitalValue, BOOT_ACTION_SET});
    CSLogger::Log(CSLogger::INFO, "Successfully preserved Gnx[%s] configuration", Shown(row.identifier));
}

/// Generated identifiers mean nothing outside the store, so a list of them excludes nothing.
std::vector<std::string> ExcludedInstances(const SchemaObjectPtr& object)
{
    const bool excludes =
        object != nullptr && object->IsMultiInstance() && object->GetInstanceIdProperty() != GENERATED_ID;
    return excludes ? object->GetExcludedInstances() : std::vector<std::string>();
}

void StageDefaults(const DBStore::ConnectionPtr& connection, const SchemaObjectId& id,
                   const std::vector<std::string>& excluded)
{
    std::string sql = Statements::STAGE_DEFAULTS;
    std::vector<BoundText> texts{id.component, id.group, id.name};
    if (!excluded.empty()) {
        sql += " AND Identifier NOT IN (";
        for (const std::string& identifier : excluded) {
            sql += "?,";
            texts.emplace_back(identifier);
        }
        sql.back() = ')';
    }
    RunOrThrow(connection, sql, "Failed to insert default configuration to desired config table", texts);
}
}  // namespace

std::vector<LiveRow> SelectLiveRows(const DBStore::ConnectionPtr& connection, const char* sql, const char* failure)
{
    std::vector<LiveRow> rows;
    RunOrThrow(connection, sql, failure, {}, CollectRow, &rows);
    return rows;
}

const char* Shown(const std::optional<std::string>& text)
{
    return text ? text->c_str() : "";
}

void PreserveNetwork(const DBStore::ConnectionPtr& connection)
{
    RunOrThrow(connection, Statements::STAGE_LIVE_NETWORK, "Failed to preserve current GNX networking configuration.");
    CSLogger::Log(CSLogger::INFO, "Successfully preserved network configuration.");
}

void PreserveSwitches(const DBStore::ConnectionPtr& connection, const SchemaObjectCache& cache)
{
    const std::vector<LiveRow> rows =
        SelectLiveRows(connection, Statements::SELECT_UNSTAGED_SWITCHES, "Failed to get current GNX configuration.");
    if (rows.empty()) {
        CSLogger::Log(CSLogger::INFO, "GNX objects are not getting deleted, skip GNX special-handling logic");
        return;
    }
    CSLogger::Log(CSLogger::INFO, "%d gnx objects in ConfigStore will be deleted.", static_cast<int>(rows.size()));
    const SchemaObjectPtr schema = cache.Get({HOST_COMPONENT, SWITCHES_GROUP, SWITCHES});
    for (const LiveRow& row : rows) {
        PreserveSwitch(connection, schema->GetVersion(), row);
    }
}

void StageMutableDefaults(const DBStore::ConnectionPtr& connection, const SchemaObjectCache& cache,
                          const std::set<SchemaObjectId>& unmentioned)
{
    for (const SchemaObjectId& id : unmentioned) {
        CSLogger::Log(CSLogger::INFO, "Processing mutableDefaultConfig schemas id = %s", id.toString().c_str());
        StageDefaults(connection, id, ExcludedInstances(cache.Find(id)));
    }
}

void PreserveAgentOptions(const DBStore::ConnectionPtr& connection)
{
    RunOrThrow(connection, Statements::STAGE_LIVE_AGENT_OPTIONS, "Failed to preserve BRX user-var advanced options");
    CSLogger::Log(CSLogger::INFO, "Successfully preserved BRX user-var advanced options.");
}
}  // namespace NimbConfigStore
