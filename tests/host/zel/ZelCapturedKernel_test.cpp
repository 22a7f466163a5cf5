#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "TestHost.h"
#include "ZelTreeReader.h"

// The providers against a captured /proc and /sys, with what this machine need not have.

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ZelCapturedKernel : public HostTest
{
protected:
    ZelCapturedKernel() { Host().WriteFile("/etc/talvor/platform/kernel.json", R"({"capturedKernel": true})"); }
};

TEST_F(ZelCapturedKernel, TheSystemIsRead)
{
    Host().WriteFile("/proc/uptime", "93784.56 1234.00\n").WriteFile("/proc/sys/kernel/hostname", "host 7.lab\n");
    Host().WriteFile("/proc/sys/kernel/osrelease", "6.1.0-18\n").WriteFile("/proc/sys/kernel/ostype", "Linux\n");
    EXPECT_EQ(Read("/system/upTime")[""], "93784560");
    EXPECT_EQ(Read("/system/hostName")[""], "host 7.lab");
    EXPECT_EQ(Read("/system/version")["release"], "6.1.0-18");
    EXPECT_EQ(Read("/system/version")["machine"], "");
}

TEST_F(ZelCapturedKernel, WhatTheCaptureDoesNotHoldIsNotSupported)
{
    for (const char* path : {"/system/upTime", "/system/version", "/system/hostName", "/memory/stats", "/sched/load",
                             "/hardware/cpu/summary", "/power/policy"}) {
        EXPECT_EQ(Read(path).status, ORV_NOT_SUPPORTED) << path;
    }
    for (const char* path : {"/net/interfaces", "/storage/devices", "/storage/mounts", "/sched/processes",
                             "/hardware/cpu/cpus", "/power/supplies"}) {
        EXPECT_THAT(Instances(path), IsEmpty()) << path;
    }
}

TEST_F(ZelCapturedKernel, MemoryIsCountedInBytes)
{
    Host().WriteFile("/proc/meminfo",
                     "MemTotal:       1000 kB\nMemFree:         200 kB\nSwapCached:      7 kB\nCached:  300 kB\n"
                     "HugePages_Total:    4\nHugePages_Free:     3\nHugepagesize:    2048 kB\nDirty: none\n");
    const Reading stats = Read("/memory/stats");
    EXPECT_EQ(stats["totalBytes"], "1024000");
    EXPECT_EQ(stats["cachedBytes"], "307200");
    EXPECT_EQ(stats["hugePages"], "4");
    EXPECT_EQ(stats["hugePageBytes"], "2097152");
    EXPECT_EQ(stats["dirtyBytes"], "0");
    EXPECT_EQ(stats["availableBytes"], "0");
}

TEST_F(ZelCapturedKernel, AProcessorOutOfUseIsListedAndHasNoTimes)
{
    const std::string cpus = "/sys/devices/system/cpu/";
    Host().WriteFile(cpus + "cpu0/topology/core_id", "0").WriteFile(cpus + "cpu10/online", "0\n");
    Host().WriteFile(cpus + "cpu2/online", "1\n").WriteFile(cpus + "cpu2/topology/physical_package_id", "1\n");
    Host().WriteFile(cpus + "cpu2/topology/thread_siblings_list", "2\n").WriteFile(cpus + "cpufreq/x", "");
    Host()
        .WriteFile(cpus + "cpu0/topology/thread_siblings_list", "0\n")
        .WriteFile(cpus + "cpu2/cpufreq/scaling_cur_freq", "2500000\n");
    Host().WriteFile("/proc/stat", "cpu  1 2 3 4\ncpu0 100 0 0 0 0 0 0 0 0 0\ncpu2 0 200 300 400 500 600 700 800\n");
    Host().WriteFile("/proc/cpuinfo", "processor\t: 0\nvendor_id\t: Maker\nmodel\t\t: 85\nmodel name\t: Fast  CPU\n");
    EXPECT_THAT(Instances("/hardware/cpu/cpus"), ElementsAre("0", "2", "10"));
    const Reading summary = Read("/hardware/cpu/summary");
    EXPECT_EQ(summary["cpus"] + summary["online"] + summary["cores"] + summary["packages"], "3222");
    EXPECT_EQ(summary["model"], "Fast  CPU");
    EXPECT_EQ(Read("/hardware/cpu/cpus/<cpu>/info", {"10"})["online"], "false");
    EXPECT_EQ(Read("/hardware/cpu/cpus/<cpu>/info", {"2"})["currentKHz"], "2500000");
    EXPECT_EQ(Read("/hardware/cpu/cpus/<cpu>/stats", {"10"})["userMs"], "0");
    EXPECT_EQ(Read("/hardware/cpu/cpus/<cpu>/stats", {"0"})["userMs"], "1000");
    EXPECT_EQ(Read("/hardware/cpu/cpus/<cpu>/stats", {"2"})["stealMs"], "8000");
    EXPECT_EQ(Read("/hardware/cpu/cpus/<cpu>/stats", {"1"}).status, ORV_NOT_FOUND);
}

TEST_F(ZelCapturedKernel, ADeviceWithoutSomeFilesIsRead)
{
    Host().WriteFile("/sys/class/block/sda/dev", "8:0\n").WriteFile("/sys/class/block/sda/size", "2048\n");
    Host()
        .WriteFile("/sys/class/block/sda/device/uevent", "")
        .WriteFile("/sys/class/block/sda/device/model", "Disk 7  \n");
    Host().WriteFile("/sys/class/block/sda/queue/rotational", "1\n");
    Host().WriteFile("/sys/class/block/sda/stat", " 10 0 20 30 40 0 50 60 1 70 80\n");
    Host()
        .WriteFile("/sys/class/block/cciss!c0d0p1/dev", "104:1")
        .WriteFile("/sys/class/block/cciss!c0d0p1/partition", "1");
    Host().WriteFile("/sys/class/block/nodev/size", "1");
    EXPECT_THAT(Instances("/storage/devices"), ElementsAre("cciss!c0d0p1", "nodev", "sda"));
    const Reading disk = Read("/storage/devices/<device>/info", {"sda"});
    EXPECT_EQ(disk["sizeBytes"], "1048576");
    EXPECT_EQ(disk["kind"] + " " + disk["major"] + ":" + disk["minor"], "disk 8:0");
    EXPECT_EQ(disk["model"], "Disk 7");
    EXPECT_EQ(disk["rotational"], "true");
    EXPECT_EQ(disk["readOnly"], "false");
    EXPECT_EQ(Read("/storage/devices/<device>/info", {"cciss!c0d0p1"})["kind"], "partition");
    EXPECT_EQ(Read("/storage/devices/<device>/stats", {"sda"})["writtenBytes"], "25600");
    EXPECT_EQ(Read("/storage/devices/<device>/stats", {"cciss!c0d0p1"})["reads"], "0");
    EXPECT_EQ(Read("/storage/devices/<device>/info", {"nodev"}).status, ORV_NOT_FOUND);
}

TEST_F(ZelCapturedKernel, MountsHaveTheirPlainNamesAndTheLastOneIsSeen)
{
    Host().WriteFile("/proc/self/mountinfo",
                     "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
                     "21 20 0:30 / /my\\040disk rw,nosuid - ext4 /dev/sdb1 ro,data=x\n"
                     "22 20 0:31 / /my\\040disk rw - tmpfs over rw,size=4k\n"
                     "23 20 0:32 / /srv rw - nfs4 server:/export rw\n");
    EXPECT_THAT(Instances("/storage/mounts"), ElementsAre("/", "/my disk", "/srv"));
    const Reading disk = Read("/storage/mounts/<path>/info", {"/my disk"});
    EXPECT_EQ(disk["type"] + " " + disk["source"] + " " + disk["major"] + ":" + disk["minor"], "tmpfs over 0:31");
    EXPECT_EQ(disk["readOnly"], "false");
    EXPECT_EQ(Read("/storage/mounts/<path>/stats", {"/srv"}).status, ORV_NOT_SUPPORTED);
    EXPECT_EQ(Read("/storage/mounts/<path>/info", {"/my\\040disk"}).status, ORV_NOT_FOUND);
}

TEST_F(ZelCapturedKernel, InterfacesMayHaveDotsAndOtherHardwareAddresses)
{
    Host().WriteFile(
        "/proc/net/dev",
        "Inter-|   Receive  |  Transmit\n face |bytes    packets|bytes\n"
        "eth0.100:  11 12 13 14 15 16 17 18 21 22 23 24 25 26 27 28\n   ib0:1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
    const std::string vlan = "/sys/class/net/eth0.100/";
    Host().WriteFile(vlan + "ifindex", "7\n").WriteFile(vlan + "address", "02:fc:00:00:00:0A\n");
    Host().WriteFile(vlan + "flags", "0x1103\n").WriteFile(vlan + "operstate", "lowerlayerdown\n");
    Host().WriteFile(vlan + "speed", "4294967295\n").WriteFile(vlan + "duplex", "full\n");
    Host().WriteFile("/sys/class/net/ib0/ifindex", "8\n").WriteFile("/sys/class/net/ib0/speed", "-1\n");
    Host().WriteFile("/sys/class/net/ib0/address", "80:00:00:48:fe:80:00:00:00:00:00:00:00:02:c9:03:00:00:00:01\n");
    EXPECT_THAT(Instances("/net/interfaces"), ElementsAre("eth0.100", "ib0"));
    const Reading config = Read("/net/interfaces/<interface>/config", {"eth0.100"});
    EXPECT_EQ(config["mac"], "02:fc:00:00:00:0a");
    EXPECT_EQ(config["operationState"] + " " + config["duplex"] + " " + config["speed"], "lowerlayerdown full 0");
    EXPECT_EQ(config["up"] + config["promiscuous"] + config["loopback"], "truetruefalse");
    EXPECT_EQ(Read("/net/interfaces/<interface>/config", {"ib0"})["mac"], "00:00:00:00:00:00");
    EXPECT_EQ(Read("/net/interfaces/<interface>/config", {"ib0"})["speed"], "0");
    const Reading stats = Read("/net/interfaces/<interface>/stats", {"eth0.100"});
    EXPECT_EQ(stats["receivedBytes"] + stats["multicast"] + stats["sentBytes"] + stats["collisions"], "11182126");
    EXPECT_EQ(Read("/net/interfaces/<interface>/ipv4Addresses", {"ib0"}).status, ORV_NOT_SUPPORTED);
}

TEST_F(ZelCapturedKernel, ANameOfAProcessMayHoldAnything)
{
    Host().WriteFile("/proc/42/stat",
                     "42 (a) S (b) D 7 42 42 0 -1 0 11 0 12 0 150 50 0 0 20 -5 3 0 1000 8192 2 18446744073709551615 "
                     "0 0 0 0 0 0 0 0 0 0 0 0 17 1 0 0\n");
    Host().WriteFile("/proc/42/status", "Name:\ta\nUid:\t1000\t1001\t1000\t1000\n");
    Host().WriteFile("/proc/42/cmdline", std::string("prog\0--x\0two words\0", 19));
    Host().WriteFile("/proc/007/stat", "7 (x) R 1\n").WriteFile("/proc/43/cmdline", "");
    EXPECT_THAT(Instances("/sched/processes"), ElementsAre("42", "43"));
    const Reading stats = Read("/sched/processes/<pid>/stats", {"42"});
    EXPECT_EQ(stats["name"], "a) S (b");
    EXPECT_EQ(stats["state"] + " " + stats["parent"] + " " + stats["user"], "waiting 7 1001");
    EXPECT_EQ(stats["userMs"] + " " + stats["systemMs"] + " " + stats["nice"], "1500 500 -5");
    EXPECT_EQ(stats["startMs"] + " " + stats["virtualBytes"] + " " + stats["cpu"], "10000 8192 1");
    EXPECT_EQ(Read("/sched/processes/<pid>/cmdLine", {"42"})[""], "prog --x two words");
    EXPECT_EQ(Read("/sched/processes/<pid>/cmdLine", {"43"})[""], "");
    EXPECT_EQ(Read("/sched/processes/<pid>/stats", {"43"}).status, ORV_NOT_FOUND);
}

TEST_F(ZelCapturedKernel, ACommandLineOfAMegabyteIsReadWhole)
{
    Host().WriteFile("/proc/42/cmdline", std::string(1 << 20, 'x'));
    EXPECT_EQ(Read("/sched/processes/<pid>/cmdLine", {"42"})[""].size(), 1u << 20);
}

TEST_F(ZelCapturedKernel, ACommandLineLongerThanAnyThatThereIsIsCut)
{
    Host().WriteFile("/proc/42/cmdline", "");
    Host().WriteFile("/proc/43/cmdline", std::string(8 << 20, 'x') + "y");
    std::filesystem::resize_file(Host().Real("/proc/42/cmdline"), 16 << 20);
    std::ofstream(Host().Real("/proc/42/cmdline"), std::ios::in) << "prog";
    std::ofstream(Host().Real("/proc/42/cmdline"), std::ios::app) << "end";
    EXPECT_EQ(Read("/sched/processes/<pid>/cmdLine", {"42"})[""].size(), 4u);
    EXPECT_TRUE(Read("/sched/processes/<pid>/cmdLine", {"43"})[""] == std::string(8 << 20, 'x'));
}

TEST_F(ZelCapturedKernel, TheLoadIsCountedInThousandths)
{
    Host().WriteFile("/proc/loadavg", "0.50 12.25 0.07 3/127 4711\n");
    const Reading load = Read("/sched/load");
    EXPECT_EQ(load["oneMinute"] + " " + load["fiveMinutes"] + " " + load["fifteenMinutes"], "500 12250 70");
    EXPECT_EQ(load["running"] + "/" + load["threads"], "3/127");
}

TEST_F(ZelCapturedKernel, PowerSuppliesAreRead)
{
    const std::string battery = "/sys/class/power_supply/BAT0/";
    Host().WriteFile(battery + "type", "Battery\n").WriteFile(battery + "capacity", "87\n");
    Host().WriteFile(battery + "status", "Not charging\n").WriteFile(battery + "voltage_now", "12000000\n");
    Host().WriteFile(battery + "current_now", "-512000\n").WriteFile(battery + "power_now", "-6144000\n");
    Host().WriteFile("/sys/power/state", "freeze mem\n");
    EXPECT_THAT(Instances("/power/supplies"), ElementsAre("BAT0"));
    const Reading status = Read("/power/supplies/<supply>/status", {"BAT0"});
    EXPECT_EQ(status["kind"] + " " + status["capacityPercent"] + " " + status["status"], "Battery 87 Not charging");
    EXPECT_EQ(status["voltageMicrovolts"], "12000000");
    EXPECT_EQ(status["currentMicroamperes"] + " " + status["powerMicrowatts"], "-512000 -6144000");
    EXPECT_EQ(Read("/power/policy")["sleepStates"], "freeze mem");
}

TEST_F(ZelCapturedKernel, OneSnapshotReadsWhatTellsOfManyInstancesOnce)
{
    const auto capture = [this](const std::string& count) {
        Host().WriteFile("/proc/self/mountinfo", "20 1 8:" + count + " / / rw - ext4 /dev/sda1 rw\n");
        Host().WriteFile("/proc/net/dev", "eth0: " + count + " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
        Host().WriteFile("/proc/stat", "cpu0 " + count + "00 0 0 0 0 0 0 0 0 0\n");
    };
    const auto read = [] {
        return Read("/storage/mounts/<path>/info", {"/"})["minor"] + " " +
               Read("/net/interfaces/<interface>/stats", {"eth0"})["receivedBytes"] + " " +
               Read("/hardware/cpu/cpus/<cpu>/stats", {"0"})["userMs"];
    };
    Host().MakeFolder("/sys/devices/system/cpu/cpu0");
    capture("1");
    {
        const ZEL_Snapshot snapshot;
        EXPECT_EQ(read(), "1 1 1000");
        capture("2");
        EXPECT_EQ(read(), "1 1 1000");
    }
    EXPECT_EQ(read(), "2 2 2000");
}

TEST_F(ZelCapturedKernel, AFolderInPlaceOfAFileIsNoAnswer)
{
    Host().MakeFolder("/proc/meminfo");
    EXPECT_EQ(Read("/memory/stats").status, ORV_NOT_SUPPORTED);
}

TEST_F(ZelCapturedKernel, FactsThatAreStatedGoBeforeTheCapture)
{
    Host().WriteFile("/etc/talvor/platform/kernel.json",
                     R"({"capturedKernel": true, "tree": {"system": {"hostName": "stated"}}})");
    Host().WriteFile("/proc/sys/kernel/hostname", "captured\n").WriteFile("/proc/uptime", "1.5 1.5\n");
    EXPECT_EQ(Read("/system/hostName")[""], "stated");
    EXPECT_EQ(Read("/system/upTime")[""], "1500");
}
