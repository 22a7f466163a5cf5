#include "SysAlert.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include "TestHost.h"
#include "ZEL.h"

using NimbConfigStore::SetLSSysAlert;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
bool outOfLists = false;
bool listsAreFull = false;

// The host's own function behind one that is replaced here.
template <typename Function>
Function* Original(const char* mangledName)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, mangledName));
}

class SysAlertTest : public HostTest
{
protected:
    void TearDown() override { outOfLists = listsAreFull = false; }

    std::string OnlyAlert()
    {
        const std::vector<RaisedEvent> events = Host().Events();
        EXPECT_EQ(events.size(), 1u);
        return events.empty() || events[0].kind != "alert" ? "no alert" : events[0].text;
    }
};
}  // namespace

ZEL_ParamList* ZEL_ParamListCreate(int isInstance, int capacity)
{
    static const auto create = Original<decltype(ZEL_ParamListCreate)>("_Z19ZEL_ParamListCreateii");
    return outOfLists ? nullptr : create(isInstance, capacity);
}

ORV_ReturnStatus ZEL_ParamListAddString(ZEL_ParamList* list, const char* text)
{
    static const auto add = Original<decltype(ZEL_ParamListAddString)>("_Z22ZEL_ParamListAddStringP13ZEL_ParamListPKc");
    return listsAreFull ? ORV_LIMIT_EXCEEDED : add(list, text);
}

TEST_F(SysAlertTest, AnAlertReachesTheOperator)
{
    SetLSSysAlert("Failed to load the store: 100%");
    EXPECT_THAT(Host().Events(), ElementsAre(RaisedEvent{"alert", "", "Failed to load the store: 100%", {}}));
    EXPECT_THAT(Host().Log(), IsEmpty());
}

TEST_F(SysAlertTest, ANulCutsNothing)
{
    SetLSSysAlert(std::string("a\0b", 3));
    EXPECT_EQ(OnlyAlert(), "a?b");
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

TEST_F(SysAlertTest, AnAlertWithoutAParameterListIsLogged)
{
    outOfLists = true;
    SetLSSysAlert("text");
    EXPECT_THAT(Host().Log(), ElementsAre("error Failed to raise sysAlert. Failed to create zel param list."));
    EXPECT_THAT(Host().Events(), IsEmpty());
}

TEST_F(SysAlertTest, AnAlertThatDoesNotFitTheParameterListIsLogged)
{
    listsAreFull = true;
    SetLSSysAlert("text");
    EXPECT_THAT(Host().Log(), ElementsAre("error Failed to raise sysAlert. Failed to add string to zel param list."));
    EXPECT_THAT(Host().Events(), IsEmpty());
}
