#include "CommandTest.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"

using ::testing::HasSubstr;

namespace
{
constexpr const char* SCHEMAS = R"([
    {"component": "nimb", "group": "network", "key": "dns", "dspIntegrated": true, "mutableDefaultConfig": true,
     "schema": {"type": "object", "properties": {"servers": {"type": "array", "items": {"type": "string"}},
                                                 "seen": {"type": "boolean", "cached": true}},
                "additionalProperties": false}},
    {"component": "nimb", "group": "network", "key": "portgroups", "singleton": false, "schemaType": 5,
     "excludedInstances": ["mgmt"], "solutionUserInstances": ["svc"],
     "schema": {"type": "object", "required": ["name"],
                "properties": {"name": {"type": "string", "instanceId": true}, "vlan": {"type": "integer"}}}},
    {"component": "files", "group": "etc", "key": "motd", "schema": {"type": "object"},
     "file": {"enabled": true, "persistence": "vital", "path": "/etc/motd"}}])";
constexpr const char* DEFAULTS = R"([{"component": "nimb", "group": "network", "key": "dns",
                                      "config": {"servers": ["10.0.0.1"], "seen": true}}])";

/// schema, files and desired validate.
class SchemaCommandsTest : public CommandTest
{
protected:
    void Process()
    {
        Host()
            .WithStores()
            .WithPackage("net-drv", "1.2.0_3.4", SCHEMAS)
            .WithDefaultConfig("net-drv", "1.2.0_3.4", DEFAULTS);
        ASSERT_EQ(Run({"schema", "process"}).status, 0);
    }

    /// A document beside the host, called as a user would.
    std::string Document(const std::string& text)
    {
        Host().WriteFile("/tmp/document.json", text);
        return Host().Real("/tmp/document.json");
    }
};
}  // namespace

TEST_F(SchemaCommandsTest, ProcessTellsWhatItRegistered)
{
    Host()
        .WithStores()
        .WithPackage("net-drv", "1.2.0_3.4", SCHEMAS)
        .WithDefaultConfig("net-drv", "1.2.0_3.4", DEFAULTS);
    ExpectGolden("schema-process", {"schema", "process"});
}

TEST_F(SchemaCommandsTest, ProcessTakesIdentifiersBesidesThoseOfTheImage)
{
    Host().WithStores().WithPackage("net-drv", "1.2.0_3.4").WithSchemaFile("other", "1.0.0_1.0", SCHEMAS);
    EXPECT_THAT(Run({"schema", "process"}).output, HasSubstr("schema objects  0\n"));
    EXPECT_THAT(Run({"schema", "process", "other-1.0.0_1.0"}).output, HasSubstr("schema objects  3\n"));
}

TEST_F(SchemaCommandsTest, ProcessListsTheEventsOfBadFiles)
{
    Host().WithStores().WithPackage("net-drv", "1.2.0_3.4").WithSchemaFile("stray", "1.0.0_1.0", "[]");
    ExpectGolden("schema-process-stray", {"schema", "process"});
}

TEST_F(SchemaCommandsTest, ProcessFailsWithTheReasonWhenAFileHasErrors)
{
    Host().WithStores().WithPackage("net-drv", "1.2.0_3.4", R"([{"component": 7}])");
    const Ran ran = Run({"schema", "process"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.output, "");
    EXPECT_THAT(ran.errors, HasSubstr("configstorectl: schema process: [SchemaProcessor] "));
}

TEST_F(SchemaCommandsTest, RefreshProcessesTheSchemasGiven)
{
    Host().WithStores().WithPackage("net-drv", "1.2.0_3.4").WithSchemaFile("other", "1.0.0_1.0", SCHEMAS);
    ExpectGolden("schema-refresh", {"schema", "refresh", "--schema", "other-1.0.0_1.0"});
}

TEST_F(SchemaCommandsTest, RefreshFailsWhenAModuleCannotBeRun)
{
    Host().WithStores().WithPackage("net-drv", "1.2.0_3.4");
    const Ran ran = Run({"schema", "refresh", "--module", "/usr/lib/missing.so"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.errors, HasSubstr("missing.so"));
}

TEST_F(SchemaCommandsTest, ObjectsAreListedAndShown)
{
    Process();
    ExpectGolden("schema-list", {"schema", "list"});
    ExpectGolden("schema-show", {"schema", "show", "nimb/network/portgroups"});
    ExpectGolden("schema-show-file", {"schema", "show", "files/etc/motd"});
}

TEST_F(SchemaCommandsTest, ShowOfAnUnknownObjectFails)
{
    Process();
    ExpectFailure({"schema", "show", "nimb/network/dhcp"},
                  "schema show: nimb/network/dhcp: no such object in the schema store");
}

TEST_F(SchemaCommandsTest, FilesAreListedByPersistence)
{
    Process();
    ExpectGolden("files-list", {"files", "list"});
}

TEST_F(SchemaCommandsTest, FilterTellsWhichFilesPersist)
{
    Process();
    ExpectGolden("files-filter", {"files", "filter", "/etc/motd", "/etc/other"});
    EXPECT_EQ(Host().ReadFile("/var/run/talvor/files/skip-backup-list"), "/etc/other\n");
}

TEST_F(SchemaCommandsTest, TrackReplacesTheListThatItNames)
{
    ExpectGolden("files-track-backup", {"files", "track", "backup", "/etc/a", "/etc/b c"});
    EXPECT_EQ(Host().ReadFile("/var/run/talvor/files/backup-list"), "/etc/a\n/etc/b c\n");
    ExpectGolden("files-track-non-schema", {"files", "track", "non-schema", "etc/a"});
    EXPECT_EQ(Host().ReadFile("/var/run/nonSchemaFiles"), "etc/a\n");
}

TEST_F(SchemaCommandsTest, TrackFailsWhenTheListCannotBeWritten)
{
    Host().MakeFolder("/var/run/talvor/files/backup-list");
    ExpectFailure({"files", "track", "backup", "/etc/a"}, "files track backup: Failed to open file for tracking");
}

TEST_F(SchemaCommandsTest, ValidDocumentIsFoundValid)
{
    Process();
    ExpectGolden("desired-validate",
                 {"desired", "validate", Document(R"({"nimb": {"network": {"dns": {"servers": ["a"]}}}})")});
}

TEST_F(SchemaCommandsTest, InvalidDocumentIsReportedWithEveryFinding)
{
    Process();
    Input(R"({"nimb": {"network": {"dns": {"servers": [1, "a", true]}, "portgroups": [{"vlan": "x"}]},
              "nothing": {"known": {}}}})");
    ExpectGolden("desired-validate-findings", {"desired", "validate", "-"}, 1);
    EXPECT_EQ(Run({"desired", "validate", "-"}).errors,
              "configstorectl: desired validate: -: is not valid; findings: 5\n");
}

TEST_F(SchemaCommandsTest, FindingsAreThoseOfTheLibrarysOwnVerdict)
{
    Process();
    const auto cache = NimbSchemaStore::SchemaStore::GetStore(false)->GetCache();
    for (const char* text : {R"({})", R"({"nimb": {"network": {"dns": "DELETE_DEFAULT"}}})",
                             R"({"nimb": {"network": {"portgroups": "DELETE_DEFAULT"}}})",
                             R"({"nimb": {"network": {"portgroups": [{"name": "a"}]}}})",
                             R"({"nimb": {"network": {"portgroups": {"name": "a"}}}})", R"({"nimb": 7})", R"([])"}) {
        NimbConfigStore::JsonDocument document;
        ASSERT_TRUE(ConfigStoreDocument::ParseText(text, document));
        Input(text);
        EXPECT_EQ(Run({"desired", "validate", "-"}).status,
                  NimbConfigStore::ValidateDesiredDocument(document, cache) ? 0 : 1)
            << text;
    }
}

TEST_F(SchemaCommandsTest, DocumentThatCannotBeReadIsNamed)
{
    Process();
    const std::string folder = Host().Real("/tmp");
    ExpectFailure({"desired", "validate", folder + "/missing.json"},
                  "desired validate: ROOT/tmp/missing.json: cannot be read: No such file or directory");
    ExpectFailure({"desired", "validate", folder}, "desired validate: ROOT/tmp: cannot be read: Is a directory");
}

TEST_F(SchemaCommandsTest, DocumentThatDoesNotParseIsNamed)
{
    Process();
    for (const std::string& text :
         {std::string(), std::string("{"), std::string("{} {}"), std::string(1'000'000, '[')}) {
        const Ran ran = Run({"desired", "validate", Document(text)});
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.output, "");
        EXPECT_THAT(ran.errors, HasSubstr("ROOT/tmp/document.json: is not a JSON document: "));
    }
}

TEST_F(SchemaCommandsTest, SayThatTheSchemaStoreIsMissing)
{
    const std::string why = "/var/lib/talvor/configstore/schema-store: cannot be opened: No such file or directory";
    ExpectFailure({"schema", "list"}, "schema list: " + why);
    ExpectFailure({"schema", "show", "a/b/c"}, "schema show: " + why);
    ExpectFailure({"files", "list"}, "files list: " + why);
    ExpectFailure({"files", "filter", "/etc/a"}, "files filter: " + why);
    ExpectFailure({"desired", "validate", Document("{}")}, "desired validate: " + why);
}
