#include <gmock/gmock.h>

#include <sys/sysmacros.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "HostUtil.h"
#include "TestHost.h"
#include "ZEL.h"
#include "ZelBootWords.h"
#include "ZelDeviceNames.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;

using ZelBootProviders = HostTest;

namespace
{
const char* const KERNEL_JSON = "/etc/talvor/platform/kernel.json";

ORV_ReturnStatus Get(ZEL_NodeID node, std::string& text)
{
    char buffer[4096] = {};
    const ORV_ReturnStatus status = ZEL_Get(node, nullptr, buffer, sizeof buffer);
    text = buffer;
    return status;
}
}  // namespace

TEST_F(ZelBootProviders, TheFactsOfAnotherRootStandInItsFile)
{
    Host().WithKernel({.bootCmdLine = "quiet skorlInstalled",
                       .bootMAC = "aa:bb:cc:dd:ee:ff",
                       .bootOption = "00a1ff01",
                       .bootFsUUID = "11111111-2222-3333-4444-555555555555"});
    std::string text;
    EXPECT_EQ(Get(ZEL_NODE_system_bootCmdLine, text), ORV_OK);
    EXPECT_EQ(text, "quiet skorlInstalled");
    EXPECT_EQ(Get(ZEL_NODE_system_bootMAC, text), ORV_OK);
    EXPECT_EQ(text, "aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(Get(ZEL_NODE_system_bootFsUUID, text), ORV_OK);
    EXPECT_EQ(text, "11111111-2222-3333-4444-555555555555");
    unsigned char option[4] = {};
    EXPECT_EQ(ZEL_Get(ZEL_NODE_system_bootOption, nullptr, option, sizeof option), ORV_OK);
    EXPECT_THAT(option, ElementsAre(0x00, 0xa1, 0xff, 0x01));
}

TEST_F(ZelBootProviders, AMissingOrMalformedFactCannotBeReadAndTheOthersCan)
{
    Host().WriteFile(KERNEL_JSON, R"({"bootCmdLine": "quiet", "bootMAC": 7, "bootOption": "1"})");
    std::string text;
    EXPECT_EQ(Get(ZEL_NODE_system_bootCmdLine, text), ORV_OK);
    EXPECT_EQ(Get(ZEL_NODE_system_bootMAC, text), ORV_FAILURE);
    EXPECT_EQ(Get(ZEL_NODE_system_bootFsUUID, text), ORV_FAILURE);
    EXPECT_EQ(Get(ZEL_NODE_system_bootOption, text), ORV_FAILURE);
    EXPECT_THAT(Host().Log(),
                ElementsAre(std::string("error The kernel's facts in ") + KERNEL_JSON + " give no text bootMAC",
                            std::string("error The kernel's facts in ") + KERNEL_JSON + " give no text bootFsUUID",
                            std::string("error The kernel's facts in ") + KERNEL_JSON +
                                ": bootOption is not eight hexadecimal digits"));
}

TEST_F(ZelBootProviders, ABootOptionOfOtherCharactersIsRefused)
{
    for (const char* option : {"0000000g", "-0000001", "0x000001", "000000001", ""}) {
        Host().WithKernel({.bootOption = option});
        char buffer[4];
        EXPECT_EQ(ZEL_Get(ZEL_NODE_system_bootOption, nullptr, buffer, sizeof buffer), ORV_FAILURE) << option;
    }
}

TEST_F(ZelBootProviders, AFileThatIsMissingIsNamedOnce)
{
    Host().Remove(KERNEL_JSON);
    std::string text;
    EXPECT_EQ(Get(ZEL_NODE_system_bootCmdLine, text), ORV_FAILURE);
    ASSERT_EQ(Host().Log().size(), 1u);
    EXPECT_THAT(Host().Log()[0], HasSubstr("error Cannot read the kernel's facts from " + std::string(KERNEL_JSON)));
}

TEST_F(ZelBootProviders, AFileThatIsNoObjectGivesNoFacts)
{
    const std::string deep(1 << 20, '[');
    for (const std::string& content : {std::string(), std::string("{\"bootCmdLine\": \"qu"), std::string("[1]"),
                                       std::string("\x80\xff"), std::string("7"), deep}) {
        Host().WriteFile(KERNEL_JSON, content).ClearLogs();
        std::string text;
        EXPECT_EQ(Get(ZEL_NODE_system_bootCmdLine, text), ORV_FAILURE) << content.substr(0, 20);
        EXPECT_EQ(Host().Log().size(), 1u) << content.substr(0, 20);
    }
}

TEST_F(ZelBootProviders, AFolderInPlaceOfTheFileGivesNoFacts)
{
    Host().Remove(KERNEL_JSON);
    Host().MakeFolder(KERNEL_JSON);
    std::string text;
    EXPECT_EQ(Get(ZEL_NODE_system_bootFsUUID, text), ORV_FAILURE);
}

// Only reads: nothing of the machine that runs the tests is written.
TEST(ZelRealHost, TheCommandLineIsThatOfTheRunningKernel)
{
    SetHostRoot("/");
    std::string expected;
    std::getline(std::ifstream("/proc/cmdline"), expected);
    std::string text;
    ASSERT_EQ(Get(ZEL_NODE_system_bootCmdLine, text), ORV_OK);
    EXPECT_EQ(text, expected);
    EXPECT_EQ(Get(ZEL_NODE_system_bootMAC, text), ORV_OK);
    EXPECT_EQ(text, BootMacOf(expected));
}

TEST(ZelRealHost, TheBootFileSystemIsAnsweredWithOrWithoutAUuid)
{
    SetHostRoot("/");
    std::string text = "unanswered";
    EXPECT_EQ(Get(ZEL_NODE_system_bootFsUUID, text), ORV_OK);
    EXPECT_TRUE(text.empty() || std::filesystem::exists("/dev/disk/by-uuid/" + text)) << text;
}

TEST_F(ZelBootProviders, ADeviceIsFoundByItsNumberAmongLinks)
{
    Host().MakeFolder("/by-uuid");
    std::filesystem::create_symlink("/dev/no-such", Host().Real("/by-uuid/0000-0000"));
    std::filesystem::create_symlink("/dev/null", Host().Real("/by-uuid/1111-1111"));
    std::filesystem::create_symlink("/dev/zero", Host().Real("/by-uuid/2222-2222"));
    Host().WriteFile("/by-uuid/3333-3333", "no device");
    EXPECT_EQ(NameOfDevice(Host().Real("/by-uuid"), makedev(1, 3)), "1111-1111");
    EXPECT_EQ(NameOfDevice(Host().Real("/by-uuid"), makedev(1, 5)), "2222-2222");
    EXPECT_EQ(NameOfDevice(Host().Real("/by-uuid"), makedev(1, 250)), "");
    EXPECT_EQ(NameOfDevice(Host().Real("/by-uuid"), 0), "");
    EXPECT_EQ(NameOfDevice(Host().Real("/missing"), makedev(1, 3)), "");
}

TEST(ZelBootWords, TheBootMacIsTakenFromTheBootInterfaceWord)
{
    EXPECT_EQ(BootMacOf("quiet BOOTIF=01-AA-bb-0c-DD-ee-9f ip=dhcp"), "aa:bb:0c:dd:ee:9f");
    EXPECT_EQ(BootMacOf("quiet ip=dhcp"), "");
    EXPECT_EQ(BootMacOf("xBOOTIF=01-aa-bb-cc-dd-ee-ff"), "");
    EXPECT_EQ(BootMacOf("BOOTIF=01-aa-bb-cc-dd-ee"), "");
    EXPECT_EQ(BootMacOf("BOOTIF=01-aa-bb-cc-dd-ee-fg"), "");
    EXPECT_EQ(BootMacOf("BOOTIF=01:aa:bb:cc:dd:ee:ff"), "");
    EXPECT_EQ(BootMacOf("BOOTIF="), "");
}

TEST(ZelBootWords, TheInstallerMediaWordSetsTheFourthByte)
{
    EXPECT_EQ(BootOptionOf("quiet installerMedia"), std::string("\0\0\0\1", 4));
    EXPECT_EQ(BootOptionOf("quiet noinstallerMedia installerMedia=0"), std::string(4, '\0'));
}
