#include "ZelshWords.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "ZelshText.h"

using namespace Zelsh;
using namespace std::string_literals;
using ::testing::ElementsAre;

namespace
{
std::vector<std::string> Names(const std::string& path)
{
    std::vector<std::string> names;
    for (const Component& component : SplitPath(path)) {
        names.push_back(component.name);
    }
    return names;
}

/// Every byte, in order and in a worse one, and what is no UTF-8.
std::string OddBytes()
{
    std::string bytes;
    for (int byte = 255; byte >= 0; --byte) {
        bytes += static_cast<char>(byte);
    }
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes + "\xed\xa0\x80 \xc0\x80 \xf4\x90\x80\x80 \xe2\x82 é <EOM>";
}
}  // namespace

TEST(ZelshWords, AnEscapedValueCanBeHadBack)
{
    EXPECT_EQ(EscapeValue("a\\b\nc\"d"), "a\\\\b\\x0ac\"d");
    EXPECT_EQ(Unquote(EscapeValue("\\x41 \\\\")), "\\x41 \\\\");
}

TEST(ZelshWords, AnyNameSurvivesBeingQuoted)
{
    for (const std::string& name :
         {"plain"s, "."s, ".."s, "a b"s, "/boot/efi"s, "\""s, "a=b"s, "#1"s, "\\x41"s, OddBytes()}) {
        const std::string quoted = QuoteComponent(name);
        EXPECT_EQ(Unquote(quoted), name);
        const std::vector<Component> components = SplitPath("/" + quoted + "/x");
        ASSERT_EQ(components.size(), 3U) << quoted;
        EXPECT_EQ(components[1].name, name);
        EXPECT_EQ(components[1].quoted, name != "plain");
        EXPECT_EQ(quoted.find_first_of("=\n\t"), std::string::npos);
    }
}

TEST(ZelshWords, PathsAreSplitAtSlashesOutsideQuotes)
{
    EXPECT_THAT(Names("/a/b"), ElementsAre("", "a", "b"));
    EXPECT_THAT(Names("a//b/"), ElementsAre("a", "", "b", ""));
    EXPECT_THAT(Names("x\"/\"y/z"), ElementsAre("x/y", "z"));
    EXPECT_THAT(Names("\"a/b"), ElementsAre("a/b"));
    EXPECT_THAT(Names("a\\x2fb\\\\/\\x4"), ElementsAre("a/b\\", "\\x4"));
    EXPECT_THAT(Names(""), ElementsAre(""));
}

TEST(ZelshWords, TheMarkerOfAReplyIsNoPlainName)
{
    EXPECT_EQ(QuoteComponent("<EOM>"), "\"\\x3cEOM>\"");
}
