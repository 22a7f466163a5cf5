#include "XmlFile.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "ImageTest.h"
#include "NimbImage.h"

class XmlFile : public ImageTest
{
protected:
    /// The text of /brev/name when @p content is a document; "refused" otherwise.
    std::string NameIn(const std::string& content)
    {
        Host().WriteFile("/tmp/brev.xml", content);
        return NameOfFile();
    }

    static std::string NameOfFile()
    {
        const XmlDocument document = ParseXmlFile("/tmp/brev.xml");
        if (document == nullptr) {
            return "refused";
        }
        const XPathContext context = NewXPathContext(document.get());
        const XPathResult result = EvaluateXPath("/brev/name", context.get());
        return IsEmptyNodeSet(result->nodesetval) ? "none"
                                                  : TakeXmlText(xmlNodeGetContent(result->nodesetval->nodeTab[0]));
    }

    static std::string WithEntities(const std::string& declarations, const std::string& name)
    {
        return "<!DOCTYPE brev [" + declarations + "]><brev><name>" + name + "</name></brev>";
    }

    static std::string Repeated(const std::string& text, int times)
    {
        std::string repeated;
        for (int i = 0; i < times; ++i) {
            repeated += text;
        }
        return repeated;
    }
};

TEST_F(XmlFile, AWellFormedFileIsRead)
{
    EXPECT_EQ(NameIn("<brev><name>a &lt; b</name></brev>"), "a < b");
    EXPECT_EQ(NameIn("<brev/>"), "none");
}

TEST_F(XmlFile, WhatIsNotWellFormedIsRefusedInSilence)
{
    testing::internal::CaptureStderr();
    for (const std::string& content : {std::string(), std::string("garbage"), std::string("<brev><name>a</name>"),
                                       std::string("<brev><name>a</nam></brev>"),
                                       std::string("\x7f"
                                                   "ELF\0\1\2",
                                                   7),
                                       std::string("<brev>&unknown;</brev>"), Repeated("<a>", 400000)}) {
        EXPECT_EQ(NameIn(content), "refused") << content.substr(0, 20);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(XmlFile, AnythingButAReadableFileIsRefused)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(NameOfFile(), "refused");
    Host().MakeFolder("/tmp/brev.xml");
    EXPECT_EQ(NameOfFile(), "refused");
    Host().Remove("/tmp/brev.xml");
    std::filesystem::create_symlink("brev.xml", Host().Real("/tmp/brev.xml"));
    EXPECT_EQ(NameOfFile(), "refused");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(XmlFile, ShortEntitiesAreSubstituted)
{
    EXPECT_EQ(NameIn(WithEntities("<!ENTITY v \"Acme\">", "&v;_x")), "Acme_x");
}

TEST_F(XmlFile, EntitiesThatMakeADocumentGrowAreRefused)
{
    std::string bomb = "<!ENTITY a0 \"lol\">";
    for (int i = 1; i < 20; ++i) {
        const std::string inner = "&a" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY a" + std::to_string(i) + " \"" + Repeated(inner, 10) + "\">";
    }
    EXPECT_EQ(NameIn(WithEntities(bomb, "&a19;")), "refused");
    EXPECT_EQ(NameIn(WithEntities("<!ENTITY a \"x\"><!ENTITY b \"&a;&a;\">", "&b;")), "refused");
    EXPECT_EQ(NameIn(WithEntities("<!ENTITY a \"&a;\">", "&a;")), "refused");
    const std::string longText = "<!ENTITY a \"" + std::string(100000, 'x') + "\">";
    EXPECT_EQ(NameIn(WithEntities(longText, Repeated("&a;", 2000))), "refused");
}

TEST_F(XmlFile, NothingOutsideTheFileIsLoaded)
{
    Host().WriteFile("/tmp/secret", "secret").WriteFile("/tmp/secret.dtd", "<!ENTITY v \"secret\">");
    std::string folder = "file://" + Host().Real("/tmp/");
    for (std::size_t blank = 0; (blank = folder.find(' ')) != std::string::npos;) {
        folder.replace(blank, 1, "%20");
    }
    EXPECT_EQ(NameIn(WithEntities("<!ENTITY v SYSTEM \"" + folder + "secret\">", "x&v;")), "x");
    const std::string parameter = "<!ENTITY % p SYSTEM \"" + folder + "secret.dtd\"> %p;";
    EXPECT_EQ(NameIn(WithEntities(parameter, "x")), "x");
    EXPECT_EQ(NameIn(WithEntities(parameter, "x&v;")), "refused") << "what it would declare is unknown";
    EXPECT_EQ(NameIn("<!DOCTYPE brev SYSTEM \"" + folder + "secret.dtd\"><brev><name>x&v;</name></brev>"), "x");
}

TEST_F(XmlFile, CharactersOfAFileNameStandForThemselves)
{
    Host().WriteFile("/var/db/nimbimg/profiles/a%20b",
                     "<imageprofile><brevlist><brev><brev-id>it</brev-id></brev>"
                     "</brevlist></imageprofile>");
    Host().MakeFolder("/var/db/nimbimg/profiles/a b");
    EXPECT_THAT(NimbImage::GetBrevIds(), testing::ElementsAre("it"));
}

TEST_F(XmlFile, ADamagedProfileEndsTheReadingByName)
{
    for (const std::string& content : {std::string(), std::string("garbage"), std::string("<imageprofile><brevlist>"),
                                       Repeated("<brevlist>", 100000)}) {
        Host().WriteFile(PROFILE, content).ClearLogs();
        try {
            NimbImage::GetNimbImage();
            ADD_FAILURE() << content.substr(0, 20);
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "Failed to parse image profile.");
        }
        EXPECT_THAT(Host().Syslog(), testing::ElementsAre("info Nimb imagedb locked.", "info Nimb imagedb unlocked."));
    }
}

TEST_F(XmlFile, ADamagedDescriptorEndsTheReadingByName)
{
    WithProfile(Brev("net-drv"));
    for (const std::string& content :
         {std::string(), std::string("garbage"), Descriptor("net-drv").substr(0, 80), Repeated("<brev>", 100000)}) {
        Host().WriteFile(BREV_FOLDER + std::string("net-drv.xml"), content);
        try {
            NimbImage::GetNimbImage();
            ADD_FAILURE() << content.substr(0, 20);
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "Cannot parse brev xml file: /var/db/nimbimg/brevs/net-drv.xml");
        }
        EXPECT_TRUE(IsUnlocked());
    }
}
