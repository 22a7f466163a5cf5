#include "ConfigStoreException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using namespace NimbConfigStore;

namespace
{
std::string Conversions(CSErrorCodes code)
{
    std::string conversions;
    const std::string text = ErrorMessageForId(code);
    for (std::size_t i = text.find('%'); i != std::string::npos; i = text.find('%', i + 1)) {
        conversions += text.at(i + 1);
    }
    return conversions;
}
}  // namespace

TEST(ConfigStoreException, CarriesACodeAndItsOwnCopyOfTheText)
{
    std::string text = "what, where, why";
    const ConfigStoreException failure(CS_ERROR_OPERATION, text.c_str());
    text.assign("gone");
    EXPECT_EQ(failure.code(), 2000);
    EXPECT_STREQ(failure.what(), "what, where, why");
}

TEST(ConfigStoreException, BadInputIsCaughtByItsBases)
{
    EXPECT_THROW(throw InvalidArgumentException(CS_ERROR_JSON_TEXT, "bad"), ConfigStoreException);
    EXPECT_THROW(throw InvalidArgumentException(CS_ERROR_JSON_TEXT, "bad"), HostCtl::Lib::HostCtlException);
    EXPECT_THROW(throw ConfigStoreException(CS_ERROR_OPERATION, "failed"), std::exception);
}

TEST(ConfigStoreException, EachTemplateTakesTheArgumentsOfItsCode)
{
    EXPECT_EQ(Conversions(CS_ERROR_STAGE_DESIRED), "");
    EXPECT_EQ(Conversions(CS_ERROR_COMMIT), "");
    EXPECT_EQ(Conversions(CS_ERROR_INSTANCE_ID_MISSING), "s");
    EXPECT_EQ(Conversions(CS_ERROR_JSON_TEXT), "");
    EXPECT_EQ(Conversions(CS_ERROR_JSON_FILE), "s");
    EXPECT_EQ(Conversions(CS_ERROR_JSON_TYPE), "");
    EXPECT_EQ(Conversions(CS_ERROR_VALIDATION), "ss");
    EXPECT_EQ(Conversions(CS_ERROR_COMMAND_START), "s");
    EXPECT_EQ(Conversions(CS_ERROR_COMMAND_WAIT), "ds");
    EXPECT_EQ(Conversions(CS_ERROR_COMMAND_FAILED), "d");
    EXPECT_EQ(Conversions(CS_ERROR_OPERATION), "");
}

TEST(ConfigStoreException, AnUnknownCodeHasATextWithoutArguments)
{
    EXPECT_EQ(Conversions(static_cast<CSErrorCodes>(1100)), "");
    EXPECT_STRNE(ErrorMessageForId(static_cast<CSErrorCodes>(1100)), "");
}
