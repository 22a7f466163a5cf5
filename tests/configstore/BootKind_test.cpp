#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>

#include "NimbConfigStore.h"
#include "StoreFault.h"
#include "StoreFiles.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
constexpr const char* UUID = "5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11";

class BootKindTest : public HostTest
{
protected:
    BootKindTest() { Host().WithStores(); }

    void BootedLastFrom(const std::string& uuid) { SetKey("BOOT_FS_UUID", uuid); }

    void SetKey(const std::string& key, const std::string& value)
    {
        Host().Sql("INSERT OR REPLACE INTO KeyValue (Key, Value) VALUES ('" + key + "', '" + value + "')");
        Host().ClearLogs();
    }
};

std::string Fact(const std::string& member, const std::string& value)
{
    return "{\"" + member + "\": \"" + value + "\"}";
}
}  // namespace

TEST_F(BootKindTest, AHostIsInstalledUnlessItBootedFromTheNetworkOrFromInstallerMedia)
{
    EXPECT_TRUE(IsInstalled());
    Host().WithKernel({.bootMAC = "02:00:5e:10:00:01"});
    EXPECT_FALSE(IsInstalled());
    Host().WithKernel({.bootOption = "00000001"});
    EXPECT_FALSE(IsInstalled());
    Host().WithKernel({.bootOption = "01020300"});
    EXPECT_TRUE(IsInstalled());
}

TEST_F(BootKindTest, ADebugUpgradeIsAskedForAnywhereOnTheCommandLine)
{
    EXPECT_FALSE(IsDebugUpgrade());
    Host().WithKernel({.bootCmdLine = "quiet xno-configupgrade-psod=1"});
    EXPECT_TRUE(IsDebugUpgrade());
    Host().WithKernel({.bootCmdLine = "No-ConfigUpgrade-Psod"});
    EXPECT_FALSE(IsDebugUpgrade());
}

TEST_F(BootKindTest, TheInstallersWordIsReadBeforeAnythingElse)
{
    Host().WithKernel({.bootCmdLine = "quiet skorlInstalled"}).ClearLogs();
    EXPECT_TRUE(IsSkorlInstalled());
    EXPECT_THAT(Host().Log(), ElementsAre("info BootCmdLine: quiet skorlInstalled"));
}

TEST_F(BootKindTest, AHostThatNeverRecordedItsBootFileSystemHasChangedItsBank)
{
    Host().ClearLogs();
    EXPECT_TRUE(HasBootbankChanged());
    EXPECT_THAT(Host().Log(), ElementsAre("info Bootbank changed " + std::string(UUID) + "!="));
}

TEST_F(BootKindTest, TheSameBootFileSystemIsTheSameBank)
{
    BootedLastFrom(UUID);
    EXPECT_FALSE(HasBootbankChanged());
    EXPECT_THAT(Host().Log(), ElementsAre("info Bootbank did not change from previous boot."));
}

TEST_F(BootKindTest, ABankOfAnotherLengthOrTextHasChanged)
{
    for (const std::string& previous :
         {std::string(OTHER_UUID), std::string(UUID) + "1", std::string(UUID).substr(0, 35)}) {
        BootedLastFrom(previous);
        EXPECT_TRUE(HasBootbankChanged());
        EXPECT_THAT(Host().Log(), ElementsAre("info Bootbank changed " + std::string(UUID) + "!=" + previous));
    }
}

TEST_F(BootKindTest, TwoUnknownFileSystemsAreAnotherBankButNoUpgrade)
{
    Host().WithKernel({.bootFsUUID = ""});
    BootedLastFrom("");
    EXPECT_TRUE(HasBootbankChanged());
    EXPECT_FALSE(IsUpgrade());
    EXPECT_THAT(Host().Log(),
                ElementsAre("info Bootbank changed !=", "info Current boot fs uuid: ", "info Previous boot fs uuid: "));
}

TEST_F(BootKindTest, ANetworkBootIsNoUpgradeEvenAfterTheInstaller)
{
    Host().WithKernel({.bootCmdLine = "skorlInstalled", .bootMAC = "02:00:5e:10:00:01"}).ClearLogs();
    EXPECT_FALSE(IsUpgrade());
    EXPECT_THAT(Host().Log(), ElementsAre("info PXE boot, not considered upgrade."));
}

TEST_F(BootKindTest, ABootFromInstallerMediaIsNoUpgrade)
{
    Host().WithKernel({.bootCmdLine = "skorlInstalled nimbDDImage", .bootOption = "00000080"}).ClearLogs();
    EXPECT_FALSE(IsUpgrade());
    EXPECT_THAT(Host().Log(), ElementsAre("info Installer boot, not considered upgrade."));
}

TEST_F(BootKindTest, ADiskImageBootIsNoUpgrade)
{
    Host().WithKernel({.bootCmdLine = "skorlInstalled nimbDDImage"}).ClearLogs();
    EXPECT_FALSE(IsUpgrade());
    EXPECT_THAT(Host().Log(), ElementsAre("info NIMB DD image boot, not considered upgrade."));
}

TEST_F(BootKindTest, TheFirstBootIsNoUpgradeEvenAfterTheInstaller)
{
    Host().WithKernel({.bootCmdLine = "skorlInstalled"}).WriteFile("/var/lib/talvor/firstboot/current-store-1", "");
    Host().ClearLogs();
    EXPECT_FALSE(IsUpgrade());
    EXPECT_THAT(Host().Log(), ElementsAre("info First boot, not considerd upgrade."));
}

TEST_F(BootKindTest, ABootAfterTheInstallerIsAnUpgradeFromTheSameBankToo)
{
    BootedLastFrom(UUID);
    Host().WithKernel({.bootCmdLine = "quiet skorlInstalled"});
    EXPECT_TRUE(IsUpgrade());
    EXPECT_THAT(Host().Log(), ElementsAre("info Skorl installer upgrade: Config upgrade boot."));
}

TEST_F(BootKindTest, ABootAfterALiveInstallIsNoUpgradeThoughTheBankChanged)
{
    BootedLastFrom(OTHER_UUID);
    SetKey("POST_LIVE_INSTALL_BOOT", "true");
    EXPECT_FALSE(IsUpgrade());
    EXPECT_THAT(Host().Log(), ElementsAre("info Live install boot. No upgrade."));
    EXPECT_TRUE(HasBootbankChanged());
}

TEST_F(BootKindTest, AnotherBankIsAnUpgrade)
{
    SetKey("POST_LIVE_INSTALL_BOOT", "TRUE");
    BootedLastFrom(OTHER_UUID);
    EXPECT_TRUE(IsUpgrade());
    EXPECT_THAT(Host().Log(),
                ElementsAre("info Current boot fs uuid: " + std::string(UUID),
                            "info Previous boot fs uuid: " + std::string(OTHER_UUID), "info Config upgrade boot"));
}

TEST_F(BootKindTest, TheSameBankIsNoUpgrade)
{
    BootedLastFrom(UUID);
    EXPECT_FALSE(IsUpgrade());
    EXPECT_THAT(Host().Log(), ElementsAre("info Current boot fs uuid: " + std::string(UUID),
                                          "info Previous boot fs uuid: " + std::string(UUID)));
}

TEST_F(BootKindTest, EachFactThatCannotBeReadIsNamed)
{
    constexpr const char* KERNEL = "/etc/talvor/platform/kernel.json";
    Host().WriteFile(KERNEL, Fact("bootMAC", ""));
    EXPECT_EQ(ThrownBy(IsDebugUpgrade), "2000 Failed to get boot command line");
    EXPECT_EQ(ThrownBy(IsSkorlInstalled), "2000 Failed to get boot command line");
    EXPECT_EQ(ThrownBy(IsInstalled), "2000 Failed to get ZEL /system/bootOption");
    EXPECT_EQ(ThrownBy(HasBootbankChanged), "2000 Failed to get boot fs uuid.");
    Host().WriteFile(KERNEL, Fact("bootCmdLine", "quiet"));
    EXPECT_EQ(ThrownBy(IsUpgrade), "2000 Failed to get boot nic mac address.");
    EXPECT_EQ(ThrownBy(IsInstalled), "2000 Failed to get boot nic mac address.");
}

TEST_F(BootKindTest, AStoreThatIsMissingOrUnreadableEndsTheDetection)
{
    {
        const StoreFault fault(SQLITE_READ, "KeyValue");
        EXPECT_EQ(ThrownBy(HasBootbankChanged), "2000 Failed to read value for key BOOT_FS_UUID");
        EXPECT_EQ(ThrownBy(IsUpgrade), "2000 Failed to read value for key POST_LIVE_INSTALL_BOOT");
    }
    Host().Remove(STORE);
    EXPECT_EQ(ThrownBy(HasBootbankChanged), "2000 Failed to connect to database.");
    EXPECT_EQ(ThrownBy(IsUpgrade), "2000 Failed to connect to database.");
}

TEST_F(BootKindTest, AKernelOfAnotherInterfaceVersionIsNotAsked)
{
    Host().WriteFile("/etc/talvor/platform/kernel.json",
                     R"({"interfaceVersion": 20, "bootCmdLine": "skorlInstalled"})");
    // In a process of its own: once the interface was found usable it is not checked again.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto answers = [this] {
        const std::string refused = "2000 Failed to invoke ZEL_CheckSig";
        const bool asked = ThrownBy(IsInstalled) != refused || ThrownBy(IsDebugUpgrade) != refused ||
                           ThrownBy(HasBootbankChanged) != refused || ThrownBy(IsUpgrade) != refused;
        const bool right = !asked && IsSkorlInstalled();
        std::filesystem::remove_all(Host().Root());
        std::_Exit(right ? 0 : 1);
    };
    EXPECT_EXIT(answers(), ::testing::ExitedWithCode(0), "");
}
