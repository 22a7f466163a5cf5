#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <fstream>
#include <map>

#include "PlanModel.h"
#include "PlanTest.h"

using ::testing::HasSubstr;
using ::testing::Not;
namespace fs = std::filesystem;

namespace
{
class PlanCommandTest : public PlanTest
{
protected:
    /// The lines of the plan.
    std::string Plan(int status = 3)
    {
        const Ran ran = Run({"desired", "plan"});
        EXPECT_EQ(ran.status, status) << ran.errors;
        return ran.output;
    }

    NimbConfigStore::JsonDocument PlanRecords()
    {
        NimbConfigStore::JsonDocument plan;
        const Ran ran = Run({"desired", "plan", "--json"});
        EXPECT_TRUE(ConfigStoreDocument::ParseText(ran.output, plan)) << ran.output << ran.errors;
        return plan;
    }

    /// Plans, boots, and compares.
    void ExpectThatTheBootDoesWhatIsPlanned()
    {
        PlanModel planned(Host());
        EXPECT_EQ(Run({"desired", "plan"}).status, 3);
        planned.Apply(PlanRecords());
        BackUpAndBoot();
        EXPECT_EQ(planned, PlanModel(Host())) << "planned\n"
                                              << planned.Text() << "booted\n"
                                              << PlanModel(Host()).Text();
        EXPECT_EQ(Run({"desired", "plan"}).status, 0);
    }

    /// Every file and folder of the host with its kind and rights, the time of its last change, and what it holds.
    std::map<std::string, std::string> WholeHost()
    {
        std::map<std::string, std::string> files;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Host().Root())) {
            struct stat status = {};
            EXPECT_EQ(lstat(entry.path().c_str(), &status), 0);
            std::string& told = files[entry.path().string()];
            told = std::to_string(status.st_mode) + " " + std::to_string(status.st_ino) + " " +
                   std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec) + " ";
            if (entry.is_regular_file()) {
                told += Host().ReadFile(entry.path().string().substr(Host().Root().size()));
            }
        }
        return files;
    }
};

constexpr const char* DOCUMENT = R"({"nimb": {
    "network": {"dns": {"servers": ["10.0.0.2"]}, "vswitch": [{"name": "a", "mtu": 1500}]},
    "authentication": {"user_accounts": [{"id": "alice", "shell": true}]}}})";
}  // namespace

TEST_F(PlanCommandTest, OfNothingStagedChangesNothing)
{
    WithLiveRows();
    EXPECT_EQ(Plan(0), "the next boot applies 0 (none): no row changes\n");
}

TEST_F(PlanCommandTest, TellsEveryRowThatADocumentChangesAndWhy)
{
    WithLiveRows();
    Live(
        "('authentication', 'user_accounts', 'root', '{\"id\":\"root\"}', NULL),"
        "('authentication', 'user_accounts', 'bob', '{\"id\":\"bob\"}', NULL),"
        "('authentication', 'user_accounts', 'alice', '{\"id\":\"alice\",\"shell\":false,\"uid\":7}', NULL)");
    Stage("set", DOCUMENT);
    ExpectGolden("desired-plan", {"desired", "plan"}, 3);
}

TEST_F(PlanCommandTest, TellsWhatEveryBootDoes)
{
    Live("('network', 'vswitch', 'a', '{\"name\":\"a\"}', NULL), ('system', 'keyboard', '', '{}', NULL)");
    Host().Sql("UPDATE Config SET DesiredValue = '{\"name\":\"a\",\"mtu\":9000}', Success = 0 WHERE Name = 'vswitch'");
    Host().Sql("UPDATE Config SET AutoConfValue = '{\"layout\":\"de\"}' WHERE Name = 'keyboard'");
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, AutoConfValue) VALUES "
        "('nimb', 'network', 'vswitch', 'found', '{}')");
    ExpectGolden("desired-plan-every-boot", {"desired", "plan"}, 3);
}

TEST_F(PlanCommandTest, TellsWhatASmartnicDocumentChanges)
{
    Live(
        "('network', 'vswitch', 'a', '{\"name\":\"a\"}', NULL), ('network', 'vswitch', 'b', '{\"name\":\"b\"}', NULL),"
        "('network', 'uplinks', 'up7', '{\"name\":\"up7\"}', NULL)");
    Stage("smartnic", R"({"nimb": {"network": {"vswitch": [{"name": "a", "mtu": 1}, {"name": "c"}]}}})");
    ExpectGolden("desired-plan-smartnic", {"desired", "plan"}, 3);
}

TEST_F(PlanCommandTest, TellsWhatDeletesThroughTheHostApiChange)
{
    WithLiveRows();
    Stage("set", DOCUMENT);
    ASSERT_EQ(Run({"desired", "delete", "nimb/network_gnx/switches"}).status, 0);
    ASSERT_EQ(Run({"desired", "delete", "nimb/authorization/permissions"}).status, 0);
    ExpectGolden("desired-plan-hostapi", {"desired", "plan"}, 3);
}

TEST_F(PlanCommandTest, TellsWhatTheBootDocumentChangesAndWhatOfItIsRefused)
{
    WithLiveRows();
    Host().WriteFile("/etc/talvor/boot_configuration.json", R"({"nimb": {
        "network": {"dns": {"servers": [1, true]}, "uplinks": [{"name": "up1"}], "dhcp": {"on": true}, "vswitch": []},
        "system": {"keyboard": {"layout": "de"}}, "sound": 7}, "nimbx": []})");
    ASSERT_EQ(Run({"boot", "mode", "boot-config"}).status, 0);
    ExpectGolden("desired-plan-boot-document", {"desired", "plan"}, 3);
}

TEST_F(PlanCommandTest, NamesWhatIsRefusedOfTheBootDocumentWhateverItsLength)
{
    const std::string name(100000, 'x');
    Host().WriteFile("/etc/talvor/boot_configuration.json", R"({"nimb": {"network": {")" + name + R"(": {"a": 1}, "e)" +
                                                                name + R"(": {}, "dns": {"servers": [1]}}, "g)" + name +
                                                                "\": 7}}");
    ASSERT_EQ(Run({"boot", "mode", "boot-config"}).status, 0);
    const std::string plan = Plan(0);
    EXPECT_THAT(plan, HasSubstr("refused  nimb/network/" + name + " "));
    EXPECT_THAT(plan, HasSubstr("refused  nimb/network/e" + name + " "));
    EXPECT_THAT(plan, HasSubstr("refused  nimb/g" + name + " "));
    EXPECT_THAT(plan, HasSubstr("refused  nimb/network/dns "));
    EXPECT_THAT(plan, HasSubstr("refused 4"));
}

TEST_F(PlanCommandTest, NamesEveryRowThatABootThatFailsRefuses)
{
    Stage("set", R"({"nimb": {"network": {"vswitch": [{"name": "a"}], "dns": {}, "uplinks": []}}})");
    Host().Sql("UPDATE ConfigSchema SET SchemaType = 0", DBStore::Type::SchemaStore);
    const Ran ran = Run({"desired", "plan"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.output, HasSubstr("refused  nimb/network/vswitch  a           -    "));
    EXPECT_THAT(ran.output, HasSubstr("Failed to mark user configuration for delete"));
    EXPECT_THAT(ran.output, HasSubstr("the next boot fails to apply 1 (desired): no row changes, refused 2\n"));
    EXPECT_THAT(ran.errors, HasSubstr("configstorectl: desired plan: the next boot fails to apply 1 (desired): "));
}

TEST_F(PlanCommandTest, SaysThatTheNextBootItselfFails)
{
    SetEntry("BOOT_MODE", "soon");
    const Ran ran = Run({"desired", "plan"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.output, "");
    EXPECT_EQ(ran.errors, "configstorectl: desired plan: the next boot fails: Generic ConfigStore Failure: stoi\n");
}

TEST_F(PlanCommandTest, LeavesTheWholeHostByteForByteAsItIs)
{
    WithLiveRows();
    Stage("set", DOCUMENT);
    Host().WriteFile("/etc/talvor/boot_configuration.json", "{}");
    for (const char* mode : {"0", "1", "2", "3", "4"}) {
        SetEntry("BOOT_MODE", mode);
        const std::map<std::string, std::string> before = WholeHost();
        EXPECT_NE(Run({"desired", "plan"}).output, "") << mode;
        EXPECT_EQ(WholeHost(), before) << mode;
    }
}

TEST_F(PlanCommandTest, SeesWhatIsCommittedWhileAnotherProgramWrites)
{
    Stage("set", DOCUMENT);
    const std::string quiet = Plan();
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(Host().Real(DBStore::StorePath(DBStore::Type::ConfigStore)).c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE; DELETE FROM DesiredUserConfig", nullptr, nullptr, nullptr),
              SQLITE_OK);
    EXPECT_EQ(Plan(), quiet);
    sqlite3_close(other);
}

TEST_F(PlanCommandTest, GoesAwayWhenItIsInterruptedAndLeavesNothingBehind)
{
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGTERM);
    ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &interrupt, nullptr), 0);
    raise(SIGTERM);
    const Ran ran = Run({"desired", "plan"});
    int signal = 0;
    sigwait(&interrupt, &signal);
    pthread_sigmask(SIG_UNBLOCK, &interrupt, nullptr);
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.errors, "configstorectl: desired plan: interrupted\n");
}

TEST_F(PlanCommandTest, SaysWhatItCannotCopy)
{
    Host().Remove("/var/lib/talvor/configstore/schema-store");
    ExpectFailure(
        {"desired", "plan"},
        "desired plan: /var/lib/talvor/configstore/schema-store: cannot be opened: No such file or directory");
    ASSERT_EQ(setenv("TMPDIR", (Temporary() + "/missing").c_str(), 1), 0);
    const Ran ran = Run({"desired", "plan"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.errors, "configstorectl: desired plan: folder for temporary files: No such file or directory\n");
}

TEST_F(PlanCommandTest, HoldsForAWholeDocument)
{
    WithLiveRows();
    Stage("set", DOCUMENT);
    ExpectThatTheBootDoesWhatIsPlanned();
    EXPECT_EQ(Host().SqlValue("SELECT UserValue FROM Config WHERE Name = 'dns'"), R"({"servers":["10.0.0.2"]})");
    EXPECT_EQ(Host().SqlValue("SELECT UserValue || VitalValue FROM Config WHERE Name = 'switches'"),
              R"({"name":"sw1"}{"uuid":"u1"})");
    EXPECT_EQ(Host().SqlValue("SELECT group_concat(Identifier) FROM Config WHERE Name = 'permissions'"), "p1");
}

TEST_F(PlanCommandTest, HoldsForADocumentStagedTwice)
{
    WithLiveRows();
    Stage("set", R"({"nimb": {"network": {"vswitch": [{"name": "z"}]}}})");
    Stage("set", DOCUMENT);
    ExpectThatTheBootDoesWhatIsPlanned();
    EXPECT_EQ(Host().SqlValue("SELECT group_concat(Identifier) FROM Config WHERE Name = 'vswitch'"), "a");
}

TEST_F(PlanCommandTest, HoldsForASmartnicDocument)
{
    WithLiveRows();
    Stage("smartnic", R"({"nimb": {"network": {"vswitch": [{"name": "a"}]}}})");
    ExpectThatTheBootDoesWhatIsPlanned();
    EXPECT_EQ(Host().SqlValue("SELECT UserValue FROM Config WHERE Name = 'dns'"), R"({"servers":["10.0.0.9"]})");
    EXPECT_EQ(Host().SqlValue("SELECT UserValue FROM Config WHERE Name = 'uplinks'"), R"({"name":"up0","mtu":1500})");
}

TEST_F(PlanCommandTest, HoldsForADocumentAndDeletesThroughTheHostApi)
{
    WithLiveRows();
    Stage("set", DOCUMENT);
    ASSERT_EQ(Run({"desired", "delete", "nimb/network/dns"}).status, 0);
    ASSERT_EQ(Run({"desired", "delete", "nimb/network/orvnics"}).status, 0);
    ExpectThatTheBootDoesWhatIsPlanned();
    EXPECT_EQ(Host().SqlValue("SELECT UserValue FROM Config WHERE Name = 'dns'"), R"({"servers":["10.0.0.2"]})");
    EXPECT_EQ(Host().SqlValue("SELECT count(*) FROM Config WHERE Name = 'orvnics'"), "0");
}

TEST_F(PlanCommandTest, HoldsForTheBootDocument)
{
    WithLiveRows();
    Host().WriteFile("/etc/talvor/boot_configuration.json",
                     R"({"nimb": {"network": {"dns": "DELETE_DEFAULT", "vswitch": [{"name": "a"}]}}})");
    ASSERT_EQ(Run({"boot", "mode", "boot-config"}).status, 0);
    ExpectThatTheBootDoesWhatIsPlanned();
    EXPECT_EQ(Host().SqlValue("SELECT count(*) FROM Config WHERE Name = 'dns'"), "0");
}
