#include "EarlierErrors.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "ConfigStoreException.h"
#include "StoreFiles.h"
#include "TestHost.h"
#include "Thrown.h"

using NimbConfigStore::RaiseEarlierErrors;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace
{

class EarlierErrorsTest : public HostTest
{
protected:
    std::vector<std::string> AlertsOf(const std::string& content)
    {
        Host().WriteFile(EARLIER_ERRORS, content).ClearLogs();
        RaiseEarlierErrors();
        std::vector<std::string> texts;
        for (const RaisedEvent& event : Host().Events()) {
            EXPECT_EQ(event.kind, "alert");
            texts.push_back(event.text);
        }
        return texts;
    }
};
}  // namespace

TEST_F(EarlierErrorsTest, WithoutAFileNothingIsRaised)
{
    RaiseEarlierErrors();
    EXPECT_THAT(Host().Events(), IsEmpty());
}

TEST_F(EarlierErrorsTest, EachErrorBecomesAnAlertWithItsArgumentsFilledIn)
{
    EXPECT_THAT(AlertsOf(R"({"zubs": [{"zubMsg": "disk %s full on %s", "zubArgs": ["a", "b"]},
                                      {"zubMsg": "plain %s"}, {"zubMsg": "one %s two %s", "zubArgs": ["1"]}]})"),
                ElementsAre("disk a full on b", "plain %s", "one 1 two %s"));
    EXPECT_TRUE(Host().Exists(EARLIER_ERRORS));
}

TEST_F(EarlierErrorsTest, APlaceholderInsideAnArgumentIsText)
{
    EXPECT_THAT(AlertsOf(R"({"zubs": [{"zubMsg": "%s and %s", "zubArgs": ["%s", "b%s"]}]})"),
                ElementsAre("%s and b%s"));
}

TEST_F(EarlierErrorsTest, ArgumentsThatAreNoArrayAreLeftOut)
{
    EXPECT_THAT(AlertsOf(R"({"zubs": [{"zubMsg": "a %s", "zubArgs": "b"}]})"), ElementsAre("a %s"));
}

TEST_F(EarlierErrorsTest, ADocumentOfAnotherShapeRaisesNothing)
{
    for (const char* content : {"[]", "7", "{}", R"({"zubs": {}})", R"({"zubs": []})", R"([{"zubs": []}])"}) {
        EXPECT_THAT(AlertsOf(content), IsEmpty()) << content;
    }
}

TEST_F(EarlierErrorsTest, AValueOfTheWrongTypeThrowsAfterTheAlertsBeforeIt)
{
    for (const char* bad : {"7", "[]", "null", "{}", R"({"zubMsg": 7})", R"({"zubMsg": "%s", "zubArgs": [7]})"}) {
        Host().WriteFile(EARLIER_ERRORS, std::string(R"({"zubs": [{"zubMsg": "first"}, )") + bad + "]}").ClearLogs();
        EXPECT_THAT(ThrownBy(RaiseEarlierErrors), StartsWith("1082 JSON error:")) << bad;
        EXPECT_THAT(Host().EventIds(), ElementsAre("alert")) << bad;
    }
}

TEST_F(EarlierErrorsTest, MoreArgumentsThanPlacesAreOutOfRange)
{
    Host().WriteFile(EARLIER_ERRORS, R"({"zubs": [{"zubMsg": "one %s", "zubArgs": ["a", "b"]}]})");
    EXPECT_THROW(RaiseEarlierErrors(), std::out_of_range);
}

TEST_F(EarlierErrorsTest, AFileThatDoesNotParseIsNamed)
{
    for (const std::string& content : {std::string(), std::string("{"), std::string(1 << 20, '[')}) {
        Host().WriteFile(EARLIER_ERRORS, content);
        EXPECT_THROW(RaiseEarlierErrors(), NimbConfigStore::InvalidArgumentException);
        EXPECT_THAT(ThrownBy(RaiseEarlierErrors), AllOf(StartsWith("1081"), HasSubstr(EARLIER_ERRORS)));
    }
}
