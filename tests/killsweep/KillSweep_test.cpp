#include <gmock/gmock.h>

#include <ostream>

#include "NimbConfigStore.h"
#include "PowerCut.h"
#include "StoreFiles.h"

// A host loses power before each single change that a boot makes to its files, boots again, and must end up as a
// host that never lost power: the same rows, sound databases, nothing staged lost or half applied.
namespace
{
constexpr int SHARDS = 4;  // each a test of its own, so that they run side by side

struct Boot
{
    const char* name;
    const char* mode;     // of the staged rows; empty: nothing is staged
    bool hasBackup;       // without one the boot document is applied to a fresh store
    bool upgrade;         // the boot bank changed
    bool restore = true;  // LoadStore's flag
};

[[maybe_unused]] void PrintTo(const Boot& boot, std::ostream* out)
{
    *out << boot.name;
}

constexpr Boot BOOTS[] = {
    {"DesiredDocument", "1", true, false},
    {"SmartnicConfiguration", "3", true, false},
    {"HostApiConfiguration", "4", true, false},
    {"BootDocument", "", false, false},
    {"UpgradeWithDesiredDocument", "1", true, true},
    {"DesiredDocumentInPlace", "1", false, false, false},
    {"BootDocumentInPlace", "2", false, false, false},
    {"SmartnicConfigurationInPlace", "3", false, false, false},
    {"HostApiConfigurationInPlace", "4", false, false, false},
};

class KillSweepTest : public PowerCutTest, public ::testing::WithParamInterface<std::tuple<Boot, int>>
{
protected:
    KillSweepTest()
    {
        Prepare(std::get<Boot>(GetParam()));
        Save();
    }

    // Boots the host as it was prepared, once undisturbed. @return how many changes the boot made.
    int BootUndisturbed()
    {
        StartAnew();
        EXPECT_TRUE(Loads(0));
        EXPECT_THAT(Host().EventIds(), ::testing::Not(::testing::Contains("zub.user.cs.desired.config.error")));
        return Changes();
    }

    // The same with a power cut before one change, and a second boot.
    void BootWithPowerCutBefore(int change)
    {
        StartAnew();
        ASSERT_FALSE(Loads(change)) << "change " << change << " never came";
        ASSERT_TRUE(Loads(0)) << "after a power cut before change " << change;
    }

    std::string Stores()
    {
        if (!std::get<Boot>(GetParam()).restore) {
            // In place it tells of the last boot alone, which found the mode taken back when the first was cut later.
            Host().Sql("DELETE FROM KeyValue WHERE Key = 'BOOT_INFO'");
        }
        return CheckedStores();
    }

private:
    void Prepare(const Boot& boot)
    {
        AddRow("network/dns", "", R"({"hostname": "old"})");
        AddRow("network/vswitch", "gone", R"({"name": "gone"})");
        AddRow("security/accounts", "root", R"({"name": "root"})");
        AddRow("system/keyboard", "", R"({"layout": "us"})");
        StageRow("network/vswitch", "new", R"({"name": "new"})");
        if (boot.mode != std::string("3")) {  // which takes no live row of an object that is not shared
            StageRow("network/dns", "", R"({"hostname": "new"})");
        }
        StageRow("system/keyboard", "", "", "DELETE");
        SetKey("BOOT_MODE", boot.mode);
        Host().WriteFile(BOOT_DOCUMENT,
                         R"({"nimb": {"network": {"dns": {"hostname": "boot"}, "vswitch": [{"name": "a"}]}}})");
        Host().WriteFile("/etc/x.conf", "").WriteFile("/var/run/nonSchemaFiles", "etc/x.conf");
        if (boot.hasBackup) {
            SaveBackup();
        }
        if (boot.upgrade) {
            Host().WithPackage("net-core", "1.1.0_1.0", R"([{"component": "nimb", "group": "network", "key":
                               "vswitch", "singleton": false, "dspIntegrated": true, "schema": {"type": "object",
                               "properties": {"name": {"type": "string", "instanceId": true}}}}])");
            Host().WithKernel({.bootFsUUID = OTHER_UUID});
        }
    }

    bool Loads(int killBefore)
    {
        return Runs([] { return NimbConfigStore::LoadStore(std::get<Boot>(GetParam()).restore); }, killBefore);
    }
};

std::string NameOf(const ::testing::TestParamInfo<std::tuple<Boot, int>>& info)
{
    return std::string(std::get<Boot>(info.param).name) + std::to_string(std::get<int>(info.param));
}
}  // namespace

TEST_P(KillSweepTest, APowerCutBeforeAnyChangeLeavesNoTrace)
{
    const int changes = BootUndisturbed();
    const std::string expected = Stores();
    ASSERT_GT(changes, 20);
    for (int change = 1 + std::get<int>(GetParam()); change <= changes && !HasFailure(); change += SHARDS) {
        BootWithPowerCutBefore(change);
        EXPECT_EQ(Stores(), expected) << "after a power cut before change " << change << " of " << changes;
        EXPECT_FALSE(Host().Exists("/etc/x.conf"));
        EXPECT_THAT(HalfWrittenFiles(), ::testing::IsEmpty()) << "after a power cut before change " << change;
    }
}

INSTANTIATE_TEST_SUITE_P(Of, KillSweepTest, ::testing::Combine(::testing::ValuesIn(BOOTS), ::testing::Range(0, SHARDS)),
                         NameOf);
