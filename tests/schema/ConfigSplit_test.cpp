#include "ConfigSplit.h"

#include <gmock/gmock.h>

#include "ConfigStoreDocument.h"
#include "Thrown.h"

using namespace NimbConfigStore;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

namespace
{
JsonDocument Parsed(const std::string& text)
{
    JsonDocument document;
    EXPECT_TRUE(ConfigStoreDocument::ParseText(text, document)) << text;
    return document;
}

/// The parts as texts, by class.
std::map<std::string, std::string> Split(const std::string& value, const std::string& schema)
{
    std::map<std::string, std::string> texts;
    JsonAllocator allocator;
    for (const auto& [className, part] : SplitConfig(Parsed(value), Parsed(schema), allocator)) {
        ConfigStoreDocument::SerializeValue(part, texts[className]);
    }
    return texts;
}

std::string Properties(const std::string& properties)
{
    return R"({"properties": {)" + properties + "}}";
}

const std::string MARKED = Properties(R"("id": {"instanceId": true}, "u": {}, "v": {"vital": true},
                                         "c": {"cached": true})");

TEST(ConfigSplit, EachPropertyGoesToItsClassAndTheIdentifierToAll)
{
    EXPECT_THAT(Split(R"({"id":"x","u":1,"v":2,"c":3})", MARKED),
                ElementsAre(Pair("cached", R"({"id":"x","c":3})"), Pair("user", R"({"id":"x","u":1})"),
                            Pair("vital", R"({"id":"x","v":2})")));
}

TEST(ConfigSplit, AValueWithoutMarksIsTheUsersAlone)
{
    EXPECT_THAT(Split(R"({"u":1,"w":[1,null,true]})", Properties(R"("u": {}, "w": {})")),
                ElementsAre(Pair("user", R"({"u":1,"w":[1,null,true]})")));
}

TEST(ConfigSplit, AMemberThatTheSchemaDoesNotDescribeIsTheUsers)
{
    EXPECT_THAT(Split(R"({"free":{"deep":1},"v":2})", MARKED),
                ElementsAre(Pair("user", R"({"free":{"deep":1}})"), Pair("vital", R"({"v":2})")));
    EXPECT_THAT(Split(R"({"free":1})", "{}"), ElementsAre(Pair("user", R"({"free":1})")));
}

TEST(ConfigSplit, AnEmptyObjectIsTheUsersAlone)
{
    EXPECT_THAT(Split("{}", MARKED), ElementsAre(Pair("user", "{}")));
    EXPECT_THAT(Split(R"({"u":{}})", MARKED), ElementsAre(Pair("user", R"({"u":{}})")));
}

TEST(ConfigSplit, AnObjectLeftEmptyIsDroppedFromEveryClass)
{
    EXPECT_THAT(Split(R"({"v":2})", MARKED), ElementsAre(Pair("vital", R"({"v":2})")));
    const std::string outer = Properties(R"("inner": )" + MARKED + R"(, "u": {})");
    EXPECT_THAT(Split(R"({"inner":{"v":2},"u":1})", outer),
                ElementsAre(Pair("user", R"({"u":1})"), Pair("vital", R"({"inner":{"v":2}})")));
}

TEST(ConfigSplit, TheIdentifierAloneIsKeptForTheUserOnly)
{
    EXPECT_THAT(Split(R"({"id":"x"})", MARKED), ElementsAre(Pair("user", R"({"id":"x"})")));
}

TEST(ConfigSplit, AnIdentifierThatBearsTheMarkIsKeptAlone)
{
    EXPECT_THAT(Split(R"({"id":"x"})", Properties(R"("id": {"instanceId": true, "vital": true})")),
                ElementsAre(Pair("user", R"({"id":"x"})"), Pair("vital", R"({"id":"x"})")));
}

TEST(ConfigSplit, TwoMembersAreKeptEvenWhenBothAreIdentifiers)
{
    const std::string ids = Properties(R"("a": {"instanceId": true}, "b": {"instanceId": true})");
    EXPECT_EQ(Split(R"({"a":"x","b":"y"})", ids).size(), 3u);
}

TEST(ConfigSplit, TheMerePresenceOfAMarkDecides)
{
    const std::string unmarked = Properties(R"("a": {"vital": false}, "b": {"cached": false})");
    EXPECT_THAT(Split(R"({"a":1,"b":2,"u":3})", unmarked),
                ElementsAre(Pair("cached", R"({"b":2})"), Pair("user", R"({"u":3})"), Pair("vital", R"({"a":1})")));
}

TEST(ConfigSplit, AMarkedObjectIsKeptWhole)
{
    EXPECT_THAT(
        Split(R"({"o":{"u":1,"c":2}})", Properties(R"("o": {"vital": true, "properties": {"c": {"cached": true}}})")),
        ElementsAre(Pair("cached", R"({"o":{"c":2}})"), Pair("vital", R"({"o":{"u":1,"c":2}})")));
}

TEST(ConfigSplit, ArraysOfObjectsAreSplitElementByElementInOrder)
{
    const std::string schema = Properties(R"("list": {"items": {"type": "object", "properties":
        {"u": {}, "v": {"vital": true}}}})");
    EXPECT_THAT(Split(R"({"list":[{"v":1},{"u":2},{"u":3,"v":4},{"v":5}]})", schema),
                ElementsAre(Pair("user", R"({"list":[{"u":2},{"u":3}]})"),
                            Pair("vital", R"({"list":[{"v":1},{"v":4},{"v":5}]})")));
}

TEST(ConfigSplit, OtherArraysAreTheUsers)
{
    const std::string schema = Properties(R"("texts": {"items": {"type": "string"}}, "empty": {"items":
        {"type": "object"}}, "tuple": {"items": [{"type": "object"}]}, "bare": {}, "odd": {"items": {"type": 7}})");
    const std::string value = R"({"texts":["a"],"empty":[],"tuple":[{}],"bare":[{}],"odd":[{}]})";
    EXPECT_THAT(Split(value, schema), ElementsAre(Pair("user", value)));
}

TEST(ConfigSplit, ADroppedMemberIsReplacedByTheLastOne)
{
    EXPECT_THAT(Split(R"({"v":1,"u":2,"c":3,"id":"x"})", MARKED),
                testing::Contains(Pair("user", R"({"id":"x","u":2})")));
}

TEST(ConfigSplit, AMarkThatDecidesMustBeABoolean)
{
    const auto split = [](const std::string& value, const std::string& schema) {
        return ThrownBy([&] { (void)Split(value, schema); });
    };
    EXPECT_THAT(split(R"({"a":1})", Properties(R"("a": {"instanceId": "yes"})")), StartsWith("1082 JSON error:"));
    EXPECT_THAT(split(R"({"a":1})", Properties(R"("a": {"vital": "yes"})")), StartsWith("1082 JSON error:"));
}

TEST(ConfigSplit, ADeepDocumentIsSplit)
{
    std::string value = "1";
    std::string schema = R"({"vital":true})";
    for (int i = 0; i < 100; ++i) {
        value = R"({"a":)" + value + "}";
        schema = Properties(R"("a":)" + schema);
    }
    EXPECT_THAT(Split(value, schema), ElementsAre(Pair("vital", value)));
}
}  // namespace
