#include "ConfigurationUpgrade.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "BootHost.h"

using NimbConfigStore::UpgradeConfiguration;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{
constexpr const char* MARKER = "/tmp/config-upgrade-marker";
constexpr const char* MODULES = "/usr/lib/talvor/configmanager/upgrade/lib";
constexpr const char* CLEANED = "info Cleanup data file store completed";

class ConfigurationUpgradeTest : public BootHostTest
{
protected:
    void InstallModule(const std::string& module, const std::string& as)
    {
        std::filesystem::copy_file(UPGRADE_MODULES + ("/" + module) + ".so", Host().Real(MODULES + ("/" + as)));
    }

    std::string Told() { return Host().ReadFile("/var/told"); }
};
}  // namespace

TEST_F(ConfigurationUpgradeTest, ModulesRunAndOrphansAreCleaned)
{
    InstallModule("success", "a.so");
    AddRow("network/unknown", "", "{}");
    UpgradeConfiguration();
    EXPECT_THAT(Told(), HasSubstr("1 0 0 "));
    EXPECT_EQ(UserValue("network/unknown"), "none");
    EXPECT_THAT(Host().Log(),
                ElementsAre("info Configuration upgrade started.",
                            "info Running upgrade module " + std::string(MODULES) + "/a.so",
                            "info Configuration upgrade completed successfully.", "info Cleanup config store",
                            "info Cleanup config store completed", "info Cleanup data file store", CLEANED));
    EXPECT_EQ(Host().ReadFile(MARKER), "");
    EXPECT_TRUE(Host().Exists(MARKER));
}

TEST_F(ConfigurationUpgradeTest, OnlyFilesThatEndInExactlySoAreModules)
{
    for (const char* name : {"a.SO", "b.so.1", "c.txt", "so", ".so"}) {
        Host().WriteFile(MODULES + ("/" + std::string(name)), "no module");
    }
    UpgradeConfiguration();
    EXPECT_THAT(Host().Log(), Contains("info Configuration upgrade completed successfully."));
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}

TEST_F(ConfigurationUpgradeTest, AfterAFailureTheOtherModulesAndTheCleanupRun)
{
    InstallModule("success", "a.so");
    InstallModule("failure", "b.so");
    InstallModule("success", "c.so");
    UpgradeConfiguration();
    const std::string told = Told();
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 2);
    EXPECT_THAT(Host().Log(), Contains("error Configuration upgrade failed."));
    EXPECT_EQ(Host().Log().back(), CLEANED);
    EXPECT_THAT(Host().EventIds(), ElementsAre("zub.user.cs.upgrade.config.error"));
}

TEST_F(ConfigurationUpgradeTest, ADebugUpgradeTellsItsModulesSo)
{
    Host().WithKernel({.bootCmdLine = "quiet no-configupgrade-psod"});
    InstallModule("success", "a.so");
    UpgradeConfiguration();
    EXPECT_THAT(Told(), HasSubstr("1 1 0 "));
}

TEST_F(ConfigurationUpgradeTest, AMissingModuleFolderIsNamedAndTheUpgradeGoesOn)
{
    Host().Remove(MODULES);
    UpgradeConfiguration();
    EXPECT_THAT(Host().Log(), Contains(AllOf(HasSubstr("warning"), HasSubstr(MODULES))));
    EXPECT_THAT(Host().Log(), Contains("info Configuration upgrade completed successfully."));
    EXPECT_EQ(Host().Log().back(), CLEANED);
}

TEST_F(ConfigurationUpgradeTest, AModuleFolderThatCannotBeListedFailsTheUpgradeAndTheCleanupRuns)
{
    Host().Remove(MODULES);
    Host().WriteFile(MODULES, "no folder");
    UpgradeConfiguration();
    const std::string folder = MODULES;
    EXPECT_THAT(
        Host().Log(),
        ElementsAre("info Configuration upgrade started.",
                    "error Upgrade modules not run: filesystem error: cannot list: Not a directory [" + folder + "]",
                    "error Configuration upgrade failed.", "info Cleanup config store",
                    "info Cleanup config store completed", "info Cleanup data file store", CLEANED));
}

TEST_F(ConfigurationUpgradeTest, AnOldMarkerIsEmptied)
{
    Host().WriteFile(MARKER, "old");
    UpgradeConfiguration();
    EXPECT_EQ(Host().ReadFile(MARKER), "");
}

TEST_F(ConfigurationUpgradeTest, TheMarkerIsNotWrittenThroughALink)
{
    Host().WriteFile("/etc/precious", "text");
    std::filesystem::create_symlink("/etc/precious", Host().Real(MARKER));
    UpgradeConfiguration();
    EXPECT_EQ(Host().ReadFile("/etc/precious"), "text");
    EXPECT_EQ(Host().Log().back(), CLEANED);
}

TEST_F(ConfigurationUpgradeTest, AMarkerThatCannotBeCreatedIsIgnored)
{
    ASSERT_EQ(mkfifo(Host().Real(MARKER).c_str(), 0600), 0);  // opening it would wait for a reader
    UpgradeConfiguration();
    EXPECT_EQ(Host().Log().back(), CLEANED);
    Host().Remove("/tmp");
    UpgradeConfiguration();
    EXPECT_FALSE(Host().Exists(MARKER));
}
