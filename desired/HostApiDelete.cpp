#include "Errors.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "Staging.h"
#include "StoreConnection.h"
#include "StoreKeys.h"

namespace NimbConfigStore
{
namespace
{
[[noreturn]] void Fail(int code, const char* format, const NimbSchemaStore::SchemaObjectId& id)
{
    throw ConfigStoreException(code, Format(format, id.component.c_str(), id.group.c_str(), id.name.c_str()).c_str());
}
}  // namespace

void DeleteHostAPIConfiguration(const char* component, const char* group, const char* key)
{
    if (component == nullptr || group == nullptr || key == nullptr) {
        throw InvalidArgumentException(CS_ERROR_OPERATION, "A component, a group and a key are needed");
    }
    const NimbSchemaStore::SchemaObjectId id(component, group, key);
    (void)NimbSchemaStore::SchemaStore::GetStore(false)->GetCache()->Get(id);  // throws for an unknown object
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    StoreTransaction change(store);
    if (!change.IsOpen()) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to start Delete HostAPI transaction");
    }
    // The mode goes with the row: set after the commit alone, a power cut or a failed write between the two would
    // leave a delete that no boot applies.
    if (!StageAction(store, id, BOOT_ACTION_DELETE) ||
        DBStore::WriteKeyValue(BOOT_MODE, std::to_string(BOOTMODE_HOSTAPI), store) != DBStore::SUCCESS) {
        Fail(CS_ERROR_STAGE_DESIRED, "desired configuration for component %s group %s key %s", id);
    }
    if (!change.Commit()) {
        Fail(CS_ERROR_COMMIT, "for component %s group %s key %s in Delete HostAPI", id);
    }
    SetBootMode(BOOTMODE_HOSTAPI);
}
}  // namespace NimbConfigStore
