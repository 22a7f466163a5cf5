#include "ZelshInput.h"

#include <gtest/gtest.h>

#include <string>

using namespace Zelsh;

namespace
{
constexpr ZEL_Enumerator STATES[] = {{0, "down"}, {4, "up"}, {9, "lost"}};
constexpr ZEL_Type STATE = {"state", ZEL_DATA_ENUM, 4, nullptr, 0, STATES, 3, nullptr};

ZEL_Type Plain(ZEL_DataKind kind, std::size_t size = 0)
{
    return {"plain", kind, size, nullptr, 0, nullptr, 0, nullptr};
}

/// The integer that @p text is; "refused" when it is none, "text" when it is handed over as it is.
std::string Taken(const ZEL_Type& type, const std::string& text)
{
    const std::optional<Parameter> parameter = ParseParameter(type, text);
    if (!parameter) {
        return "refused";
    }
    const auto* number = std::get_if<std::int64_t>(&*parameter);
    return number != nullptr ? std::to_string(*number) : std::get<std::string>(*parameter) == text ? "text" : "changed";
}
}  // namespace

TEST(ZelshInput, AnIntegerKeepsToItsWidth)
{
    EXPECT_EQ(Taken(Plain(ZEL_DATA_INT8), "-128"), "-128");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_INT8), "-129"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_INT8), "127"), "127");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_INT8), "128"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_INT16), "-32768"), "-32768");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_INT32), "2147483648"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_INT64), "-9223372036854775808"), "-9223372036854775808");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_UINT8), "255"), "255");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_UINT8), "256"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_UINT16), "65536"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_UINT32), "4294967295"), "4294967295");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_UINT64), "18446744073709551615"), "-1");  // the 64 bits that it is
    EXPECT_EQ(Taken(Plain(ZEL_DATA_UINT64), "18446744073709551616"), "refused");
}

TEST(ZelshInput, WhatIsNoIntegerIsRefused)
{
    for (const char* text : {"", "-", "+1", "0x10", "1.5", "1e3", " 1", "1 ", "--1", "-0x1", "true"}) {
        EXPECT_EQ(Taken(Plain(ZEL_DATA_INT32), text), "refused") << text;
    }
    EXPECT_EQ(Taken(Plain(ZEL_DATA_UINT32), "-1"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_UINT32), std::string("1\0", 2)), "refused");
}

TEST(ZelshInput, BooleansAndEnumerationsHaveNames)
{
    EXPECT_EQ(Taken(Plain(ZEL_DATA_BOOL), "true"), "1");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_BOOL), "0"), "0");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_BOOL), "2"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_BOOL), "True"), "refused");
    EXPECT_EQ(Taken(STATE, "up"), "4");
    EXPECT_EQ(Taken(STATE, "4"), "refused");
    EXPECT_EQ(Taken(STATE, ""), "refused");
}

TEST(ZelshInput, AddressesAndIdentifiersHaveAForm)
{
    EXPECT_EQ(Taken(Plain(ZEL_DATA_MAC), "00:1b:21:3C:9d:f8"), "text");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_MAC), "00:1b:21:3C:9d"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_UUID), "5f0d6f4e-7a64-4c0e-9d6e-0c3a5b1f2a11"), "text");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_UUID), "5f0d6f4e7a644c0e9d6e0c3a5b1f2a11"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_IPV4), "192.0.2.1"), "text");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_IPV4), "192.0.2"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_IPV6), "2001:db8::1"), "text");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_IPV6), "192.0.2.1"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_BYTES, 2), "00fF"), "text");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_BYTES, 2), "00f"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_BYTES), "00f"), "refused");
    EXPECT_EQ(Taken(Plain(ZEL_DATA_BYTES), ""), "text");
}

TEST(ZelshInput, WhatTheShellCannotWriteIsRefused)
{
    EXPECT_EQ(Taken(Plain(ZEL_DATA_STRUCT), "x"), "refused");
    EXPECT_EQ(ExpectationOf(Plain(ZEL_DATA_STRUCT)), "nothing that the shell can write (plain)");
}

TEST(ZelshInput, AnExpectationNamesWhatIsTaken)
{
    EXPECT_EQ(ExpectationOf(Plain(ZEL_DATA_INT8)), "an integer from -128 to 127");
    EXPECT_EQ(ExpectationOf(Plain(ZEL_DATA_UINT64)), "an integer from 0 to 18446744073709551615");
    EXPECT_EQ(ExpectationOf(Plain(ZEL_DATA_BOOL)), "true or false");
    EXPECT_EQ(ExpectationOf(STATE), "down, up or lost");
    EXPECT_EQ(ExpectationOf(Plain(ZEL_DATA_BYTES, 4)), "8 hexadecimal digits");
}
