#include "Errors.h"

#include <gmock/gmock.h>

#include <memory>

using namespace NimbConfigStore;
using testing::HasSubstr;

namespace
{
// What throwing @p code as an E leaves in the hands of a handler for every failure.
template <typename E, typename... Args>
std::shared_ptr<ConfigStoreException> Thrown(CSErrorCodes code, Args... args)
{
    try {
        ThrowException<E, Args...>(code, args...);
    } catch (const ConfigStoreException& e) {
        const auto* thrown = dynamic_cast<const E*>(&e);
        return thrown != nullptr ? std::make_shared<E>(*thrown) : nullptr;
    }
}

bool IsBadInput(const ConfigStoreException& e)
{
    return dynamic_cast<const InvalidArgumentException*>(&e) != nullptr;
}
}  // namespace

TEST(Format, FillsTheTemplateIn)
{
    EXPECT_EQ(Format("%s", "text"), "text");
    EXPECT_EQ(Format("component %s group %s key %s", "a", "b", "c"), "component a group b key c");
    EXPECT_EQ(Format("%d of %5.1f%%", 3, 2.25), "3 of   2.2%");
}

TEST(Format, AnEmptyTemplateGivesAnEmptyText)
{
    EXPECT_EQ(Format(""), "");
    EXPECT_EQ(Format("%s", ""), "");
}

TEST(Format, ATemplateWithoutArgumentsIsItself)
{
    EXPECT_EQ(Format("Failed to parse."), "Failed to parse.");
    EXPECT_EQ(Format("100%%"), "100%");
}

TEST(Format, HasNoLimitOfLength)
{
    const std::string text(1'000'000, 'x');
    EXPECT_TRUE(Format("<%s>", text.c_str()) == "<" + text + ">");
}

TEST(ThrowException, AnArgumentIsPartOfTheText)
{
    const char* const path = "/etc/talvor/boot_configuration.json";
    const auto thrown = Thrown<InvalidArgumentException, const char*>(CS_ERROR_JSON_FILE, path);
    EXPECT_TRUE(IsBadInput(*thrown));
    EXPECT_EQ(thrown->code(), 1081);
    EXPECT_THAT(thrown->what(), HasSubstr(path));
}

TEST(ThrowException, TheTextIsTheTemplateOfTheCode)
{
    const auto thrown = Thrown<InvalidArgumentException>(CS_ERROR_JSON_TEXT);
    EXPECT_EQ(thrown->code(), 1080);
    EXPECT_STREQ(thrown->what(), ErrorMessageForId(CS_ERROR_JSON_TEXT));
}

TEST(ThrowException, AFailedOperationIsNotBadInput)
{
    const auto thrown = Thrown<ConfigStoreException, const char*>(CS_ERROR_INSTANCE_ID_MISSING, "device");
    EXPECT_FALSE(IsBadInput(*thrown));
    EXPECT_EQ(thrown->code(), 1032);
    EXPECT_THAT(thrown->what(), HasSubstr("device"));
}
