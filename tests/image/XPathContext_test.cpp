#include <dlfcn.h>
#include <gmock/gmock.h>
#include <libxml/xpath.h>

#include <stdexcept>

#include "ImageTest.h"
#include "NimbImage.h"

namespace
{
int contextsLeft = -1;  // how many more can be created; negative: all

class XPathContextTest : public ImageTest
{
protected:
    ~XPathContextTest() override { contextsLeft = -1; }

    /// What the reader says of an image of one package when memory runs out after @p contexts contexts.
    std::string Failure(int contexts)
    {
        WithProfile(Brev("a"));
        WithDescriptor("a");
        contextsLeft = contexts;
        try {
            NimbImage::GetNimbImage();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "nothing";
    }
};
}  // namespace

// The library's own function behind one that can run out of memory.
extern "C" xmlXPathContextPtr xmlXPathNewContext(xmlDocPtr document)
{
    static const auto create = reinterpret_cast<decltype(&xmlXPathNewContext)>(dlsym(RTLD_NEXT, "xmlXPathNewContext"));
    if (contextsLeft == 0) {
        return nullptr;
    }
    contextsLeft -= contextsLeft > 0 ? 1 : 0;
    return create(document);
}

TEST_F(XPathContextTest, WithoutOneForTheProfileTheImageIsNotRead)
{
    EXPECT_EQ(Failure(0), "Failed to create xPath context for image profile.");
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(XPathContextTest, WithoutOneForADescriptorTheImageIsNotRead)
{
    EXPECT_EQ(Failure(1), "Failed to create xpath context for brev.");
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(XPathContextTest, WithOneForEachTheImageIsRead)
{
    EXPECT_EQ(Failure(2), "nothing");
}
