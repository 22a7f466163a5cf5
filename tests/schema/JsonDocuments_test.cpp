#include <gmock/gmock.h>

#include "Json.h"
#include "NimbConfigStore.h"
#include "TestHost.h"

using namespace NimbConfigStore;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace
{
class JsonDocumentsTest : public HostTest
{};

const char* const FILE_PATH = "/etc/talvor/boot_configuration.json";

struct Failure
{
    int code = 0;
    bool badInput = false;
    std::string text;
};

template <typename Call>
Failure FailureOf(Call call)
{
    try {
        call();
    } catch (const ConfigStoreException& e) {
        return {e.code(), dynamic_cast<const InvalidArgumentException*>(&e) != nullptr, e.what()};
    }
    return {};
}

void ExpectFileIsRefused()
{
    const Failure failure = FailureOf([] { CreateDocumentFromFile(FILE_PATH); });
    EXPECT_EQ(failure.code, 1081);
    EXPECT_TRUE(failure.badInput);
    EXPECT_THAT(failure.text, HasSubstr(FILE_PATH));
}

void ExpectTextIsRefused(const std::string& text)
{
    const Failure failure = FailureOf([&] { CreateDocumentFromString(text); });
    EXPECT_EQ(failure.code, 1080) << text;
    EXPECT_TRUE(failure.badInput) << text;
}

// The value at @p path in a document with one card list and one plain object.
JsonValue* ValueAt(JsonDoc& doc, std::vector<JsonNode> path)
{
    doc.path = std::move(path);
    return doc.GetJsonValuePtr();
}

std::shared_ptr<JsonDoc> Cards()
{
    return CreateDocumentFromString(R"({"net": {"mtu": 1500, "cards": [
        {"name": 7, "speed": 0}, {"name": "b", "speed": 1}, {"name": "a", "speed": 2}, {"name": "a", "speed": 3}]}})");
}
}  // namespace

TEST_F(JsonDocumentsTest, ANewDocumentHoldsNullOnItsOwnPool)
{
    const auto doc = CreateDocument();
    EXPECT_TRUE(doc->document->IsNull());
    EXPECT_EQ(&doc->document->GetAllocator(), doc->allocator.get());
    EXPECT_EQ(doc->document->GetStackCapacity(), 0u);  // the stack is allocated on first use
    EXPECT_THAT(doc->path, IsEmpty());
}

TEST_F(JsonDocumentsTest, ValuesLiveAsLongAsSomeoneHoldsTheDocument)
{
    auto doc = CreateDocumentFromString(R"({"text": "longer than what fits into a value itself"})");
    const auto holder = doc;
    const JsonValue& text = (*doc->document)["text"];
    doc.reset();
    EXPECT_STREQ(text.GetString(), "longer than what fits into a value itself");
}

TEST_F(JsonDocumentsTest, ValuesCanBeAddedFromThePool)
{
    const auto doc = CreateDocumentFromString("{}");
    doc->document->AddMember("added", JsonValue("a text of more than a few characters", *doc->allocator),
                             *doc->allocator);
    EXPECT_STREQ((*doc->document)["added"].GetString(), "a text of more than a few characters");
}

TEST_F(JsonDocumentsTest, AFileIsParsedWithWhiteSpaceAround)
{
    Host().WriteFile(FILE_PATH, " \n\t{\"a\": [1]}\r\n\n  ");
    EXPECT_EQ((*CreateDocumentFromFile(FILE_PATH)->document)["a"][0].GetInt(), 1);
}

TEST_F(JsonDocumentsTest, AFileThatIsNotOneJsonTextIsRefusedByName)
{
    ExpectFileIsRefused();
    for (const char* const content : {"", " \n", "{}{}", "{\"a\": 1", "garbage"}) {
        Host().WriteFile(FILE_PATH, content);
        ExpectFileIsRefused();
    }
    Host().WriteFile(FILE_PATH, std::string(1 << 20, '['));
    ExpectFileIsRefused();
    Host().Remove(FILE_PATH);
    Host().MakeFolder(FILE_PATH);
    ExpectFileIsRefused();
}

TEST_F(JsonDocumentsTest, WhyAFileWasRefusedIsInTheLog)
{
    Host().WriteFile(FILE_PATH, "{} x");
    ExpectFileIsRefused();
    EXPECT_THAT(Host().Log(), ElementsAre(StartsWith("debug " + std::string(FILE_PATH) + ": The document root")));
}

TEST_F(JsonDocumentsTest, ATextThatIsNotOneJsonTextIsRefused)
{
    for (const char* const text : {"", " \t\r\n", "{} {}", "[1,", "tru"}) {
        ExpectTextIsRefused(text);
    }
    ExpectTextIsRefused(std::string(1 << 20, '['));
}

TEST_F(JsonDocumentsTest, ATextEndsAtItsFirstNul)
{
    EXPECT_EQ(CreateDocumentFromString(std::string("12\0 garbage", 11))->document->GetInt(), 12);
    ExpectTextIsRefused(std::string("\0 12", 4));
}

TEST_F(JsonDocumentsTest, AnEmptyPathLeadsToTheRoot)
{
    const auto doc = Cards();
    EXPECT_EQ(doc->GetJsonValuePtr(), doc->document.get());
}

TEST_F(JsonDocumentsTest, APathLeadsThroughMembersAndToAnElement)
{
    const auto doc = Cards();
    EXPECT_EQ(ValueAt(*doc, {{"net"}, {"mtu"}})->GetInt(), 1500);
    EXPECT_EQ(ValueAt(*doc, {{"net"}, {"cards", "name", "b"}, {"speed"}})->GetInt(), 1);
}

TEST_F(JsonDocumentsTest, OfTwoElementsWithTheSameKeyTheFirstIsMeant)
{
    EXPECT_EQ(ValueAt(*Cards(), {{"net"}, {"cards", "name", "a"}, {"speed"}})->GetInt(), 2);
}

TEST_F(JsonDocumentsTest, AMissingMemberIsNamedInTheLog)
{
    const auto doc = Cards();
    const Failure missing = FailureOf([&] { ValueAt(*doc, {{"net"}, {"dns"}}); });
    const Failure inNumber = FailureOf([&] { ValueAt(*doc, {{"net"}, {"mtu"}, {"x"}}); });
    EXPECT_EQ(missing.code, 2000);
    EXPECT_EQ(missing.text, "Subobject does not exists.");
    EXPECT_EQ(inNumber.text, "Subobject does not exists.");
    EXPECT_THAT(Host().Log(), ElementsAre("error Cannot find subobject dns", "error Cannot find subobject x"));
}

TEST_F(JsonDocumentsTest, AMissingElementIsNamedInTheLog)
{
    const Failure failure = FailureOf([] { ValueAt(*Cards(), {{"net"}, {"cards", "name", "7"}}); });
    EXPECT_EQ(failure.code, 2000);
    EXPECT_EQ(failure.text, "Subobject instance does not exists.");
    EXPECT_THAT(Host().Log(), ElementsAre("error Cannot find subobject instance name=7"));
}

TEST_F(JsonDocumentsTest, AnElementWithoutTheKeyMemberFailsTheCheck)
{
    const auto doc = CreateDocumentFromString(R"({"cards": [{"name": "a"}, {"id": 1}, 5]})");
    EXPECT_STREQ((*ValueAt(*doc, {{"cards", "name", "a"}}))["name"].GetString(), "a");
    for (const char* const key : {"id", static_cast<const char*>(nullptr)}) {
        const Failure failure = FailureOf([&] { ValueAt(*doc, {{"cards", key, "x"}}); });
        EXPECT_EQ(failure.code, 1082);
        EXPECT_THAT(failure.text, StartsWith("JSON error:"));
    }
}

TEST_F(JsonDocumentsTest, MisuseOfADocumentThrows)
{
    const auto doc = Cards();
    EXPECT_EQ(FailureOf([&] { (void)(*doc->document)["absent"].GetInt(); }).code, 1082);
    EXPECT_EQ(FailureOf([&] { (void)doc->document->GetString(); }).code, 1082);
    EXPECT_EQ(FailureOf([&] { (void)(*doc->document)["net"]["mtu"]["x"]; }).code, 1082);
}
