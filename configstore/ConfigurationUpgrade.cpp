#include "ConfigurationUpgrade.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>
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

// A host without the folder has no modules to run.
std::vector<std::string> ListUpgradeModules()
{
    std::vector<std::string> modules;
    try {
        for (const std::string& name : ListFolder(UPGRADE_MODULE_FOLDER)) {
            if (std::filesystem::path(name).extension() == ".so") {
                modules.push_back(std::string(UPGRADE_MODULE_FOLDER) + "/" + name);
            }
        }
    } catch (const std::filesystem::filesystem_error& failure) {
        CSLogger::Log(CSLogger::WARNING, "No upgrade modules: %s", failure.what());
    }
    return modules;
}
}  // namespace

void UpgradeConfiguration()
{
    CreateUpgradeMarker();
    CSLogger::Log(CSLogger::INFO, "Configuration upgrade started.");
    const std::vector<std::string> modules = ListUpgradeModules();
    if (NimbConfigUpgrade::ExecuteBootTimeModules(modules, IsDebugUpgrade()) == 0) {
        CSLogger::Log(CSLogger::INFO, "Configuration upgrade completed successfully.");
    } else {
        CSLogger::Log(CSLogger::ERROR, "Configuration upgrade failed.");
    }
    CleanupStore(true);
}
}  // namespace NimbConfigStore
