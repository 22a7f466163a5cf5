#include "NimbConfigUpgrade.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "TestHost.h"
#include "ZubEvents.h"

namespace fs = std::filesystem;
using NimbConfigStore::ZUB_UPGRADE_CONFIG_ERROR;
using NimbConfigUpgrade::ExecuteBootTimeModules;
using NimbConfigUpgrade::ExecuteLiveInstallModules;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{
const std::string FOLDER = "/usr/lib/talvor/configmanager/upgrade/lib/";

class NimbConfigUpgradeTest : public HostTest
{
protected:
    // Installs a test module; gives its logical path.
    std::string Module(const std::string& name)
    {
        const std::string path = FOLDER + name + ".so";
        fs::copy_file(fs::path(UPGRADE_MODULES) / (name + ".so"), Host().Real(path));
        return path;
    }

    std::string Told() { return Host().ReadFile("/var/told"); }

    std::string Line(const char* flags)
    {
        return std::string(flags) + " " + Host().Real("/etc/talvor/configstore/current-store-1") + "\n";
    }

    static RaisedEvent Error(const std::string& name)
    {
        return {"observation", ZUB_UPGRADE_CONFIG_ERROR, "Error in upgrading config " + name + ".", {name}};
    }
};
}  // namespace

TEST_F(NimbConfigUpgradeTest, AModuleIsToldAboutTheHostAndTheStore)
{
    EXPECT_EQ(ExecuteBootTimeModules({Module("success")}, false), 0);
    EXPECT_EQ(Told(), Line("1 0 0"));
    EXPECT_THAT(Host().Events(), IsEmpty());
    EXPECT_THAT(Host().Log(), ElementsAre("info Running upgrade module " + FOLDER + "success.so"));
}

TEST_F(NimbConfigUpgradeTest, TheContextSaysWhatKindOfRunItIs)
{
    const std::string module = Module("success");
    EXPECT_EQ(ExecuteBootTimeModules({module}, true), 0);
    EXPECT_EQ(ExecuteLiveInstallModules({module}), 0);
    EXPECT_EQ(Told(), Line("1 1 0") + Line("1 0 1"));
}

TEST_F(NimbConfigUpgradeTest, NoModulesSucceed)
{
    EXPECT_EQ(ExecuteBootTimeModules({}, true), 0);
    EXPECT_EQ(ExecuteLiveInstallModules({}), 0);
}

TEST_F(NimbConfigUpgradeTest, AFailedModuleIsReportedAndTheRestRun)
{
    EXPECT_EQ(ExecuteBootTimeModules({Module("failure"), Module("success")}, false), 1);
    EXPECT_EQ(Told(), Line("1 0 0"));
    EXPECT_THAT(Host().Events(), ElementsAre(Error("failure.so")));
    EXPECT_THAT(Host().Log(), Contains("error Upgrade module " + FOLDER + "failure.so failed: result 3"));
}

TEST_F(NimbConfigUpgradeTest, ALiveInstallReportsAFailedModuleToo)
{
    EXPECT_EQ(ExecuteLiveInstallModules({Module("failure"), Module("success")}), -1);
    EXPECT_EQ(Told(), Line("1 0 1"));
    EXPECT_THAT(Host().Events(), ElementsAre(Error("failure.so")));
}

TEST_F(NimbConfigUpgradeTest, WithTheDebugFlagTheFirstFailureStopsTheRun)
{
    EXPECT_EQ(ExecuteBootTimeModules({Module("failure"), Module("success")}, true), 1);
    EXPECT_EQ(Told(), "");
    EXPECT_THAT(Host().Events(), ElementsAre(Error("failure.so")));
}

TEST_F(NimbConfigUpgradeTest, AnExceptionIsAFailure)
{
    EXPECT_EQ(ExecuteBootTimeModules({Module("throwing"), Module("throwing_number"), Module("success")}, false), 1);
    EXPECT_EQ(Told(), Line("1 0 0"));
    EXPECT_THAT(Host().Events(), ElementsAre(Error("throwing.so"), Error("throwing_number.so")));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("throwing.so failed: cannot convert")));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("throwing_number.so failed: an exception of unknown type")));
}

TEST_F(NimbConfigUpgradeTest, AModuleWithoutTheEntryIsAFailure)
{
    EXPECT_EQ(ExecuteBootTimeModules({Module("without_entry")}, false), 1);
    EXPECT_THAT(Host().Events(), ElementsAre(Error("without_entry.so")));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("failed: it does not export ConfigUpgrade_Run")));
}

TEST_F(NimbConfigUpgradeTest, AModuleThatWasCutOffIsAFailure)
{
    const std::string module = Module("success");
    fs::resize_file(Host().Real(module), fs::file_size(Host().Real(module)) / 8);
    EXPECT_EQ(ExecuteBootTimeModules({module}, false), 1);
    EXPECT_THAT(Host().Events(), ElementsAre(Error("success.so")));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("success.so failed: it is no shared object, or it was cut off")));
}

TEST_F(NimbConfigUpgradeTest, WhatIsNoModuleIsAFailure)
{
    Host().WriteFile(FOLDER + "text.so", "not a shared object");
    Host().MakeFolder(FOLDER + "folder.so");
    EXPECT_EQ(ExecuteBootTimeModules({FOLDER + "text.so", FOLDER + "folder.so", FOLDER + "missing.so", "", "libc.so.6"},
                                     false),
              1);
    EXPECT_THAT(Host().Events(),
                ElementsAre(Error("text.so"), Error("folder.so"), Error("missing.so"), Error(""), Error("libc.so.6")));
}

TEST_F(NimbConfigUpgradeTest, APipeInPlaceOfAModuleIsNotWaitedFor)
{
    ASSERT_EQ(mkfifo(Host().Real(FOLDER + "pipe.so").c_str(), 0600), 0);
    EXPECT_EQ(ExecuteBootTimeModules({FOLDER + "pipe.so"}, false), 1);
    EXPECT_THAT(Host().Events(), ElementsAre(Error("pipe.so")));
}

TEST_F(NimbConfigUpgradeTest, AModuleBehindAnAbsoluteLinkIsFoundInsideTheRoot)
{
    const std::string module = Module("success");
    fs::create_symlink(module, Host().Real("/etc/module.so"));
    EXPECT_EQ(ExecuteBootTimeModules({"/etc/module.so"}, false), 0);
    EXPECT_EQ(Told(), Line("1 0 0"));
}
