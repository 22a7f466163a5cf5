#include <gmock/gmock.h>

#include <filesystem>
#include <stdexcept>

#include "FileSizeLimit.h"
#include "HostUtil.h"
#include "ImageTest.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "PrivateNamespace.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace
{
const char* const BACKUP_LIST = "/var/run/talvor/files/backup-list";
const char* const SKIP_LIST = "/var/run/talvor/files/skip-backup-list";
const char* const NON_SCHEMA_LIST = "/var/run/nonSchemaFiles";
}  // namespace

/// A host with a "net" package that lets its files persist and a "lock" package that restricts them.
class PersistedFiles : public ImageTest
{
protected:
    PersistedFiles()
    {
        Host().WithStores();
        Host().WithPackage("net", "1.0", "", {}, {"net.v00", "net.v01"});
        Host().WithPackage("lock", "1.0", "", {"RestrictStickyFiles"}, {"lock.v00"});
    }

    struct Declared
    {
        std::string path;
        std::string persistence;
        bool enabled = true;
    };

    /// Replaces what the schemas declare.
    static void Declare(const std::vector<Declared>& files)
    {
        const auto store = NimbSchemaStore::SchemaStore::GetStore(true);
        int number = 100;
        for (const Declared& file : files) {
            const std::string key = "file" + std::to_string(++number);
            const std::string element = R"({"component": "files", "group": "etc", "key": ")" + key +
                                        R"(", "file": {"enabled": )" + (file.enabled ? "true" : "false") +
                                        R"(, "persistence": ")" + file.persistence + R"(", "path": ")" + file.path +
                                        R"("}})";
            NimbSchemaStore::SetSchema("files-1.0.0_1.0", "files", "etc", key, element, store, false);
        }
        NimbSchemaStore::RemoveUndeclaredSchemas({}, store);
    }

    /// A changed file whose tardisk's own copy stands beside it, both delivered by @p tardisk.
    void WithChangedFile(const std::string& path, const std::string& tardisk)
    {
        const std::size_t name = path.rfind('/') + 1;
        Host().WriteFile(path, "changed").WriteFile(path.substr(0, name) + ".#" + path.substr(name), "delivered");
        kernel_.tardisks[tardisk].push_back(path);
        Host().WithKernel(kernel_);
    }

    static std::vector<std::string> Filter(const std::vector<std::string>& files)
    {
        return NimbConfigStore::FilterStickyBitFiles(files);
    }

    /// What the system log says beside the reading of the image.
    std::vector<std::string> Errors()
    {
        std::vector<std::string> lines = Host().Syslog();
        std::erase_if(lines, [](const std::string& line) { return !line.starts_with("error "); });
        return lines;
    }

private:
    TestHost::Kernel kernel_;
};

TEST_F(PersistedFiles, AFileOfAnotherFileSystemIsNotTakenForItsNamesakeByNumber)
{
    Host().MakeFolder("/a");
    Host().MakeFolder("/b");
    const std::string unavailable = RunInPrivateNamespace([this] {
        ASSERT_EQ(HostMount("none", "/a", "tmpfs", 0, nullptr) + HostMount("none", "/b", "tmpfs", 0, nullptr), 0);
        // The two shadows are the first files of their file systems, and so have the same number.
        Host().WriteFile("/b/.#file", "not delivered");
        Host().WriteFile("/a/.#file", "delivered").WriteFile("/a/file", "changed");
        Host().WithKernel({.tardisks = {{"net.v00", {"/a/file"}}}});
        EXPECT_THAT(Filter({"/a/file", "/b/file"}), ElementsAre("/a/file"));
        EXPECT_THAT(Errors(), Contains(HasSubstr("File /b/file cannot be mapped to tardisk")));
    });
    if (!unavailable.empty()) {
        GTEST_SKIP() << unavailable;
    }
}

TEST_F(PersistedFiles, DeclaredFilesAreListedByClassInOrder)
{
    Declare({{"/etc/b", "config"}, {"/etc/a", "config"}, {"/etc/v", "vital"}, {"/etc/c", "cached"}});
    const auto files = NimbConfigStore::GetBrevFiles();
    EXPECT_EQ(files.size(), 3u);
    EXPECT_THAT(files.at("config"), ElementsAre("/etc/b", "/etc/a"));
    EXPECT_THAT(files.at("vital"), ElementsAre("/etc/v"));
    EXPECT_THAT(files.at("cached"), ElementsAre("/etc/c"));
}

TEST_F(PersistedFiles, AllThreeClassesAreThereWhenNothingIsDeclared)
{
    const auto files = NimbConfigStore::GetBrevFiles();
    EXPECT_EQ(files.size(), 3u);
    for (const char* persistence : {"vital", "cached", "config"}) {
        EXPECT_THAT(files.at(persistence), IsEmpty());
    }
}

TEST_F(PersistedFiles, AFileThatIsSwitchedOffIsNotDeclared)
{
    Declare({{"/etc/off", "config", false}});
    EXPECT_THAT(NimbConfigStore::GetBrevFiles().at("config"), IsEmpty());
    EXPECT_THAT(Filter({"/etc/off"}), IsEmpty());
}

TEST_F(PersistedFiles, AnObjectThatDoesNotSayAllOfItsFileIsPassedOver)
{
    const auto store = NimbSchemaStore::SchemaStore::GetStore(true);
    int number = 0;
    for (const char* file : {R"({"persistence": "vital", "path": "/etc/a"})", R"({"enabled": true, "path": "/etc/b"})",
                             R"({"enabled": true, "persistence": "vital"})", "{}"}) {
        const std::string key = "file" + std::to_string(++number);
        NimbSchemaStore::SetSchema(
            "files-1.0.0_1.0", "files", "etc", key,
            R"({"component": "files", "group": "etc", "key": ")" + key + R"(", "file": )" + file + "}", store, false);
    }
    NimbSchemaStore::RemoveUndeclaredSchemas({}, store);
    EXPECT_THAT(NimbConfigStore::GetBrevFiles().at("vital"), IsEmpty());
}

TEST_F(PersistedFiles, WithoutASchemaStoreNothingIsAnswered)
{
    Host().Remove(DBStore::StorePath(DBStore::Type::SchemaStore));
    EXPECT_THROW(NimbConfigStore::GetBrevFiles(), NimbConfigStore::ConfigStoreException);
    EXPECT_THROW(Filter({"/etc/a"}), NimbConfigStore::ConfigStoreException);
}

TEST_F(PersistedFiles, WithoutAnImageDatabaseNothingIsFiltered)
{
    Host().Remove("/var/db/nimbimg/profiles");
    EXPECT_THROW(Filter({"/etc/a"}), std::runtime_error);
    EXPECT_FALSE(Host().Exists(SKIP_LIST));
}

TEST_F(PersistedFiles, ADeclaredFileIsKeptWithoutTouchingTheFileSystem)
{
    Declare({{"/etc/v", "vital"}, {"/etc/c", "cached"}, {"/etc/f", "config"}, {"/opt/vital/v", "vital"}});
    Host().ClearLogs();
    EXPECT_THAT(Filter({"/opt/vital/v", "/etc/f", "/etc/v", "/etc/c"}),
                ElementsAre("/opt/vital/v", "/etc/f", "/etc/v", "/etc/c"));
    EXPECT_FALSE(Host().Exists(SKIP_LIST));
    EXPECT_THAT(Host().Syslog(), Not(Contains(HasSubstr("error"))));
}

TEST_F(PersistedFiles, AFileThatIsNoLongerDeclaredIsForgotten)
{
    Declare({{"/etc/v", "vital"}, {"/etc/c", "cached"}, {"/etc/f", "config"}});
    EXPECT_EQ(Filter({"/etc/v", "/etc/c", "/etc/f"}).size(), 3u);
    Host().WithStores();
    Host().Sql("DELETE FROM ConfigSchema", DBStore::Type::SchemaStore);
    EXPECT_THAT(Filter({"/etc/v", "/etc/c", "/etc/f"}), IsEmpty());
}

TEST_F(PersistedFiles, AFileUnderOptNamedVitalIsJudgedByItsTardiskUnlessItIsVital)
{
    Declare({{"/opt/app/vital.conf", "config"}, {"/opt/app/vital.cache", "cached"}, {"/opt/app/other.conf", "config"}});
    EXPECT_THAT(Filter({"/opt/app/vital.conf", "/opt/app/vital.cache", "/opt/app/other.conf"}),
                ElementsAre("/opt/app/other.conf"));
    WithChangedFile("/opt/app/vital.conf", "net.v00");
    EXPECT_THAT(Filter({"/opt/app/vital.conf"}), ElementsAre("/opt/app/vital.conf"));
}

TEST_F(PersistedFiles, AChangedFileOfABrevWithoutRestrictionIsKept)
{
    WithChangedFile("/etc/net.conf", "net.v01");
    EXPECT_THAT(Filter({"/etc/net.conf"}), ElementsAre("/etc/net.conf"));
    EXPECT_FALSE(Host().Exists(SKIP_LIST));
}

TEST_F(PersistedFiles, AChangedFileOfABrevThatRestrictsStickyFilesIsRefused)
{
    WithChangedFile("/etc/lock.conf", "lock.v00");
    EXPECT_THAT(Filter({"/etc/lock.conf"}), IsEmpty());
    EXPECT_THAT(Errors(), ElementsAre("error File /etc/lock.conf in tardisk lock.v00 does not belong to brev "
                                      "which allows persistence of sticky bit files",
                                      "error File /etc/lock.conf will not be persisted."));
    EXPECT_EQ(Host().ReadFile(SKIP_LIST), "/etc/lock.conf\n");
}

TEST_F(PersistedFiles, AFileWithoutATardisksCopyIsRefused)
{
    Host().WriteFile("/etc/new.conf", "x");
    EXPECT_THAT(Filter({"/etc/new.conf"}), IsEmpty());
    EXPECT_THAT(Errors(),
                ElementsAre("error File stat(/etc/new.conf) failed with error 2",
                            "error File /etc/new.conf cannot be mapped to tardisk, hence it should not be persisted.",
                            "error File /etc/new.conf will not be persisted."));
    EXPECT_EQ(Host().ReadFile(SKIP_LIST), "/etc/new.conf\n");
}

TEST_F(PersistedFiles, AFileThatNoTardiskDeliveredIsRefused)
{
    Host().WriteFile("/etc/own.conf", "x").WriteFile("/etc/.#own.conf", "y");
    EXPECT_THAT(Filter({"/etc/own.conf"}), IsEmpty());
    EXPECT_THAT(Host().Syslog(),
                Contains("error File /etc/own.conf cannot be mapped to tardisk, hence it should not be persisted."));
    EXPECT_EQ(Host().Syslog().back(), "error File /etc/own.conf will not be persisted.");
}

TEST_F(PersistedFiles, AKernelOfAnotherInterfaceRefusesEveryUndeclaredFile)
{
    WithChangedFile("/etc/net.conf", "net.v00");
    Host().WriteFile("/etc/talvor/platform/kernel.json",
                     R"({"interfaceVersion": 20, "tardisks": {"net.v00": ["/etc/net.conf"]}})");
    EXPECT_THAT(Filter({"/etc/net.conf"}), IsEmpty());
    EXPECT_THAT(Errors(),
                ElementsAre("error Failed to init zel",
                            "error File /etc/net.conf cannot be mapped to tardisk, hence it should not be persisted.",
                            "error File /etc/net.conf will not be persisted."));
}

TEST_F(PersistedFiles, AKernelThatTellsNothingRefusesEveryUndeclaredFile)
{
    Declare({{"/etc/v", "vital"}});
    WithChangedFile("/etc/net.conf", "net.v00");
    Host().WriteFile("/etc/talvor/platform/kernel.json", "garbage");
    EXPECT_THAT(Filter({"/etc/net.conf", "/etc/v"}), ElementsAre("/etc/v"));
}

TEST_F(PersistedFiles, AFileBehindLinksIsKeptWhenItIsDeclaredUnderItsOwnName)
{
    Declare({{"/var/data/conf/app.conf", "config"}});
    Host().WriteFile("/var/data/conf/app.conf", "x");
    std::filesystem::create_symlink("/var/data", Host().Real("/etc/app"));
    std::filesystem::create_symlink("conf/app.conf", Host().Real("/var/data/short.conf"));
    EXPECT_THAT(Filter({"/etc/app/conf/app.conf", "/etc/app/short.conf", "/var/data/short.conf"}),
                ElementsAre("/etc/app/conf/app.conf", "/etc/app/short.conf", "/var/data/short.conf"));
}

TEST_F(PersistedFiles, ALinkThatLeadsToNoDeclaredFileLeavesTheTardiskTest)
{
    Host().WriteFile("/etc/target", "x");
    std::filesystem::create_symlink("/etc/target", Host().Real("/etc/link"));
    std::filesystem::create_symlink("/etc/nowhere", Host().Real("/etc/dangling"));
    std::filesystem::create_symlink("loop", Host().Real("/etc/loop"));
    EXPECT_THAT(Filter({"/etc/link", "/etc/dangling", "/etc/loop"}), IsEmpty());
    EXPECT_EQ(Host().ReadFile(SKIP_LIST), "/etc/link\n/etc/dangling\n/etc/loop\n");
}

TEST_F(PersistedFiles, LinksAreResolvedInsideTheRoot)
{
    // The same absolute path outside the root would be another file.
    Declare({{"/etc/hostname", "config"}, {"/climbed", "config"}});
    Host().WriteFile("/etc/hostname", "x").WriteFile("/climbed", "x");
    std::filesystem::create_symlink("/etc/hostname", Host().Real("/etc/absolute"));
    std::filesystem::create_symlink("../../../../../../../../climbed", Host().Real("/etc/climbing"));
    EXPECT_THAT(Filter({"/etc/absolute", "/etc/climbing"}), ElementsAre("/etc/absolute", "/etc/climbing"));
}

TEST_F(PersistedFiles, KeptAndRefusedFilesStayInTheOrderGiven)
{
    Declare({{"/etc/2", "vital"}, {"/etc/4", "config"}});
    WithChangedFile("/etc/6", "net.v00");
    EXPECT_THAT(Filter({"/etc/5", "/etc/4", "/etc/1", "/etc/6", "/etc/2", "/etc/3"}),
                ElementsAre("/etc/4", "/etc/6", "/etc/2"));
    EXPECT_EQ(Host().ReadFile(SKIP_LIST), "/etc/5\n/etc/1\n/etc/3\n");
}

TEST_F(PersistedFiles, TheSkipListIsReplacedByRefusalsAndLeftAloneWithoutThem)
{
    Declare({{"/etc/v", "vital"}});
    Host().WriteFile(SKIP_LIST, "earlier, and longer than what follows\n");
    EXPECT_THAT(Filter({"/etc/v"}), ElementsAre("/etc/v"));
    EXPECT_THAT(Filter({}), IsEmpty());
    EXPECT_EQ(Host().ReadFile(SKIP_LIST), "earlier, and longer than what follows\n");
    EXPECT_THAT(Filter({"/etc/x"}), IsEmpty());
    EXPECT_EQ(Host().ReadFile(SKIP_LIST), "/etc/x\n");
}

TEST_F(PersistedFiles, ASkipListThatCannotBeWrittenChangesNoAnswer)
{
    Host().MakeFolder(SKIP_LIST);
    WithChangedFile("/etc/net.conf", "net.v00");
    EXPECT_THAT(Filter({"/etc/x", "/etc/net.conf"}), ElementsAre("/etc/net.conf"));
}

TEST_F(PersistedFiles, OddPathsAreRefusedLikeAnyOther)
{
    EXPECT_THAT(Filter({"", "/", "relative", "/etc/", "/opt", std::string(5000, 'x')}), IsEmpty());
}

TEST_F(PersistedFiles, TrackedFilesReplaceTheListOfTheirType)
{
    Host().WriteFile(BACKUP_LIST, "earlier, and longer than what follows\n");
    NimbConfigStore::TrackFiles({"/etc/b", "/etc/a"}, NimbConfigStore::FileType::Backup);
    NimbConfigStore::TrackFiles({"/etc/c"}, NimbConfigStore::FileType::NonSchema);
    EXPECT_EQ(Host().ReadFile(BACKUP_LIST), "/etc/b\n/etc/a\n");
    EXPECT_EQ(Host().ReadFile(NON_SCHEMA_LIST), "/etc/c\n");
}

TEST_F(PersistedFiles, TheFolderOfTheListsIsMadeWhenItIsMissing)
{
    Host().Remove("/var/run/talvor/files");
    NimbConfigStore::TrackFiles({"/etc/a"}, NimbConfigStore::FileType::Backup);
    EXPECT_EQ(Host().ReadFile(BACKUP_LIST), "/etc/a\n");
    Host().Remove("/var/run/talvor/files");
    EXPECT_THAT(Filter({"/etc/x"}), IsEmpty());
    EXPECT_EQ(Host().ReadFile(SKIP_LIST), "/etc/x\n");
}

TEST_F(PersistedFiles, AListThatCannotBeWrittenWholeIsLoggedByName)
{
    Host().ClearLogs();
    {
        const FileSizeLimit limit(1 << 20);
        NimbConfigStore::TrackFiles({std::string(2 << 20, 'x')}, NimbConfigStore::FileType::Backup);
    }
    EXPECT_THAT(Host().Log(), ElementsAre("error Failed to write " + std::string(BACKUP_LIST)));
}

TEST_F(PersistedFiles, TrackingNoFilesLeavesTheListAsItIs)
{
    Host().WriteFile(BACKUP_LIST, "earlier\n").ClearLogs();
    NimbConfigStore::TrackFiles({}, NimbConfigStore::FileType::Backup);
    NimbConfigStore::TrackFiles({}, static_cast<NimbConfigStore::FileType>(2));
    EXPECT_EQ(Host().ReadFile(BACKUP_LIST), "earlier\n");
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(PersistedFiles, AnUnknownListTypeIsLogged)
{
    Host().ClearLogs();
    NimbConfigStore::TrackFiles({"/etc/a"}, static_cast<NimbConfigStore::FileType>(2));
    EXPECT_THAT(Host().Log(), ElementsAre("error Invalid file type specified."));
    EXPECT_FALSE(Host().Exists(BACKUP_LIST) || Host().Exists(NON_SCHEMA_LIST));
}

TEST_F(PersistedFiles, AListThatCannotBeOpenedIsLogged)
{
    Host().ClearLogs();
    Host().MakeFolder(NON_SCHEMA_LIST);
    NimbConfigStore::TrackFiles({"/etc/a"}, NimbConfigStore::FileType::NonSchema);
    EXPECT_THAT(Host().Log(), ElementsAre("error Failed to open file for tracking"));
}
