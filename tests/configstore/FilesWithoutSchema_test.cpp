#include "FilesWithoutSchema.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "NimbConfigStore.h"
#include "TestHost.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace
{
constexpr const char* LIST = "/var/run/nonSchemaFiles";

class FilesWithoutSchemaTest : public HostTest
{
protected:
    void DeclareFile(const std::string& path)
    {
        Host().WithPackage("files-pkg", "1.0.0_1.0",
                           R"([{"component": "files", "group": "host", "key": "declared", "file": {"enabled": true,)"
                           R"("persistence": "config", "path": ")" +
                               path + R"("}}])");
        Host().WithStores();
        ASSERT_TRUE(NimbConfigStore::ProcessSchemas({}));
    }

    void RemoveListed(const std::string& words)
    {
        Host().WriteFile(LIST, words).ClearLogs();
        NimbConfigStore::RemoveFilesWithoutSchema();
    }
};
}  // namespace

TEST_F(FilesWithoutSchemaTest, WithoutAListNothingIsDone)
{
    NimbConfigStore::RemoveFilesWithoutSchema();
    EXPECT_THAT(Host().Log(), ElementsAre("info Upgrade delete file not found."));
}

TEST_F(FilesWithoutSchemaTest, OnlyFilesThatNoSchemaDeclaresAreRemoved)
{
    DeclareFile("/etc/declared.conf");
    Host().WriteFile("/etc/declared.conf", "").WriteFile("/etc/x.conf", "");
    RemoveListed("etc/x.conf\n  etc/declared.conf\tetc/missing.conf\n");
    EXPECT_FALSE(Host().Exists("/etc/x.conf"));
    EXPECT_TRUE(Host().Exists("/etc/declared.conf"));
    EXPECT_TRUE(Host().Exists(LIST));
    EXPECT_THAT(
        Host().Log(),
        ElementsAre("info [/etc/x.conf] file does not have schema.", "info [/etc/declared.conf] file has schema.",
                    "info [/etc/missing.conf] file does not have schema.", "error [/etc/x.conf] file removed."));
}

TEST_F(FilesWithoutSchemaTest, ADeclaredFileIsKeptUnderEverySpellingOfItsPath)
{
    DeclareFile("/etc/declared.conf");
    Host().WriteFile("/etc/declared.conf", "");
    RemoveListed("/etc/declared.conf etc//declared.conf etc/../etc/declared.conf ../etc/./declared.conf");
    EXPECT_TRUE(Host().Exists("/etc/declared.conf"));
    EXPECT_THAT(Host().Log(), Contains("info [//etc/declared.conf] file has schema."));
}

TEST_F(FilesWithoutSchemaTest, AWordThatClimbsStopsAtTheHostRoot)
{
    DeclareFile("/etc/declared.conf");
    const std::filesystem::path outside = std::filesystem::path(Host().Root()).parent_path() / "outside of the root";
    const std::filesystem::path victim = outside.string() + std::to_string(getpid());
    std::filesystem::create_directory(victim);
    RemoveListed("../" + victim.filename().string() + " ../../../..");
    EXPECT_TRUE(std::filesystem::remove(victim));
    EXPECT_TRUE(Host().Exists("/etc/talvor"));
}

TEST_F(FilesWithoutSchemaTest, AFolderOrAPipeInPlaceOfTheListIsNamedAndNotRead)
{
    DeclareFile("/etc/declared.conf");
    Host().MakeFolder(LIST);
    Host().ClearLogs();
    NimbConfigStore::RemoveFilesWithoutSchema();
    Host().Remove(LIST);
    ASSERT_EQ(mkfifo(Host().Real(LIST).c_str(), 0600), 0);
    NimbConfigStore::RemoveFilesWithoutSchema();
    EXPECT_THAT(Host().Log(), ElementsAre("error Failed to get file schemas: /var/run/nonSchemaFiles is not a regular "
                                          "file",
                                          "error Failed to get file schemas: /var/run/nonSchemaFiles is not a regular "
                                          "file"));
}

TEST_F(FilesWithoutSchemaTest, WithoutSchemasNothingIsRemoved)
{
    Host().WriteFile("/etc/x.conf", "");
    RemoveListed("etc/x.conf");
    EXPECT_TRUE(Host().Exists("/etc/x.conf"));
    EXPECT_THAT(Host().Log(), Contains(HasSubstr("error Failed to get file schemas: ")));
}
