#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "HostUtil.h"
#include "PrivateNamespace.h"
#include "ZelTreeWalk.h"

// The running kernel's tree against what the system's own tools say. Only reads: nothing of the machine is written.

using ::testing::Contains;
using ::testing::IsSubsetOf;

namespace
{
class ZelLiveTree : public ::testing::Test
{
protected:
    ZelLiveTree() { SetHostRoot("/"); }
};

/// What a command prints; empty when it is not there or fails.
std::string OutputOf(const std::string& command)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>/dev/null").c_str(), "r"), &pclose);
    std::string output;
    char piece[4096];
    for (std::size_t length = 1; pipe != nullptr && length > 0;) {
        length = fread(piece, 1, sizeof piece, pipe.get());
        output.append(piece, length);
    }
    return output;
}

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string FirstLineOf(const std::string& file)
{
    std::string line;
    std::getline(std::ifstream(file), line);
    return line;
}

/// "0-2,5" becomes 0, 1, 2 and 5.
std::vector<std::string> NumbersIn(const std::string& ranges)
{
    std::vector<std::string> numbers;
    std::istringstream stream(ranges);
    for (std::string range; std::getline(stream, range, ',');) {
        const std::size_t last = std::stoul(range.substr(range.find('-') + 1));
        for (std::size_t number = std::stoul(range); number <= last; ++number) {
            numbers.push_back(std::to_string(number));
        }
    }
    return numbers;
}

std::size_t OpenDescriptors()
{
    std::size_t count = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        count += fcntl(descriptor, F_GETFD) >= 0 ? 1 : 0;
    }
    return count;
}

/// Programs that the build machine may lack.
#define NEEDS(program, package)                                    \
    if (OutputOf("command -v " program).empty()) {                 \
        GTEST_SKIP() << program " is not installed (" package ")"; \
    }
}  // namespace

TEST_F(ZelLiveTree, AWalkReadsEveryLeafAndLeavesNothingOpen)
{
    const std::size_t before = OpenDescriptors();
    const WalkResult result = WalkTree();
    EXPECT_THAT(result.failures, ::testing::IsEmpty());
    EXPECT_GT(result.leaves, 20u);
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(ZelLiveTree, TheVersionAndTheNameAreThoseOfUname)
{
    NEEDS("uname", "coreutils");
    const Reading version = Read("/system/version");
    EXPECT_EQ(version["system"] + "\n", OutputOf("uname -s"));
    EXPECT_EQ(version["release"] + "\n", OutputOf("uname -r"));
    EXPECT_EQ(version["build"] + "\n", OutputOf("uname -v"));
    EXPECT_EQ(version["machine"] + "\n", OutputOf("uname -m"));
    EXPECT_EQ(Read("/system/hostName")[""] + "\n", OutputOf("uname -n"));
}

TEST_F(ZelLiveTree, TheMachineIsThatOfUnameWhereNoFileTells)
{
    NEEDS("uname", "coreutils");
    const std::string machine = OutputOf("uname -m");
    const std::string unavailable = RunInPrivateNamespace([&] {
        if (access("/proc/sys/kernel/arch", F_OK) == 0) {
            ASSERT_EQ(mount("/dev/null", "/proc/sys/kernel/arch", nullptr, MS_BIND, nullptr), 0) << strerror(errno);
        }
        EXPECT_EQ(Read("/system/version")["machine"] + "\n", machine);
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}

TEST_F(ZelLiveTree, TheUpTimeLiesBetweenTwoLooksAtTheClock)
{
    const double before = std::stod(FirstLineOf("/proc/uptime"));
    const double upTime = std::stod(Read("/system/upTime")[""]) / 1000;
    const double after = std::stod(FirstLineOf("/proc/uptime"));
    EXPECT_GE(upTime, before - 0.001);
    EXPECT_LE(upTime, after + 0.001);
}

TEST_F(ZelLiveTree, TheMemoryIsThatOfMeminfo)
{
    std::istringstream line(FirstLineOf("/proc/meminfo"));
    std::string key;
    std::uint64_t total = 0;
    line >> key >> total;
    EXPECT_EQ(Read("/memory/stats")["totalBytes"], std::to_string(total * 1024));
}

// nproc counts those too that could be put in.
TEST_F(ZelLiveTree, TheProcessorsAreThoseThatTheKernelFoundPresent)
{
    const std::vector<std::string> present = NumbersIn(FirstLineOf("/sys/devices/system/cpu/present"));
    ASSERT_FALSE(present.empty());
    EXPECT_EQ(Read("/hardware/cpu/summary")["cpus"], std::to_string(present.size()));
    EXPECT_EQ(Instances("/hardware/cpu/cpus"), present);
}

TEST_F(ZelLiveTree, TheInterfacesAreThoseOfIp)
{
    NEEDS("ip", "iproute2");
    std::vector<std::string> names;
    for (const std::string& line : LinesOf(OutputOf("ip -o link show"))) {
        const std::string name = line.substr(line.find(' ') + 1);
        names.push_back(name.substr(0, name.find_first_of("@:")));
        const Reading config = Read("/net/interfaces/<interface>/config", {names.back()});
        EXPECT_EQ(config["index"], line.substr(0, line.find(':')));
        EXPECT_THAT(line, ::testing::HasSubstr(" mtu " + config["mtu"] + " "));
        EXPECT_EQ(config["up"] == "true", line.find("UP", line.find('<')) < line.find('>')) << line;
        if (config["hardwareType"] == "1") {
            EXPECT_THAT(line, ::testing::HasSubstr("link/ether " + config["mac"]));
        }
    }
    EXPECT_THAT(Instances("/net/interfaces"), ::testing::UnorderedElementsAreArray(names));
}

TEST_F(ZelLiveTree, TheAddressesAreThoseOfIp)
{
    NEEDS("ip", "iproute2");
    for (const auto& [option, leaf] : {std::pair("-4", "ipv4Addresses"), std::pair("-6", "ipv6Addresses")}) {
        std::vector<std::string> told;
        for (const std::string& line : LinesOf(OutputOf(std::string("ip -o ") + option + " addr show"))) {
            std::istringstream words(line);
            std::string number, name, family, address;
            words >> number >> name >> family >> address;
            told.push_back(name + " " + (address.find('/') == std::string::npos ? address + "/32" : address));
        }
        std::vector<std::string> read;
        for (const std::string& name : Instances("/net/interfaces")) {
            for (const Values& address : Read(std::string("/net/interfaces/<interface>/") + leaf, {name}).elements) {
                read.push_back(name + " " + address.at("address") + "/" + address.at("prefixLength"));
            }
        }
        EXPECT_THAT(read, ::testing::UnorderedElementsAreArray(told));
    }
}

TEST_F(ZelLiveTree, TheBlockDevicesAreThoseOfLsblk)
{
    NEEDS("lsblk", "util-linux");
    std::vector<std::string> names;
    for (const std::string& line :
         LinesOf(OutputOf("lsblk --all --bytes --list --noheadings --output KNAME,SIZE,RO"))) {
        std::istringstream words(line);
        std::string name, size, readOnly;
        words >> name >> size >> readOnly;
        names.push_back(name);
        const Reading info = Read("/storage/devices/<device>/info", {name});
        EXPECT_EQ(info["sizeBytes"], readOnly.empty() ? "0" : size) << line;
        EXPECT_EQ(info["readOnly"] == "true", (readOnly.empty() ? size : readOnly) == "1") << line;
    }
    EXPECT_THAT(names, IsSubsetOf(Instances("/storage/devices")));  // it leaves out what a container may not see
}

TEST_F(ZelLiveTree, TheMountsAreThoseOfFindmnt)
{
    NEEDS("findmnt", "util-linux");
    std::vector<std::string> points = LinesOf(OutputOf("findmnt --kernel --list --noheadings --raw --output TARGET"));
    EXPECT_THAT(points, IsSubsetOf(Instances("/storage/mounts")));
    const Reading root = Read("/storage/mounts/<path>/info", {"/"});
    EXPECT_EQ(root["type"] + "\n", OutputOf("findmnt --kernel --noheadings --output FSTYPE /"));
}

TEST_F(ZelLiveTree, ThisProcessIsAmongTheProcesses)
{
    const std::string pid = std::to_string(getpid());
    EXPECT_THAT(Instances("/sched/processes"), Contains(pid));
    const Reading stats = Read("/sched/processes/<pid>/stats", {pid});
    EXPECT_EQ(stats["pid"], pid);
    EXPECT_EQ(stats["parent"], std::to_string(getppid()));
    EXPECT_EQ(stats["user"], std::to_string(geteuid()));
    EXPECT_EQ(stats["state"], "running");
    EXPECT_EQ(stats["name"] + "\n", OutputOf("cat /proc/" + pid + "/comm"));
}

TEST_F(ZelLiveTree, AProcessThatEndedIsNotFound)
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(0);
    }
    ASSERT_GT(child, 0);
    const std::string pid = std::to_string(child);
    siginfo_t ended = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(Read("/sched/processes/<pid>/stats", {pid})["state"], "zombie");
    EXPECT_EQ(Read("/sched/processes/<pid>/cmdLine", {pid})[""], "");
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(Read("/sched/processes/<pid>/stats", {pid}).status, ORV_NOT_FOUND);
    EXPECT_EQ(Read("/sched/processes/<pid>/cmdLine", {pid}).status, ORV_NOT_FOUND);
}

TEST_F(ZelLiveTree, WhatIsNotThereIsNotFound)
{
    for (const char* name : {"no-such", "..", ".", "a/b", ""}) {
        EXPECT_EQ(Read("/net/interfaces/<interface>/config", {name}).status, ORV_NOT_FOUND) << name;
        EXPECT_EQ(Read("/net/interfaces/<interface>/stats", {name}).status, ORV_NOT_FOUND) << name;
        EXPECT_EQ(Read("/net/interfaces/<interface>/ipv4Addresses", {name}).status, ORV_NOT_FOUND) << name;
        EXPECT_EQ(Read("/storage/devices/<device>/info", {name}).status, ORV_NOT_FOUND) << name;
        EXPECT_EQ(Read("/storage/devices/<device>/stats", {name}).status, ORV_NOT_FOUND) << name;
        EXPECT_EQ(Read("/storage/mounts/<path>/info", {name}).status, ORV_NOT_FOUND) << name;
        EXPECT_EQ(Read("/storage/mounts/<path>/stats", {name}).status, ORV_NOT_FOUND) << name;
        EXPECT_EQ(Read("/power/supplies/<supply>/status", {name}).status, ORV_NOT_FOUND) << name;
        EXPECT_EQ(Read("/system/quenfs/ramdisks/<ramdisk>/stats", {name}).status, ORV_NOT_FOUND) << name;
    }
    EXPECT_EQ(Read("/hardware/cpu/cpus/<cpu>/info", {"99999"}).status, ORV_NOT_FOUND);
    EXPECT_EQ(Read("/hardware/cpu/cpus/<cpu>/stats", {"99999"}).status, ORV_NOT_FOUND);
    EXPECT_EQ(Instances("/system/quenfs/inodes"), std::vector<std::string>{});
}
