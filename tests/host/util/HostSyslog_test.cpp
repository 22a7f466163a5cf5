#include <gmock/gmock.h>
#include <syslog.h>

#include <filesystem>

#include "HostUtil.h"
#include "TestHost.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
class HostSyslogTest : public HostTest
{};
}  // namespace

TEST_F(HostSyslogTest, InsideAnotherRootMessagesGoToAFileWithTheirLevels)
{
    HostSyslog(LOG_ERR, "cannot read %s", "profile");
    HostSyslog(LOG_INFO, "%d packages", 12);
    HostSyslog(LOG_DEBUG, "done");
    EXPECT_THAT(Host().Syslog(), ElementsAre("error cannot read profile", "info 12 packages", "debug done"));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(HostSyslogTest, AMissingFolderIsCreated)
{
    Host().Remove("/var");
    HostSyslog(LOG_WARNING, "first");
    EXPECT_THAT(Host().Syslog(), ElementsAre("warning first"));
}

TEST_F(HostSyslogTest, AFileThatCannotBeOpenedIsSkipped)
{
    Host().MakeFolder("/var/log/talvor/syslog.log");
    HostSyslog(LOG_ERR, "lost");
    EXPECT_TRUE(std::filesystem::is_empty(Host().Real("/var/log/talvor/syslog.log")));
}
