#include "CommandTest.h"

namespace
{
constexpr const char* NO_STORE = "/etc/talvor/configstore/current-store-1: cannot be opened: No such file or directory";

/// autoconf, live-install and install-info.
using StateCommandsTest = CommandTest;
}  // namespace

TEST_F(StateCommandsTest, AutoConfIsOpenBetweenStartAndEnd)
{
    Host().WithStores();
    ExpectGolden("autoconf-start", {"autoconf", "start"});
    EXPECT_EQ(Host().KeyValue("IS_BOOT"), "true");
    ExpectGolden("autoconf-status", {"autoconf", "status"});
    ExpectGolden("autoconf-end", {"autoconf", "end"});
    EXPECT_EQ(Run({"autoconf", "status"}).output, "automatic configuration  no\n");
}

TEST_F(StateCommandsTest, LiveInstallIsMarkedAndUnmarked)
{
    Host().WithStores();
    ExpectGolden("live-install", {"live-install", "true"});
    EXPECT_EQ(Host().KeyValue("POST_LIVE_INSTALL_BOOT"), "true");
    EXPECT_EQ(Run({"live-install", "false"}).output, "live install  no\n");
    EXPECT_EQ(Host().KeyValue("POST_LIVE_INSTALL_BOOT"), "false");
}

TEST_F(StateCommandsTest, LiveInstallTakesNoOtherWord)
{
    Host().WithStores();
    EXPECT_EQ(Run({"live-install", "TRUE"}).status, 2);
    EXPECT_EQ(Host().KeyValue("POST_LIVE_INSTALL_BOOT"), "");
}

TEST_F(StateCommandsTest, InstallInfoIsSetAndShownWithoutSteeringTheTerminal)
{
    Host().WithStores();
    EXPECT_EQ(Run({"install-info"}).output, "install info  -\n");
    ExpectGolden("install-info", {"install-info",
                                  "by \x1b[31mskorl\x1b[0m\n\xC2\x9B"
                                  "2J \xFF"});
}

TEST_F(StateCommandsTest, SayThatTheStoreIsMissing)
{
    for (const Words& words : {Words{"autoconf", "start"}, Words{"autoconf", "end"}, Words{"autoconf", "status"}}) {
        ExpectFailure(words, words[0] + " " + words[1] + ": " + NO_STORE);
    }
    ExpectFailure({"live-install", "true"}, std::string("live-install: ") + NO_STORE);
    ExpectFailure({"install-info"}, std::string("install-info: ") + NO_STORE);
    ExpectFailure({"install-info", "x"}, std::string("install-info: ") + NO_STORE);
}
