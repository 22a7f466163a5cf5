#include <sys/stat.h>
#include <regex>
#include <string>

#include "GoldenFile.h"
#include "ShellTest.h"

/// Sessions as a person or a script has them, on a host with some facts.
class ZelshSession : public ShellTest
{
protected:
    ZelshSession()
    {
        Host().WriteFile("/etc/talvor/platform/kernel.json",
                         R"({"bootCmdLine": "quiet \"a b\"=\u001b[2J\t\\end", "bootMAC": "00:1b:21:3c:9d:f8",
                             "bootOption": "00000001", "bootFsUUID": "5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11", "tardisks": {}})");
    }

    /// Every line, what it printed and what it reported.
    static std::string Session(const std::vector<std::string>& lines)
    {
        std::string story;
        for (const std::string& line : lines) {
            const std::string prompt = zelshPrompt;
            const ShellRun run = Run(line);
            story += prompt + line + "\n" + run.output + run.errors;
            story += run.status != 0 ? "(status " + std::to_string(run.status) + ")\n" : "";
        }
        return story;
    }

    static void ExpectGolden(const std::string& name, const std::string& text)
    {
        ExpectGoldenFile("zelsh/golden/" + name + ".txt", text);
    }

    static const std::vector<std::string>& Lines()
    {
        static const std::vector<std::string> LINES = {
            "pwd",
            "cd system",
            "get bootCmdLine bootMAC bootOption bootFsUUID",
            "set quenfs/ramdisks/\"odd name\"/memUsageLimit 80 90",
            "get quenfs/ramdisks/\"odd name\"/memUsageLimit",
            "ls -l bootMAC",
            "typeget quenfs/ramdisks/<ramdisk>/memUsageLimit",
            "typels /system/quenfs",
            "typels /system/quenfs/inodes",
            "cd quenfs/ramdisks",
            "pwd",
            "ls",
            "cd ../..",
            "pwd",
            "cd ./../../..",
            "pwd",
            "get /system/sysAlert",
            "get system/nothing",
            "cd /system/bootMAC",
            "ls a b",
            "typeget /system",
            "CD /",
        };
        return LINES;
    }
};

TEST_F(ZelshSession, ForPeople)
{
    ExpectGolden("session-default", Session(Lines()));
}

TEST_F(ZelshSession, ForScripts)
{
    options.output = zelshRawOutputPtr;
    ExpectGolden("session-raw", Session(Lines()));
}

TEST_F(ZelshSession, ForPython)
{
    options.output = zelshPythonOutputPtr;
    ExpectGolden("session-python", Session(Lines()));
}

TEST_F(ZelshSession, EveryRawLineIsANameAndAValue)
{
    options.output = zelshRawOutputPtr;
    std::istringstream lines(Output("get /") + Output("ls /system") + Output("ls -l /system") + Output("pwd"));
    const std::regex form("[^=]+=.*");
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(std::regex_match(line, form)) << line;
    }
}

TEST_F(ZelshSession, EachCommandsOutputIsOneLiteralOfPython)
{
    options.output = zelshPythonOutputPtr;
    for (const char* line : {"get /", "ls /", "ls -l /system", "pwd", "typeget /system/bootMAC", "typels /system"}) {
        Host().WriteFile("/literal", Output(line));
        const std::string command = "python3 -c 'import ast, sys; ast.literal_eval(open(sys.argv[1]).read())' '" +
                                    Host().Real("/literal") + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << line;
    }
}

TEST_F(ZelshSession, GetWithoutAPathReadsTheWorkingDirectory)
{
    EXPECT_EQ(Output("cd /system"), "");
    EXPECT_EQ(Output("get"), Output("get /system"));
    EXPECT_EQ(Output("cd"), "");
    EXPECT_EQ(Output("pwd"), "/\n");
}

TEST_F(ZelshSession, SetSaysWhatItExpectedAndSetsNothing)
{
    const std::string node = "set /system/quenfs/ramdisks/r/memUsageLimit";
    const std::string where = "set: /system/quenfs/ramdisks/r/memUsageLimit: ";
    EXPECT_EQ(Refusal(node + " 80", "Bad parameter"),
              where + "expected 2 values (warningPercent, errorPercent), found 1\n");
    EXPECT_EQ(Refusal(node + " 80 9x", "Bad parameter"),
              where +
                  "errorPercent: expected an integer from -9223372036854775808 to 9223372036854775807, "
                  "found \"9x\"\n");
    EXPECT_EQ(Refusal(node + " 80 101", "Bad parameter"), "");  // a number, but not one that the node takes
    EXPECT_FALSE(Host().Exists("/var/run/talvor/zel/memUsageLimit/r"));
    EXPECT_EQ(Refusal("set /system/bootMAC x", "Read only"), "");
    EXPECT_EQ(Refusal("set /system x", "Bad parameter"), "set: /system: expected a leaf, found a branch\n");
    EXPECT_EQ(Refusal("set", "Bad parameter"), "set: expected the path of a leaf and its value\n");
}

TEST_F(ZelshSession, ASetTextLosesItsQuotesAndEscapes)
{
    EXPECT_EQ(Output("set /system/sysAlert \"fan 3\"\\x20\\\\fails"), "");
    ASSERT_EQ(Host().Events().size(), 1U);
    EXPECT_EQ(Host().Events()[0].text, "fan 3 \\fails");
}

TEST_F(ZelshSession, AnInstanceThatDoesNotExistCannotBeEntered)
{
    for (const char* line :
         {"cd /system/quenfs/inodes/1", "ls /system/quenfs/inodes/1", "get /system/quenfs/inodes/1"}) {
        EXPECT_EQ(Refusal(line, "Not found"), "") << line;
    }
}

TEST_F(ZelshSession, ABranchCanBecomeTheRoot)
{
    EXPECT_EQ(ZELSH_InitRoot("/system/quenfs"), ORV_OK);
    EXPECT_STREQ(zelshRootNodeStr, "/system/quenfs");
    EXPECT_STREQ(zelshPrompt, "zelsh:/> ");
    EXPECT_EQ(Output("ls ../.."), "inodes/    instances\nramdisks/  instances\n");
    EXPECT_EQ(ZELSH_InitRoot("/system/bootMAC"), ORV_BAD_PARAM);
    EXPECT_EQ(ZELSH_InitRoot("/nothing"), ORV_NOT_FOUND);
    EXPECT_EQ(ZELSH_InitRoot("system"), ORV_BAD_PARAM);
    EXPECT_STREQ(zelshRootNodeStr, "/system/quenfs");
    EXPECT_EQ(ZELSH_InitRoot(""), ORV_OK);
    EXPECT_EQ(zelshRootNodeID, ZEL_NODE_root);
    EXPECT_STREQ(zelshRootNodeStr, "");
}

TEST_F(ZelshSession, AShellOfOtherDefinitionsDoesNotStart)
{
    Host().WriteFile("/etc/talvor/platform/kernel.json", R"({"interfaceVersion": 20})");
    testing::internal::CaptureStderr();
    EXPECT_EQ(ZELSH_Init(), ORV_FAILURE);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}
