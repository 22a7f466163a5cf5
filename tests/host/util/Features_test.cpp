#include <gmock/gmock.h>

#include "HostUtil.h"
#include "TestHost.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace
{
class FeaturesTest : public HostTest
{};

std::string Switches()
{
    const FeatureList features = FeatureState_InitSilentMode();
    std::string states;
    for (const bool enabled : {features.schemaVersioning, features.nimbioPlacement, features.shrinkableBackupRamdisk,
                               features.preserveNetworkConfiguration}) {
        states += enabled ? '1' : '0';
    }
    return states;
}

const char* const DEFAULTS = "1000";
}  // namespace

TEST_F(FeaturesTest, WithoutAFileTheDefaultsHoldSilently)
{
    EXPECT_EQ(Switches(), DEFAULTS);
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(FeaturesTest, EverySwitchIsRead)
{
    Host().WithFeatures(R"({"schemaVersioning": false, "nimbioPlacement": true, "shrinkableBackupRamdisk": true,
                           "preserveNetworkConfiguration": true})");
    EXPECT_EQ(Switches(), "0111");
}

TEST_F(FeaturesTest, AMissingMemberKeepsItsDefault)
{
    Host().WithFeatures(R"({"nimbioPlacement": true, "unknown": 1})");
    EXPECT_EQ(Switches(), "1100");
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(FeaturesTest, TheFileIsReadAnewEachTime)
{
    Host().WithFeatures(R"({"nimbioPlacement": true})");
    EXPECT_EQ(Switches(), "1100");
    Host().WithFeatures("{}");
    EXPECT_EQ(Switches(), DEFAULTS);
}

TEST_F(FeaturesTest, AFileThatDoesNotParseIsLoggedAndGivesTheDefaults)
{
    Host().WithFeatures(R"({"nimbioPlacement": true)");
    EXPECT_EQ(Switches(), DEFAULTS);
    EXPECT_THAT(
        Host().Log(),
        ElementsAre(StartsWith("error Cannot read feature switches from /etc/talvor/platform/features.json: Missing")));
}

TEST_F(FeaturesTest, AFileThatHoldsNoObjectIsLoggedAndGivesTheDefaults)
{
    Host().WithFeatures("[true]");
    EXPECT_EQ(Switches(), DEFAULTS);
    EXPECT_THAT(Host().Log(), ElementsAre("error Cannot read feature switches from "
                                          "/etc/talvor/platform/features.json: not an object"));
}

TEST_F(FeaturesTest, AFolderInPlaceOfTheFileIsLoggedAndGivesTheDefaults)
{
    Host().MakeFolder("/etc/talvor/platform/features.json");
    EXPECT_EQ(Switches(), DEFAULTS);
    EXPECT_THAT(Host().Log(), ElementsAre("error Cannot read feature switches from "
                                          "/etc/talvor/platform/features.json: Is a directory"));
}

TEST_F(FeaturesTest, ASwitchOfTheWrongTypeIsLoggedAndKeepsItsDefault)
{
    Host().WithFeatures(R"({"schemaVersioning": "no", "nimbioPlacement": true})");
    EXPECT_EQ(Switches(), "1100");
    EXPECT_THAT(Host().Log(),
                ElementsAre("error /etc/talvor/platform/features.json: \"schemaVersioning\" is not true or false"));
}
