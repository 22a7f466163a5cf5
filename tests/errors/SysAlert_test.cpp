#include "SysAlert.h"

#include <gmock/gmock.h>

#include "TestHost.h"

using NimbConfigStore::SetLSSysAlert;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
class SysAlertTest : public HostTest
{
protected:
    std::string OnlyAlert()
    {
        const std::vector<RaisedEvent> events = Host().Events();
        EXPECT_EQ(events.size(), 1u);
        return events.empty() || events[0].kind != "alert" ? "no alert" : events[0].text;
    }
};
}  // namespace

TEST_F(SysAlertTest, AnAlertReachesTheOperator)
{
    SetLSSysAlert("Failed to load the store: 100%");
    EXPECT_THAT(Host().Events(), ElementsAre(RaisedEvent{"alert", "", "Failed to load the store: 100%", {}}));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(SysAlertTest, ATextOf2047CharactersIsSentWhole)
{
    SetLSSysAlert(std::string(2047, 'a'));
    EXPECT_EQ(OnlyAlert(), std::string(2047, 'a'));
}

TEST_F(SysAlertTest, ATextOf2048CharactersIsSentWhole)
{
    SetLSSysAlert(std::string(2047, 'a') + "b");
    EXPECT_EQ(OnlyAlert(), std::string(2047, 'a') + "b");
}

TEST_F(SysAlertTest, OfALongerTextTheFirst2048CharactersAreSent)
{
    SetLSSysAlert(std::string(2048, 'a') + std::string(952, 'b'));
    EXPECT_EQ(OnlyAlert(), std::string(2048, 'a'));
}

TEST_F(SysAlertTest, AnAlertThatCannotBeRaisedIsLogged)
{
    Host().MakeFolder("/var/log/talvor/events.jsonl");
    EXPECT_NO_THROW(SetLSSysAlert("text"));
    EXPECT_THAT(Host().Log(),
                ElementsAre("error Cannot write alert \"text\" to /var/log/talvor/events.jsonl: Is a directory",
                            "error Failed to raise sysAlert with status: Failure"));
}
