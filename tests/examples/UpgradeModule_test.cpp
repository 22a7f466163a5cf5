#include "SampleHost.h"

#include <gmock/gmock.h>

#include "NimbConfigStore.h"
#include "NimbConfigUpgrade.h"
#include "NimbSchemaStore.h"

using namespace NimbConfigStore;
using NimbSchemaStore::SchemaStore;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
const char* const OLD_VALUE = R"({"enabled":true,"servers":["ntp1.lab.example","10.0.0.7"],"driftFile":"/var/lib/d"})";
const char* const NEW_VALUE = R"({"enabled":true,"servers":[{"address":"ntp1.lab.example","iburst":true},)"
                              R"({"address":"10.0.0.7","iburst":true}]})";
}  // namespace

class UpgradeModuleTest : public SampleHostTest
{
protected:
    UpgradeModuleTest() : module_(WithUpgradeModule())
    {
        Host().Sql(std::string("INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue) "
                               "VALUES ('nimb', 'time', 'ntp', '', '1.6.0_1.0', '") +
                   OLD_VALUE + "')");
    }
    int Run() { return NimbConfigUpgrade::ExecuteBootTimeModules({module_}, false); }

private:
    std::string module_;
};

TEST_F(UpgradeModuleTest, TimeServersBecomeObjects)
{
    EXPECT_EQ(Run(), 0);

    EXPECT_EQ(Host().SqlValue("SELECT UserValue FROM Config"), NEW_VALUE);
    EXPECT_EQ(Host().SqlValue("SELECT Version FROM Config"), "2.0.0_1.0");
    EXPECT_THAT(Host().EventIds(), IsEmpty());
}

TEST_F(UpgradeModuleTest, WhatItWritesKeepsToTheNewSchema)
{
    WithOverlay("upgrade");
    ASSERT_TRUE(ProcessSchemas({}));
    EXPECT_EQ(Run(), 0);

    const auto ntp = SchemaStore::GetStore(false)->GetCache()->Get({"nimb", "time", "ntp"});
    JsonDocument value;
    value.Parse(Host().SqlValue("SELECT UserValue FROM Config").c_str());
    EXPECT_TRUE(ValidateUserObject(ntp->GetSchema(), value, "ntp", false));
    value.Parse(OLD_VALUE);
    EXPECT_FALSE(ValidateUserObject(ntp->GetSchema(), value, "ntp", false));
}

TEST_F(UpgradeModuleTest, ASecondRunChangesNothing)
{
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(Run(), 0);

    EXPECT_THAT(Column("SELECT UserValue FROM Config"), ElementsAre(NEW_VALUE));
    EXPECT_THAT(Column("SELECT DirName || '/' || FileName FROM DataFileMetadata", DBStore::Type::DataFileStore),
                ElementsAre("health-agent/baseline.csv"));
}

TEST_F(UpgradeModuleTest, OnlyTheRecordedBaselineSurvivesTheCleanUpOfDataFiles)
{
    EXPECT_EQ(Run(), 0);
    CleanupDataFiles();

    EXPECT_TRUE(Host().Exists("/var/cache/datafiles/health-agent/baseline.csv"));
    EXPECT_FALSE(Host().Exists("/var/cache/datafiles/perf-sampler"));
}

TEST_F(UpgradeModuleTest, TheUpgradedHostIsAsSoundAsTheOldOne)
{
    WithOverlay("upgrade");
    EXPECT_TRUE(ProcessSchemas({}));

    EXPECT_THAT(Host().EventIds(), IsEmpty());
    const auto cache = SchemaStore::GetStore(false)->GetCache();
    EXPECT_EQ(cache->Get({"nimb", "time", "ntp"})->GetVersion(), "2.0.0_1.0");
    EXPECT_EQ(cache->Find({"nimb", "performance", "sampler"}), nullptr);
}
