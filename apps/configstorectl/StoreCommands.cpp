#include <algorithm>
#include <cstring>

#include "Commands.h"
#include "HostEvents.h"
#include "HostUtil.h"
#include "StorePaths.h"
#include "StoreReader.h"

namespace ConfigStoreCtl
{
namespace
{
const std::string CONFIG_BACKUP = std::string(NimbConfigStore::BACKUP_FOLDER) + NimbConfigStore::CURRENT_STORE_NAME;
const std::string DATAFILE_BACKUP = std::string(NimbConfigStore::BACKUP_FOLDER) + NimbConfigStore::DATAFILE_STORE_NAME;
const std::string FIRSTBOOT_BACKUP =
    std::string(NimbConfigStore::FIRSTBOOT_BACKUP_FOLDER) + NimbConfigStore::CURRENT_STORE_NAME;

/// A database file, and whether the host is unwell without it.
struct StoreFile
{
    const char* name;
    std::string path;
    bool needed;
};

std::vector<StoreFile> StoreFiles()
{
    return {{"config store", DBStore::StorePath(DBStore::Type::ConfigStore), true},
            {"data-file store", DBStore::StorePath(DBStore::Type::DataFileStore), true},
            {"schema store", DBStore::StorePath(DBStore::Type::SchemaStore), true},
            {"config store backup", CONFIG_BACKUP, false},
            {"data-file store backup", DATAFILE_BACKUP, false},
            {"first-boot backup", FIRSTBOOT_BACKUP, false}};
}

bool MentionsLock(const std::string& line)
{
    return line.find("database is locked") != std::string::npos;
}

/// What the check finds. That another process keeps the file locked, only the log says.
std::string StateOf(const std::string& path)
{
    if (!File_Exists(path.c_str())) {
        return "missing";
    }
    LineTail log(LOG_FILE);
    SkipToEndIfReadable(log);
    if (DBStore::Check(path.c_str())) {
        return "sound";
    }
    const std::vector<std::string> lines = NewLinesIfReadable(log);
    return std::any_of(lines.begin(), lines.end(), MentionsLock) ? "locked" : "damaged";
}

void BackUp(DBStore::Type type, const std::string& path)
{
    RequireStore(type);
    CallWatch watch;
    if (DBStore::Backup(type, path) != DBStore::SUCCESS) {
        watch.ThrowErrors(path + ": cannot be written");
    }
}
}  // namespace

void StoreBackup(const Arguments&, Output& output)
{
    const int reason = HostMakeFolders(NimbConfigStore::BACKUP_FOLDER);
    if (reason != 0) {
        throw CommandFailure(NimbConfigStore::BACKUP_FOLDER,
                             std::string("cannot be created: ") + std::strerror(reason));
    }
    BackUp(DBStore::Type::ConfigStore, CONFIG_BACKUP);
    BackUp(DBStore::Type::DataFileStore, DATAFILE_BACKUP);
    output.Table({{{"STORE", "store"}, {"BACKUP", "backup"}},
                  {{"config store", CONFIG_BACKUP}, {"data-file store", DATAFILE_BACKUP}}});
}

void StoreCheck(const Arguments&, Output& output)
{
    Listing listing{{{"STORE", "store"}, {"FILE", "file"}, {"STATE", "state"}}, {}};
    std::string unwell;
    for (const StoreFile& file : StoreFiles()) {
        const std::string state = StateOf(file.path);
        listing.rows.push_back({file.name, file.path, state});
        if (state != "sound" && (state != "missing" || file.needed)) {
            unwell += (unwell.empty() ? "" : "; ") + file.path + ": is " + state;
        }
    }
    output.Table(listing);
    output.Refuse(unwell);
}
}  // namespace ConfigStoreCtl
