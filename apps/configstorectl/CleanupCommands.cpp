#include "Commands.h"
#include "HostEvents.h"
#include "InspectStatements.h"
#include "NimbConfigStore.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
namespace
{
std::int64_t Count(DBStore::Type type, const char* statement)
{
    return std::strtoll(ReadRows(type, statement).at(0).at(0).value_or("0").c_str(), nullptr, 10);
}

struct RowCounts
{
    std::int64_t config = Count(DBStore::Type::ConfigStore, Statements::COUNT_CONFIG);
    std::int64_t dataFiles = Count(DBStore::Type::DataFileStore, Statements::COUNT_DATAFILES);
};
}  // namespace

void CleanupAutoConf(const Arguments&, Output& output)
{
    const std::int64_t before = Count(DBStore::Type::ConfigStore, Statements::COUNT_CONFIG);
    CallWatch watch;
    NimbConfigStore::CleanupAutoConfig();
    watch.ThrowErrors();
    output.Record(
        {{{"rows removed", "rowsRemoved"}}, {{before - Count(DBStore::Type::ConfigStore, Statements::COUNT_CONFIG)}}});
}

void CleanupStores(const Arguments& arguments, Output& output)
{
    const RowCounts before;
    CallWatch watch;
    NimbConfigStore::CleanupStore(!arguments.Has("--live"));
    watch.ThrowErrors();
    const RowCounts after;
    output.Record({{{"rows removed", "rowsRemoved"}, {"data-file records removed", "dataFileRecordsRemoved"}},
                   {{before.config - after.config, before.dataFiles - after.dataFiles}}});
}

void CleanupFiles(const Arguments&, Output& output)
{
    const std::int64_t before = Count(DBStore::Type::DataFileStore, Statements::COUNT_DATAFILES);
    CallWatch watch;
    NimbConfigStore::CleanupDataFiles();
    watch.ThrowErrors();
    output.Record({{{"data-file records removed", "dataFileRecordsRemoved"}},
                   {{before - Count(DBStore::Type::DataFileStore, Statements::COUNT_DATAFILES)}}});
}
}  // namespace ConfigStoreCtl
