#include <gmock/gmock.h>

#include "TestHost.h"
#include "ZelTreeReader.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ZelStatedFacts : public HostTest
{
protected:
    void State(const std::string& tree)
    {
        Host().WriteFile("/etc/talvor/platform/kernel.json", R"({"tardisks": {}, "tree": )" + tree + "}");
        Host().ClearLogs();
    }
};

TEST_F(ZelStatedFacts, AnyNodeCanBeStated)
{
    State(R"({"system": {"upTime": 1500, "hostName": "lab7"},
              "net": {"interfaces": {"nic0": {
                  "config": {"mac": "02:fc:56:aa:BB:01", "mtu": 9000, "operationState": "up", "up": true, "index": 3},
                  "ipv4Addresses": [{"address": "10.0.0.5", "prefixLength": 24}, {"address": "10.0.1.5"}],
                  "ipv6Addresses": [{"address": "fe80::1", "prefixLength": 64, "scope": "link"}]}}}})");
    EXPECT_EQ(Read("/system/upTime")[""], "1500");
    EXPECT_EQ(Read("/system/hostName")[""], "lab7");
    EXPECT_THAT(Instances("/net/interfaces"), ElementsAre("nic0"));
    const Reading config = Read("/net/interfaces/<interface>/config", {"nic0"});
    EXPECT_EQ(config["mac"] + " " + config["mtu"] + " " + config["operationState"], "02:fc:56:aa:bb:01 9000 up");
    EXPECT_EQ(config["up"] + config["carrier"] + config["speed"], "truefalse0");
    const Reading ipv4 = Read("/net/interfaces/<interface>/ipv4Addresses", {"nic0"});
    ASSERT_EQ(ipv4.elements.size(), 2u);
    EXPECT_EQ(ipv4.elements[0].at("address") + "/" + ipv4.elements[0].at("prefixLength"), "10.0.0.5/24");
    EXPECT_EQ(ipv4.elements[1].at("broadcast"), "0.0.0.0");
    EXPECT_EQ(Read("/net/interfaces/<interface>/ipv6Addresses", {"nic0"})["scope"], "link");
}

TEST_F(ZelStatedFacts, WhatIsNotStatedIsNotSupportedAndInstancesAreNotFound)
{
    State(R"({"net": {"interfaces": {"nic0": {}}}})");
    EXPECT_EQ(Read("/memory/stats").status, ORV_NOT_SUPPORTED);
    EXPECT_EQ(Read("/net/interfaces/<interface>/config", {"nic0"}).status, ORV_NOT_SUPPORTED);
    EXPECT_EQ(Read("/net/interfaces/<interface>/config", {"nic1"}).status, ORV_NOT_FOUND);
    EXPECT_THAT(Instances("/sched/processes"), IsEmpty());
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(ZelStatedFacts, InstancesAreSortedByTheirKind)
{
    State(R"({"sched": {"processes": {"10": {}, "9": {}, "007": {}, "x": {}, "": {}, "100": {}}},
              "storage": {"mounts": {"/b": {}, "/": {}, "": {}, "/a c": {}}}})");
    EXPECT_THAT(Instances("/sched/processes"), ElementsAre("9", "10", "100"));
    EXPECT_THAT(Instances("/storage/mounts"), ElementsAre("/", "/a c", "/b"));
}

TEST_F(ZelStatedFacts, AValueOfAnotherTypeIsNamedByItsPlace)
{
    const std::string file = "error The kernel's facts in /etc/talvor/platform/kernel.json: ";
    const std::pair<const char*, const char*> wrong[] = {
        {R"({"system": {"upTime": -1}})", "/system/upTime: not a value of type uint64"},
        {R"({"system": {"upTime": "1"}})", "/system/upTime: not a value of type uint64"},
        {R"({"system": {"upTime": null}})", "/system/upTime: not a value of type uint64"},
        {R"({"system": {"upTime": 18446744073709551616}})", "/system/upTime: not a value of type uint64"}};
    for (const auto& [tree, message] : wrong) {
        State(tree);
        EXPECT_EQ(Read("/system/upTime").status, ORV_FAILURE) << tree;
        EXPECT_THAT(Host().Log(), ElementsAre(file + message));
    }
}

TEST_F(ZelStatedFacts, AMemberOfAnotherTypeIsNamedToo)
{
    const std::pair<const char*, const char*> wrong[] = {
        {R"({"mac": "02:fc:56:aa:bb"})", "mac: not a value of type mac"},
        {R"({"mac": "02:fc:56:aa:bb:0g"})", "mac: not a value of type mac"},
        {R"({"mtu": 4294967296})", "mtu: not a value of type uint32"},
        {R"({"up": 1})", "up: not a value of type bool"},
        {R"({"hardwareType": 65536})", "hardwareType: not a value of type uint16"},
        {R"({"operationState": "upp"})", "operationState: not a value of type operationState"},
        {R"({"speeed": 1})", "no member speeed in interfaceConfig"},
        {R"([])", "not a value of type interfaceConfig"}};
    for (const auto& [config, message] : wrong) {
        State(std::string(R"({"net": {"interfaces": {"nic0": {"config": )") + config + "}}}}");
        EXPECT_EQ(Read("/net/interfaces/<interface>/config", {"nic0"}).status, ORV_FAILURE) << config;
        ASSERT_EQ(Host().Log().size(), 1u) << config;
        EXPECT_THAT(Host().Log()[0], HasSubstr("/net/interfaces/nic0/config: " + std::string(message)));
    }
}

TEST_F(ZelStatedFacts, ATextFitsItsMember)
{
    State(R"({"sched": {"processes": {"1": {"stats": {"name": ")" + std::string(63, 'n') + R"("}}}}})");
    EXPECT_EQ(Read("/sched/processes/<pid>/stats", {"1"})["name"], std::string(63, 'n'));
    State(R"({"sched": {"processes": {"1": {"stats": {"name": ")" + std::string(64, 'n') + R"("}}}}})");
    EXPECT_EQ(Read("/sched/processes/<pid>/stats", {"1"}).status, ORV_FAILURE);
}

TEST_F(ZelStatedFacts, ATreeOfAnotherShapeStatesNothing)
{
    for (const char* tree : {"7", "[]", "null", R"({"system": 7})", R"({"system": {"upTime": {}}, "net": []})"}) {
        State(tree);
        EXPECT_NE(Read("/system/upTime").status, ORV_OK) << tree;
        EXPECT_THAT(Instances("/net/interfaces"), IsEmpty()) << tree;
    }
}

TEST_F(ZelStatedFacts, AMissingFileIsAFailureThatNamesIt)
{
    Host().Remove("/etc/talvor/platform/kernel.json");
    EXPECT_EQ(Read("/memory/stats").status, ORV_FAILURE);
    EXPECT_THAT(Instances("/net/interfaces"), ElementsAre("status 1"));
    EXPECT_THAT(Host().Log()[0], HasSubstr("Cannot read the kernel's facts"));
}

TEST_F(ZelStatedFacts, RamdisksAreThoseStatedAndThoseWithLimits)
{
    State(R"({"system": {"quenfs": {"ramdisks": {"tmp": {"stats": {"totalBytes": 100, "state": "warning"}}}}}})");
    Host().WriteFile("/var/run/talvor/zel/memUsageLimit/configstore", "80 90\n");
    EXPECT_THAT(Instances("/system/quenfs/ramdisks"), ElementsAre("configstore", "tmp"));
    EXPECT_EQ(Read("/system/quenfs/ramdisks/<ramdisk>/stats", {"tmp"})["state"], "warning");
    EXPECT_EQ(Read("/system/quenfs/ramdisks/<ramdisk>/stats", {"configstore"}).status, ORV_NOT_FOUND);
    EXPECT_EQ(Read("/system/quenfs/ramdisks/<ramdisk>/memUsageLimit", {"configstore"})["errorPercent"], "90");
}

TEST_F(ZelStatedFacts, OneSnapshotSeesOneState)
{
    State(R"({"system": {"upTime": 1}})");
    {
        const ZEL_Snapshot outer;
        const ZEL_Snapshot inner;
        EXPECT_EQ(Read("/system/upTime")[""], "1");
        State(R"({"system": {"upTime": 2}})");
        EXPECT_EQ(Read("/system/upTime")[""], "1");
    }
    EXPECT_EQ(Read("/system/upTime")[""], "2");
}
