#include "Progress.h"

#include <sstream>

#include "CSLogger.h"
#include "CommandTable.h"
#include "CommandTest.h"
#include "RealProgram.h"
#include "Utf8.h"

using namespace std::chrono_literals;
using ConfigStoreCtl::Progress;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

namespace
{
constexpr const char* ERASED = "\r\x1b[K";

class ProgressTest : public CommandTest
{
protected:
    std::string ReadUntil(const std::string& text)
    {
        std::string shown;
        while (shown.find(text) == std::string::npos && !HasFailure()) {
            shown += terminal_.Read();
        }
        return shown;
    }

    /// What a call of the program shows on a terminal that waits for nothing.
    std::string ShownBy(const Words& words)
    {
        std::ostringstream output;
        std::ostringstream errors;
        PseudoTerminal terminal(40);
        ConfigStoreCtl::RunProgram(words, output, errors, {.progress = {terminal.Writer(), 40, 0ms}});
        terminal.CloseWriter();
        return terminal.ReadAll();
    }

    PseudoTerminal terminal_{40};
};
}  // namespace

TEST_F(ProgressTest, ShowsElapsedSecondsAndTheNewestLogLineOfThisProcess)
{
    const Progress progress({terminal_.Writer(), 40, 0ms});
    EXPECT_THAT(ReadUntil("0 s"), HasSubstr("0 s"));
    CSLogger::Log(CSLogger::INFO, "Processing the first file");
    EXPECT_THAT(ReadUntil("first"), HasSubstr(" s  Processing the first file"));
}

TEST_F(ProgressTest, KeepsToOneLineWhateverIsLogged)
{
    const Progress progress({terminal_.Writer(), 40, 0ms});
    CSLogger::Log(CSLogger::INFO, "%s", (std::string(100, 'x') + "\x1b[2J\n").c_str());
    const std::string shown = ReadUntil("xxx");
    const std::string line = shown.substr(shown.rfind(ERASED) + 4);
    EXPECT_EQ(Utf8::DisplayWidth(line), 39U) << shown;
    EXPECT_THAT(line, Not(HasSubstr("\n")));
}

TEST_F(ProgressTest, IsErasedAtItsEnd)
{
    {
        const Progress progress({terminal_.Writer(), 40, 0ms});
        ReadUntil("0 s");
    }
    terminal_.CloseWriter();
    EXPECT_THAT(terminal_.ReadAll(), EndsWith(ERASED));
}

TEST_F(ProgressTest, ShowsNothingBeforeTheDelayIsOver)
{
    {
        const Progress progress({terminal_.Writer(), 40, 1h});
    }
    terminal_.CloseWriter();
    EXPECT_EQ(terminal_.ReadAll(), "");
}

TEST_F(ProgressTest, IsShownByLongCommandsOnly)
{
    FillStores();
    EXPECT_THAT(ShownBy({"store", "backup"}), HasSubstr("0 s"));
    EXPECT_THAT(ShownBy({"store", "backup"}), EndsWith(ERASED));
    EXPECT_THAT(ShownBy({"--json", "schema", "process"}), HasSubstr("0 s"));
    EXPECT_EQ(ShownBy({"config", "list"}), "");
}

TEST_F(ProgressTest, LeavesStandardErrorToTheLogWhenVerbose)
{
    FillStores();
    EXPECT_EQ(ShownBy({"-v", "store", "backup"}), "");
}

TEST_F(ProgressTest, IsOfferedByEveryCommandThatMayTakeLong)
{
    for (const ConfigStoreCtl::Command& command : ConfigStoreCtl::Commands()) {
        const std::string path = command.path;
        const bool isLong = path == "boot load" || path == "schema process" || path == "schema refresh" ||
                            path == "store backup" || path == "store check" || path == "desired plan";
        EXPECT_EQ(command.isLong, isLong) << path;
    }
}
