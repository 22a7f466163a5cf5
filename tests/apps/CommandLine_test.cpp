#include "CommandLine.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>
#include <utility>

#include "CommandHelp.h"

using namespace ConfigStoreCtl;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{
using Words = std::vector<std::string>;

Words Split(const std::string& path)
{
    Words words;
    std::string word;
    for (const char c : path + " ") {
        if (c != ' ') {
            word += c;
        } else {
            words.push_back(std::exchange(word, ""));
        }
    }
    return words;
}

std::string Acceptable(const ArgumentRow& row)
{
    for (const char* text : {"text", "a/b/c", "none", "true", "/file", "name-1.0"}) {
        if (row.check == nullptr || row.check(text).empty()) {
            return text;
        }
    }
    ADD_FAILURE() << row.name;
    return "";
}

bool IsRequired(const ArgumentRow& row)
{
    return row.count == ArgumentRow::ONE || row.count == ArgumentRow::AT_LEAST_ONE;
}

bool Repeats(const ArgumentRow& row)
{
    return row.count == ArgumentRow::ANY_NUMBER || row.count == ArgumentRow::AT_LEAST_ONE;
}

/// The command's words with one value for each of its arguments.
Words FullCall(const Command& command)
{
    Words words = Split(command.path);
    for (const ArgumentRow& row : command.arguments) {
        words.push_back(Acceptable(row));
    }
    return words;
}

std::string WhyWrong(const Words& words)
{
    try {
        ParseCommandLine(words);
    } catch (const WrongCall& wrong) {
        return wrong.what();
    }
    return "accepted";
}
}  // namespace

TEST(CommandLine, LeadsEachRowsWordsToItsHandler)
{
    for (const Command& command : Commands()) {
        const Call call = ParseCommandLine(FullCall(command));
        ASSERT_NE(call.command, nullptr) << command.path;
        EXPECT_STREQ(call.command->path, command.path);
        EXPECT_EQ(call.arguments.values.size(), command.arguments.size());
    }
}

TEST(CommandLine, RefusesACallThatLacksARequiredArgument)
{
    for (const Command& command : Commands()) {
        if (!command.arguments.empty() && IsRequired(command.arguments.back())) {
            Words words = FullCall(command);
            words.pop_back();
            EXPECT_EQ(WhyWrong(words),
                      std::string(command.path) + ": " + command.arguments.back().name + " is required");
        }
    }
}

TEST(CommandLine, RefusesAnArgumentThatNoRowTakes)
{
    for (const Command& command : Commands()) {
        if (command.arguments.empty() || !Repeats(command.arguments.back())) {
            Words words = FullCall(command);
            words.emplace_back("surplus");
            EXPECT_THAT(WhyWrong(words), HasSubstr(std::string(command.path) + ": ")) << command.path;
            EXPECT_THAT(WhyWrong(words), HasSubstr("surplus"));
        }
    }
}

TEST(CommandLine, RefusesAnOptionThatNoRowHas)
{
    EXPECT_EQ(WhyWrong({"boot", "facts", "--live"}), "boot facts: no such option: --live");
    EXPECT_EQ(WhyWrong({"--wat", "boot", "facts"}), "boot facts: no such option: --wat");
}

TEST(CommandLine, NamesTheWordThatIsNoCommand)
{
    EXPECT_EQ(WhyWrong({"reboot"}), "no such command: reboot");
    EXPECT_EQ(WhyWrong({"boot", "facs"}), "boot: no such command: facs");
    EXPECT_EQ(WhyWrong({"boot"}), "boot: no command given");
    EXPECT_EQ(WhyWrong({}), "no command given");
}

TEST(CommandLine, RefusesArgumentsThatTheirRowsCheckRefuses)
{
    EXPECT_THAT(WhyWrong({"boot", "mode", "5"}), HasSubstr("MODE: '5' is none of"));
    EXPECT_THAT(WhyWrong({"live-install", "TRUE"}), HasSubstr("'TRUE' is neither true nor false"));
    EXPECT_THAT(WhyWrong({"config", "show", "nimb/network"}), HasSubstr("is not of the form"));
    EXPECT_THAT(WhyWrong({"schema", "show", "nimb//dns"}), HasSubstr("is not of the form"));
    EXPECT_THAT(WhyWrong({"config", "list", "nimb/network/dns/eth0"}), HasSubstr("is not of the form"));
}

TEST(CommandLine, TakesGlobalOptionsBeforeAndAfterTheCommand)
{
    for (const Words& words : {Words{"--json", "-v", "--root", "/tmp", "boot", "facts"},
                               Words{"boot", "--json", "facts", "--root=/tmp", "--verbose"}}) {
        const Call call = ParseCommandLine(words);
        EXPECT_TRUE(call.json);
        EXPECT_TRUE(call.verbose);
        EXPECT_EQ(call.root, "/tmp");
    }
}

TEST(CommandLine, RefusesARootThatIsNoFolder)
{
    EXPECT_THAT(WhyWrong({"--root", "/nowhere at all", "events"}), HasSubstr("/nowhere at all"));
    EXPECT_THAT(WhyWrong({"events", "--root"}), HasSubstr("--root"));
}

TEST(CommandLine, TakesTextsThatLookLikeCommandsListsOrMarksAsTheyAre)
{
    for (const char* text : {"boot", "show", "[1,2]", "[]", "++", "{\"a\":1}", "", "a b", "\x01", "\x01[a\x01"}) {
        EXPECT_THAT(ParseCommandLine({"boot", "record", "set", text}).arguments.values, ElementsAre(text));
    }
    EXPECT_THAT(ParseCommandLine({"install-info", "--", "--json"}).arguments.values, ElementsAre("--json"));
    EXPECT_THAT(ParseCommandLine({"install-info", "--", "--"}).arguments.values, ElementsAre("--"));
}

TEST(CommandLine, CollectsRepeatedArgumentsAndOptionsInOrder)
{
    EXPECT_THAT(ParseCommandLine({"complete", "/b", "[a,c]", "config"}).arguments.values,
                ElementsAre("/b", "[a,c]", "config"));
    EXPECT_THAT(ParseCommandLine({"schema", "process"}).arguments.values, IsEmpty());
    const Call call =
        ParseCommandLine({"schema", "refresh", "--schema", "b-1", "--module", "/m.so", "--schema", "a-1"});
    EXPECT_THAT(call.arguments.All("--schema"), ElementsAre("b-1", "a-1"));
    EXPECT_THAT(call.arguments.All("--module"), ElementsAre("/m.so"));
}

TEST(CommandLine, TellsFlagsThatWereGiven)
{
    EXPECT_TRUE(ParseCommandLine({"cleanup", "store", "--live"}).arguments.Has("--live"));
    EXPECT_FALSE(ParseCommandLine({"cleanup", "store"}).arguments.Has("--live"));
}

TEST(CommandLine, TakesARecordWithoutAVerbForItsShowing)
{
    EXPECT_STREQ(ParseCommandLine({"boot", "record"}).command->path, "boot record");
}

TEST(CommandHelp, TellsUsageAndPurposeOfEachCommand)
{
    for (const Command& command : Commands()) {
        Words words = Split(command.path);
        words.emplace_back("--help");
        const Call call = ParseCommandLine(words);
        EXPECT_EQ(call.command, nullptr);
        EXPECT_THAT(call.text, HasSubstr(Usage(command)));
        EXPECT_THAT(call.text, HasSubstr(command.help));
        for (const ArgumentRow& row : command.arguments) {
            EXPECT_THAT(call.text, HasSubstr(row.help));
        }
    }
}

TEST(CommandHelp, OfTheProgramListsEveryCommand)
{
    const std::string help = ParseCommandLine({"--help"}).text;
    for (const Command& command : Commands()) {
        EXPECT_THAT(help, HasSubstr(Usage(command) + " "));
    }
}

TEST(CommandHelp, OfANounListsItsCommandsAlone)
{
    const std::string help = ParseCommandLine({"image", "--help"}).text;
    EXPECT_THAT(help, HasSubstr("image dump "));
    EXPECT_THAT(help, ::testing::Not(HasSubstr("boot load")));
}

TEST(CommandHelp, HasAPlaceInTheManualForEveryCommand)
{
    std::ostringstream manual;
    manual << std::ifstream(std::string(SOURCE_DIR) + "/docs/commands.md").rdbuf();
    for (const Command& command : Commands()) {
        EXPECT_THAT(manual.str(), HasSubstr("`" + std::string(command.path)));
    }
}
