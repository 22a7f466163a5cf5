#pragma once

#include <string>
#include <vector>

#pragma GCC visibility push(default)

/// What an upgrade module is told. A module is a shared object that exports
/// `extern "C" int ConfigUpgrade_Run(const ConfigUpgradeContext*)`; its result 0 is success.
extern "C" struct ConfigUpgradeContext
{
    int version;            ///< of this structure: 1
    int debug;              ///< 1 when the run stops at the first failure
    int liveInstall;        ///< 1 when software was installed without a reboot
    const char* hostRoot;   ///< real folder that stands for "/" on this host
    const char* storePath;  ///< real path of the config store's database file
};

namespace NimbConfigUpgrade
{
/// Runs the modules (logical paths) in the order given. Each that cannot be opened, lacks the entry or fails is
/// logged and raises "zub.user.cs.upgrade.config.error" with its file name; the rest run, unless @p debug is set.
/// A module that ends by an exception has failed. @return 0 when every module succeeded, else 1.
int ExecuteBootTimeModules(const std::vector<std::string>& modules, bool debug);

/// The same after a live install. @return 0, or -1 when a module failed.
int ExecuteLiveInstallModules(const std::vector<std::string>& modules);
}  // namespace NimbConfigUpgrade

#pragma GCC visibility pop
