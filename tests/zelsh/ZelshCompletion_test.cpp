#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "ShellTest.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using ZelshCompletion = ShellTest;

namespace
{
std::vector<std::string> Candidates(const char* line)
{
    std::vector<std::string> candidates;
    for (char* candidate = nullptr; (candidate = ZELSH_CommandGenerator(line, static_cast<int>(candidates.size())));) {
        candidates.emplace_back(candidate);
        std::free(candidate);
    }
    return candidates;
}
}  // namespace

TEST_F(ZelshCompletion, TheFirstWordIsACommand)
{
    EXPECT_THAT(Candidates("ty"), ElementsAre("typeget", "typels"));
    EXPECT_THAT(Candidates("  q"), ElementsAre("quit", "q"));
    EXPECT_EQ(Candidates("").size(), 14U);
    EXPECT_THAT(Candidates("CD"), IsEmpty());
}

TEST_F(ZelshCompletion, TheOthersArePaths)
{
    EXPECT_THAT(Candidates("get /system/boot"),
                ElementsAre("/system/bootCmdLine", "/system/bootFsUUID", "/system/bootMAC", "/system/bootOption"));
    EXPECT_THAT(Candidates("cat x system/quenfs/"), ElementsAre("system/quenfs/inodes/", "system/quenfs/ramdisks/"));
    EXPECT_THAT(Candidates("get /system/../system/sysA"), ElementsAre("/system/../system/sysAlert"));
}

TEST_F(ZelshCompletion, PathsGoFromTheWorkingDirectory)
{
    Output("cd /system/quenfs");
    EXPECT_THAT(Candidates("ls r"), ElementsAre("ramdisks/"));
    EXPECT_THAT(Candidates("ls ../sysA"), ElementsAre("../sysAlert"));
}

TEST_F(ZelshCompletion, ChangingDirectoryOffersBranchesAlone)
{
    EXPECT_THAT(Candidates("cd /system/"), testing::Contains("/system/quenfs/"));
    EXPECT_THAT(Candidates("cd /system/"), testing::Not(testing::Contains("/system/bootMAC")));
}

TEST_F(ZelshCompletion, AtTypeLevelInstancesStandUnderTheirName)
{
    EXPECT_THAT(Candidates("typeget /system/quenfs/inodes/"), ElementsAre("/system/quenfs/inodes/<inode>/"));
    EXPECT_THAT(Candidates("typeget /system/quenfs/inodes/<inode>/s"),
                ElementsAre("/system/quenfs/inodes/<inode>/stats"));
}

TEST_F(ZelshCompletion, CommandsWithoutPathsOfferNothing)
{
    for (const char* line : {"help ", "loglevel ", "nothing ", "get /nothing/", "get /system/bootMAC/"}) {
        EXPECT_THAT(Candidates(line), IsEmpty()) << line;
    }
    EXPECT_THAT(Candidates(nullptr).size(), 14U);
}
