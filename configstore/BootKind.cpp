#include <array>
#include <string>

#include "CSLogger.h"
#include "ConfigStoreException.h"
#include "Files.h"
#include "KernelInterface.h"
#include "NimbConfigStore.h"
#include "StoreConnection.h"
#include "StoreKeys.h"
#include "StorePaths.h"

namespace NimbConfigStore
{
namespace
{
constexpr std::size_t COMMAND_LINE_SIZE = 4096;
constexpr std::size_t MAC_SIZE = 21;

// Words of the boot command line, found anywhere in it.
constexpr const char* DISK_IMAGE_WORD = "nimbDDImage";
constexpr const char* INSTALLER_WORD = "skorlInstalled";
constexpr const char* DEBUG_UPGRADE_WORD = "no-configupgrade-psod";

std::string BootCommandLine()
{
    return ReadKernelText(ZEL_NODE_system_bootCmdLine, COMMAND_LINE_SIZE, "Failed to get boot command line");
}

bool Contains(const std::string& commandLine, const char* word)
{
    return commandLine.find(word) != std::string::npos;
}

bool IsNetworkBoot()
{
    return !ReadKernelText(ZEL_NODE_system_bootMAC, MAC_SIZE, "Failed to get boot nic mac address.").empty();
}

bool IsInstallerMediaBoot()
{
    std::array<unsigned char, 4> option = {};
    if (ZEL_Get(ZEL_NODE_system_bootOption, nullptr, option.data(), option.size()) != ORV_OK) {
        throw ConfigStoreException(CS_ERROR_OPERATION, "Failed to get ZEL /system/bootOption");
    }
    return option[3] != 0;
}

// Why this boot cannot be an upgrade, whatever else speaks for one; null when nothing does.
const char* WhyNotConsideredUpgrade(const std::string& commandLine)
{
    if (IsNetworkBoot()) {
        return "PXE boot, not considered upgrade.";
    }
    if (IsInstallerMediaBoot()) {
        return "Installer boot, not considered upgrade.";
    }
    if (Contains(commandLine, DISK_IMAGE_WORD)) {
        return "NIMB DD image boot, not considered upgrade.";
    }
    return FileExists(FIRSTBOOT_FILE) ? "First boot, not considerd upgrade." : nullptr;
}

// Unlike HasBootbankChanged, two empty UUIDs are no upgrade here.
bool BootFsDiffers(const DBStore::ConnectionPtr& store)
{
    const std::string current = GetBootFsUUID(false);
    CSLogger::Log(CSLogger::INFO, "Current boot fs uuid: %s", current.c_str());
    const std::string previous = ReadKey(BOOT_FS_UUID, store);
    CSLogger::Log(CSLogger::INFO, "Previous boot fs uuid: %s", previous.c_str());
    return current != previous;
}
}  // namespace

bool IsInstalled()
{
    EnsureKernelInterface();
    return !IsNetworkBoot() && !IsInstallerMediaBoot();
}

bool IsDebugUpgrade()
{
    EnsureKernelInterface();
    return Contains(BootCommandLine(), DEBUG_UPGRADE_WORD);
}

bool IsSkorlInstalled()
{
    const std::string commandLine = BootCommandLine();
    CSLogger::Log(CSLogger::INFO, "BootCmdLine: %s", commandLine.c_str());
    return Contains(commandLine, INSTALLER_WORD);
}

bool HasBootbankChanged()
{
    EnsureKernelInterface();
    const std::string current = GetBootFsUUID(false);
    const std::string previous = ReadKey(BOOT_FS_UUID, ConnectToConfigStore());
    if (!current.empty() && current == previous) {
        CSLogger::Log(CSLogger::INFO, "Bootbank did not change from previous boot.");
        return false;
    }
    CSLogger::Log(CSLogger::INFO, "Bootbank changed %s!=%s", current.c_str(), previous.c_str());
    return true;
}

bool IsUpgrade()
{
    EnsureKernelInterface();
    const std::string commandLine = BootCommandLine();
    if (const char* reason = WhyNotConsideredUpgrade(commandLine)) {
        CSLogger::Log(CSLogger::INFO, "%s", reason);
        return false;
    }
    if (Contains(commandLine, INSTALLER_WORD)) {
        CSLogger::Log(CSLogger::INFO, "Skorl installer upgrade: Config upgrade boot.");
        return true;
    }
    const DBStore::ConnectionPtr store = ConnectToConfigStore();
    if (ReadKey(POST_LIVE_INSTALL_BOOT, store) == TRUE_STR) {
        CSLogger::Log(CSLogger::INFO, "Live install boot. No upgrade.");
        return false;
    }
    if (!BootFsDiffers(store)) {
        return false;
    }
    CSLogger::Log(CSLogger::INFO, "Config upgrade boot");
    return true;
}
}  // namespace NimbConfigStore
