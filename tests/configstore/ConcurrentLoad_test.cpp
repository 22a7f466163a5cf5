#include <gmock/gmock.h>

#include <functional>

#include "BootHost.h"
#include "ChildProcess.h"
#include "NimbConfigStore.h"

using namespace NimbConfigStore;

namespace
{
constexpr int ROUNDS = 5;

class ConcurrentLoadTest : public BootHostTest
{
protected:
    /// Does @p work over and over in a process of its own.
    static pid_t Repeat(const std::function<bool()>& work)
    {
        return StartProcess([&work] {
            bool succeeded = true;
            for (int round = 0; round < ROUNDS; ++round) {
                succeeded = work() && succeeded;
            }
            return succeeded;
        });
    }
};

// The staged rows are applied by one of the loads; each of them reads a store that is either before or after that.
bool Load()
{
    return LoadStore(false) == 0;
}

bool Read()
{
    const BOOTMODE mode = GetBootMode();
    (void)IsAutoConf();
    return (mode == BOOTMODE_NONE || mode == BOOTMODE_HOSTAPI) && GetBootTimeRestoreFailures().empty();
}
}  // namespace

TEST_F(ConcurrentLoadTest, LoadsAndReadersInSeveralProcessesWaitForEachOther)
{
    AddRow("network/dns", "", R"({"hostname": "old"})");
    StageRow("network/dns", "", R"({"hostname": "new"})");
    StageRow("network/vswitch", "vSwitch1", "{}");
    SetKey("BOOT_MODE", "4");
    const pid_t children[] = {Repeat(Load), Repeat(Load), Repeat(Read)};
    for (const pid_t child : children) {
        EXPECT_TRUE(Succeeded(child));
    }
    EXPECT_TRUE(DBStore::Check(DBStore::StorePath(DBStore::Type::ConfigStore)));
    EXPECT_EQ(UserValue("network/dns"), R"({"hostname": "new"})");
    EXPECT_EQ(UserValue("network/vswitch", "vSwitch1"), "{}");
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "0");
    EXPECT_EQ(Host().KeyValue("BOOT_APPLY_RESULT"), R"({"isBootComplete":false})");
    EXPECT_THAT(Host().EventIds(), ::testing::IsEmpty());
}
