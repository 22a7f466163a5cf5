#include <sys/wait.h>

#include <array>
#include <cstdio>

#include "CommandLine.h"
#include "CommandTest.h"
#include "ShellCompletion.h"

using namespace ConfigStoreCtl;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

namespace
{
using Texts = std::vector<std::string>;

Texts Completed(const Texts& words)
{
    Texts texts;
    for (const Candidate& candidate : CandidatesFor(words)) {
        texts.push_back(candidate.word);
    }
    return texts;
}

Texts WordsOf(const std::string& path)
{
    std::istringstream stream(path);
    return {std::istream_iterator<std::string>(stream), {}};
}

/// What a shell's own completion makes of a call.
class ShellTest : public CommandTest
{
protected:
    static bool HasZsh() { return std::system("command -v zsh >/dev/null 2>&1") == 0; }

    /// The lines that @p script, in a file of the host, prints under @p shell.
    Texts ShellLines(const std::string& shell, const std::string& script)
    {
        Host().WriteFile("/tmp/script", script);
        const std::string call = "PATH='" + std::string(BINARY_DIR) + "/apps':\"$PATH\" " + shell + " '" +
                                 Host().Real("/tmp/script") + "' 2>&1";
        FILE* const pipe = popen(call.c_str(), "r");
        Texts lines;
        std::array<char, 4096> line{};
        while (fgets(line.data(), line.size(), pipe) != nullptr) {
            lines.emplace_back(line.data(), std::string_view(line.data()).find_last_not_of("\r\n") + 1);
        }
        EXPECT_EQ(pclose(pipe), 0);
        return lines;
    }

    /// bash completes the call made of @p words, the last of which the cursor is behind.
    Texts Bash(const Texts& words)
    {
        std::string array = "configstorectl";
        for (const std::string& word : words) {
            array += " '" + word + "'";
        }
        return ShellLines("bash --norc --noprofile",
                          "set -u\n. '" SOURCE_DIR
                          "/packaging/completion/bash/configstorectl'\n"
                          "complete -p configstorectl >/dev/null || exit 1\n"
                          "COMP_WORDS=(" +
                              array + ")\nCOMP_CWORD=" + std::to_string(words.size()) +
                              "\n_configstorectl configstorectl\nprintf '%s\\n' \"${COMPREPLY[@]}\"\n");
    }

    /// zsh, at a terminal of its own, is given @p typed and a tab: tells whether it adds @p expected.
    std::string Zsh(const std::string& typed, const std::string& expected)
    {
        const std::string functions = SOURCE_DIR "/packaging/completion/zsh";
        const Texts lines =
            ShellLines("timeout 60 zsh -f",
                       "zmodload zsh/zpty\nzpty shell 'TERM=dumb zsh -f -i'\n"
                       "zpty -w shell \"PROMPT= RPROMPT= ; unsetopt zle_bracketed_paste; stty cols 200 2>/dev/null\"\n"
                       "zpty -w shell 'fpath=(" +
                           functions +
                           " $fpath); autoload -Uz compinit; compinit -u -D; print READY''NOW'\n"
                           "zpty -r -m shell seen '*READYNOW*'\n"
                           "zpty -w -n shell '" +
                           typed +
                           "'$'\\t'\n"
                           "zpty -r -m shell seen '*" +
                           expected + "*' && print -r -- \"found: " + expected +
                           "\"\n"
                           "zpty -d shell\n");
        return lines.empty() ? "" : lines.back();
    }
};
}  // namespace

TEST(Completion, OffersEachRowsWordsOptionsAndHelp)
{
    for (const Command& command : Commands()) {
        Texts words = WordsOf(command.path);
        const std::string last = words.back();
        EXPECT_THAT(CandidatesFor(words), Contains(Candidate{last, command.help})) << command.path;
        words.emplace_back("-");
        for (const OptionRow& option : command.options) {
            EXPECT_THAT(CandidatesFor(words), Contains(Candidate{option.name, option.help})) << command.path;
        }
        EXPECT_THAT(Completed(words), IsSupersetOf({"--root", "--json", "-v", "--verbose", "--help", "--version"}));
    }
}

TEST(Completion, OffersNounsFirstAndEachOnce)
{
    const Texts nouns = Completed({""});
    EXPECT_EQ(std::count(nouns.begin(), nouns.end(), "boot"), 1);
    EXPECT_THAT(nouns, Contains("live-install"));
    EXPECT_THAT(Completed({"sch"}), ElementsAre("schema"));
    EXPECT_THAT(Completed({"files", "track", ""}), ElementsAre("backup", "non-schema"));
    EXPECT_THAT(Completed({"boot", "record", "s"}), ElementsAre("show", "set"));
    EXPECT_THAT(Completed({"nothing", ""}), IsEmpty());
}

TEST(Completion, OffersTheValuesThatAnArgumentTakes)
{
    EXPECT_THAT(Completed({"boot", "mode", ""}), ElementsAre("none", "desired", "boot-config", "smartnic", "hostapi"));
    EXPECT_THAT(Completed({"--json", "live-install", "t"}), ElementsAre("true"));
    EXPECT_THAT(Completed({"boot", "mode", "none", ""}), IsEmpty());
}

TEST(Completion, LeavesTheValueOfAnOptionToTheShell)
{
    EXPECT_THAT(Completed({"--root", "b"}), IsEmpty());
    EXPECT_THAT(Completed({"schema", "refresh", "--module", "-"}), IsEmpty());
    EXPECT_THAT(Completed({"schema", "refresh", "--module", "/x", "--sch"}), ElementsAre("--schema"));
}

TEST(Completion, TakesWhatStandsBehindTwoDashesForArguments)
{
    EXPECT_THAT(Completed({"boot", "mode", "--", "-"}), IsEmpty());
    EXPECT_THAT(Completed({"boot", "--", "mo"}), IsEmpty());
    EXPECT_THAT(Completed({"boot", "mode", "--", "d"}), ElementsAre("desired"));
}

class ObjectCompletionTest : public CommandTest
{};

TEST_F(ObjectCompletionTest, OffersStoredObjectsPartByPart)
{
    FillStores();
    EXPECT_THAT(Completed({"config", "show", ""}), ElementsAre("nimb/"));
    EXPECT_THAT(Completed({"config", "show", "nimb/"}), ElementsAre("nimb/network/", "nimb/time/"));
    EXPECT_THAT(Completed({"config", "list", "nimb/network/p"}), ElementsAre("nimb/network/portgroups"));
    EXPECT_THAT(Completed({"default", "show", "nimb/network/"}), ElementsAre("nimb/network/dns"));
}

TEST_F(ObjectCompletionTest, OffersTheObjectsOfTheSchemas)
{
    Host().WithStores().WithPackage("net-drv", "1.0.0_1.0", R"([{"component": "nimb", "group": "net", "key": "nic",
        "schema": {"type": "object"}}])");
    ASSERT_EQ(Run({"schema", "process"}).status, 0);
    EXPECT_THAT(Completed({"schema", "show", "nimb/net/"}), ElementsAre("nimb/net/nic"));
}

TEST_F(ObjectCompletionTest, OffersNothingFromAStoreThatCannotBeRead)
{
    EXPECT_THAT(Completed({"config", "show", ""}), IsEmpty());
    const Ran ran = Run({"complete", "--", "config", "show", ""});
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.output + ran.errors, "");
}

TEST_F(ObjectCompletionTest, CommandPrintsWordsAndTheirHelp)
{
    FillStores();
    ExpectGolden("complete", {"complete", "--", "boot", "record", "s"});
    EXPECT_THAT(Run({"complete", "--describe", "--", "boot", "fin"}).output, HasSubstr("finish:end the boot"));
    EXPECT_EQ(Run({"complete", "--describe", "--", "config", "show", "nimb/t"}).output, "nimb/time/\n");
}

TEST_F(ShellTest, BashOffersWhatTheProgramKnows)
{
    FillStores();
    const std::string root = Host().Root();
    EXPECT_THAT(Bash({"boot", "l"}), ElementsAre("load"));
    EXPECT_THAT(Bash({"cleanup", "store", "--l"}), ElementsAre("--live"));
    EXPECT_THAT(Bash({"boot", "mode", "s"}), ElementsAre("smartnic"));
    EXPECT_THAT(Bash({"--root", root, "config", "show", "nimb/network/"}),
                ElementsAre("nimb/network/dns", "nimb/network/portgroups"));
    EXPECT_THAT(Bash({"--root", "=", root, "config", "list", "nimb/ti"}), ElementsAre("nimb/time/"));
}

TEST_F(ShellTest, BashOffersEveryCommand)
{
    const Texts nouns = Bash({""});
    for (const Command& command : Commands()) {
        EXPECT_THAT(nouns, Contains(WordsOf(command.path).front()));
    }
}

TEST_F(ShellTest, ZshCompletesCommandsAndObjects)
{
    if (!HasZsh()) {
        GTEST_SKIP() << "zsh is not installed; scripts/setup.sh --ci installs it";
    }
    FillStores();
    EXPECT_EQ(Zsh("configstorectl cleanup da", "tafiles "), "found: tafiles ");
    EXPECT_EQ(Zsh("configstorectl --root \"" + Host().Root() + "\" config show nimb/network/por", "tgroups"),
              "found: tgroups");
}
