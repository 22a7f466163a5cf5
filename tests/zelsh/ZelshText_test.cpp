#include "ZelshText.h"

#include <gtest/gtest.h>

#include <string>

using namespace Zelsh;
using namespace std::string_literals;

TEST(ZelshText, ControlCharactersAndStrayBytesAreShownAsEscapes)
{
    EXPECT_EQ(EscapeControls("a\nb\x1b[2J\x7f"), "a\\x0ab\\x1b[2J\\x7f");
    EXPECT_EQ(EscapeControls("\xc2\x9b \xff \xc0\x80 \xed\xa0\x80"), "\\xc2\\x9b \\xff \\xc0\\x80 \\xed\\xa0\\x80");
    EXPECT_EQ(EscapeControls("né € 😀 \\"), "né € 😀 \\");
    EXPECT_EQ(EscapeControls(""), "");
}

TEST(ZelshText, TheMarkerOfAReplyNeverStandsInAValue)
{
    EXPECT_EQ(EscapeControls("x<EOM>y<EO"), "x\\x3cEOM>y<EO");
    EXPECT_EQ(EscapeValue("<EOM>"), "\\x3cEOM>");
    EXPECT_EQ(PythonText("<EOM>"), "'\\x3cEOM>'");
    EXPECT_EQ(EscapeName("<EOM>"), "\\x3cEOM>");
}

TEST(ZelshText, AMessageKeepsItsLines)
{
    EXPECT_EQ(EscapeMessage("a\n\tb\r\x07"), "a\n\tb\\x0d\\x07");
    EXPECT_EQ(EscapeDiagnostic("Sending <EOM>\n"), "Sending <EOM>\\x0a");
}

TEST(ZelshText, TextThatIsNotUtf8IsAByteStringOfPython)
{
    EXPECT_EQ(PythonText("it's\n\xc2\x85"), "'it\\x27s\\x0a\\x85'");
    EXPECT_EQ(PythonText("a\xff"), "b'\\x61\\xff'");
    EXPECT_EQ(PythonBytes("\0\x1f"s), "b'\\x00\\x1f'");
}
