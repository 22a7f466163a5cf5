#include <gmock/gmock.h>

#include <string>
#include <tuple>

#include "BootHost.h"
#include "StagedConfiguration.h"
#include "StoreDisk.h"
#include "StoreFiles.h"

using NimbConfigStore::ApplyStagedConfiguration;

// The disk fills up while a boot applies what is staged: all of it is applied or nothing, and the next boot starts from
// there. A disk that has room again a moment later is the harder case: whoever goes on after a failure then succeeds.
namespace
{
std::string Large(const std::string& name)
{
    return R"({"name": ")" + name + R"(", "note": ")" + std::string(20000, 'x') + R"("})";
}

using Trouble = std::tuple<int, bool>;  // the boot mode; whether the disk stays full

class FullDiskTest : public BootHostTest, public testing::WithParamInterface<Trouble>
{
protected:
    FullDiskTest()
    {
        const int mode = std::get<int>(GetParam());
        AddRow("network/dns", "", R"({"hostname": "old"})");
        AddRow("network/vswitch", "gone", Large("gone"));
        AddRow("security/accounts", "root", R"({"name": "root"})");
        AddRow("system/keyboard", "", R"({"layout": "us"})");
        Host().Sql("UPDATE Config SET DesiredValue = '{\"layout\": \"de\"}' WHERE Name = 'keyboard'");
        StageRow("network/vswitch", "new", Large("new"));
        StageRow("network/vswitch", "other", Large("other"));
        if (mode != 3) {  // which takes no live row of an object that is not shared
            StageRow("network/dns", "", R"({"hostname": "new"})");
        }
        StageRow("network/vswitch", "gone", "", "DELETE_INSTANCE");
        SetKey("BOOT_MODE", std::to_string(mode));
        Host().WriteFile(BOOT_DOCUMENT, R"({"nimb": {"network": {"dns": {"hostname": "boot"}, "vswitch": [)" +
                                            Large("a") + "," + Large("b") + "," + Large("c") + "]}}}");
    }

    /// Its rows but the word on how the last boot went, which is written afterwards.
    std::string Store()
    {
        Host().Sql("DELETE FROM KeyValue WHERE Key = 'BOOT_INFO'");
        return DumpStore(DBStore::Type::ConfigStore);
    }

    std::string StoreAfterAnUndisturbedApply()
    {
        const std::string file = Host().ReadFile(STORE);
        ApplyStagedConfiguration();
        std::string rows = Store();
        Host().WriteFile(STORE, file);
        return rows;
    }

    /// False when the boot reported a failure.
    bool Applies(int growths)
    {
        Host().ClearLogs();
        StoreDisk disk;
        disk.FillUpAfter(growths, std::get<bool>(GetParam()) ? StoreDisk::ALL : 1);
        ApplyStagedConfiguration();
        return Host().EventIds().empty();
    }
};

std::string NameOf(const testing::TestParamInfo<Trouble>& info)
{
    return "Mode" + std::to_string(std::get<int>(info.param)) + (std::get<bool>(info.param) ? "ForGood" : "ForAMoment");
}
}  // namespace

TEST_P(FullDiskTest, TheConfigurationIsAppliedWholeOrNotAtAll)
{
    const std::string after = StoreAfterAnUndisturbedApply();
    const std::string before = Store();
    ASSERT_NE(before, after);
    int growths = 0;
    for (; !Applies(growths); ++growths) {
        ASSERT_EQ(Store(), before) << growths;
    }
    EXPECT_GT(growths, 2);
    EXPECT_EQ(Store(), after) << growths;
}

INSTANTIATE_TEST_SUITE_P(Of, FullDiskTest, testing::Combine(testing::Range(0, 5), testing::Bool()), NameOf);
