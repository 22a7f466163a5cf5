#include "CommandTest.h"
#include "PrivateNamespace.h"

namespace
{
using RamdiskCommandsTest = CommandTest;
}  // namespace

TEST_F(RamdiskCommandsTest, SetupShowsTheMountedRamdisks)
{
    for (const bool json : {false, true}) {
        const std::string unavailable = RunInPrivateNamespace([&] {
            const Ran ran = Run(json ? Words{"--json", "ramdisk", "setup"} : Words{"ramdisk", "setup"});
            EXPECT_EQ(ran.status, 0) << ran.errors;
            ExpectFile(json ? "ramdisk-setup.json" : "ramdisk-setup.txt", ran.output);
        });
        if (!unavailable.empty()) {
            GTEST_SKIP() << unavailable;
        }
    }
}

TEST_F(RamdiskCommandsTest, SetupSaysWhichRamdiskCouldNotBeMountedAndWhy)
{
    Host().Remove("/etc/talvor/configstore");
    ExpectFailure({"ramdisk", "setup"},
                  "ramdisk setup: Failed to reserve memory for ConfigStore: Cannot mount a ramdisk at "
                  "/etc/talvor/configstore: No such file or directory");
}

TEST_F(RamdiskCommandsTest, SetupSaysWhyTheLimitsAreNotKept)
{
    Host().WriteFile("/var/run/talvor/zel", "a file where the folder should be");
    const std::string unavailable = RunInPrivateNamespace([&] {
        ExpectFailure({"ramdisk", "setup"},
                      "ramdisk setup: Failed to set warning and error usage limits: Cannot keep the usage limits of "
                      "ramdisk configstore in /var/run/talvor/zel/memUsageLimit: Not a directory");
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}
