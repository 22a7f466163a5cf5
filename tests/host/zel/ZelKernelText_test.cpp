#include "ZelKernelText.h"

#include <gmock/gmock.h>

#include "ZelHex.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ZelKernelText, WordsArePartedByAnyBlanks)
{
    EXPECT_THAT(ZelWords("  a\tbc \n d"), ElementsAre("a", "bc", "d"));
    EXPECT_THAT(ZelWords(" \n"), IsEmpty());
    EXPECT_EQ(ZelWord(ZelWords("a b"), 1), "b");
    EXPECT_EQ(ZelWord(ZelWords("a b"), 2), "");
}

TEST(ZelKernelText, WhatIsNoNumberOrOutOfRangeIsZero)
{
    EXPECT_EQ(ZelNumber("42 kB"), 42u);
    EXPECT_EQ(ZelNumber("18446744073709551615"), 18446744073709551615u);
    EXPECT_EQ(ZelNumber("18446744073709551616"), 0u);
    EXPECT_EQ(ZelNumber<std::uint32_t>("4294967296"), 0u);
    EXPECT_EQ(ZelNumber<std::int32_t>("-7"), -7);
    EXPECT_EQ(ZelNumber("-7"), 0u);
    EXPECT_EQ(ZelNumber<std::uint32_t>("0x1003", 16), 0x1003u);
    EXPECT_EQ(ZelNumber("unknown"), 0u);
    EXPECT_EQ(ZelNumber(""), 0u);
}

TEST(ZelKernelText, DecimalsAreCountedInThousandths)
{
    EXPECT_EQ(ZelThousandths("12.34"), 12340u);
    EXPECT_EQ(ZelThousandths("0.0567"), 56u);
    EXPECT_EQ(ZelThousandths("7"), 7000u);
    EXPECT_EQ(ZelThousandths("7."), 7000u);
    EXPECT_EQ(ZelThousandths(""), 0u);
}

TEST(ZelKernelText, AValueStandsBehindItsWholeKey)
{
    const char* text = "SwapCached: 1\nCached \t:  2 kB \nEmpty:\nLast: 3";
    EXPECT_EQ(ZelValueOf(text, "Cached"), "2 kB");
    EXPECT_EQ(ZelValueOf(text, "Cache"), "");
    EXPECT_EQ(ZelValueOf(text, "Empty"), "");
    EXPECT_EQ(ZelValueOf(text, "Last"), "3");
    EXPECT_EQ(ZelValueOf("", "Last"), "");
}

TEST(ZelHex, BytesAreTwoDigitsAndMayBeSeparated)
{
    std::string bytes;
    EXPECT_TRUE(ZelBytesOfHex("01:aB:ff", ':', bytes));
    EXPECT_EQ(bytes, "\x01\xab\xff");
    for (const char* text : {":01", "01:", "1", "0g", "01::02", "012", "0x01", "01 02"}) {
        bytes.clear();
        EXPECT_FALSE(ZelBytesOfHex(text, ':', bytes)) << text;
    }
}
