#include "TerminalText.h"

#include <gtest/gtest.h>

using namespace ConfigStoreCtl;

TEST(TerminalText, ShowsControlCharactersInsteadOfSendingThem)
{
    EXPECT_EQ(EscapeControls("\x1b[31mred\x7f\n\t\r\x01"), "\\x1b[31mred\\x7f\\n\\t\\r\\x01");
    EXPECT_EQ(EscapeControls(std::string("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(EscapeControls("\xC2\x9B"
                             "31m"),
              "\\u009b31m");
}

TEST(TerminalText, KeepsTextOfEveryScript)
{
    EXPECT_EQ(EscapeControls("Zürich 東京 😀"), "Zürich 東京 😀");
}

TEST(TerminalText, ShowsBytesThatAreNotUtf8)
{
    EXPECT_EQ(EscapeControls("a\x9Bz"), "a\\x9bz");                // a stray continuation
    EXPECT_EQ(EscapeControls("\xC0\x9B"), "\\xc0\\x9b");           // an overlong form
    EXPECT_EQ(EscapeControls("\xED\xA0\x80"), "\\xed\\xa0\\x80");  // half of a surrogate pair
    EXPECT_EQ(EscapeControls("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
    EXPECT_EQ(EscapeControls("end\xE6\x9D"), "end\\xe6\\x9d");  // cut short
}

TEST(TerminalText, MakesJsonSafeWithoutChangingWhatItSays)
{
    EXPECT_EQ(EscapeJsonControls("{\n  \"a\": \"\x7f\xC2\x9Bü\xFF\"\n}"),
              "{\n  \"a\": \"\\u007f\\u009bü\xEF\xBF\xBD\"\n}");
}
