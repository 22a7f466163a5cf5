#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <string>

#include "ZELSH.h"

namespace
{
struct Read
{
    unsigned long number;
    std::string rest;
    int reason;
    bool operator==(const Read&) const = default;
};

Read ReadNumber(const char* text, int base, unsigned long limit)
{
    char* end = nullptr;
    errno = 0;
    const unsigned long number = strtoul_limit(text, &end, base, limit);
    return {number, end, errno};
}

/// -1 for a text that is no number up to the limit.
long Check(const char* text, unsigned long limit)
{
    unsigned long number = 0;
    return strtoul_limit_check(text, 10, limit, &number) == 1 ? static_cast<long>(number) : -1;
}
}  // namespace

TEST(ZelshNumbers, ANumberUpToTheLimitIsReadWithWhatFollows)
{
    EXPECT_EQ(ReadNumber("255x", 10, 255), (Read{255, "x", 0}));
    EXPECT_EQ(ReadNumber(" ff", 16, 255), (Read{255, "", 0}));
    EXPECT_EQ(ReadNumber("0", 10, 0), (Read{0, "", 0}));
}

TEST(ZelshNumbers, BeyondTheLimitTheLimitIsTheResult)
{
    EXPECT_EQ(ReadNumber("256", 10, 255), (Read{255, "", ERANGE}));
    EXPECT_EQ(ReadNumber("99999999999999999999", 10, 7), (Read{7, "", ERANGE}));
    EXPECT_EQ(ReadNumber("18446744073709551616", 10, ULONG_MAX), (Read{ULONG_MAX, "", ERANGE}));
}

TEST(ZelshNumbers, ASignIsNoNumber)
{
    EXPECT_EQ(ReadNumber("-1", 10, ULONG_MAX), (Read{0, "-1", EINVAL}));
    EXPECT_EQ(ReadNumber(" +1", 10, 255), (Read{0, " +1", EINVAL}));
    EXPECT_EQ(strtoul_limit("-1", nullptr, 10, 5), 0U);
}

TEST(ZelshNumbers, TheWholeTextMustBeTheNumber)
{
    EXPECT_EQ(Check("42", 42), 42);
    EXPECT_EQ(Check("007", 42), 7);
    for (const char* text : {"", "43", "42x", " 42", "42 ", "-1", "+1", "0x1", "99999999999999999999"}) {
        EXPECT_EQ(Check(text, 42), -1) << text;
    }
    unsigned long number = 5;
    EXPECT_EQ(strtoul_limit_check(nullptr, 10, 1, &number), 0);
    EXPECT_EQ(strtoul_limit_check("1", 10, 1, nullptr), 0);
    EXPECT_EQ(strtoul_limit_check("2", 10, 1, &number), 0);
    EXPECT_EQ(number, 5U);
}
