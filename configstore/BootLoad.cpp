#include <syslog.h>

#include <exception>
#include <string>

#include "CSLogger.h"
#include "ConfigurationUpgrade.h"
#include "EarlierErrors.h"
#include "FilesWithoutSchema.h"
#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "RestoreBackup.h"
#include "StagedConfiguration.h"
#include "SysAlert.h"

namespace NimbConfigStore
{
namespace
{
constexpr const char* BOOT_LOG = "configstore-boot";

void RefreshSchemasIfSoftwareChanged()
{
    if (HasBootbankChanged() || IsSkorlInstalled()) {
        (void)ProcessSchemas({});  // bad files are logged and raised there; the last good schemas serve this boot
    }
}

void UpgradeIfSoftwareChanged()
{
    if (IsUpgrade()) {
        UpgradeConfiguration();
    }
}

void ReportFailure(const std::exception& failure)
{
    SetLSSysAlert(std::string("Generic ConfigStore Failure: ") + failure.what());
    HostSyslog(LOG_ERR, "Generic ConfigStore Failure: %s", failure.what());
}
}  // namespace

int LoadStore(bool restore)
{
    const CSLogger::FileLoggerHandle bootLog = CSLogger::AddFileLogger(BOOT_LOG);
    try {
        CSLogger::Log(CSLogger::INFO, "LoadStore Start.");
        (void)RestoreFromBackup(restore);  // a new store has its boot mode, which is read below
        RefreshSchemasIfSoftwareChanged();
        CleanupAutoConfig();
        UpgradeIfSoftwareChanged();
        ApplyStagedConfiguration();
        StartAutoConf();
        SetBootMode(BOOTMODE_NONE);
        RemoveFilesWithoutSchema();
        CSLogger::Log(CSLogger::INFO, "LoadStore End.");
        RaiseEarlierErrors();
        clearBootApplyRecord();
    } catch (const std::exception& failure) {
        // The boot log stays registered: what the host does about the failure belongs in it.
        ReportFailure(failure);
        return 1;
    }
    CSLogger::RemoveFileLogger(bootLog);
    return 0;
}
}  // namespace NimbConfigStore
