#include <cstdint>
#include <sstream>

#include "CommandTest.h"
#include "RealProgram.h"
#include "Utf8.h"

using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Le;
using ::testing::Not;
using ::testing::StartsWith;

namespace
{
/// The real program at a terminal.
class StreamsTest : public CommandTest
{
protected:
    std::string AtTerminal(unsigned short columns, Words words, const Words& environment = {"NO_COLOR=1"})
    {
        PseudoTerminal terminal(columns);
        words.insert(words.begin(), {"--root", Host().Root()});
        const pid_t process = StartProgram(words, terminal.Writer(), terminal.Writer(), environment);
        terminal.CloseWriter();
        std::string shown = terminal.ReadAll();
        EXPECT_EQ(StatusOf(process), 0) << shown;
        shown.erase(std::remove(shown.begin(), shown.end(), '\r'), shown.end());
        return shown;
    }

    static std::vector<std::size_t> Widths(const std::string& text)
    {
        std::istringstream stream(text);
        std::vector<std::size_t> widths;
        for (std::string line; std::getline(stream, line);) {
            widths.push_back(Utf8::DisplayWidth(line));
        }
        return widths;
    }
};
}  // namespace

TEST_F(StreamsTest, ATableStaysOneWhereTheTerminalIsWideEnough)
{
    FillStores();
    EXPECT_EQ(AtTerminal(100, {"config", "list"}), Run({"config", "list"}).output);
    EXPECT_THAT(AtTerminal(100, {"config", "list"}, {"TERM=xterm"}), StartsWith("\x1b[1mOBJECT "));
}

TEST_F(StreamsTest, ATableWiderThanTheTerminalBecomesRecordsThatLoseNothing)
{
    FillStores();
    const std::string shown = AtTerminal(40, {"config", "list"});
    EXPECT_THAT(Widths(shown), Each(Le(40U)));
    EXPECT_THAT(shown, HasSubstr("OBJECT      nimb/network/portgroups\n"
                                 "IDENTIFIER  mgmt\n"
                                 "VERSION     2.1.0\n"
                                 "REVISION    1\n"
                                 "VALUES      user\n"
                                 "            vital\n"
                                 "            cached\n"
                                 "\n"
                                 "OBJECT      nimb/network/portgroups\n"
                                 "IDENTIFIER  vm/net\n"));
    EXPECT_THAT(shown, HasSubstr("nimb/network/dns"));
    EXPECT_THAT(shown, HasSubstr("nimb/time/ntp"));
}

TEST_F(StreamsTest, MetricsFitANarrowTerminalBarsIncluded)
{
    FillStores();
    const std::string shown = AtTerminal(40, {"metrics"});
    EXPECT_THAT(Widths(shown), Each(Le(40U))) << shown;
    EXPECT_THAT(shown, HasSubstr("  SHARE      ########################\n"));
    EXPECT_THAT(shown, HasSubstr("  OBJECT  nimb/network/portgroups\n"));
}

TEST_F(StreamsTest, NothingInAStoreSteersTheTerminal)
{
    Host().WithStores();
    Host().Sql(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, UserValue) VALUES "
        "('nimb', 'a', 'b', char(27) || ']0;title' || char(7) || char(155) || '2J', '{\"x\": \"' || char(155) || "
        "'\"}')");
    for (const Words& words : {Words{"config", "list"}, Words{"config", "show", "nimb/a/b"}, Words{"metrics", "--rows"},
                               Words{"config", "show", "--json", "nimb/a/b"}}) {
        for (const unsigned short columns : {std::uint16_t{40}, std::uint16_t{200}}) {
            const std::string shown = AtTerminal(columns, words);
            EXPECT_THAT(shown, Not(HasSubstr("\x1b")));
            EXPECT_THAT(shown, Not(HasSubstr("\x07")));
            EXPECT_THAT(shown, Not(HasSubstr("\xC2\x9B")));
        }
    }
}

TEST_F(StreamsTest, TextIsTheSameInEveryLocale)
{
    FillStores();
    Host().Sql("UPDATE Config SET UserValue = '{\"name\": \"Z\xC3\xBCrich \xE2\x82\xAC\"}' WHERE Name = 'ntp'");
    const std::string expected = AtTerminal(100, {"config", "show", "nimb/time/ntp"}, {"NO_COLOR=1", "LC_ALL=C.UTF-8"});
    EXPECT_THAT(expected, HasSubstr("Z\xC3\xBCrich \xE2\x82\xAC"));
    for (const char* locale : {"LC_ALL=C", "LC_ALL=POSIX", "LC_ALL=nowhere.ISO-8859-1"}) {
        EXPECT_EQ(AtTerminal(100, {"config", "show", "nimb/time/ntp"}, {"NO_COLOR=1", locale}), expected);
    }
}

TEST_F(StreamsTest, AnEventStreamIsRecordsOnANarrowTerminal)
{
    Host().WriteFile("/var/log/talvor/events.jsonl",
                     R"({"time":"2026-01-02T03:04:06.007Z","kind":"alert","id":"","text":"Disk gone","args":[]})"
                     "\n");
    EXPECT_EQ(AtTerminal(40, {"events"}), "TIME  2026-01-02T03:04:06.007Z\nKIND  alert\nID    -\nTEXT  Disk gone\n");
}
