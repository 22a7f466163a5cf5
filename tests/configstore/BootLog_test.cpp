#include <gmock/gmock.h>

#include <filesystem>

#include "BootHost.h"
#include "GoldenFile.h"
#include "NimbConfigStore.h"
#include "StoreFiles.h"

namespace fs = std::filesystem;

// The log of a whole boot, for each kind of boot.
namespace
{

class BootLogTest : public BootHostTest
{
protected:
    BootLogTest()
    {
        AddRow("network/dns", "", R"({"hostname": "host-7"})");
        AddRow("network/vswitch", "vSwitch0", R"({"name": "vSwitch0"})");
        Host().WriteFile(BOOT_DOCUMENT, R"({"nimb": {"network": {"dns": {"hostname": "fresh"}}, "system": 7}})");
    }

    // Boots from a backup of the stores as they stand and compares the boot's log with golden/NAME.log.
    void ExpectBootLog(const std::string& name)
    {
        SaveBackup();
        BootAsIs(name);
    }

    void BootAsIs(const std::string& name)
    {
        Host().ClearLogs();
        EXPECT_EQ(NimbConfigStore::LoadStore(true), 0);
        std::string log;
        for (const std::string& line : Host().BootLog()) {
            // The file system decides when it yields these two entries of a folder.
            if (!line.ends_with("non-json file .") && !line.ends_with("non-json file ..")) {
                log += line + "\n";
            }
        }
        ExpectGoldenFile("configstore/golden/" + name + ".log", log);
    }

    void BootInMode(const std::string& mode)
    {
        SetKey("BOOT_MODE", mode);
        StageRow("network/vswitch", "vSwitch1", R"({"name": "vSwitch1"})");
        StageRow("network/dns", "", "", "SET_DEFAULT");
        ExpectBootLog("mode-" + mode);
    }

    void InstallFailingModule()
    {
        fs::copy_file(UPGRADE_MODULES "/failure.so",
                      Host().Real("/usr/lib/talvor/configmanager/upgrade/lib/failure.so"));
    }
};
}  // namespace

TEST_F(BootLogTest, OfAFirstBoot)
{
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    Host().Remove(DBStore::StorePath(DBStore::Type::DataFileStore));
    Host().WriteFile("/var/lib/talvor/firstboot/current-store-1", "");
    BootAsIs("first");
}

TEST_F(BootLogTest, OfAnOrdinaryBoot)
{
    ExpectBootLog("ordinary");
}

TEST_F(BootLogTest, OfABootFromAnotherBank)
{
    Host().WithKernel({.bootFsUUID = OTHER_UUID});
    ExpectBootLog("bank-changed");
}

TEST_F(BootLogTest, OfASoftwareUpgrade)
{
    Host().WithPackage("net-core", "1.1.0_1.0", R"([{"component": "nimb", "group": "network", "key": "dns",
                       "schema": {"type": "object"}}])");
    Host().WithKernel({.bootFsUUID = OTHER_UUID}).WriteFile("/var/run/nonSchemaFiles", "etc/x.conf etc/declared.conf");
    Host().WriteFile("/etc/x.conf", "");
    InstallFailingModule();
    ExpectBootLog("upgrade");
}

TEST_F(BootLogTest, OfABootAfterTheInstaller)
{
    Host().WithKernel({.bootCmdLine = "quiet skorlInstalled"});
    ExpectBootLog("installer");
}

TEST_F(BootLogTest, OfABootFromInstallerMedia)
{
    Host().WithKernel({.bootOption = "00000001", .bootFsUUID = OTHER_UUID});
    ExpectBootLog("installer-media");
}

TEST_F(BootLogTest, OfANetworkBoot)
{
    Host().WithKernel({.bootMAC = "02:00:5e:10:00:01", .bootFsUUID = OTHER_UUID});
    ExpectBootLog("pxe");
}

TEST_F(BootLogTest, OfADiskImage)
{
    Host().WithKernel({.bootCmdLine = "nimbDDImage", .bootFsUUID = OTHER_UUID});
    ExpectBootLog("disk-image");
}

TEST_F(BootLogTest, OfABootAfterALiveInstall)
{
    Host().WithKernel({.bootFsUUID = OTHER_UUID});
    NimbConfigStore::SetLiveInstallBoot("true");
    ExpectBootLog("live-install");
}

TEST_F(BootLogTest, OfADebugUpgrade)
{
    Host().WithKernel({.bootCmdLine = "no-configupgrade-psod", .bootFsUUID = OTHER_UUID});
    InstallFailingModule();
    ExpectBootLog("debug-upgrade");
}

TEST_F(BootLogTest, OfADamagedBackup)
{
    SaveBackup();
    fs::resize_file(Host().Real(BACKUP), 20000);
    Host().WriteFile(DATAFILE_BACKUP, "damaged");
    BootAsIs("damaged-backup");
}

TEST_F(BootLogTest, OfModeZero)
{
    BootInMode("0");
}
TEST_F(BootLogTest, OfTheDesiredDocument)
{
    BootInMode("1");
}
TEST_F(BootLogTest, OfTheBootDocument)
{
    BootInMode("2");
}
TEST_F(BootLogTest, OfTheSmartnicConfiguration)
{
    BootInMode("3");
}
TEST_F(BootLogTest, OfTheHostApiConfiguration)
{
    BootInMode("4");
}
TEST_F(BootLogTest, OfAnUnknownMode)
{
    BootInMode("7");
}
