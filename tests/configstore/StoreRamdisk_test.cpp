#include "StoreRamdisk.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <cerrno>

#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "PrivateNamespace.h"
#include "TestHost.h"
#include "Thrown.h"
#include "ZEL.h"

using NimbConfigStore::SetupStoreRamDisk;
using NimbConfigStore::SetupStoreRamdiskUsageLimits;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
const char* const LIMITS_FILE = "/var/run/talvor/zel/memUsageLimit/configstore";
const char* const STORE_MOUNT = "none /etc/talvor/configstore quenfs 0 32,32,0,0,0,00644,configstore";
const char* const BACKUP_MOUNT = "none /var/lib/talvor/configstore/backup quenfs 0 32,32,0,0,0,00644,configstorebkp";
const char* const SHRINKABLE_MOUNT = "none /var/lib/talvor/configstore/backup quenfs 0 0,32,0,0,0,00644,configstorebkp";

/// While one exists, mounts are noted instead of made, and fail as told.
struct MountNotes
{
    MountNotes() { current = this; }
    ~MountNotes() { current = nullptr; }
    MountNotes(const MountNotes&) = delete;
    MountNotes& operator=(const MountNotes&) = delete;

    std::vector<std::string> mounts;
    std::string failingPoint;
    static MountNotes* current;
};
MountNotes* MountNotes::current = nullptr;

/// Parameter lists that there are, and which call fails: "add string", "add 80", "add 90".
int livingLists = 0;
std::string failingCall;

// The host's own function behind one that is replaced here.
template <typename Function>
Function* Original(const char* mangledName)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, mangledName));
}

class StoreRamdisk : public HostTest
{
protected:
    StoreRamdisk() { failingCall.clear(); }
    void TearDown() override { EXPECT_EQ(livingLists, 0); }

    /// The one error line, and the exception, that a failed call leaves.
    void ExpectFailure(const std::string& function, const std::string& message)
    {
        const std::vector<std::string> log = Host().Log();
        ASSERT_FALSE(log.empty());
        EXPECT_EQ(log.back(), "error CONFIGSTORE:" + function + ":" + message);
    }
};
}  // namespace

int HostMount(const char* source, const char* point, const char* type, unsigned long flags, const char* data)
{
    static const auto original = Original<decltype(HostMount)>("_Z9HostMountPKcS0_S0_mS0_");
    if (MountNotes::current == nullptr) {
        return original(source, point, type, flags, data);
    }
    const std::string note = std::string(source) + " " + point + " " + type + " " + std::to_string(flags) + " " + data;
    MountNotes::current->mounts.push_back(note);
    return MountNotes::current->failingPoint == point ? ENOMEM : 0;
}

ZEL_ParamList* ZEL_ParamListCreate(int isInstance, int capacity)
{
    static const auto original = Original<decltype(ZEL_ParamListCreate)>("_Z19ZEL_ParamListCreateii");
    ++livingLists;
    return original(isInstance, capacity);
}

void ZEL_ParamListDestroy(ZEL_ParamList* list)
{
    static const auto original = Original<decltype(ZEL_ParamListDestroy)>("_Z20ZEL_ParamListDestroyP13ZEL_ParamList");
    livingLists -= list != nullptr ? 1 : 0;
    original(list);
}

ORV_ReturnStatus ZEL_ParamListAddString(ZEL_ParamList* list, const char* text)
{
    static const auto original =
        Original<decltype(ZEL_ParamListAddString)>("_Z22ZEL_ParamListAddStringP13ZEL_ParamListPKc");
    return failingCall == "add string" ? ORV_NO_MEMORY : original(list, text);
}

ORV_ReturnStatus ZEL_ParamListAddInt(ZEL_ParamList* list, std::int64_t number)
{
    static const auto original = Original<decltype(ZEL_ParamListAddInt)>("_Z19ZEL_ParamListAddIntP13ZEL_ParamListl");
    return failingCall == "add " + std::to_string(number) ? ORV_LIMIT_EXCEEDED : original(list, number);
}

TEST_F(StoreRamdisk, TheStoreIsMountedThenLimitedThenItsBackupMounted)
{
    MountNotes notes;
    EXPECT_EQ(SetupStoreRamDisk(), 0);
    EXPECT_THAT(notes.mounts, ElementsAre(STORE_MOUNT, BACKUP_MOUNT));
    EXPECT_EQ(Host().ReadFile(LIMITS_FILE), "80 90\n");
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(StoreRamdisk, TheBackupFollowsTheFeatureSwitchAtEachCall)
{
    MountNotes notes;
    Host().WithFeatures(R"({"shrinkableBackupRamdisk": true})");
    EXPECT_EQ(SetupStoreRamDisk(), 0);
    Host().WithFeatures(R"({"shrinkableBackupRamdisk": false})");
    EXPECT_EQ(SetupStoreRamDisk(), 0);
    EXPECT_THAT(notes.mounts, ElementsAre(STORE_MOUNT, SHRINKABLE_MOUNT, STORE_MOUNT, BACKUP_MOUNT));
}

TEST_F(StoreRamdisk, AStoreThatCannotBeMountedEndsTheSetUp)
{
    MountNotes notes;
    notes.failingPoint = "/etc/talvor/configstore";
    EXPECT_EQ(ThrownBy(SetupStoreRamDisk), "2000 Failed to reserve memory for ConfigStore");
    ExpectFailure("SetupStoreRamDisk", "Failed to reserve memory for ConfigStore");
    EXPECT_EQ(Host().Log()[0], "warning Cannot mount a ramdisk at /etc/talvor/configstore: Cannot allocate memory");
    EXPECT_THAT(notes.mounts, ElementsAre(STORE_MOUNT));
    EXPECT_FALSE(Host().Exists(LIMITS_FILE));
}

TEST_F(StoreRamdisk, AMissingMountPointEndsTheSetUp)
{
    Host().Remove("/etc/talvor/configstore");
    EXPECT_EQ(ThrownBy(SetupStoreRamDisk), "2000 Failed to reserve memory for ConfigStore");
    EXPECT_EQ(Host().Log()[0], "warning Cannot mount a ramdisk at /etc/talvor/configstore: No such file or directory");
    EXPECT_FALSE(Host().Exists(LIMITS_FILE));
}

TEST_F(StoreRamdisk, ABackupThatCannotBeMountedLeavesTheStoreMountedAndLimited)
{
    MountNotes notes;
    notes.failingPoint = "/var/lib/talvor/configstore/backup";
    EXPECT_EQ(ThrownBy(SetupStoreRamDisk), "2000 Failed to reserve memory for ConfigStore backup");
    ExpectFailure("SetupStoreRamDisk", "Failed to reserve memory for ConfigStore backup");
    EXPECT_THAT(notes.mounts, ElementsAre(STORE_MOUNT, BACKUP_MOUNT));
    EXPECT_EQ(Host().ReadFile(LIMITS_FILE), "80 90\n");
}

TEST_F(StoreRamdisk, LimitsThatTheKernelRejectsLeaveTheBackupUnmounted)
{
    MountNotes notes;
    Host().WriteFile("/var/run/talvor/zel", "a file where the folder should be");
    EXPECT_EQ(ThrownBy(SetupStoreRamDisk), "2000 Failed to set warning and error usage limits");
    ExpectFailure("SetupStoreRamdiskUsageLimits", "Failed to set warning and error usage limits");
    EXPECT_THAT(notes.mounts, ElementsAre(STORE_MOUNT));
}

TEST_F(StoreRamdisk, AKernelOfAnotherInterfaceTakesNoLimits)
{
    MountNotes notes;
    Host().WriteFile("/etc/talvor/platform/kernel.json", R"({"interfaceVersion": 20})");
    EXPECT_EQ(ThrownBy(SetupStoreRamDisk), "2000 ZEL_CheckSig Failed");
    ExpectFailure("SetupStoreRamdiskUsageLimits", "ZEL_CheckSig Failed");
    EXPECT_THAT(notes.mounts, ElementsAre(STORE_MOUNT));
}

TEST_F(StoreRamdisk, EachParameterThatIsNotTakenIsNamedAndNoListIsLeft)
{
    const std::pair<const char*, const char*> failures[] = {
        {"add string", "Failed to add ramdisk(disk) to ZEL_ParamList: Out of memory"},
        {"add 80", "Failed to add warning limit to ramdisk(disk): Limit exceeded"},
        {"add 90", "Failed to add error limit to ramdisk(disk): Limit exceeded"}};
    for (const auto& [call, message] : failures) {
        failingCall = call;
        EXPECT_EQ(ThrownBy([] { SetupStoreRamdiskUsageLimits("disk"); }), std::string("2000 ") + message);
        ExpectFailure("SetupStoreRamdiskUsageLimits", message);
        EXPECT_EQ(livingLists, 0) << call;
    }
    EXPECT_EQ(Host().Log().size(), 3u);
    EXPECT_FALSE(Host().Exists("/var/run/talvor/zel"));
}

TEST_F(StoreRamdisk, BothRamdisksAreMounted)
{
    const std::string unavailable = RunInPrivateNamespace([this] {
        Host().WriteFile("/etc/talvor/configstore/under", "hidden by the ramdisk");
        EXPECT_EQ(ThrownBy(SetupStoreRamDisk), "nothing");
        EXPECT_FALSE(Host().Exists("/etc/talvor/configstore/under"));
        Host().WriteFile("/etc/talvor/configstore/current-store-1", "in memory");
        // Mounted already: neither limits nor backup are touched again.
        Host().Remove(LIMITS_FILE);
        EXPECT_EQ(ThrownBy(SetupStoreRamDisk), "2000 Failed to reserve memory for ConfigStore");
        EXPECT_EQ(Host().ReadFile("/etc/talvor/configstore/current-store-1"), "in memory");
        EXPECT_FALSE(Host().Exists(LIMITS_FILE));
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
    EXPECT_FALSE(Host().Exists("/etc/talvor/configstore/current-store-1"));
}
