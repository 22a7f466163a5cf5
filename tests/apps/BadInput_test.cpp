#include <sstream>

#include "CommandTable.h"
#include "CommandTest.h"
#include "HostSnapshot.h"

using ConfigStoreCtl::ArgumentRow;
using ConfigStoreCtl::Command;
using ConfigStoreCtl::Commands;
using ConfigStoreCtl::OptionRow;
using ::testing::AnyOf;
using ::testing::StartsWith;

namespace
{
using Texts = std::vector<std::string>;

/// Texts that no object, file, schema identifier or word of a list is named by.
const Texts HOSTILE = {"",
                       std::string(100'000, 'x'),
                       "/" + std::string(100'000, 'x'),
                       "\x1b[2J\x07",
                       "\x01",
                       "line\nline",
                       "-",
                       "--",
                       "---",
                       "\xff\xfe",
                       "../..",
                       "a/b/c/d/e",
                       "a//b",
                       "//",
                       "[a,b",
                       "%s%n%s%n",
                       "'; DROP TABLE Config; --"};

/// Commands with an argument that is almost any text, or path: it cannot be wrong, only harmless. To those that keep
/// it, it is data; the others only compare it with what there is.
enum class AnyText
{
    NO,
    KEPT,
    COMPARED,
};

AnyText TakesAnyText(const Command& command)
{
    const std::string path = command.path;
    const bool kept = path == "boot record set" || path == "install-info" || path == "files track non-schema";
    const bool compared = path == "config list" || path == "complete";
    return kept ? AnyText::KEPT : compared ? AnyText::COMPARED : AnyText::NO;
}

std::string Acceptable(const ArgumentRow& row)
{
    for (const char* text : {"none", "true", "nimb/network/dns", "/etc/file", "name-1.0"}) {
        if (row.check == nullptr || row.check(text).empty()) {
            return text;
        }
    }
    return "";
}

Texts WordsOf(const Command& command)
{
    std::istringstream stream(command.path);
    return {std::istream_iterator<std::string>(stream), {}};
}

Texts FullCall(const Command& command)
{
    Texts words = WordsOf(command);
    for (const ArgumentRow& row : command.arguments) {
        words.push_back(Acceptable(row));
    }
    return words;
}

bool HasRawControls(const std::string& text)
{
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte < 0x20 && c != '\n') || byte == 0x7F || byte == 0xFF;
    });
}

class BadInputTest : public CommandTest
{
protected:
    void SetUp() override
    {
        FillStores();
        Remember();
    }

    void Remember() { before_ = SnapshotOf(Host().Root()); }

    /// Answered on standard error alone.
    void ExpectRefused(const Texts& words, int least)
    {
        const Ran ran = Run(words);
        const std::string call = ::testing::PrintToString(words).substr(0, 300);
        EXPECT_TRUE(ran.status == least || ran.status == 2) << ran.status << " " << call;
        EXPECT_EQ(ran.output, "") << call;
        EXPECT_THAT(ran.errors, StartsWith("configstorectl: ")) << call;
        EXPECT_EQ(std::count(ran.errors.begin(), ran.errors.end(), '\n'), 1) << call;
        EXPECT_FALSE(HasRawControls(ran.errors)) << call;
    }

    void ExpectHarmless(const Texts& words)
    {
        const Ran ran = Run(words);
        EXPECT_FALSE(HasRawControls(ran.output + ran.errors)) << ::testing::PrintToString(words).substr(0, 300);
    }

    void ExpectUnchanged(const std::string& call)
    {
        std::map<std::string, std::string> after = SnapshotOf(Host().Root());
        EXPECT_EQ(Differences(before_, after), "") << call;
        before_.swap(after);
    }

private:
    std::map<std::string, std::string> before_;
};
}  // namespace

TEST_F(BadInputTest, AMissingArgumentIsRefused)
{
    for (const Command& command : Commands()) {
        if (!command.arguments.empty() && (command.arguments.back().count == ArgumentRow::ONE ||
                                           command.arguments.back().count == ArgumentRow::AT_LEAST_ONE)) {
            Texts words = FullCall(command);
            words.pop_back();
            ExpectRefused(words, 2);
            ExpectUnchanged(command.path);
        }
    }
}

TEST_F(BadInputTest, ASurplusArgumentIsRefused)
{
    for (const Command& command : Commands()) {
        if (command.arguments.empty() || command.arguments.back().count == ArgumentRow::ONE ||
            command.arguments.back().count == ArgumentRow::OPTIONAL) {
            for (const std::string& surplus : {HOSTILE[0], HOSTILE[1], std::string("--"), std::string("\xff\xfe")}) {
                Texts words = FullCall(command);
                words.insert(words.end(), {"--", surplus});
                ExpectRefused(words, 2);
            }
            ExpectUnchanged(command.path);
        }
    }
}

TEST_F(BadInputTest, AnUnknownOptionOrAFlagWithAValueIsRefused)
{
    for (const Command& command : Commands()) {
        for (const char* option : {"--no-such-option", "-x", "--json=1", "--help=1", "--root", "--root="}) {
            Texts words = FullCall(command);
            words.emplace_back(option);
            ExpectRefused(words, 2);
        }
        for (const OptionRow& row : command.options) {
            Texts words = FullCall(command);
            words.push_back(row.value == nullptr ? std::string(row.name) + "=1" : row.name);
            ExpectRefused(words, 2);
        }
        ExpectUnchanged(command.path);
    }
}

TEST_F(BadInputTest, AHostileArgumentIsRefusedOrHarmless)
{
    for (const Command& command : Commands()) {
        for (std::size_t i = 0; i < command.arguments.size(); ++i) {
            for (const std::string& text : HOSTILE) {
                Texts words = FullCall(command);
                words[words.size() - command.arguments.size() + i] = text;
                words.insert(words.end() - static_cast<std::ptrdiff_t>(command.arguments.size()), "--");
                if (TakesAnyText(command) == AnyText::NO) {
                    ExpectRefused(words, 1);
                } else {
                    ExpectHarmless(words);
                }
            }
        }
        if (TakesAnyText(command) == AnyText::KEPT) {
            Remember();  // what was kept is there to stay
        } else {
            ExpectUnchanged(command.path);
        }
    }
}

TEST_F(BadInputTest, AHostileOptionValueIsRefused)
{
    for (const Command& command : Commands()) {
        for (const OptionRow& row : command.options) {
            for (const std::string& text : row.value != nullptr ? HOSTILE : Texts{}) {
                Texts words = FullCall(command);
                words.insert(words.end(), {row.name, text});
                ExpectRefused(words, 1);
            }
            ExpectUnchanged(command.path);
        }
    }
}

TEST_F(BadInputTest, AHostileRootIsRefused)
{
    for (const std::string& text : HOSTILE) {
        if (text != "../.." && text != "//") {  // folders, wherever the test runs
            ExpectRefused({"--root", text, "config", "list"}, 2);
        }
    }
    ExpectUnchanged("--root");
}

TEST_F(BadInputTest, WhatIsNoCommandIsRefused)
{
    for (const std::string& text : HOSTILE) {
        ExpectRefused({text}, 2);
        ExpectRefused({"boot", text}, 2);
        ExpectRefused({"files", "track", text}, 2);
    }
    ExpectUnchanged("no command");
}
