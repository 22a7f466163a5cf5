#include "SampleHost.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "ZelTreeWalk.h"

using namespace NimbConfigStore;
using NimbSchemaStore::SchemaStore;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAreArray;

namespace
{
const std::string SCHEMAS = "/usr/lib/talvor/configmanager/schemas";
const std::string DEFAULTS = "/etc/talvor/default-config";

const char* const DEFAULT_OBJECTS = "SELECT Component || '/' || ConfigGroup || '/' || Name FROM DefaultConfig";

std::string DefaultOf(const std::string& object, const std::string& column, const std::string& identifier = "")
{
    return "SELECT " + column + " FROM DefaultConfig WHERE Component || '/' || ConfigGroup || '/' || Name = '" +
           object + "' AND Identifier = '" + identifier + "'";
}
}  // namespace

TEST_F(SampleHostTest, ProcessingItsSchemasSucceedsWithoutAWordOfComplaint)
{
    EXPECT_TRUE(ProcessSchemas({}));

    EXPECT_THAT(Host().EventIds(), IsEmpty());
    EXPECT_THAT(Host().Log(), Each(Not(StartsWith("error"))));
    EXPECT_THAT(Host().Syslog(), Each(Not(StartsWith("error"))));
}

TEST_F(SampleHostTest, EveryObjectOfItsSchemaFilesIsRegistered)
{
    ASSERT_TRUE(ProcessSchemas({}));

    std::vector<std::string> declared;
    for (const JsonDocument& element : Elements(SCHEMAS)) {
        if (!element.HasMember("dataFile")) {
            declared.push_back(ObjectName(element));
        }
    }
    std::vector<std::string> registered;
    for (const auto& id : SchemaStore::GetStore(false)->GetCache()->GetIds()) {
        registered.push_back(id.toString());
    }
    EXPECT_THAT(registered, UnorderedElementsAreArray(declared));
}

TEST_F(SampleHostTest, OfTwoVersionsOfAPackageTheNewerCounts)
{
    ASSERT_TRUE(ProcessSchemas({}));

    const auto cache = SchemaStore::GetStore(false)->GetCache();
    EXPECT_EQ(cache->Get({"nimb", "time", "ntp"})->GetVersion(), "1.6.0_1.0");
    EXPECT_NE(cache->Find({"nimb", "logging", "targets"}), nullptr) << "only 2.1.0 of log-forward has it";
    EXPECT_EQ(Host().SqlValue(DefaultOf("nimb/time/ntp", "Version")), "1.6.0_1.0");
}

TEST_F(SampleHostTest, EveryDefaultKeepsToItsSchemaAndIsWritten)
{
    ASSERT_TRUE(ProcessSchemas({}));

    std::vector<std::string> expected;
    for (const JsonDocument& element : Elements(DEFAULTS)) {
        const JsonValue& config = element["config"];
        expected.insert(expected.end(), config.IsArray() ? config.Size() : 1, ObjectName(element));
    }
    EXPECT_THAT(Column(DEFAULT_OBJECTS), UnorderedElementsAreArray(expected));
}

TEST_F(SampleHostTest, ADefaultIsSplitIntoItsUserVitalAndCachedParts)
{
    ASSERT_TRUE(ProcessSchemas({}));

    const auto part = [this](const char* column) {
        return Host().SqlValue(DefaultOf("nimb/authentication/user_accounts", column, "root"));
    };
    EXPECT_EQ(part("Value"), R"({"name":"root","description":"Administrator","shell":true})");
    EXPECT_EQ(part("VitalValue"), R"({"name":"root","passwordHash":"$6$nimb$xQ3vO8r1"})");
    EXPECT_EQ(part("CachedValue"), R"({"name":"root","failedLogins":0})");
}

TEST_F(SampleHostTest, ItsBootDocumentKeepsToTheSchemas)
{
    ASSERT_TRUE(ProcessSchemas({}));
    JsonDocument document = SourceDocument("examples/host/root/etc/talvor/boot_configuration.json");

    EXPECT_TRUE(ValidateDesiredDocument(document, SchemaStore::GetStore(false)->GetCache()));
}

TEST_F(SampleHostTest, OneOfItsDesiredDocumentsIsSoundAndTheOtherIsNot)
{
    ASSERT_TRUE(ProcessSchemas({}));
    const auto cache = SchemaStore::GetStore(false)->GetCache();
    JsonDocument sound = SourceDocument("examples/host/desired/datacentre.json");
    JsonDocument mistaken = SourceDocument("examples/host/desired/mistaken.json");

    EXPECT_TRUE(ValidateDesiredDocument(sound, cache));
    Host().ClearLogs();
    EXPECT_FALSE(ValidateDesiredDocument(mistaken, cache));
    const auto log = Host().Log();
    EXPECT_EQ(std::ranges::count_if(log, [](const std::string& line) { return line.starts_with("error"); }), 5)
        << "enabled, servers/0, device, mtu and the missing defaultAction";
}

TEST_F(SampleHostTest, ItDeclaresInstancesThatAWholeDocumentLeavesAlone)
{
    ASSERT_TRUE(ProcessSchemas({}));

    std::vector<std::string> excluded;
    for (const auto& object : SchemaStore::GetStore(false)->GetObjectsOfKind(5)) {
        for (const std::string& identifier : object->GetExcludedInstances()) {
            excluded.push_back(object->GetId().toString() + "/" + identifier);
        }
    }
    EXPECT_THAT(excluded, ElementsAre("nimb/authentication/user_accounts/root", "nimb/firewall/rulesets/host-agent"));
}

TEST_F(SampleHostTest, ItsDeclaredFilesPersistUnlessSwitchedOff)
{
    ASSERT_TRUE(ProcessSchemas({}));

    const auto files = GetBrevFiles();
    EXPECT_THAT(files.at("vital"), ElementsAre("/etc/ssh/host_key"));
    EXPECT_THAT(files.at("cached"), ElementsAre("/var/lib/time/drift"));
    EXPECT_THAT(files.at("config"), ElementsAre("/etc/hosts", "/etc/profile.local"));
}

TEST_F(SampleHostTest, AChangedFilePersistsUnlessItsPackageRestrictsIt)
{
    ASSERT_TRUE(ProcessSchemas({}));

    EXPECT_THAT(FilterStickyBitFiles({"/etc/hosts", "/etc/talvor/sampler.conf"}), ElementsAre("/etc/hosts"));
    EXPECT_EQ(Host().ReadFile("/var/run/talvor/files/skip-backup-list"), "/etc/talvor/sampler.conf\n");
}

TEST_F(SampleHostTest, AsASmartNicItGetsItsOwnObjectsAndDefaults)
{
    WithOverlay("smartnic");
    EXPECT_FALSE(ProcessSchemas({})) << "defaults of objects that a SmartNIC does not have are errors";

    const auto cache = SchemaStore::GetStore(false)->GetCache();
    EXPECT_NE(cache->Find({"nimb", "smartnic", "agent"}), nullptr);
    EXPECT_NE(cache->Find({"nimb", "network", "orvnics"}), nullptr);
    EXPECT_EQ(cache->Find({"nimb", "firewall", "settings"}), nullptr);
    EXPECT_EQ(Host().SqlValue(DefaultOf("nimb/network/dns", "Value")),
              R"({"dhcp":false,"hostname":"smartnic","servers":["169.254.10.1"]})");
}

TEST_F(SampleHostTest, ItsInformationTreeIsReadWithoutAWordOfComplaint)
{
    const WalkResult walked = WalkTree();
    EXPECT_THAT(walked.failures, IsEmpty());
    EXPECT_GT(walked.leaves, 20U);
    EXPECT_THAT(Host().Log(), IsEmpty());
    EXPECT_EQ(Read("/storage/mounts/<path>/info", {"/vm images"})["source"], "filer:/export/vm images");
}
