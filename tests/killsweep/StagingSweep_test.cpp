#include <gmock/gmock.h>

#include "ConfigStoreDocument.h"
#include "NimbConfigStore.h"
#include "PowerCut.h"

using NimbConfigStore::JsonDocument;
using ::testing::AnyOf;

// A host loses power before each single change that a staging call makes to its files: afterwards the earlier staging
// stands with its mode, or the new one with its own, and the call can be made again.
namespace
{
constexpr const char* DOCUMENT = R"({"nimb": {"network": {"dns": {"hostname": "new"},
                                                          "vswitch": [{"name": "a"}, {"name": "b"}]}}})";

struct Staging
{
    const char* name;
    void (*call)();
};

void StageDocument(void (*stage)(JsonDocument&))
{
    JsonDocument document;
    (void)ConfigStoreDocument::ParseText(DOCUMENT, document);
    stage(document);
}

constexpr Staging STAGINGS[] = {
    {"DesiredDocument", [] { StageDocument(NimbConfigStore::SetDesiredUserConfig); }},
    {"SmartnicConfiguration", [] { StageDocument(NimbConfigStore::SetDesiredSmartnicConfiguration); }},
    {"HostApiDelete", [] { NimbConfigStore::DeleteHostAPIConfiguration("nimb", "network", "dns"); }},
};

[[maybe_unused]] void PrintTo(const Staging& staging, std::ostream* out)
{
    *out << staging.name;
}

class StagingSweepTest : public PowerCutTest, public ::testing::WithParamInterface<Staging>
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
            GetParam().call();
            return 0;
        };
        return Runs(call, killBefore);
    }
};

std::string NameOf(const ::testing::TestParamInfo<Staging>& info)
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
    for (int change = 1; change <= changes && !HasFailure(); ++change) {
        StartAnew();
        ASSERT_FALSE(Stages(change)) << "change " << change << " never came";
        EXPECT_THAT(CheckedStores(), AnyOf(earlier, staged)) << "before change " << change << " of " << changes;
        ASSERT_TRUE(Stages(0)) << "after a power cut before change " << change;
    }
}

INSTANTIATE_TEST_SUITE_P(Of, StagingSweepTest, ::testing::ValuesIn(STAGINGS), NameOf);
