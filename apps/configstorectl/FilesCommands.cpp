#include <algorithm>

#include "Commands.h"
#include "HostEvents.h"
#include "NimbConfigStore.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
namespace
{
void Track(const std::vector<std::string>& files, NimbConfigStore::FileType type, const char* list, Output& output)
{
    CallWatch watch;
    NimbConfigStore::TrackFiles(files, type);
    watch.ThrowErrors();
    output.Record({{{"list", "list"}, {"files", "files"}}, {{list, files}}});
}
}  // namespace

void FilesList(const Arguments&, Output& output)
{
    RequireStore(DBStore::Type::SchemaStore);
    const auto files = NimbConfigStore::GetBrevFiles();
    Listing listing{{{"PERSISTENCE", "persistence"}, {"FILE", "file"}}, {}};
    for (const char* persistence : {"vital", "cached", "config"}) {
        for (const std::string& file : files.at(persistence)) {
            listing.rows.push_back({persistence, file});
        }
    }
    output.Table(listing);
}

void FilesFilter(const Arguments& arguments, Output& output)
{
    RequireStore(DBStore::Type::SchemaStore);
    const std::vector<std::string> kept = NimbConfigStore::FilterStickyBitFiles(arguments.values);
    Listing listing{{{"FILE", "file"}, {"PERSISTS", "persists"}}, {}};
    for (const std::string& file : arguments.values) {
        listing.rows.push_back({file, std::find(kept.begin(), kept.end(), file) != kept.end()});
    }
    output.Table(listing);
}

void FilesTrackBackup(const Arguments& arguments, Output& output)
{
    Track(arguments.values, NimbConfigStore::FileType::Backup, "/var/run/talvor/files/backup-list", output);
}

void FilesTrackNonSchema(const Arguments& arguments, Output& output)
{
    Track(arguments.values, NimbConfigStore::FileType::NonSchema, "/var/run/nonSchemaFiles", output);
}
}  // namespace ConfigStoreCtl
