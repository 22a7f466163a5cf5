#include <gmock/gmock.h>

#include <set>

#include "PowerCut.h"
#include "StagingCalls.h"

using ::testing::AnyOf;

// A host loses power before each single change that a staging call makes to its files: afterwards the earlier staging
// stands with its mode, or the new one with its own, and the call can be made again.
namespace
{
class StagingSweepTest : public PowerCutTest, public ::testing::WithParamInterface<StagingCall>
{
protected:
    StagingSweepTest()
    {
        StageRow("network/vswitch", "earlier", "{}");
        StageRow("system/keyboard", "", "{}");
        SetKey("BOOT_MODE", "2");
        Save();
    }

    /// False when the process was killed before change number @p killBefore.
    bool Stages(int killBefore)
    {
        const auto call = [] {
            GetParam().stage();
            return 0;
        };
        return Runs(call, killBefore);
    }
};

std::string NameOf(const ::testing::TestParamInfo<StagingCall>& info)
{
    return info.param.name;
}
}  // namespace

TEST_P(StagingSweepTest, APowerCutLeavesTheEarlierStagingWithItsModeOrTheNewOneWithItsOwn)
{
    const std::string earlier = CheckedStores();
    ASSERT_TRUE(Stages(0));
    const int changes = Changes();
    const std::string staged = CheckedStores();
    ASSERT_GT(changes, 5);
    ASSERT_NE(staged, earlier);
    std::set<std::string> outcomes;
    for (int change = 1; change <= changes && !HasFailure(); ++change) {
        StartAnew();
        ASSERT_FALSE(Stages(change)) << "change " << change << " never came";
        const std::string left = CheckedStores();
        EXPECT_THAT(left, AnyOf(earlier, staged)) << "before change " << change << " of " << changes;
        outcomes.insert(left);
        ASSERT_TRUE(Stages(0)) << "after a power cut before change " << change;
    }
    EXPECT_EQ(outcomes.size(), 2U);  // the sweep reached both sides of the commit
}

INSTANTIATE_TEST_SUITE_P(Of, StagingSweepTest, ::testing::ValuesIn(STAGING_CALLS), NameOf);
