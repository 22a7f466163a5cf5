#include "LineTail.h"

#include <gmock/gmock.h>

#include <fstream>

#include "Output.h"
#include "TestHost.h"

using namespace ConfigStoreCtl;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
constexpr const char* FILE_PATH = "/var/log/talvor/some.log";

class LineTailTest : public HostTest
{
protected:
    void Append(const std::string& text) { std::ofstream(Host().Real(FILE_PATH), std::ios::app) << text; }

    LineTail tail_{FILE_PATH};
};
}  // namespace

TEST_F(LineTailTest, GivesEachLineOnce)
{
    Append("a\nb\n");
    EXPECT_THAT(tail_.NewLines(), ElementsAre("a", "b"));
    EXPECT_THAT(tail_.NewLines(), IsEmpty());
    Append("c\n");
    EXPECT_THAT(tail_.NewLines(), ElementsAre("c"));
}

TEST_F(LineTailTest, WaitsForTheEndOfALine)
{
    Append("a\nhal");
    EXPECT_THAT(tail_.NewLines(), ElementsAre("a"));
    Append("f\n");
    EXPECT_THAT(tail_.NewLines(), ElementsAre("half"));
}

TEST_F(LineTailTest, SkipsWhatIsThere)
{
    Append("a\n");
    tail_.SkipToEnd();
    Append("b\n");
    EXPECT_THAT(tail_.NewLines(), ElementsAre("b"));
}

TEST_F(LineTailTest, TakesAMissingFileForAnEmptyOne)
{
    tail_.SkipToEnd();
    EXPECT_THAT(tail_.NewLines(), IsEmpty());
    Append("a\n");
    EXPECT_THAT(tail_.NewLines(), ElementsAre("a"));
}

TEST_F(LineTailTest, StartsAnewWhenTheFileIsCutShortOrReplaced)
{
    Append("a long line\n");
    (void)tail_.NewLines();
    Host().WriteFile(FILE_PATH, "short\n");
    EXPECT_THAT(tail_.NewLines(), ElementsAre("short"));
    std::ofstream(Host().Real("/tmp/other")) << "a much longer line\n";
    ASSERT_EQ(rename(Host().Real("/tmp/other").c_str(), Host().Real(FILE_PATH).c_str()), 0);
    EXPECT_THAT(tail_.NewLines(), ElementsAre("a much longer line"));
}

TEST_F(LineTailTest, SaysWhyAFileCannotBeRead)
{
    Host().MakeFolder(FILE_PATH);
    EXPECT_THAT([this] { tail_.NewLines(); },
                testing::ThrowsMessage<CommandFailure>("/var/log/talvor/some.log: cannot be read: Is a directory"));
}
