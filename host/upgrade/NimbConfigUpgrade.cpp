#include "NimbConfigUpgrade.h"

#include <dlfcn.h>

#include <exception>
#include <memory>
#include <stdexcept>

#include "CSLogger.h"
#include "DBStore.h"
#include "HostUtil.h"
#include "ModuleFile.h"
#include "ZubEvents.h"

namespace
{
constexpr int CONTEXT_VERSION = 1;
const char* const ENTRY = "ConfigUpgrade_Run";

using Entry = int (*)(const ConfigUpgradeContext*);
using ModulePtr = std::unique_ptr<void, int (*)(void*)>;

ModulePtr OpenModule(const std::string& path)
{
    // Resolved first: a name without a folder would be searched for among the system's libraries.
    const std::optional<std::string> resolved = HostRealPath(path);
    if (!resolved.has_value()) {
        throw std::runtime_error("no such file");
    }
    const std::string realPath = HostPath(*resolved);
    if (!IsWholeModule(realPath)) {
        throw std::runtime_error("it is no shared object, or it was cut off");
    }
    ModulePtr module(dlopen(realPath.c_str(), RTLD_NOW | RTLD_LOCAL), dlclose);
    if (module == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return module;
}

int RunEntry(void* module, const ConfigUpgradeContext& context)
{
    const auto entry = reinterpret_cast<Entry>(dlsym(module, ENTRY));
    if (entry == nullptr) {
        throw std::runtime_error("it does not export " + std::string(ENTRY));
    }
    return entry(&context);
}

// Why the module failed; empty when it succeeded. An exception is done with before its module is closed, which holds
// the code that destroys it.
std::string FailureOf(void* module, const ConfigUpgradeContext& context)
{
    try {
        const int result = RunEntry(module, context);
        return result == 0 ? "" : "result " + std::to_string(result);
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return "an exception of unknown type";
    }
}

std::string RunModule(const std::string& path, const ConfigUpgradeContext& context)
{
    try {
        const ModulePtr module = OpenModule(path);
        return FailureOf(module.get(), context);
    } catch (const std::exception& e) {
        return e.what();
    }
}

void ReportFailure(const std::string& path, const std::string& reason)
{
    CSLogger::Log(CSLogger::ERROR, "Upgrade module %s failed: %s", path.c_str(), reason.c_str());
    const std::string name = path.substr(path.find_last_of('/') + 1);
    NimbConfigStore::DumpZub(NimbConfigStore::ZUB_UPGRADE_CONFIG_ERROR, 1, name.c_str());
}

bool RunModules(const std::vector<std::string>& modules, bool debug, bool liveInstall)
{
    const std::string store = HostPath(DBStore::StorePath(DBStore::Type::ConfigStore));
    const ConfigUpgradeContext context = {CONTEXT_VERSION, debug, liveInstall, HostRoot().c_str(), store.c_str()};
    bool succeeded = true;
    for (const std::string& path : modules) {
        CSLogger::Log(CSLogger::INFO, "Running upgrade module %s", path.c_str());
        const std::string failure = RunModule(path, context);
        if (!failure.empty()) {
            ReportFailure(path, failure);
            succeeded = false;
        }
        if (!succeeded && debug) {
            break;
        }
    }
    return succeeded;
}
}  // namespace

namespace NimbConfigUpgrade
{
int ExecuteBootTimeModules(const std::vector<std::string>& modules, bool debug)
{
    return RunModules(modules, debug, false) ? 0 : 1;
}

int ExecuteLiveInstallModules(const std::vector<std::string>& modules)
{
    return RunModules(modules, false, true) ? 0 : -1;
}
}  // namespace NimbConfigUpgrade
