#include "Utf8.h"

#include <gtest/gtest.h>

using namespace Utf8;

namespace
{
std::size_t FirstLength(std::string_view text)
{
    return FirstCodePoint(text).length;
}
}  // namespace

TEST(Utf8, TakesTheFirstCodePoint)
{
    EXPECT_EQ(FirstCodePoint("a€").value, U'a');
    EXPECT_EQ(FirstCodePoint("ü").value, U'ü');
    EXPECT_EQ(FirstCodePoint("€a").value, U'€');
    EXPECT_EQ(FirstCodePoint("😀").value, U'😀');
    EXPECT_EQ(FirstLength("a"), 1U);
    EXPECT_EQ(FirstLength("ü"), 2U);
    EXPECT_EQ(FirstLength("€a"), 3U);
    EXPECT_EQ(FirstLength("😀"), 4U);
}

TEST(Utf8, KnowsTheSmallestAndTheGreatestOfEachLength)
{
    EXPECT_EQ(FirstLength("\xC2\x80"), 2U);
    EXPECT_EQ(FirstLength("\xDF\xBF"), 2U);
    EXPECT_EQ(FirstLength("\xE0\xA0\x80"), 3U);
    EXPECT_EQ(FirstLength("\xED\x9F\xBF"), 3U);
    EXPECT_EQ(FirstLength("\xEE\x80\x80"), 3U);
    EXPECT_EQ(FirstLength("\xF0\x90\x80\x80"), 4U);
    EXPECT_EQ(FirstLength("\xF4\x8F\xBF\xBF"), 4U);
}

TEST(Utf8, RefusesWhatIsNotWellFormed)
{
    EXPECT_EQ(FirstLength("\x9B"), 0U);              // a stray continuation
    EXPECT_EQ(FirstLength("\xC1\xBF"), 0U);          // overlong forms
    EXPECT_EQ(FirstLength("\xE0\x9F\xBF"), 0U);      //
    EXPECT_EQ(FirstLength("\xF0\x8F\xBF\xBF"), 0U);  //
    EXPECT_EQ(FirstLength("\xED\xA0\x80"), 0U);      // half of a surrogate pair
    EXPECT_EQ(FirstLength("\xF4\x90\x80\x80"), 0U);  // past the last
    EXPECT_EQ(FirstLength("\xFF"), 0U);
    EXPECT_EQ(FirstLength("\xE6\x9D"), 0U);  // cut short
    EXPECT_EQ(FirstLength("\xE6\x9Dz"), 0U);
}

TEST(Utf8, TellsControlCharacters)
{
    for (const char32_t control : {U'\0', U'\x1B', U'\x1F', U'\x7F', U'\x80', U'\x9F'}) {
        EXPECT_TRUE(IsControl(control)) << static_cast<unsigned>(control);
    }
    for (const char32_t other : {U' ', U'~', U'\xA0', U'\x20AC'}) {
        EXPECT_FALSE(IsControl(other)) << static_cast<unsigned>(other);
    }
}

TEST(Utf8, CountsCodePoints)
{
    EXPECT_EQ(DisplayWidth("Zürich"), 6U);
    EXPECT_EQ(DisplayWidth(""), 0U);
}

TEST(Utf8, FillsAColumn)
{
    EXPECT_EQ(Padded("ü", 3), "ü  ");
    EXPECT_EQ(Padded("wide", 3), "wide");
}
