#include <string>

#include "ConfigStoreDocument.h"
#include "ConfigStoreException.h"
#include "Errors.h"
#include "NimbConfigStore.h"
#include "StoreConnection.h"
#include "StoreKeys.h"

namespace NimbConfigStore
{
namespace
{
void WriteRecord(const std::string& text)
{
    // The database library has logged a failed write; the old record then stands.
    (void)DBStore::WriteKeyValue(BOOT_APPLY_RESULT, text, GetDBConnection(DBStore::Type::ConfigStore, true));
}
}  // namespace

void clearBootApplyRecord()
{
    WriteRecord(R"({"isBootComplete":false})");
}

void setBootApplyRecord(std::string record)
{
    JsonDocument document(rapidjson::kObjectType);
    JsonAllocator& allocator = document.GetAllocator();
    document.AddMember("isBootComplete", true, allocator);
    document.AddMember("bootApplyRecord",
                       JsonValue(record.data(), static_cast<rapidjson::SizeType>(record.size()), allocator), allocator);
    std::string text;
    ConfigStoreDocument::SerializeValue(document, text);
    WriteRecord(text);
}

rapidjson::Document getBootApplyRecord()
{
    std::string text;
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    if (DBStore::ReadKeyValue(BOOT_APPLY_RESULT, &text, store) != DBStore::SUCCESS) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to read BOOT_APPLY_RESULT from database.");
    }
    JsonDocument record;
    if (!ConfigStoreDocument::ParseText(text, record)) {
        ThrowException<InvalidArgumentException>(CS_ERROR_JSON_TEXT);
    }
    return record;
}
}  // namespace NimbConfigStore
