#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "NimbConfigStore.h"
#include "StoreConnection.h"
#include "StoreFault.h"
#include "StoreFiles.h"
#include "TestHost.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{
constexpr const char* UUID = "5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11";

class BootStateTest : public HostTest
{
protected:
    BootStateTest()
    {
        Host().WithStores();
        Host().ClearLogs();
    }

    void SetKey(const std::string& key, const std::string& value)
    {
        Host().Sql("INSERT OR REPLACE INTO KeyValue (Key, Value) VALUES ('" + key + "', '" + value + "')");
    }
};

class NoStoreTest : public HostTest
{};

// Another process in the middle of a write to a store, for as long as this exists.
class LockingProcess
{
public:
    explicit LockingProcess(const std::string& store)
    {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, channel_), 0);
        process_ = fork();
        if (process_ == 0) {
            close(channel_[0]);
            Hold(store, channel_[1]);
        }
        close(channel_[1]);
        char word = 0;
        locked_ = read(channel_[0], &word, 1) == 1;
    }
    ~LockingProcess()
    {
        close(channel_[0]);  // ends it
        EXPECT_EQ(waitpid(process_, nullptr, 0), process_);
    }
    LockingProcess(const LockingProcess&) = delete;
    LockingProcess& operator=(const LockingProcess&) = delete;

    bool HoldsTheLock() const { return locked_; }

private:
    [[noreturn]] static void Hold(const std::string& store, int channel)
    {
        sqlite3* database = nullptr;
        const bool locked = sqlite3_open(store.c_str(), &database) == SQLITE_OK &&
                            sqlite3_exec(database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK;
        char word = 'l';
        if (locked && write(channel, &word, 1) == 1) {
            (void)read(channel, &word, 1);  // until the other end is closed
        }
        _exit(0);
    }

    int channel_[2] = {-1, -1};
    pid_t process_ = -1;
    bool locked_ = false;
};

}  // namespace

TEST_F(BootStateTest, AutomaticConfigurationIsOpenBetweenStartAndEnd)
{
    EXPECT_FALSE(IsAutoConf());
    StartAutoConf();
    EXPECT_TRUE(IsAutoConf());
    EXPECT_EQ(Host().KeyValue("IS_BOOT"), "true");
    EndAutoConf();
    EXPECT_FALSE(IsAutoConf());
    EXPECT_EQ(Host().KeyValue("IS_BOOT"), "");
    EXPECT_THAT(Host().Log(), ElementsAre("info ConfigStore autoconf start", "info ConfigStore endconf end"));
}

TEST_F(BootStateTest, OnlyTheExactWordTrueOpensAutomaticConfiguration)
{
    for (const char* value : {"TRUE", "true ", "1", "false"}) {
        SetKey("IS_BOOT", value);
        EXPECT_FALSE(IsAutoConf()) << value;
    }
}

TEST_F(NoStoreTest, AutomaticConfigurationIsSilentWithoutAStoreButAskingForItThrows)
{
    EXPECT_NO_THROW(StartAutoConf());
    EXPECT_NO_THROW(EndAutoConf());
    EXPECT_NO_THROW(EnableTrelldNotification(true));
    EXPECT_EQ(ThrownBy(IsAutoConf), "2000 Failed to read value for key IS_BOOT");
    EXPECT_THAT(Host().Log(), Contains("info ConfigStore autoconf start"));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr(STORE)));
}

TEST_F(BootStateTest, TrelldNotificationIsWrittenThenLogged)
{
    EnableTrelldNotification(true);
    EXPECT_EQ(Host().KeyValue("NOTIFY_TRELLD"), "true");
    EnableTrelldNotification(false);
    EXPECT_EQ(Host().KeyValue("NOTIFY_TRELLD"), "false");
    EXPECT_THAT(Host().Log(), ElementsAre("info ConfigStore trelld notification enabled = 1",
                                          "info ConfigStore trelld notification enabled = 0"));
}

TEST_F(BootStateTest, TheBootModeIsKeptAsDecimalText)
{
    EXPECT_EQ(GetBootMode(), BOOTMODE_NONE);
    SetBootMode(BOOTMODE_HOSTAPI);
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "4");
    EXPECT_EQ(GetBootMode(), BOOTMODE_HOSTAPI);
    EXPECT_THAT(Host().Log(), ElementsAre("info Next boot mode set to 4"));
}

TEST_F(BootStateTest, ABootModeTextIsReadUpToItsLastDigit)
{
    SetKey("BOOT_MODE", "12x");
    EXPECT_EQ(GetBootMode(), static_cast<BOOTMODE>(12));
    SetKey("BOOT_MODE", "");
    EXPECT_EQ(GetBootMode(), BOOTMODE_NONE);
}

TEST_F(BootStateTest, ABootModeThatIsNoNumberThrowsTheConversionsOwnException)
{
    SetKey("BOOT_MODE", "abc");
    EXPECT_THROW(GetBootMode(), std::invalid_argument);
    SetKey("BOOT_MODE", "2147483648");
    EXPECT_THROW(GetBootMode(), std::out_of_range);
    EXPECT_EQ(ThrownBy(GetBootMode), "stoi");
}

TEST_F(BootStateTest, SetBootModeTakesPartInTheCallersTransaction)
{
    SetKey("BOOT_MODE", "3");
    const DBStore::ConnectionPtr store = GetDBConnection(DBStore::Type::ConfigStore, true);
    ASSERT_EQ(DBStore::BeginTransaction(store), DBStore::SUCCESS);
    SetBootMode(BOOTMODE_DESIRED_CONFIG);
    EXPECT_EQ(GetBootMode(), BOOTMODE_DESIRED_CONFIG);
    ASSERT_EQ(DBStore::CancelTransaction(store), DBStore::SUCCESS);
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "3");
}

TEST_F(BootStateTest, AStoreLockedByAnotherWriterKeepsItsBootModeAndTheLogSaysWhy)
{
    SetKey("BOOT_MODE", "3");
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(Host().Real(DBStore::StorePath(DBStore::Type::ConfigStore)).c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    SetBootMode(BOOTMODE_DESIRED_CONFIG);
    sqlite3_close(other);
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "3");
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("locked")));
}

TEST_F(BootStateTest, AStoreLockedByAnotherProcessKeepsItsBootModeAndTheLogSaysWhy)
{
    SetKey("BOOT_MODE", "3");
    {
        const LockingProcess other(Host().Real(DBStore::StorePath(DBStore::Type::ConfigStore)));
        ASSERT_TRUE(other.HoldsTheLock());
        SetBootMode(BOOTMODE_DESIRED_CONFIG);
    }
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "3");
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("locked")));
    SetBootMode(BOOTMODE_DESIRED_CONFIG);
    EXPECT_EQ(Host().KeyValue("BOOT_MODE"), "1");
}

TEST_F(BootStateTest, AKeyThatCannotBeReadThrowsAndIsNamed)
{
    const StoreFault fault(SQLITE_READ, "KeyValue");
    EXPECT_EQ(ThrownBy(GetBootMode), "2000 Failed to read value for key BOOT_MODE");
    EXPECT_EQ(ThrownBy(GetInstallInfo), "2000 Failed to read value for key CS_INST_INFO_KEY");
    EXPECT_EQ(ThrownBy(CleanupBootState), "2000 Failed to read value for key BOOT_FS_UUID");
}

TEST_F(NoStoreTest, CallsThatNeedTheStoreThrowWithoutOne)
{
    EXPECT_EQ(ThrownBy(GetBootMode), "2000 Failed to connect to database");
    EXPECT_EQ(ThrownBy([] { SetBootMode(BOOTMODE_NONE); }), "2000 Failed to connect to database");
    EXPECT_EQ(ThrownBy([] { SetLiveInstallBoot("true"); }), "2000 Failed to connect to database");
    EXPECT_EQ(ThrownBy(CleanupBootState), "2000 Failed to connect to database");
    EXPECT_EQ(ThrownBy(GetInstallInfo), "2000 Failed to connect to database.");
    EXPECT_EQ(ThrownBy([] { SetInstallInfo("text"); }), "2000 Failed to connect to database.");
    EXPECT_FALSE(Host().Exists(STORE));
}

TEST_F(NoStoreTest, AConnectionThatIsNotRequiredIsNull)
{
    EXPECT_EQ(GetDBConnection(DBStore::Type::DataFileStore, false), nullptr);
    EXPECT_EQ(ThrownBy([] { GetDBConnection(DBStore::Type::DataFileStore, true); }),
              "2000 Failed to connect to database");
}

TEST_F(BootStateTest, TheLiveInstallMarkIsSetAndTakenBack)
{
    EXPECT_EQ(SetLiveInstallBoot("true"), 0);
    EXPECT_EQ(Host().KeyValue("POST_LIVE_INSTALL_BOOT"), "true");
    EXPECT_EQ(SetLiveInstallBoot("false"), 0);
    EXPECT_EQ(Host().KeyValue("POST_LIVE_INSTALL_BOOT"), "false");
    EXPECT_THAT(Host().Log(), ElementsAre("info POST_LIVE_INSTALL_BOOT=true completed with rc = 0",
                                          "info POST_LIVE_INSTALL_BOOT=false completed with rc = 0"));
}

TEST_F(BootStateTest, AnyOtherLiveInstallTextMeansFalseAndIsLogged)
{
    EXPECT_EQ(SetLiveInstallBoot("TRUE"), 0);
    EXPECT_EQ(Host().KeyValue("POST_LIVE_INSTALL_BOOT"), "false");
    EXPECT_THAT(Host().Log(),
                ElementsAre("info Set POST_LIVE_INSTALL_BOOT=false, since the inputvalue is not valid value TRUE",
                            "info POST_LIVE_INSTALL_BOOT=false completed with rc = 0"));
}

TEST_F(BootStateTest, ANullLiveInstallTextWritesNothing)
{
    SetKey("POST_LIVE_INSTALL_BOOT", "true");
    EXPECT_EQ(SetLiveInstallBoot(nullptr), 1);
    EXPECT_EQ(Host().KeyValue("POST_LIVE_INSTALL_BOOT"), "true");
    EXPECT_THAT(Host().Log(), ElementsAre("error Live install marker not set, since input status was not provided."));
}

TEST_F(NoStoreTest, ANullLiveInstallTextNeedsNoStore)
{
    EXPECT_EQ(SetLiveInstallBoot(nullptr), 1);
    EXPECT_THAT(Host().Log(), ElementsAre("error Live install marker not set, since input status was not provided."));
}

TEST_F(BootStateTest, ALiveInstallMarkThatCannotBeWrittenIsReportedByItsResult)
{
    const StoreFault fault(SQLITE_INSERT, "KeyValue");
    EXPECT_EQ(SetLiveInstallBoot("true"), 1);
    EXPECT_THAT(Host().Log(), Contains("info POST_LIVE_INSTALL_BOOT=true completed with rc = 1"));
}

TEST_F(BootStateTest, TheFirstBootRemembersItsFileSystem)
{
    CleanupBootState();
    EXPECT_EQ(Host().KeyValue("BOOT_FS_UUID"), UUID);
    EXPECT_THAT(Host().Log(), ElementsAre("info Setting BOOT_FS_UUID to " + std::string(UUID) + "."));
}

TEST_F(BootStateTest, ABootFromTheSameFileSystemWritesNothing)
{
    SetKey("BOOT_FS_UUID", UUID);
    SetKey("POST_LIVE_INSTALL_BOOT", "TRUE");
    CleanupBootState();
    EXPECT_THAT(Host().Log(), IsEmpty());
    EXPECT_EQ(Host().KeyValue("POST_LIVE_INSTALL_BOOT"), "TRUE");
}

TEST_F(BootStateTest, CleanupTakesALiveInstallMarkBack)
{
    SetKey("BOOT_FS_UUID", std::string(UUID) + "0");
    SetKey("POST_LIVE_INSTALL_BOOT", "true");
    CleanupBootState();
    EXPECT_EQ(Host().KeyValue("BOOT_FS_UUID"), UUID);
    EXPECT_EQ(Host().KeyValue("POST_LIVE_INSTALL_BOOT"), "false");
    EXPECT_THAT(Host().Log(), ElementsAre("info Setting BOOT_FS_UUID to " + std::string(UUID) + ".",
                                          "info Setting POST_LIVE_INSTALL_BOOT back to false."));
}

TEST_F(BootStateTest, AKernelOfAnotherInterfaceVersionIsNotAskedUntilItIsTheRightOne)
{
    // In a process of its own: once the interface was found usable it is not checked again.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto answers = [this] {
        Host().WriteFile("/etc/talvor/platform/kernel.json", R"({"interfaceVersion": 20})");
        const bool refused = ThrownBy(CleanupBootState) == "2000 Failed to invoke ZEL_CheckSig" &&
                             Host().KeyValue("BOOT_FS_UUID").empty();
        Host().WithKernel({});
        const bool accepted = ThrownBy(CleanupBootState) == "nothing" && Host().KeyValue("BOOT_FS_UUID") == UUID;
        std::filesystem::remove_all(Host().Root());
        std::_Exit(refused && accepted ? 0 : 1);
    };
    EXPECT_EXIT(answers(), ::testing::ExitedWithCode(0), "");
}

TEST_F(BootStateTest, InstallInfoIsKeptAsItIs)
{
    EXPECT_EQ(GetInstallInfo(), "");
    SetInstallInfo("media 7 %s\n\"quoted\"");
    EXPECT_EQ(GetInstallInfo(), "media 7 %s\n\"quoted\"");
}

TEST_F(BootStateTest, TheBootFileSystemIsReadFromTheKernel)
{
    EXPECT_EQ(GetBootFsUUID(false), UUID);
    EXPECT_EQ(GetBootFsUUID(true), UUID);
}

TEST_F(BootStateTest, WithoutKernelFactsTheBootFileSystemIsUnknownAndTheStoreStaysAsItWas)
{
    Host().Remove("/etc/talvor/platform/kernel.json");
    EXPECT_EQ(ThrownBy([] { GetBootFsUUID(false); }), "2000 Failed to get boot fs uuid.");
    EXPECT_EQ(ThrownBy(CleanupBootState), "2000 Failed to get boot fs uuid.");
    EXPECT_EQ(Host().SqlValue("SELECT COUNT(*) FROM KeyValue"), "0");
}
