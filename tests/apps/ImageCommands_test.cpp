#include "CommandTest.h"

namespace
{
class ImageCommandsTest : public CommandTest
{
protected:
    void SetUp() override
    {
        Host().WithPackage("net-drv", "1.2.0_3.4", "[]", {}, {"net.v00", "net.v01"});
        Host().WithPackage("sys-base", "8.0.0_1.0", "", {"RestrictStickyFiles"}, {"b.b00"});
    }
};
}  // namespace

TEST_F(ImageCommandsTest, ListNamesEveryPackage)
{
    ExpectGolden("image-list", {"image", "list"});
}

TEST_F(ImageCommandsTest, SchemaIdsAreThoseThatPackagesDeclare)
{
    ExpectGolden("image-ids", {"image", "ids"});
    ExpectGolden("image-schema-ids", {"image", "schema-ids"});
}

TEST_F(ImageCommandsTest, DumpWritesTheCsvFile)
{
    ExpectGolden("image-dump", {"image", "dump"});
    EXPECT_THAT(Host().ReadFile("/tmp/image-info.csv"),
                ::testing::HasSubstr("Talvor_bootbank_net-drv_1.2.0_3.4,net-drv,1.2.0_3.4,Talvor,0,"));
}

TEST_F(ImageCommandsTest, DumpThatCannotBeWrittenFails)
{
    Host().MakeFolder("/tmp/image-info.csv");
    ExpectFailure({"image", "dump"}, "image dump: /tmp/image-info.csv: cannot be written: Is a directory");
}

TEST_F(ImageCommandsTest, FailWhenThereIsNoProfile)
{
    Host().Remove("/var/db/nimbimg/profiles/profile");
    ExpectFailure({"image", "list"}, "image list: Failed to get image profile path.");
    ExpectFailure({"image", "schema-ids"}, "image schema-ids: Failed to get image profile path.");
    ExpectFailure({"image", "dump"}, "image dump: Failed to get image profile path.");
}
