#include "ZubEvents.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "ConfigStoreDocument.h"
#include "FileSizeLimit.h"
#include "TestHost.h"

using namespace NimbConfigStore;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

namespace
{
const char* const EVENT_FILE = "/var/log/talvor/events.jsonl";

class ZubEventsTest : public HostTest
{
protected:
    JsonDocument OnlyEvent()
    {
        JsonDocument event;
        std::string reason;
        EXPECT_TRUE(ConfigStoreDocument::ParseText(Host().ReadFile(EVENT_FILE), event, &reason)) << reason;
        return event;
    }
};
}  // namespace

TEST_F(ZubEventsTest, AnEventIsOneLineWithItsTemplateFilledIn)
{
    DumpZub(ZUB_SCHEMA_FILE_ERROR, 1, "net-1.0.json");
    const std::string line = Host().ReadFile(EVENT_FILE);
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
    const JsonDocument event = OnlyEvent();
    EXPECT_THAT(event["time"].GetString(), MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\."
                                                        "[0-9]{3}Z"));
    EXPECT_STREQ(event["kind"].GetString(), "observation");
    EXPECT_STREQ(event["id"].GetString(), "zub.user.cs.schema.file.error");
    EXPECT_STREQ(event["text"].GetString(), "Error processing schema file net-1.0.json.");
    ASSERT_EQ(event["args"].Size(), 1u);
    EXPECT_STREQ(event["args"][0].GetString(), "net-1.0.json");
}

TEST_F(ZubEventsTest, EveryEventHasItsText)
{
    const std::vector<std::pair<std::string, std::string>> texts = {
        {"zub.user.cs.createstore.copy.backup.error", "Error copying ConfigStore from backup X."},
        {"zub.user.cs.db.operation.error", "ConfigStore database operation failed."},
        {"zub.user.cs.schema.file.error", "Error processing schema file X."},
        {"zub.user.cs.schema.metadata.error", "Invalid metadata in schema file X."},
        {"zub.user.cs.schema.validation.error", "BrevId validation failed for schema file X."},
        {"zub.user.cs.dfs.restore.error", "DataFile store cannot be restored."},
        {"zub.user.cs.dfs.cleanup.error", "Error cleaning up Datafile store."},
        {"zub.user.cs.desired.config.error", "Failed to setup desired configuration."},
        {"zub.user.cs.upgrade.config.error", "Error in upgrading config X."}};
    EXPECT_EQ(ZUB_TEMPLATES.size(), texts.size());
    for (const auto& [id, text] : texts) {
        Host().Remove(EVENT_FILE);
        DumpZub(id, 1, "X");
        EXPECT_EQ(OnlyEvent()["text"].GetString(), text) << id;
    }
}

TEST_F(ZubEventsTest, EventsAreAppended)
{
    DumpZub(ZUB_DB_OPERATION_ERROR, 0);
    EXPECT_TRUE(RaiseSystemAlert("down"));
    DumpZub(ZUB_DESIRED_CONFIG_ERROR, 0);
    EXPECT_THAT(Host().EventIds(), ElementsAre(ZUB_DB_OPERATION_ERROR, "alert", ZUB_DESIRED_CONFIG_ERROR));
}

TEST_F(ZubEventsTest, AnAlertIsKeptToItsLastByte)
{
    const std::string text("a\0b", 3);
    EXPECT_TRUE(RaiseSystemAlert(text));
    const JsonDocument event = OnlyEvent();
    EXPECT_EQ(std::string(event["text"].GetString(), event["text"].GetStringLength()), text);
}

TEST_F(ZubEventsTest, AnEventThatDoesNotFitIsNotCutAndIsLogged)
{
    EXPECT_TRUE(RaiseSystemAlert(std::string(2000, 'a')));
    const std::string first = Host().ReadFile(EVENT_FILE);
    const FileSizeLimit limit(first.size() + 10);
    EXPECT_FALSE(RaiseSystemAlert("second"));
    EXPECT_EQ(Host().ReadFile(EVENT_FILE), first);
    EXPECT_THAT(Host().Log(),
                ElementsAre("error Cannot write alert \"second\" to /var/log/talvor/events.jsonl: File too large"));
}

TEST_F(ZubEventsTest, AnAlertIsItsTextAlone)
{
    EXPECT_TRUE(RaiseSystemAlert("100%s sure"));
    EXPECT_THAT(Host().Events(), ElementsAre(RaisedEvent{"alert", "", "100%s sure", {}}));
}

TEST_F(ZubEventsTest, AnUnknownEventIsItsIdentifier)
{
    DumpZub("zub.user.other", 1, "argument");
    EXPECT_THAT(Host().Events(),
                ElementsAre(RaisedEvent{"observation", "zub.user.other", "zub.user.other", {"argument"}}));
}

TEST_F(ZubEventsTest, ArgumentsAreNotTemplatesThemselves)
{
    DumpZub(ZUB_SCHEMA_FILE_ERROR, 2, "%s", "second");
    EXPECT_THAT(Host().Events(),
                ElementsAre(RaisedEvent{
                    "observation", ZUB_SCHEMA_FILE_ERROR, "Error processing schema file %s.", {"%s", "second"}}));
}

TEST_F(ZubEventsTest, AnArgumentOfAnyBytesLeavesTheLineReadable)
{
    DumpZub(ZUB_SCHEMA_FILE_ERROR, 1, "a\"b\nc\xff\xc3\xa9");
    EXPECT_THAT(Host().Events(), ElementsAre(RaisedEvent{"observation",
                                                         ZUB_SCHEMA_FILE_ERROR,
                                                         "Error processing schema file a\"b\nc?\xc3\xa9.",
                                                         {"a\"b\nc?\xc3\xa9"}}));
}

TEST_F(ZubEventsTest, AMissingFolderIsCreated)
{
    Host().Remove("/var/log");
    DumpZub(ZUB_DFS_RESTORE_ERROR, 0);
    EXPECT_THAT(Host().EventIds(), ElementsAre(ZUB_DFS_RESTORE_ERROR));
}

TEST_F(ZubEventsTest, AnEventThatCannotBeWrittenIsLogged)
{
    Host().MakeFolder(EVENT_FILE);
    DumpZub(ZUB_DFS_RESTORE_ERROR, 0);
    EXPECT_FALSE(RaiseSystemAlert("alert text"));
    EXPECT_THAT(Host().Log(),
                ElementsAre("error Cannot write observation \"DataFile store cannot be restored.\" to "
                            "/var/log/talvor/events.jsonl: Is a directory",
                            "error Cannot write alert \"alert text\" to /var/log/talvor/events.jsonl: Is a directory"));
}
