#include "JsonChanges.h"

#include <gmock/gmock.h>

using namespace ConfigStoreCtl;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
MemberChanges Compare(const std::optional<std::string>& before, const std::optional<std::string>& after)
{
    MemberChanges changes;
    CompareTexts(before, after, "/v", changes);
    return changes;
}

std::vector<std::string> Told(const std::optional<std::string>& before, const std::optional<std::string>& after)
{
    return ChangeLines(Compare(before, after)).texts;
}
}  // namespace

TEST(JsonChanges, AreToldMemberByMember)
{
    EXPECT_THAT(
        Told(R"({"a": 1, "b": {"c": "x", "d": true}, "e": null})", R"({"b": {"d": false, "c": "x"}, "f": []})"),
        ElementsAre("/v/a  1 -> (none)", "/v/b/d  true -> false", "/v/e  null -> (none)", "/v/f  (none) -> []"));
}

TEST(JsonChanges, AreToldElementByElement)
{
    EXPECT_THAT(Told("[1, {\"a\": 2}, 3, 4]", "[1, {\"a\": 5}, 3]"),
                ElementsAre("/v/1/a  2 -> 5", "/v/3  4 -> (none)"));
    EXPECT_THAT(Told("[]", "[7]"), ElementsAre("/v/0  (none) -> 7"));
}

TEST(JsonChanges, OfOtherKindsAreWholeValues)
{
    EXPECT_THAT(Told("{\"a\": 1}", "[1]"), ElementsAre("/v  {\"a\":1} -> [1]"));
    EXPECT_THAT(Told("1", "1.0"), ElementsAre("/v  1 -> 1.0"));
    EXPECT_THAT(Told("{\"a\": 1, \"a\": 2}", "{\"a\": 1, \"a\": 3}"),
                ElementsAre("/v  {\"a\":1,\"a\":2} -> {\"a\":1,\"a\":3}"));
}

TEST(JsonChanges, AreNoneForTheSameValueWrittenOtherwise)
{
    EXPECT_THAT(Told(R"({"a": "é", "b": 2})", R"({ "b":2,"a":"\u00e9"})"), IsEmpty());
    EXPECT_THAT(Told(std::nullopt, std::nullopt), IsEmpty());
}

TEST(JsonChanges, NameValuesThatComeGoOrAreNoJson)
{
    EXPECT_THAT(Told(std::nullopt, R"({"a": 1})"), ElementsAre(R"(/v  (none) -> {"a":1})"));
    EXPECT_THAT(Told("mark for deletion", std::nullopt), ElementsAre(R"(/v  "mark for deletion" -> (none))"));
}

TEST(JsonChanges, EscapeNamesInPointers)
{
    EXPECT_THAT(Told(R"({"a/b": {"~": 1}})", R"({"a/b": {"~": 2}})"), ElementsAre("/v/a~1b/~0  1 -> 2"));
}

TEST(JsonChanges, AreRecordsForPrograms)
{
    EXPECT_EQ(
        ChangeRecords(Compare(R"({"a": 1, "b": 2})", R"({"a": {"c": 3}, "d": "text"})")).text,
        R"([{"pointer":"/v/a","old":1,"new":{"c":3}},{"pointer":"/v/b","old":2},{"pointer":"/v/d","new":"text"}])");
}
