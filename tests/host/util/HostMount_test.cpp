#include <gmock/gmock.h>

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "HostUtil.h"
#include "PrivateNamespace.h"
#include "QuenfsData.h"
#include "TestHost.h"

using HostMountTest = HostTest;

namespace
{
const char* const DATA = "0,8,0,0,0,01750,disk";

std::string FirstLineOf(const std::string& command)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>/dev/null").c_str(), "r"), &pclose);
    char line[1024] = {};
    return pipe != nullptr && fgets(line, sizeof line, pipe.get()) != nullptr ? line : "";
}
}  // namespace

TEST(QuenfsDataTest, SizeModeAndNameStandInTheirFields)
{
    const std::optional<QuenfsData> data = ParseQuenfsData("1,32,2,3,4,00644,configstore");
    ASSERT_TRUE(data.has_value());
    EXPECT_EQ(data->sizeMiB, 32u);
    EXPECT_EQ(data->mode, 0644u);
    EXPECT_EQ(data->name, "configstore");
    EXPECT_EQ(TmpfsOptions(*data), "size=32m,mode=0644");
    EXPECT_EQ(TmpfsOptions(*ParseQuenfsData("0,1,0,0,0,0,x")), "size=1m,mode=0");
}

TEST(QuenfsDataTest, DataOfAnotherFormAreRefused)
{
    for (const char* text :
         {"", "32,32,0,0,0,00644", "32,32,0,0,0,00644,", "32,32,0,0,0,00644,a,b", "32,,0,0,0,00644,a",
          "32,0,0,0,0,00644,a", "32,-1,0,0,0,00644,a", "32,32m,0,0,0,00644,a", "32,32,0,0,0,00844,a", "32,32,0,0,0,,a",
          "32,32,0,0,0,10000,a", "32,99999999999999999999,0,0,0,00644,a"}) {
        EXPECT_FALSE(ParseQuenfsData(text).has_value()) << text;
    }
}

TEST_F(HostMountTest, ARamdiskHasTheSizeModeAndNameOfItsData)
{
    Host().MakeFolder("/mnt/a disk");
    const std::string unavailable = RunInPrivateNamespace([this] {
        ASSERT_EQ(HostMount("none", "/mnt/a disk", "quenfs", 0, DATA), 0);
        struct statvfs use = {};
        ASSERT_EQ(statvfs(Host().Real("/mnt/a disk").c_str(), &use), 0);
        EXPECT_EQ(use.f_blocks * use.f_frsize, 8u << 20);
        struct stat top = {};
        ASSERT_EQ(stat(Host().Real("/mnt/a disk").c_str(), &top), 0);
        EXPECT_EQ(top.st_mode & 07777, 01750u);
        if (!FirstLineOf("command -v findmnt").empty()) {
            EXPECT_EQ(FirstLineOf("findmnt --raw -n -o FSTYPE,SOURCE '" + Host().Real("/mnt/a disk") + "'"),
                      "tmpfs disk\n");
        }
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}

TEST_F(HostMountTest, ARamdiskIsNotMountedOverAnotherMount)
{
    Host().MakeFolder("/mnt/disk");
    const std::string unavailable = RunInPrivateNamespace([] {
        EXPECT_EQ(HostMount("none", "/mnt/disk", "tmpfs", 0, "size=1m"), 0);
        EXPECT_EQ(HostMount("none", "/mnt/disk", "quenfs", 0, DATA), EBUSY);
        EXPECT_EQ(HostMount("none", "/mnt/./disk/", "quenfs", 0, DATA), EBUSY);
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}

TEST_F(HostMountTest, ARamdiskIsNotMountedTwiceBelowARootThatIsALink)
{
    Host().MakeFolder("/host/mnt/disk");
    std::filesystem::create_directory_symlink("host", Host().Real("/link"));
    const std::string unavailable = RunInPrivateNamespace([this] {
        SetHostRoot(Host().Real("/link"));
        EXPECT_EQ(HostMount("none", "/mnt/disk", "quenfs", 0, DATA), 0);
        EXPECT_EQ(HostMount("none", "/mnt/disk", "quenfs", 0, DATA), EBUSY);
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}

TEST_F(HostMountTest, ARamdiskIsNotMountedWhenNothingTellsWhatIs)
{
    Host().MakeFolder("/mnt/disk");
    const std::string unavailable = RunInPrivateNamespace([this] {
        ASSERT_EQ(mount("none", "/proc", "tmpfs", 0, nullptr), 0) << std::strerror(errno);
        EXPECT_EQ(HostMount("none", "/mnt/disk", "quenfs", 0, DATA), ENOENT);
        EXPECT_EQ(Host().Log(), std::vector<std::string>{"warning Cannot tell from /proc/self/mountinfo what is "
                                                         "mounted: No such file or directory"});
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}

TEST_F(HostMountTest, ARamdiskNeedsAFolderAndSoundData)
{
    Host().MakeFolder("/mnt/disk");
    EXPECT_EQ(HostMount("none", "/mnt/missing", "quenfs", 0, DATA), ENOENT);
    EXPECT_EQ(HostMount("none", "/mnt/disk", "quenfs", 0, "size=8m"), EINVAL);
    EXPECT_EQ(HostMount("none", "/mnt/disk", "quenfs", 0, nullptr), EINVAL);
    EXPECT_NE(HostMount("none", "/mnt/disk", "no-such-type", 0, nullptr), 0);
}
