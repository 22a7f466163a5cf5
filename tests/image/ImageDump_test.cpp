#include <gmock/gmock.h>

#include <filesystem>

#include "ImageTest.h"
#include "NimbImage.h"

using ImageDump = ImageTest;

namespace
{
const char* const DUMP_FILE = "/tmp/image-info.csv";
const std::string HEADER = "brevId,Name,Version,Vendor,RestrictStickyFiles,schemaId,tardisks,\n";
}  // namespace

TEST_F(ImageDump, EveryBrevIsALineUnderTheHeader)
{
    WithProfile(Brev("net-drv", {"net.v00", "net.v01"}));
    WithDescriptor("net-drv", "<tag>RestrictStickyFiles</tag><tag>ConfigSchema:net-cfg-1.0:x</tag>");
    NimbImage::Dump();
    EXPECT_EQ(Host().ReadFile(DUMP_FILE),
              HEADER + "Acme_bootbank_net-drv_1.0,net-drv,1.0,Acme,1,net-cfg-1.0,net.v00|net.v01|\n");
}

TEST_F(ImageDump, LinesStandInTheOrderOfTheMap)
{
    WithProfile(Brev("a") + Brev("b") + Brev("c", {"c.v00"}));
    NimbImage::Dump();
    std::string expected = HEADER;
    for (const auto& [id, brev] : NimbImage::GetNimbImage()) {
        expected += id + ",,,,0,," + (brev.payloads.empty() ? "" : "c.v00|") + "\n";
    }
    EXPECT_EQ(Host().ReadFile(DUMP_FILE), expected);
}

TEST_F(ImageDump, AnEarlierDumpIsReplaced)
{
    WithProfile("");
    Host().WriteFile(DUMP_FILE, std::string(10000, 'x'));
    NimbImage::Dump();
    EXPECT_EQ(Host().ReadFile(DUMP_FILE), HEADER);
}

TEST_F(ImageDump, ALinkPlantedUnderTheNameIsReplacedAndItsTargetUntouched)
{
    WithProfile("");
    Host().WriteFile("/etc/precious", "kept");
    std::filesystem::create_symlink("/etc/precious", Host().Real(DUMP_FILE));
    NimbImage::Dump();
    EXPECT_EQ(Host().ReadFile("/etc/precious"), "kept");
    EXPECT_FALSE(std::filesystem::is_symlink(Host().Real(DUMP_FILE)));
    EXPECT_EQ(Host().ReadFile(DUMP_FILE), HEADER);
}

TEST_F(ImageDump, ADumpThatCannotBeWrittenIsNotReported)
{
    WithProfile("");
    Host().MakeFolder(DUMP_FILE);
    EXPECT_NO_THROW(NimbImage::Dump());
    EXPECT_THAT(Host().Syslog(), testing::ElementsAre("info Nimb imagedb locked.", "info Nimb imagedb unlocked."));
}
