#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "ConfigStoreException.h"
#include "NimbSchemaStore.h"
#include "SchemaStatements.h"
#include "TestHost.h"

using namespace NimbSchemaStore;
using NimbConfigStore::ConfigStoreException;
using ::testing::HasSubstr;

namespace
{
const char* const ELEMENT = R"({"component": "nimb", "group": "g", "key": "k", "schema": {}})";

class RegistrationRunTest : public HostTest
{
protected:
    RegistrationRunTest() { Host().WithStores(); }

    std::string Count() { return Host().SqlValue("SELECT COUNT(*) FROM ConfigSchema", DBStore::Type::SchemaStore); }
};
}  // namespace

TEST_F(RegistrationRunTest, ASecondRunWaitsThreeSecondsAndFailsWithAReason)
{
    const SchemaStorePtr run = SchemaStore::GetStore(true);
    std::string reason;
    std::chrono::steady_clock::duration waited{};
    std::thread other([&] {
        const auto begin = std::chrono::steady_clock::now();
        try {
            (void)SchemaStore::GetStore(true);
        } catch (const ConfigStoreException& error) {
            reason = error.what();
        }
        waited = std::chrono::steady_clock::now() - begin;
    });
    other.join();
    EXPECT_THAT(reason, HasSubstr("another registration run holds it"));
    EXPECT_GE(waited, std::chrono::milliseconds(2000)) << "it gives the other run time to end";
    SetSchema("net-1.0.0_1.0", "nimb", "g", "k", ELEMENT, run, false);
    RemoveUndeclaredSchemas({}, run);
    EXPECT_EQ(Count(), "1") << "the first run is not disturbed";
}

TEST_F(RegistrationRunTest, ASecondRunOfTheSameThreadFailsAndLeavesTheFirst)
{
    const SchemaStorePtr run = SchemaStore::GetStore(true);
    EXPECT_THROW((void)SchemaStore::GetStore(true), ConfigStoreException);
    SetSchema("net-1.0.0_1.0", "nimb", "g", "k", ELEMENT, run, false);
    RemoveUndeclaredSchemas({}, run);
    EXPECT_EQ(Count(), "1");
}

TEST_F(RegistrationRunTest, AProcessThatDiesInItsRunLeavesTheSchemasOfThePreviousRun)
{
    const pid_t child = fork();
    if (child == 0) {
        const SchemaStorePtr run = SchemaStore::GetStore(true);
        SetSchema("net-1.0.0_1.0", "nimb", "g", "k", ELEMENT, run, false);
        _exit(7);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(Count(), "0");
    EXPECT_TRUE(SchemaStore::GetStore(false)->GetCache()->GetIds().empty());
    EXPECT_NO_THROW((void)SchemaStore::GetStore(true));
}

TEST_F(RegistrationRunTest, EachStatementIsPreparedAndLooksItsRowsUp)
{
    for (const char* sql : {Statements::UPSERT_OBJECT, Statements::UPSERT_PLACEMENT, Statements::DELETE_PLACEMENT,
                            Statements::UPSERT_DATAFILE_KEY}) {
        for (const Row& step : Host().Sql(std::string("EXPLAIN QUERY PLAN ") + sql, DBStore::Type::SchemaStore)) {
            EXPECT_THAT(step.back().value_or(""), testing::Not(HasSubstr("SCAN"))) << sql;
        }
    }
    // These read whole tables, which hold a row per object of the host's packages.
    for (const char* sql :
         {Statements::SELECT_SCHEMA_IDS, Statements::DELETE_PLACEMENTS_OF_ID, Statements::DELETE_OBJECTS_OF_ID,
          Statements::DELETE_DATAFILE_KEYS_OF_ID, Statements::SELECT_OBJECTS}) {
        EXPECT_NO_THROW(Host().Sql(std::string("EXPLAIN ") + sql, DBStore::Type::SchemaStore)) << sql;
    }
}
