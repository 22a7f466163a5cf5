#include <string>

#include "CSLogger.h"
#include "ConfigStoreException.h"
#include "KernelInterface.h"
#include "NimbConfigStore.h"
#include "StoreConnection.h"
#include "StoreKeys.h"

namespace NimbConfigStore
{
namespace
{
constexpr std::size_t UUID_SIZE = 38;

// Null when the store cannot be opened: the key/value calls then fail, and say so in the log.
DBStore::ConnectionPtr TryConfigStore()
{
    return DBStore::GetConnection(DBStore::Type::ConfigStore, true);
}

// The database library has logged a failed write; the boot goes on with the old value.
void WriteKey(const char* key, const std::string& value, const DBStore::ConnectionPtr& connection)
{
    (void)DBStore::WriteKeyValue(key, value, connection);
}

void RememberBootFs(const DBStore::ConnectionPtr& store)
{
    const std::string previous = ReadKey(BOOT_FS_UUID, store);
    const std::string current = GetBootFsUUID(true);
    if (previous != current) {
        WriteKey(BOOT_FS_UUID, current, store);
        CSLogger::Log(CSLogger::INFO, "Setting %s to %s.", BOOT_FS_UUID, current.c_str());
    }
}

void TakeLiveInstallMarkBack(const DBStore::ConnectionPtr& store)
{
    if (ReadKey(POST_LIVE_INSTALL_BOOT, store) == TRUE_STR) {
        WriteKey(POST_LIVE_INSTALL_BOOT, FALSE_STR, store);
        CSLogger::Log(CSLogger::INFO, "Setting %s back to %s.", POST_LIVE_INSTALL_BOOT, FALSE_STR);
    }
}
}  // namespace

void StartAutoConf()
{
    const DBStore::ConnectionPtr store = TryConfigStore();
    CSLogger::Log(CSLogger::INFO, "ConfigStore autoconf start");
    WriteKey(IS_BOOT, TRUE_STR, store);
}

void EndAutoConf()
{
    const DBStore::ConnectionPtr store = TryConfigStore();
    CSLogger::Log(CSLogger::INFO, "ConfigStore endconf end");
    WriteKey(IS_BOOT, "", store);
}

bool IsAutoConf()
{
    return ReadKey(IS_BOOT, TryConfigStore()) == TRUE_STR;
}

void EnableTrelldNotification(bool enable)
{
    WriteKey(NOTIFY_TRELLD, enable ? TRUE_STR : FALSE_STR, TryConfigStore());
    CSLogger::Log(CSLogger::INFO, "ConfigStore trelld notification enabled = %d", enable ? 1 : 0);
}

void SetBootMode(BOOTMODE mode)
{
    WriteKey(BOOT_MODE, std::to_string(mode), GetDBConnection(DBStore::Type::ConfigStore, true));
    CSLogger::Log(CSLogger::INFO, "Next boot mode set to %d", static_cast<int>(mode));
}

BOOTMODE GetBootMode()
{
    const std::string mode = ReadKey(BOOT_MODE, GetDBConnection(DBStore::Type::ConfigStore, true));
    return mode.empty() ? BOOTMODE_NONE : static_cast<BOOTMODE>(std::stoi(mode));
}

int SetLiveInstallBoot(const char* status)
{
    if (status == nullptr) {
        CSLogger::Log(CSLogger::ERROR, "Live install marker not set, since input status was not provided.");
        return DBStore::FAILURE;
    }
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    const std::string mark = status == std::string(TRUE_STR) ? TRUE_STR : FALSE_STR;
    if (mark == FALSE_STR && status != mark) {
        CSLogger::Log(CSLogger::INFO, "Set POST_LIVE_INSTALL_BOOT=false, since the inputvalue is not valid value %s",
                      status);
    }
    const int result = DBStore::WriteKeyValue(POST_LIVE_INSTALL_BOOT, mark, store);
    CSLogger::Log(CSLogger::INFO, "POST_LIVE_INSTALL_BOOT=%s completed with rc = %d", mark.c_str(), result);
    return result;
}

void CleanupBootState()
{
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    RememberBootFs(store);
    TakeLiveInstallMarkBack(store);
}

void SetInstallInfo(const std::string& info)
{
    WriteKey(CS_INST_INFO_KEY, info, ConnectToConfigStore());
}

std::string GetInstallInfo()
{
    return ReadKey(CS_INST_INFO_KEY, ConnectToConfigStore());
}

std::string GetBootFsUUID(bool checkInterface)
{
    if (checkInterface) {
        EnsureKernelInterface();
    }
    return ReadKernelText(ZEL_NODE_system_bootFsUUID, UUID_SIZE, "Failed to get boot fs uuid.");
}
}  // namespace NimbConfigStore
