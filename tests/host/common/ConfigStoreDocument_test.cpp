#include "ConfigStoreDocument.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "ConfigStoreException.h"
#include "TestHost.h"

using namespace ConfigStoreDocument;
using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;
using testing::StartsWith;

namespace
{
class ConfigStoreDocumentTest : public HostTest
{};

std::string Text(const JsonValue& value)
{
    std::string text = "what stood there before";
    SerializeValue(value, text);
    return text;
}

std::string Parsed(std::string_view text)
{
    JsonDocument document;
    return ParseText(text, document) ? Text(document) : "refused";
}

std::string Refusal(std::string_view text)
{
    JsonDocument document;
    document.SetInt(1);
    std::string reason;
    EXPECT_FALSE(ParseText(text, document, &reason));
    EXPECT_TRUE(document.IsNull());
    return reason;
}

std::string FileRefusal(const std::string& path)
{
    JsonDocument document;
    document.SetInt(1);
    std::string reason;
    EXPECT_FALSE(ParseFile(path, document, &reason));
    EXPECT_TRUE(document.IsNull());
    return reason;
}

std::string Nested(std::size_t depth)
{
    return std::string(depth, '[') + std::string(depth, ']');
}
}  // namespace

TEST_F(ConfigStoreDocumentTest, ATextIsParsedWithEveryKindOfValue)
{
    const char* const text = R"({"a":[null,true,false,-1,1,-9007199254740993,18446744073709551615,2.5,"\u00e9\n"]})";
    EXPECT_EQ(Parsed(text),
              "{\"a\":[null,true,false,-1,1,-9007199254740993,18446744073709551615,2.5,"
              "\"\xc3\xa9\\n\"]}");
    EXPECT_EQ(Parsed(" \t\r\n1 \t\r\n"), "1");
}

TEST_F(ConfigStoreDocumentTest, WhatFollowsTheRootIsRefused)
{
    EXPECT_EQ(Refusal("{} {}"), "The document root must not be followed by other values, at byte 3.");
    EXPECT_THAT(Refusal("1 // comment"), StartsWith("The document root must not be followed"));
}

TEST_F(ConfigStoreDocumentTest, AnEmptyTextIsRefused)
{
    EXPECT_THAT(Refusal(""), StartsWith("The document is empty"));
    EXPECT_THAT(Refusal(" \n "), StartsWith("The document is empty"));
    EXPECT_THAT(Refusal({}), StartsWith("The document is empty"));
}

TEST_F(ConfigStoreDocumentTest, TheReasonNamesThePlace)
{
    EXPECT_EQ(Refusal("[1,]"), "Invalid value, at byte 3.");
    EXPECT_EQ(Refusal(R"({"a" 1})"), "Missing a colon after a name of object member, at byte 5.");
}

TEST_F(ConfigStoreDocumentTest, ATextEndsAtItsFirstNulOrAtItsEnd)
{
    EXPECT_EQ(Parsed(std::string_view("1\0 2", 4)), "1");
    EXPECT_EQ(Parsed(std::string_view("[1][2]").substr(0, 3)), "[1]");
    EXPECT_EQ(Parsed(std::string_view("12345").substr(0, 2)), "12");
}

TEST_F(ConfigStoreDocumentTest, NestingIsLimited)
{
    EXPECT_EQ(Parsed(Nested(MAX_DEPTH)), Nested(MAX_DEPTH));
    EXPECT_EQ(Refusal(Nested(MAX_DEPTH + 1)), "Nested more than 256 levels deep, at byte 256.");
    EXPECT_NE(Parsed("[" + Nested(MAX_DEPTH - 1) + "," + Nested(MAX_DEPTH - 1) + "]"), "refused");
}

TEST_F(ConfigStoreDocumentTest, AMegabyteOfOpenBracketsIsRefused)
{
    EXPECT_THAT(Refusal(std::string(1 << 20, '[')), StartsWith("Nested more than 256"));
    std::string objects;
    for (int i = 0; i < 200'000; ++i) {
        objects += R"({"":)";
    }
    EXPECT_THAT(Refusal(objects), StartsWith("Nested more than 256"));
    Host().WriteFile("/etc/deep.json", std::string(1 << 20, '['));
    EXPECT_THAT(FileRefusal("/etc/deep.json"), StartsWith("Nested more than 256"));
}

TEST_F(ConfigStoreDocumentTest, AFileLongerThanTheReadBufferIsParsedWhole)
{
    const std::string text = "[\"" + std::string(200'000, 'x') + "\",2]";
    Host().WriteFile("/etc/long.json", "\n" + text + "\n\n");
    JsonDocument document;
    ASSERT_TRUE(ParseFile("/etc/long.json", document));
    EXPECT_TRUE(Text(document) == text);
}

TEST_F(ConfigStoreDocumentTest, AFileThatCannotBeReadIsRefusedWithTheReason)
{
    std::filesystem::create_symlink("/etc/loop.json", Host().Real("/etc/loop.json"));
    ASSERT_EQ(mkfifo(Host().Real("/etc/pipe.json").c_str(), 0600), 0);
    EXPECT_EQ(FileRefusal("/etc/pipe.json"), "Not a regular file");
    EXPECT_EQ(FileRefusal("/etc/missing.json"), "No such file or directory");
    EXPECT_EQ(FileRefusal("/etc/talvor"), "Is a directory");
    EXPECT_EQ(FileRefusal("/etc/loop.json"), "Not a directory");
}

TEST_F(ConfigStoreDocumentTest, AnEmptyOrTruncatedFileIsRefused)
{
    Host().WriteFile("/etc/empty.json", "").WriteFile("/etc/cut.json", R"({"a": [1, 2)");
    EXPECT_THAT(FileRefusal("/etc/empty.json"), StartsWith("The document is empty"));
    EXPECT_EQ(FileRefusal("/etc/cut.json"), "Missing a comma or ']' after an array element, at byte 11.");
}

TEST_F(ConfigStoreDocumentTest, ADocumentCanBeParsedAgain)
{
    JsonDocument document;
    EXPECT_FALSE(ParseText("[", document));
    EXPECT_TRUE(ParseText("[1]", document));
    EXPECT_TRUE(ParseText("2", document));
    EXPECT_EQ(Text(document), "2");
}

TEST_F(ConfigStoreDocumentTest, AMemberExistsOnlyInAnObjectThatHasIt)
{
    JsonDocument document;
    ASSERT_TRUE(ParseText(R"({"a": null, "list": [{"a": 1}]})", document));
    EXPECT_TRUE(ValueExists(document, "a"));
    EXPECT_FALSE(ValueExists(document, "b"));
    EXPECT_FALSE(ValueExists(document, nullptr));
    EXPECT_FALSE(ValueExists(document["list"], "a"));
    EXPECT_FALSE(ValueExists(document["a"], "a"));
}

TEST_F(ConfigStoreDocumentTest, AValueThatIsNotJsonIsNotWritten)
{
    std::string text = "before";
    EXPECT_THROW(SerializeValue(JsonValue(1e308 * 10), text), NimbConfigStore::ConfigStoreException);
    EXPECT_EQ(text, "before");
}
