#include "InstanceId.h"

#include "ConfigStoreDocument.h"
#include "Errors.h"
#include "JsonText.h"

namespace NimbConfigStore
{
std::string GetInstanceIdFromValue(const JsonValue& value, const std::shared_ptr<NimbSchemaStore::SchemaObject>& schema)
{
    const std::string& property = schema->GetInstanceIdProperty();
    if (property.empty()) {
        return "";
    }
    if (!ConfigStoreDocument::ValueExists(value, property.c_str())) {
        ThrowException<ConfigStoreException, const char*>(CS_ERROR_INSTANCE_ID_MISSING, property.c_str());
    }
    return JsonText(value[property.c_str()]);
}
}  // namespace NimbConfigStore
