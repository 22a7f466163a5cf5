#include "ObjectPath.h"

#include <gmock/gmock.h>

using namespace ConfigStoreCtl;
using ::testing::ElementsAre;

TEST(ObjectPath, SplitsAtTheFirstThreeSlashes)
{
    EXPECT_THAT(SplitObjectPath("nimb"), ElementsAre("nimb"));
    EXPECT_THAT(SplitObjectPath("nimb/network/dns"), ElementsAre("nimb", "network", "dns"));
    EXPECT_THAT(SplitObjectPath("nimb/network/portgroups/vm/net"),
                ElementsAre("nimb", "network", "portgroups", "vm/net"));
}

TEST(ObjectPath, OfAnObjectHasThreeParts)
{
    EXPECT_EQ(CheckObject("a/b/c"), "");
    for (const char* path : {"", "a", "a/b", "a/b/", "/b/c", "a//c", "a/b/c/d"}) {
        EXPECT_NE(CheckObject(path), "") << path;
    }
}

TEST(ObjectPath, OfAnInstanceHasThreeOrFourParts)
{
    EXPECT_EQ(CheckInstance("a/b/c"), "");
    EXPECT_EQ(CheckInstance("a/b/c/d/e"), "");
    EXPECT_EQ(CheckInstance("a/b"), "'a/b' is not of the form COMPONENT/GROUP/KEY[/IDENTIFIER]");
    EXPECT_NE(CheckInstance("a/b/c/"), "");
}

TEST(ObjectPath, OfAFilterHasOneToThreeParts)
{
    EXPECT_EQ(CheckFilter("a"), "");
    EXPECT_EQ(CheckFilter("a/b"), "");
    EXPECT_EQ(CheckFilter("a/b/c"), "");
    EXPECT_NE(CheckFilter("a/b/c/d"), "");
    EXPECT_NE(CheckFilter("a/"), "");
}
