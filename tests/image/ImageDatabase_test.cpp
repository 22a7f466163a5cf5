#include "ImageDatabase.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "ImageTest.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

class ImageDatabase : public ImageTest
{
protected:
    static std::string FailureOfGet()
    {
        try {
            NimbImage::GetNimbImage();
            return "";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }
};

TEST_F(ImageDatabase, ABrevIsMergedFromProfileAndDescriptor)
{
    WithProfile(Brev("net-drv", {"net.v00", "net.v01"}));
    WithDescriptor("net-drv", "<tag>RestrictStickyFiles</tag><tag>ConfigSchema:net-cfg-1.0:x</tag>");
    const auto image = NimbImage::GetNimbImage();
    ASSERT_EQ(image.size(), 1u);
    const NimbImage::BrevInfo& brev = image.at("Acme_bootbank_net-drv_1.0");
    EXPECT_EQ(brev.name, "net-drv");
    EXPECT_EQ(brev.version, "1.0");
    EXPECT_EQ(brev.vendor, "Acme");
    EXPECT_TRUE(brev.restrictStickyFiles);
    EXPECT_EQ(brev.schemaId, "net-cfg-1.0");
    EXPECT_THAT(brev.payloads, ElementsAre("net.v00", "net.v01"));
}

TEST_F(ImageDatabase, AReadingIsLoggedWithItsPriorities)
{
    WithProfile(Brev("net-drv"));
    WithDescriptor("net-drv", "<tag>ConfigSchema:net-cfg-1.0:x</tag>");
    NimbImage::GetNimbImage();
    EXPECT_THAT(Host().Syslog(), ElementsAre("info Nimb imagedb locked.", "info Found 1 brevs in image profile.",
                                             "info xmlfile='/var/db/nimbimg/brevs/net-drv.xml' schemaId='net-cfg-1.0'",
                                             "info Nimb imagedb unlocked."));
}

TEST_F(ImageDatabase, ADescriptorWithoutASchemaTagDeclaresNoSchema)
{
    WithProfile(Brev("net-drv"));
    WithDescriptor("net-drv", "<tag>Other</tag>");
    EXPECT_EQ(NimbImage::GetNimbImage().at("Acme_bootbank_net-drv_1.0").schemaId, "");
    EXPECT_THAT(Host().Syslog(),
                testing::Contains("debug No ConfigSchema: xmlfile='/var/db/nimbimg/brevs/net-drv.xml'"));
}

TEST_F(ImageDatabase, ADescriptorThatTheProfileDoesNotListIsLoggedAndLeftOut)
{
    WithProfile(Brev("net-drv"));
    WithDescriptor("net-drv");
    WithDescriptor("stray");
    EXPECT_EQ(NimbImage::GetNimbImage().size(), 1u);
    EXPECT_THAT(Host().Syslog(), testing::Contains("error brev Acme_bootbank_stray_1.0 not found in image profile"));
}

TEST_F(ImageDatabase, ABrevWithoutADescriptorKeepsItsPayloadsOnly)
{
    WithProfile(Brev("net-drv", {"net.v00"}));
    const NimbImage::BrevInfo brev = NimbImage::GetNimbImage().at("Acme_bootbank_net-drv_1.0");
    EXPECT_EQ(brev.name + brev.version + brev.vendor + brev.schemaId, "");
    EXPECT_FALSE(brev.restrictStickyFiles);
    EXPECT_THAT(brev.payloads, ElementsAre("net.v00"));
}

TEST_F(ImageDatabase, ABrevListedTwiceHasTheLaterPayloads)
{
    WithProfile(Brev("net-drv", {"first", "second"}) + Brev("net-drv", {"third"}));
    const auto image = NimbImage::GetNimbImage();
    ASSERT_EQ(image.size(), 1u);
    EXPECT_THAT(image.begin()->second.payloads, ElementsAre("third"));
}

TEST_F(ImageDatabase, OnlyTheNamedElementsOfAProfileEntryCount)
{
    WithProfile(
        "<brev><?brev-id no?><!-- brev-id --><other>x</other><brev-id>id &amp; more</brev-id>"
        "<payloads>text<payload>a</payload><other>b</other></payloads>"
        "<payloads><payload>c</payload></payloads></brev>");
    const auto image = NimbImage::GetNimbImage();
    ASSERT_EQ(image.size(), 1u);
    EXPECT_THAT(image.at("id & more").payloads, ElementsAre("a", "c"));
}

TEST_F(ImageDatabase, AProfileWithoutBrevsIsAnEmptyImage)
{
    WithProfile("");
    EXPECT_TRUE(NimbImage::GetNimbImage().empty());
    EXPECT_TRUE(NimbImage::GetBrevIds().empty());
    EXPECT_THAT(Host().Syslog(), Not(testing::Contains(HasSubstr("brevs in image profile"))));
}

TEST_F(ImageDatabase, AMalformedSchemaTagEndsTheReading)
{
    for (const char* tag : {"ConfigSchema:abc", "ConfigSchema::x", "ConfigSchema:"}) {
        WithProfile(Brev("net-drv"));
        WithDescriptor("net-drv", std::string("<tag>") + tag + "</tag>").ClearLogs();
        try {
            NimbImage::GetNimbImage();
            ADD_FAILURE() << tag;
        } catch (const std::exception& error) {
            EXPECT_STREQ(error.what(), std::exception().what()) << "the reason is for the log alone";
        }
        EXPECT_THAT(Host().Syslog(), testing::Contains(std::string("error Failed to parse ConfigSchema tag: "
                                                                   "xmlfile='/var/db/nimbimg/brevs/net-drv.xml': '") +
                                                       tag + "'"));
        EXPECT_TRUE(IsUnlocked());
    }
}

TEST_F(ImageDatabase, OnlyRegularFilesNamedXmlAreDescriptors)
{
    WithProfile(Brev("net-drv"));
    for (const char* name : {".hidden.xml", "net-drv.xml.bak", "net-drv.XML", "net-drv", "xml", "net-drv."}) {
        Host().WriteFile(BREV_FOLDER + std::string(name), "not a descriptor");
    }
    Host().MakeFolder(BREV_FOLDER + std::string("folder.xml"));
    Host().WriteFile("/tmp/elsewhere", "not a descriptor");
    std::filesystem::create_symlink("/tmp/elsewhere", Host().Real(BREV_FOLDER + std::string("link.xml")));
    EXPECT_EQ(NimbImage::GetNimbImage().size(), 1u);
}

TEST_F(ImageDatabase, WithoutADescriptorsFolderTheProfileStandsAlone)
{
    WithProfile(Brev("net-drv"));
    Host().Remove("/var/db/nimbimg/brevs");
    EXPECT_EQ(NimbImage::GetNimbImage().size(), 1u);
}

TEST_F(ImageDatabase, AProfilesFolderWithoutARegularFileHasNoProfile)
{
    Host().MakeFolder("/var/db/nimbimg/profiles/folder");
    Host().WriteFile("/tmp/profile", "<imageprofile/>");
    std::filesystem::create_symlink("/tmp/profile", Host().Real("/var/db/nimbimg/profiles/link"));
    EXPECT_EQ(FailureOfGet(), "Failed to get image profile path.");
    EXPECT_THAT(Host().Syslog(), ElementsAre("info Nimb imagedb locked.", "error No image profile found",
                                             "info Nimb imagedb unlocked."));
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ImageDatabase, AMissingProfilesFolderHasNoProfile)
{
    Host().Remove("/var/db/nimbimg/profiles");
    EXPECT_EQ(FailureOfGet(), "Failed to get image profile path.");
    EXPECT_THAT(Host().Syslog(), ElementsAre("info Nimb imagedb locked.", "error Cannot open imgdb profiles folder",
                                             "info Nimb imagedb unlocked."));
}

TEST_F(ImageDatabase, OfTwoProfilesTheFirstInFolderOrderIsUsed)
{
    for (const std::string& name : {std::string("one"), std::string("two")}) {
        Host().WriteFile("/var/db/nimbimg/profiles/" + name, "<imageprofile><brevlist><brev><brev-id>" + name +
                                                                 "</brev-id></brev></brevlist></imageprofile>");
    }
    std::filesystem::directory_iterator first(Host().Real("/var/db/nimbimg/profiles"));
    EXPECT_THAT(NimbImage::GetBrevIds(), UnorderedElementsAre(first->path().filename().string()));
}

TEST_F(ImageDatabase, BrevIdsAreReadWithoutDescriptors)
{
    WithProfile(Brev("a") + Brev("b") + Brev("a") + "<brev><brev-id>x&#38;y</brev-id></brev><brev/>");
    Host().WriteFile(BREV_FOLDER + std::string("broken.xml"), "broken");
    EXPECT_THAT(NimbImage::GetBrevIds(), UnorderedElementsAre("Acme_bootbank_a_1.0", "Acme_bootbank_b_1.0", "x&y"));
}

TEST_F(ImageDatabase, TheSchemaIdsAreThoseThatBrevsDeclareEachOnce)
{
    WithProfile(Brev("a") + Brev("b") + Brev("c") + Brev("d"));
    WithDescriptor("a", "<tag>ConfigSchema:shared-1.0:x</tag>");
    WithDescriptor("b", "<tag>ConfigSchema:shared-1.0:y</tag>");
    WithDescriptor("c", "<tag>Other</tag><tag>ConfigSchema:own-1.0:z:more</tag>");
    WithDescriptor("d");
    EXPECT_THAT(NimbImage::GetSchemaIds(), UnorderedElementsAre("shared-1.0", "own-1.0"));
}

TEST_F(ImageDatabase, BrevsWithoutSchemaTagsDeclareNoSchemaIds)
{
    WithProfile(Brev("a") + Brev("b"));
    WithDescriptor("a", "<tag>Other</tag>");
    EXPECT_TRUE(NimbImage::GetSchemaIds().empty());
}

TEST_F(ImageDatabase, FailuresOfTheReaderReachThoseWhoAskForSchemaIds)
{
    EXPECT_THROW(NimbImage::GetSchemaIds(), std::runtime_error);
    EXPECT_THROW(NimbImage::GetBrevIds(), std::runtime_error);
    EXPECT_THROW(NimbImage::Dump(), std::runtime_error);
}

TEST_F(ImageDatabase, AnExpressionThatGivesNoResultIsRefused)
{
    WithProfile("");
    NimbImage::NimbImage image;
    testing::internal::CaptureStderr();
    EXPECT_THROW(image.ExecuteXpathExpr("///", [](NimbImage::NimbImage&, xmlNodeSetPtr) { FAIL(); }),
                 std::runtime_error);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    bool handled = false;
    image.ExecuteXpathExpr("1", [&](NimbImage::NimbImage&, xmlNodeSetPtr nodes) { handled = nodes == nullptr; });
    EXPECT_TRUE(handled);
}

TEST_F(ImageDatabase, NothingStaysOpenWhateverHappens)
{
    WithProfile(Brev("a"));
    NimbImage::GetNimbImage();  // libraries open what they keep
    const std::size_t before = OpenFiles();
    Host().WriteFile(BREV_FOLDER + std::string("broken.xml"), "broken");
    EXPECT_THROW(NimbImage::GetNimbImage(), std::exception);
    WithDescriptor("broken", "<tag>ConfigSchema:abc</tag>");
    EXPECT_THROW(NimbImage::GetNimbImage(), std::exception);
    Host().WriteFile(PROFILE, "broken");
    EXPECT_THROW(NimbImage::GetNimbImage(), std::exception);
    Host().Remove(PROFILE);
    EXPECT_THROW(NimbImage::GetNimbImage(), std::exception);
    EXPECT_EQ(OpenFiles(), before);
    EXPECT_TRUE(IsUnlocked());
}
