#include <gmock/gmock.h>
#include <sqlite3.h>

#include "NimbConfigStore.h"
#include "StoreFault.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;

namespace
{
class BootApplyRecordTest : public HostTest
{
protected:
    BootApplyRecordTest() { Host().WithStores(); }
    std::string Stored() { return Host().KeyValue("BOOT_APPLY_RESULT"); }
};
}  // namespace

TEST_F(BootApplyRecordTest, AClearedRecordSaysThatTheBootIsNotComplete)
{
    clearBootApplyRecord();
    EXPECT_EQ(Stored(), R"({"isBootComplete":false})");
    const rapidjson::Document record = getBootApplyRecord();
    ASSERT_TRUE(record.IsObject());
    EXPECT_EQ(record.MemberCount(), 1U);
    EXPECT_FALSE(record["isBootComplete"].GetBool());
}

TEST_F(BootApplyRecordTest, ARecordThatIsJsonItselfIsKeptAsText)
{
    setBootApplyRecord(R"({"a": [1, "x"]})");
    EXPECT_EQ(Stored(), R"({"isBootComplete":true,"bootApplyRecord":"{\"a\": [1, \"x\"]}"})");
    const rapidjson::Document record = getBootApplyRecord();
    EXPECT_TRUE(record["isBootComplete"].GetBool());
    EXPECT_STREQ(record["bootApplyRecord"].GetString(), R"({"a": [1, "x"]})");
}

TEST_F(BootApplyRecordTest, ARecordIsReplacedWhole)
{
    setBootApplyRecord("first");
    setBootApplyRecord("");
    EXPECT_EQ(Stored(), R"({"isBootComplete":true,"bootApplyRecord":""})");
    clearBootApplyRecord();
    EXPECT_EQ(Stored(), R"({"isBootComplete":false})");
}

TEST_F(BootApplyRecordTest, ATextWithANulComesBackWhole)
{
    setBootApplyRecord(std::string("a\0b", 3));
    const rapidjson::Document record = getBootApplyRecord();
    EXPECT_EQ(std::string(record["bootApplyRecord"].GetString(), record["bootApplyRecord"].GetStringLength()),
              std::string("a\0b", 3));
}

TEST_F(BootApplyRecordTest, ARecordThatWasNeverWrittenOrIsNotJsonIsAnInvalidArgument)
{
    EXPECT_THROW(getBootApplyRecord(), InvalidArgumentException);
    Host().Sql("INSERT INTO KeyValue (Key, Value) VALUES ('BOOT_APPLY_RESULT', '{\"isBootComplete\":')");
    try {
        getBootApplyRecord();
        FAIL() << "parsed half a record";
    } catch (const InvalidArgumentException& failure) {
        EXPECT_EQ(failure.code(), CS_ERROR_JSON_TEXT);
    }
}

TEST_F(BootApplyRecordTest, ARecordThatCannotBeReadThrows)
{
    const StoreFault fault(SQLITE_READ, "KeyValue");
    EXPECT_EQ(ThrownBy(getBootApplyRecord), "2000 Failed to read BOOT_APPLY_RESULT from database.");
}

TEST_F(BootApplyRecordTest, AFailedWriteLeavesTheOldRecordAndSaysNothing)
{
    setBootApplyRecord("old");
    {
        const StoreFault fault(SQLITE_INSERT, "KeyValue");
        EXPECT_EQ(ThrownBy(clearBootApplyRecord), "nothing");
        EXPECT_EQ(ThrownBy([] { setBootApplyRecord("new"); }), "nothing");
    }
    EXPECT_EQ(Stored(), R"({"isBootComplete":true,"bootApplyRecord":"old"})");
}

TEST_F(BootApplyRecordTest, WithoutAStoreEveryCallThrows)
{
    Host().Remove("/etc/talvor/configstore/current-store-1");
    EXPECT_EQ(ThrownBy(clearBootApplyRecord), "2000 Failed to connect to database");
    EXPECT_EQ(ThrownBy([] { setBootApplyRecord("x"); }), "2000 Failed to connect to database");
    EXPECT_EQ(ThrownBy(getBootApplyRecord), "2000 Failed to connect to database");
}
