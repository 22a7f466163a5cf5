#include "RestoreBackup.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "CSLogger.h"
#include "DBStore.h"
#include "Files.h"
#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "StorePaths.h"
#include "ZubEvents.h"

namespace NimbConfigStore
{
namespace
{
/// Removes a file of which nobody needs to know; 0 or an errno. One that is not there is no error.
int RemoveQuietly(const std::string& path)
{
    return unlink(HostPathNoFollow(path).c_str()) == 0 || errno == ENOENT ? 0 : errno;
}

// Before another store takes its place: SQLite would replay into it what an older one left beside it.
// The journal goes last, and not before the others have gone: a store that stays has nothing but that to undo a change.
int RemoveJournals(const std::string& store)
{
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        if (const int reason = RemoveQuietly(store + suffix)) {
            CSLogger::Log(CSLogger::ERROR, "Cannot remove %s%s: %s", store.c_str(), suffix, strerror(reason));
            return reason;
        }
    }
    return 0;
}

void RemoveStaleConfigStore()
{
    if (FileExists(CURRENT_STORE_FILE)) {
        if (const int reason = RemoveQuietly(CURRENT_STORE_FILE)) {
            CSLogger::Log(CSLogger::ERROR, "Cannot remove %s: %s", CURRENT_STORE_FILE, strerror(reason));
            CSLogger::Log(CSLogger::ERROR, "Error removing sticky ConfigStore file");
            return;  // a store that stays needs its journals
        }
    }
    (void)RemoveJournals(CURRENT_STORE_FILE);  // a backup that takes the store's place asks again
}

// Until the copy is whole the store may have to stay in service, and then needs the journals beside it.
int ReplaceStore(const std::string& backup, const std::string& store)
{
    const std::string restored = store + ".restored";
    if (const int reason = HostCopyFile(backup, restored)) {
        return reason;
    }
    int reason = RemoveJournals(store);
    if (reason == 0 && rename(HostPathNoFollow(restored).c_str(), HostPathNoFollow(store).c_str()) != 0) {
        reason = errno;
    }
    if (reason != 0) {
        (void)RemoveQuietly(restored);  // the next restore replaces one that stays
    }
    return reason;
}

bool CopyStore(const std::string& backup, const char* store)
{
    const int reason = ReplaceStore(backup, store);
    if (reason != 0) {
        CSLogger::Log(CSLogger::ERROR, "Cannot copy %s to %s: %s", backup.c_str(), store, strerror(reason));
    }
    return reason == 0;
}

std::string ChooseConfigBackup()
{
    for (const char* folder : {BACKUP_FOLDER, FIRSTBOOT_BACKUP_FOLDER}) {
        std::string backup = std::string(folder) + CURRENT_STORE_NAME;
        if (FileExists(backup.c_str())) {
            return backup;
        }
    }
    return "";
}

// False when the host has to start with a new config store.
bool RestoreConfigStore()
{
    const std::string backup = ChooseConfigBackup();
    const char* path = backup.c_str();
    if (backup.empty()) {
        CSLogger::Log(CSLogger::INFO, "ConfigStore backup not found %s", path);
        return false;
    }
    CSLogger::Log(CSLogger::INFO, "Restore ConfigStore from %s", path);
    const char* failure = nullptr;
    if (!DBStore::Check(path)) {
        failure = "ConfigStore backup [%s] is inconsistent, creating new ConfigStore.";
    } else if (!CopyStore(backup, CURRENT_STORE_FILE)) {
        failure = "Cannot copy ConfigStore from backup [%s], creating new ConfigStore.";
    }
    if (failure != nullptr) {
        CSLogger::Log(CSLogger::ERROR, failure, path);
        DumpZub(ZUB_CREATESTORE_COPY_BACKUP_ERROR, 1, path);
        return false;
    }
    CSLogger::Log(CSLogger::INFO, "ConfigStore restored successfully from backup");
    return true;
}

void ReportDataFileStoreFailure(const char* format, const char* path)
{
    CSLogger::Log(CSLogger::ERROR, format, path);
    DumpZub(ZUB_DFS_RESTORE_ERROR, 0);
}

void RestoreDataFileStore()
{
    const std::string backup = std::string(BACKUP_FOLDER) + DATAFILE_STORE_NAME;
    const char* path = backup.c_str();
    if (!FileExists(path)) {
        CSLogger::Log(CSLogger::INFO, "DataFileStore backup not found %s", path);
        return;
    }
    if (!DBStore::Check(path)) {
        ReportDataFileStoreFailure("DataFileStore backup [%s] is inconsistent, will create new DataFileStore.", path);
        return;
    }
    CSLogger::Log(CSLogger::INFO, "DataFileStore backup [%s] is valid.", path);
    if (!CopyStore(backup, DATAFILE_STORE_FILE)) {
        ReportDataFileStoreFailure("Cannot copy DataFileStore from backup [%s], will create new DataFileStore.", path);
        return;
    }
    CSLogger::Log(CSLogger::INFO, "DataFileStore restored successfully from backup");
}
}  // namespace

int RestoreFromBackup(bool restore)
{
    if (!restore) {
        return 0;
    }
    RemoveStaleConfigStore();
    const bool isNew = !RestoreConfigStore();
    RestoreDataFileStore();
    if (DBStore::CreateDatabases() != DBStore::SUCCESS) {
        DumpZub(ZUB_DB_OPERATION_ERROR, 0);
    }
    if (isNew) {
        SetBootMode(BOOTMODE_BOOT_CONFIG);
    }
    return isNew ? 1 : 0;
}
}  // namespace NimbConfigStore
