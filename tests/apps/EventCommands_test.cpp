#include "CommandTest.h"
#include "HostEvents.h"

using ConfigStoreCtl::HostEvent;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
using EventCommandsTest = CommandTest;

constexpr const char* FILE_PATH = "/var/log/talvor/events.jsonl";
}  // namespace

TEST_F(EventCommandsTest, AreListedInTheirOrder)
{
    Host().WriteFile(
        FILE_PATH,
        R"({"time":"2026-01-02T03:04:05.006Z","kind":"observation","id":"zub.user.cs.schema.file.error","text":"Error processing schema file a.json.","args":["a.json"]})"
        "\n"
        R"({"time":"2026-01-02T03:04:06.007Z","kind":"alert","id":"","text":"Disk \u001b[31mgone","args":[]})"
        "\n"
        "not JSON\n");
    ExpectGolden("events", {"events"});
}

TEST_F(EventCommandsTest, AreNoneOnAFreshHost)
{
    EXPECT_EQ(Run({"events", "--json"}).output, "[]\n");
}

TEST_F(EventCommandsTest, FailWhenTheFileCannotBeRead)
{
    Host().MakeFolder(FILE_PATH);
    ExpectFailure({"events"}, "events: /var/log/talvor/events.jsonl: cannot be read: Is a directory");
}

TEST_F(EventCommandsTest, CannotBeFollowedWithoutTheirFolder)
{
    Host().Remove("/var/log/talvor");
    ExpectFailure({"events", "--follow"}, "events: /var/log/talvor: cannot be watched: No such file or directory");
}

TEST_F(EventCommandsTest, LinesThatAreNoEventsKeepTheirText)
{
    for (const char* line : {"", "[]", "{", "7"}) {
        EXPECT_EQ(ConfigStoreCtl::ParseEvent(line).kind, "unreadable") << line;
        EXPECT_EQ(ConfigStoreCtl::ParseEvent(line).text, line);
    }
    const HostEvent odd = ConfigStoreCtl::ParseEvent(R"({"kind": 7, "text": "x", "args": [1, "b"]})");
    EXPECT_EQ(odd.kind, "");
    EXPECT_EQ(odd.text, "x");
    EXPECT_THAT(odd.args, ElementsAre("", "b"));
}

TEST_F(EventCommandsTest, ALogLineIsTakenApartWhenThisProcessWroteIt)
{
    const std::string self = "[" + std::to_string(getpid()) + "] ";
    const auto line = ConfigStoreCtl::ParseOwnLogLine("2026-01-02T03:04:05.006Z error " + self + "a [b] " + self);
    ASSERT_TRUE(line.has_value());
    EXPECT_EQ(line->level, "error");
    EXPECT_EQ(line->text, "a [b] " + self);
    for (const std::string& other : {std::string(), std::string("time"), std::string("time error "), "time " + self,
                                     "error " + self + "text", "time error [1] error " + self + "text"}) {
        EXPECT_FALSE(ConfigStoreCtl::ParseOwnLogLine(other)) << other;
    }
}

TEST_F(EventCommandsTest, WatchSeesOnlyThisProcessesErrorsFromItsStart)
{
    Host().WriteFile("/var/log/talvor/configstore.log", "2026-01-02T03:04:05.006Z error [1] before\n");
    ConfigStoreCtl::CallWatch watch;
    const std::string self = std::to_string(getpid());
    Host().WriteFile("/var/log/talvor/configstore.log",
                     "2026-01-02T03:04:05.006Z error [1] before\n"
                     "2026-01-02T03:04:05.006Z error [1] of another process\n"
                     "2026-01-02T03:04:05.006Z info [" +
                         self + "] says error [" + self +
                         "] x\n"
                         "2026-01-02T03:04:05.006Z error [" +
                         self +
                         "] first\n"
                         "2026-01-02T03:04:05.006Z error [" +
                         self + "] second\n");
    EXPECT_EQ(watch.Errors(), "first; second");
    EXPECT_EQ(watch.Errors(), "");
    EXPECT_THAT(watch.Events(), IsEmpty());
}
