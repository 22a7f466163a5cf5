#include <gmock/gmock.h>
#include <sqlite3.h>

#include <functional>
#include <string>
#include <vector>

#include "BootHost.h"
#include "ChildProcess.h"
#include "StagingCalls.h"
#include "StoreDisk.h"
#include "Thrown.h"

using testing::AllOf;
using testing::AnyOf;
using testing::Contains;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;

// Staging while the disk is full or the stores are in use: one clear error, and nothing lost.
namespace
{
class StagingTroubleTest : public BootHostTest, public testing::WithParamInterface<StagingCall>
{
protected:
    StagingTroubleTest()
    {
        StageRow("network/vswitch", "earlier", "{}");
        SetKey("BOOT_MODE", "2");
        earlier_ = Stores();
    }

    std::string Stores() { return DumpStore(DBStore::Type::ConfigStore); }
    const std::string& Earlier() const { return earlier_; }

    std::vector<std::string> StatementFailures()
    {
        std::vector<std::string> lines = Host().Log();
        std::erase_if(lines, [](const std::string& line) { return !line.starts_with("error Store statement failed"); });
        return lines;
    }

private:
    std::string earlier_;
};

/// Someone else at work on a store; lets go at the end of the scope.
class Holder
{
public:
    Holder(const std::string& file, const char* sql)
    {
        EXPECT_EQ(sqlite3_open(file.c_str(), &database_), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database_, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    }
    ~Holder() { sqlite3_close(database_); }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

private:
    sqlite3* database_ = nullptr;
};

std::string NameOf(const testing::TestParamInfo<StagingCall>& info)
{
    return info.param.name;
}
}  // namespace

TEST_P(StagingTroubleTest, AFullDiskLeavesTheEarlierStagingWithItsModeOrTheNewOneWithItsOwn)
{
    int growths = 0;
    for (std::string failure; failure != "nothing"; ++growths) {
        Host().ClearLogs();
        {
            StoreDisk disk;
            disk.FillUpAfter(growths);
            failure = ThrownBy(GetParam().stage);
        }
        if (failure != "nothing") {
            EXPECT_EQ(Stores(), Earlier()) << growths;
            EXPECT_THAT(StatementFailures(), testing::ElementsAre(HasSubstr("database or disk is full"))) << growths;
        }
    }
    EXPECT_GT(growths, 3);
    EXPECT_NE(Stores(), Earlier());
}

TEST_P(StagingTroubleTest, AStoreThatStaysLockedIsWaitedForAndThenReported)
{
    const Holder writer(Host().Real(DBStore::StorePath(DBStore::Type::ConfigStore)), "BEGIN IMMEDIATE");
    const StoreDisk disk;
    EXPECT_EQ(ThrownBy(GetParam().stage), GetParam().notBegun);
    EXPECT_THAT(disk.WaitedMs(), AllOf(Ge(2500), Le(3000)));
    EXPECT_THAT(StatementFailures(), testing::ElementsAre(HasSubstr("database is locked")));
    EXPECT_EQ(Stores(), Earlier());
}

TEST_P(StagingTroubleTest, AReaderThatDoesNotLetGoKeepsTheStagingFromBeingCommitted)
{
    const Holder reader(Host().Real(DBStore::StorePath(DBStore::Type::ConfigStore)), "BEGIN; SELECT 1 FROM Config");
    const StoreDisk disk;
    EXPECT_EQ(ThrownBy(GetParam().stage), GetParam().notCommitted);
    EXPECT_THAT(disk.WaitedMs(), AllOf(Ge(2500), Le(3000)));
    EXPECT_EQ(Stores(), Earlier());
}

TEST_P(StagingTroubleTest, SchemasThatStayLockedAreWaitedForAndThenReported)
{
    const Holder registration(Host().Real(DBStore::StorePath(DBStore::Type::SchemaStore)), "BEGIN EXCLUSIVE");
    const StoreDisk disk;
    EXPECT_EQ(ThrownBy(GetParam().stage), GetParam().noSchemas);
    EXPECT_THAT(disk.WaitedMs(), AllOf(Ge(2500), Le(3000)));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("database is locked")));
    EXPECT_EQ(Stores(), Earlier());
}

INSTANTIATE_TEST_SUITE_P(Of, StagingTroubleTest, testing::ValuesIn(STAGING_CALLS), NameOf);

class ConcurrentStagingTest : public BootHostTest
{
protected:
    /// What the store holds once @p stage was called on it alone.
    std::string StoresAfter(const std::function<void()>& stage)
    {
        stage();
        return DumpStore(DBStore::Type::ConfigStore);
    }
};

TEST_F(ConcurrentStagingTest, OfTwoProcessesThatStageAtOnceOneWinsWhole)
{
    const auto document = [] { StageDocument(NimbConfigStore::SetDesiredUserConfig, "document"); };
    const auto smartnic = [] { StageDocument(NimbConfigStore::SetDesiredSmartnicConfiguration, "smartnic"); };
    const std::string ofDocument = StoresAfter(document);
    const std::string ofSmartnic = StoresAfter(smartnic);
    ASSERT_NE(ofDocument, ofSmartnic);
    for (int round = 0; round < 5; ++round) {
        const auto done = [](const auto& stage) { return [&stage] { return stage(), true; }; };
        const pid_t processes[] = {StartProcess(done(document)), StartProcess(done(smartnic))};
        for (const pid_t process : processes) {
            EXPECT_TRUE(Succeeded(process));
        }
        EXPECT_THAT(DumpStore(DBStore::Type::ConfigStore), AnyOf(ofDocument, ofSmartnic));
    }
}

TEST_F(ConcurrentStagingTest, NoDeleteOfSeveralProcessesIsLost)
{
    const auto remove = [](const char* key) {
        return StartProcess([key] {
            for (int round = 0; round < 5; ++round) {
                NimbConfigStore::DeleteHostAPIConfiguration("nimb", "network", key);
            }
            return true;
        });
    };
    const pid_t processes[] = {remove("dns"), remove("vswitch")};
    for (const pid_t process : processes) {
        EXPECT_TRUE(Succeeded(process));
    }
    EXPECT_THAT(Host().Sql("SELECT Name, COUNT(*) FROM DesiredUserConfig GROUP BY Name ORDER BY Name"),
                testing::ElementsAre(Row{"dns", "5"}, Row{"vswitch", "5"}));
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "4");
}
