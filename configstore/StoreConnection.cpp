#include "StoreConnection.h"

#include "ConfigStoreException.h"

namespace NimbConfigStore
{
DBStore::ConnectionPtr GetDBConnection(DBStore::Type type, bool required)
{
    DBStore::ConnectionPtr connection = DBStore::GetConnection(type, true);
    if (connection == nullptr && required) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to connect to database");
    }
    return connection;
}

DBStore::ConnectionPtr ConnectToConfigStore()
{
    DBStore::ConnectionPtr connection = DBStore::GetConnection(DBStore::Type::ConfigStore, true);
    if (connection == nullptr) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to connect to database.");
    }
    return connection;
}

std::string ReadKey(const std::string& key, const DBStore::ConnectionPtr& connection)
{
    std::string value;
    if (DBStore::ReadKeyValue(key, &value, connection) != DBStore::SUCCESS) {
        throw ConfigStoreException(CS_ERROR_OPERATION, ("Failed to read value for key " + key).c_str());
    }
    return value;
}
}  // namespace NimbConfigStore
