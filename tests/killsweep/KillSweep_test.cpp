#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <ostream>

#include "BootHost.h"
#include "FileOperations.h"
#include "NimbConfigStore.h"

namespace fs = std::filesystem;

// A host loses power before each single change that a boot makes to its files, boots again, and must end up as a
// host that never lost power: the same rows, sound databases, nothing staged lost or half applied.
namespace
{
constexpr int SHARDS = 4;  // each a test of its own, so that they run side by side
constexpr const char* OTHER_UUID = "0b1c2d3e-4f50-4a61-8b72-9c83ad94be05";

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
    {"DesiredDocument", "1", true, false},           {"SmartnicConfiguration", "3", true, false},
    {"HostApiConfiguration", "4", true, false},      {"BootDocument", "", false, false},
    {"UpgradeWithDesiredDocument", "1", true, true}, {"DesiredDocumentInPlace", "1", false, false, false},
};

class KillSweepTest : public BootHostTest, public ::testing::WithParamInterface<std::tuple<Boot, int>>
{
protected:
    KillSweepTest()
        : counter_(
              static_cast<int*>(mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)))
    {
        Prepare(std::get<Boot>(GetParam()));
    }

    ~KillSweepTest() override
    {
        munmap(counter_, sizeof(int));
        fs::remove_all(Prepared());
    }

    // Boots the host as it was prepared, once undisturbed. @return how many changes the boot made.
    int BootUndisturbed()
    {
        StartAnew();
        EXPECT_TRUE(Loads(0));
        return *counter_;
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
        for (const auto type : {DBStore::Type::ConfigStore, DBStore::Type::DataFileStore, DBStore::Type::SchemaStore}) {
            EXPECT_TRUE(DBStore::Check(DBStore::StorePath(type))) << DBStore::StorePath(type);
        }
        return DumpStore(DBStore::Type::ConfigStore) + DumpStore(DBStore::Type::DataFileStore) +
               DumpStore(DBStore::Type::SchemaStore);
    }

private:
    fs::path Prepared() { return Host().Root() + ".prepared"; }

    void Prepare(const Boot& boot)
    {
        AddRow("network/dns", "", R"({"hostname": "old"})");
        AddRow("network/vswitch", "gone", R"({"name": "gone"})");
        AddRow("security/accounts", "root", R"({"name": "root"})");
        AddRow("system/keyboard", "", R"({"layout": "us"})");
        StageRow("network/vswitch", "new", R"({"name": "new"})");
        StageRow("network/dns", "", R"({"hostname": "new"})");
        StageRow("system/keyboard", "", "", "DELETE");
        SetKey("BOOT_MODE", boot.mode);
        Host().WriteFile("/etc/talvor/boot_configuration.json",
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
        fs::copy(Host().Root(), Prepared(), fs::copy_options::recursive);
    }

    void StartAnew()
    {
        fs::remove_all(Host().Root());
        fs::copy(Prepared(), Host().Root(), fs::copy_options::recursive);
    }

    // Boots in a process of its own. False when that was killed; the load itself must succeed.
    bool Loads(int killBefore)
    {
        const pid_t child = fork();
        if (child == 0) {
            FileOperations::Watch(counter_, killBefore);
            _exit(NimbConfigStore::LoadStore(std::get<Boot>(GetParam()).restore));
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) ? WTERMSIG(status) == SIGKILL : WEXITSTATUS(status) == 0);
        return !WIFSIGNALED(status);
    }

    int* counter_;  // shared with the child
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
    }
}

INSTANTIATE_TEST_SUITE_P(Of, KillSweepTest, ::testing::Combine(::testing::ValuesIn(BOOTS), ::testing::Range(0, SHARDS)),
                         NameOf);
