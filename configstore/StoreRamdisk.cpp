#include "StoreRamdisk.h"

#include <cstring>
#include <memory>

#include "CSLogger.h"
#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "StorePaths.h"
#include "ZEL.h"

namespace NimbConfigStore
{
namespace
{
struct Ramdisk
{
    const char* mountPoint;
    const char* data;  // its last field names the ramdisk
};

constexpr const char* STORE_RAMDISK_NAME = "configstore";
constexpr Ramdisk STORE_RAMDISK = {STORE_FOLDER, "32,32,0,0,0,00644,configstore"};
constexpr Ramdisk BACKUP_RAMDISK = {BACKUP_FOLDER, "32,32,0,0,0,00644,configstorebkp"};
constexpr Ramdisk SHRINKABLE_BACKUP_RAMDISK = {BACKUP_FOLDER, "0,32,0,0,0,00644,configstorebkp"};

constexpr std::int64_t WARNING_PERCENT = 80;
constexpr std::int64_t ERROR_PERCENT = 90;

using ParamListPtr = std::unique_ptr<ZEL_ParamList, void (*)(ZEL_ParamList*)>;

[[noreturn]] void Fail(const char* function, const std::string& message)
{
    CSLogger::Log(CSLogger::ERROR, "CONFIGSTORE:%s:%s", function, message.c_str());
    throw ConfigStoreException(CS_ERROR_OPERATION, message.c_str());
}

void Mount(const Ramdisk& ramdisk, const char* failure)
{
    const int reason = HostMount("none", ramdisk.mountPoint, "quenfs", 0, ramdisk.data);
    if (reason != 0) {
        CSLogger::Log(CSLogger::WARNING, "Cannot mount a ramdisk at %s: %s", ramdisk.mountPoint, std::strerror(reason));
        Fail("SetupStoreRamDisk", failure);
    }
}

void RequireLimit(ORV_ReturnStatus status, const std::string& failure)
{
    if (status != ORV_OK) {
        Fail("SetupStoreRamdiskUsageLimits", failure);
    }
}

std::string WithStatus(const std::string& text, ORV_ReturnStatus status)
{
    return text + ORV_ReturnStatusToString(status);
}
}  // namespace

void SetupStoreRamdiskUsageLimits(const std::string& ramdisk)
{
    RequireLimit(ZEL_CheckSig(ZEL_DefsMD5Sum, ZEL_INTERFACE_VERSION), "ZEL_CheckSig Failed");

    const ParamListPtr instance(ZEL_ParamListCreate(1, 1), ZEL_ParamListDestroy);
    ORV_ReturnStatus status = ZEL_ParamListAddString(instance.get(), ramdisk.c_str());
    RequireLimit(status, WithStatus("Failed to add ramdisk(" + ramdisk + ") to ZEL_ParamList: ", status));

    const ParamListPtr limits(ZEL_ParamListCreate(0, 2), ZEL_ParamListDestroy);
    status = ZEL_ParamListAddInt(limits.get(), WARNING_PERCENT);
    RequireLimit(status, WithStatus("Failed to add warning limit to ramdisk(" + ramdisk + "): ", status));
    status = ZEL_ParamListAddInt(limits.get(), ERROR_PERCENT);
    RequireLimit(status, WithStatus("Failed to add error limit to ramdisk(" + ramdisk + "): ", status));

    RequireLimit(ZEL_Set(ZEL_NODE_system_quenfs_ramdisks_memUsageLimit, instance.get(), limits.get(), nullptr, nullptr),
                 "Failed to set warning and error usage limits");
}

int SetupStoreRamDisk()
{
    Mount(STORE_RAMDISK, "Failed to reserve memory for ConfigStore");
    SetupStoreRamdiskUsageLimits(STORE_RAMDISK_NAME);
    const bool shrinkable = FeatureState_InitSilentMode().shrinkableBackupRamdisk;
    Mount(shrinkable ? SHRINKABLE_BACKUP_RAMDISK : BACKUP_RAMDISK, "Failed to reserve memory for ConfigStore backup");
    return 0;
}
}  // namespace NimbConfigStore
