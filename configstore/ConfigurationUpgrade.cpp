#include "ConfigurationUpgrade.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "CSLogger.h"
#include "Files.h"
#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "NimbConfigUpgrade.h"
#include "StorePaths.h"

namespace NimbConfigStore
{
namespace
{
// Anyone may create files in the marker's folder: a link must not be followed, a pipe must not be waited for.
void CreateUpgradeMarker()
{
    const int marker =
        HostOpen(UPGRADE_MARKER_FILE, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR);
    if (marker >= 0)  // the upgrade does not depend on its marker
    {
        close(marker);
    }
}

std::vector<std::string> ListUpgradeModules()
{
    std::vector<std::string> modules;
    for (const std::string& name : ListFolder(UPGRADE_MODULE_FOLDER)) {
        if (std::filesystem::path(name).extension() == ".so") {
            modules.push_back(std::string(UPGRADE_MODULE_FOLDER) + "/" + name);
        }
    }
    return modules;
}

// A host without the folder has no modules to run. From any other folder that cannot be listed none is run: a part of
// them could leave the configuration half upgraded.
bool RunUpgradeModules()
{
    std::vector<std::string> modules;
    try {
        modules = ListUpgradeModules();
    } catch (const std::filesystem::filesystem_error& failure) {
        if (failure.code() != std::errc::no_such_file_or_directory) {
            CSLogger::Log(CSLogger::ERROR, "Upgrade modules not run: %s", failure.what());
            return false;
        }
        CSLogger::Log(CSLogger::WARNING, "No upgrade modules: %s", failure.what());
    }
    return NimbConfigUpgrade::ExecuteBootTimeModules(modules, IsDebugUpgrade()) == 0;
}
}  // namespace

void UpgradeConfiguration()
{
    CreateUpgradeMarker();
    CSLogger::Log(CSLogger::INFO, "Configuration upgrade started.");
    if (RunUpgradeModules()) {
        CSLogger::Log(CSLogger::INFO, "Configuration upgrade completed successfully.");
    } else {
        CSLogger::Log(CSLogger::ERROR, "Configuration upgrade failed.");
    }
    CleanupStore(true);
}
}  // namespace NimbConfigStore
