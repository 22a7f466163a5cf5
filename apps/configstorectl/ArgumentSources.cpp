#include "ArgumentSources.h"

#include <algorithm>
#include <iterator>

#include "BootModes.h"
#include "InspectStatements.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
namespace
{
std::vector<std::string> Objects(DBStore::Type type, const char* statement)
{
    const std::vector<StoreRow> rows = ReadRows(type, statement);
    std::vector<std::string> objects;
    std::transform(rows.begin(), rows.end(), std::back_inserter(objects), ObjectOf);
    return objects;
}
}  // namespace

std::vector<std::string> BootModeNames()
{
    std::vector<std::string> names;
    for (int mode = NimbConfigStore::BOOTMODE_NONE; mode <= NimbConfigStore::BOOTMODE_HOSTAPI; ++mode) {
        names.emplace_back(BootModeName(mode));
    }
    return names;
}

std::vector<std::string> Truths()
{
    return {"true", "false"};
}

std::vector<std::string> StoredObjects()
{
    return Objects(DBStore::Type::ConfigStore, Statements::OBJECTS_OF_CONFIG);
}

std::vector<std::string> DefaultObjects()
{
    return Objects(DBStore::Type::ConfigStore, Statements::OBJECTS_OF_DEFAULTS);
}

std::vector<std::string> SchemaObjects()
{
    return Objects(DBStore::Type::SchemaStore, Statements::OBJECTS_OF_SCHEMAS);
}
}  // namespace ConfigStoreCtl
