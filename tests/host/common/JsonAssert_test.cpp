#include "JsonAssert.h"

#include <gmock/gmock.h>
#include <rapidjson/filereadstream.h>
#include <rapidjson/pointer.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <functional>
#include <type_traits>

#include "ConfigStoreException.h"
#include "Json.h"

using namespace NimbConfigStore;
using rapidjson::Pointer;
using rapidjson::StringRef;
using testing::HasSubstr;
using testing::StartsWith;

// A check that fails in a function declared noexcept would end the process.
static_assert(!std::is_nothrow_move_assignable_v<JsonValue>);
static_assert(!std::is_nothrow_move_assignable_v<JsonDocument>);
static_assert(!std::is_nothrow_constructible_v<JsonValue, rapidjson::Type>);
static_assert(!std::is_nothrow_constructible_v<JsonValue, const char*, rapidjson::SizeType>);

namespace
{
using StringWriter = rapidjson::Writer<rapidjson::StringBuffer>;

std::string JsonError(const std::function<void()>& misuse)
{
    try {
        misuse();
    } catch (const ConfigStoreException& e) {
        EXPECT_EQ(e.code(), CS_ERROR_JSON_TYPE);
        return e.what();
    }
    return "no exception";
}

struct Misuse
{
    const char* name;
    std::function<void()> run;
};

void ExpectJsonErrors(const std::vector<Misuse>& misuses)
{
    for (const Misuse& misuse : misuses) {
        EXPECT_THAT(JsonError(misuse.run), StartsWith("JSON error:")) << misuse.name;
    }
}

class JsonAssertTest : public testing::Test
{
protected:
    JsonValue number{5};
    JsonValue object{rapidjson::kObjectType};
    JsonValue array{rapidjson::kArrayType};
    JsonDocument document;
    JsonAllocator& pool = document.GetAllocator();
    rapidjson::StringBuffer text;
    StringWriter writer{text};
};
}  // namespace

TEST_F(JsonAssertTest, TheTextQuotesTheHeaderAndNamesLineAndCondition)
{
    const std::string error = JsonError([this] { (void)number.GetString(); });
    EXPECT_THAT(error, testing::MatchesRegex("JSON error:\".*/rapidjson/document\\.h\":[0-9]+: IsString\\(\\)"));
}

TEST_F(JsonAssertTest, ReadingAValueAsAnotherTypeThrows)
{
    ExpectJsonErrors({
        {"GetString", [&] { (void)number.GetString(); }},
        {"GetStringLength", [&] { (void)number.GetStringLength(); }},
        {"GetBool", [&] { (void)number.GetBool(); }},
        {"GetInt", [&] { (void)array.GetInt(); }},
        {"GetUint", [&] { (void)JsonValue(-1).GetUint(); }},
        {"GetInt64", [&] { (void)JsonValue(1e30).GetInt64(); }},
        {"GetUint64", [&] { (void)JsonValue(-1).GetUint64(); }},
        {"GetDouble", [&] { (void)object.GetDouble(); }},
        {"GetArray", [&] { (void)object.GetArray(); }},
        {"GetObject", [&] { (void)array.GetObject(); }},
        {"Size", [&] { (void)object.Size(); }},
        {"Begin", [&] { (void)number.Begin(); }},
        {"MemberCount", [&] { (void)array.MemberCount(); }},
        {"MemberBegin", [&] { (void)number.MemberBegin(); }},
    });
}

TEST_F(JsonAssertTest, LookingForWhatIsNotThereThrows)
{
    ExpectJsonErrors({
        {"missing member", [&] { (void)object["absent"].GetInt(); }},
        {"member of a number", [&] { (void)number["absent"]; }},
        {"member of an array", [&] { (void)array.FindMember("absent"); }},
        {"HasMember of a number", [&] { (void)number.HasMember("absent"); }},
        {"name that is no text", [&] { (void)object[number]; }},
        {"index out of range", [&] { (void)array[0u]; }},
        {"index of an object", [&] { (void)object[static_cast<rapidjson::SizeType>(0)]; }},
    });
}

TEST_F(JsonAssertTest, ChangingAValueOfAnotherTypeThrows)
{
    ExpectJsonErrors({
        {"AddMember", [&] { array.AddMember("a", 1, pool); }},
        {"AddMember to a number", [&] { number.AddMember("a", 1, pool); }},
        {"AddMember named by a number", [&] { object.AddMember(JsonValue(1), JsonValue(1), pool); }},
        {"RemoveMember", [&] { array.RemoveMember("a"); }},
        {"RemoveMember of nothing", [&] { object.RemoveMember(object.MemberBegin()); }},
        {"RemoveAllMembers", [&] { number.RemoveAllMembers(); }},
        {"PushBack", [&] { object.PushBack(1, pool); }},
        {"PopBack of nothing", [&] { array.PopBack(); }},
        {"Erase of nothing", [&] { array.Erase(array.Begin(), array.End()); }},
        {"Reserve", [&] { object.Reserve(8, pool); }},
        {"Clear", [&] { number.Clear(); }},
        {"text from null", [&] { number.SetString(nullptr, 1); }},
        {"text from null, copied", [&] { number.SetString(nullptr, 1, pool); }},
    });
    EXPECT_EQ(number.GetInt(), 5);
}

TEST_F(JsonAssertTest, ChecksInFunctionsThatAreOtherwiseNoexceptThrow)
{
    JsonDocument& same = document;
    ExpectJsonErrors({
        {"assignment to itself", [&] { number = number.Move(); }},
        {"move assignment to itself", [&] { number = std::move(number.Move()); }},
        {"copy of itself", [&] { document.CopyFrom(same, pool); }},
        {"type out of range", [&] { JsonValue(static_cast<rapidjson::Type>(7)); }},
        {"text from null", [&] { JsonValue(static_cast<const char*>(nullptr), 1); }},
    });
    EXPECT_EQ(number.GetInt(), 5);
}

TEST_F(JsonAssertTest, AFailureInTheMiddleOfADocumentUnwinds)
{
    const auto twoRoots = [](JsonDocument& target) { return target.Int(1) && target.Int(2); };
    const auto endWithoutStart = [](JsonDocument& target) { return target.EndArray(3); };
    ExpectJsonErrors({
        {"two roots", [&] { document.Populate(twoRoots); }},
        {"end without start", [&] { document.Populate(endWithoutStart); }},
    });
    EXPECT_TRUE(document.IsNull());
}

TEST_F(JsonAssertTest, MisuseOfAWriterThrows)
{
    ExpectJsonErrors({
        {"end of an object that was not begun", [&] { writer.EndObject(); }},
        {"end of an array that was not begun", [&] { writer.EndArray(); }},
        {"array ended as an object",
         [&] {
             StringWriter other(text);
             other.StartArray();
             other.EndObject();
         }},
        {"name that is no text",
         [&] {
             StringWriter other(text);
             other.StartObject();
             other.Int(1);
         }},
        {"two roots",
         [&] {
             writer.Int(1);
             writer.Int(2);
         }},
    });
}

TEST_F(JsonAssertTest, OddPointersThrowOnUseAndNeverEarlier)
{
    const Pointer invalid("no leading slash");
    const Pointer escape("/~2");
    EXPECT_FALSE(invalid.IsValid());
    EXPECT_FALSE(escape.IsValid());
    ExpectJsonErrors({
        {"Get", [&] { (void)invalid.Get(object); }},
        {"Get with a bad escape", [&] { (void)escape.Get(object); }},
        {"Create", [&] { invalid.Create(document); }},
        {"Set", [&] { invalid.Set(document, 1); }},
        {"Stringify", [&] { invalid.Stringify(text); }},
    });
    EXPECT_EQ(Pointer("/a/b").Get(object), nullptr);
    EXPECT_EQ(Pointer("/99999999999999999999").Get(array), nullptr);
    EXPECT_EQ(Pointer("/a").Get(number), nullptr);
}

TEST_F(JsonAssertTest, MisuseOfStreamsAndPoolsThrows)
{
    char buffer[16];
    rapidjson::StringStream input("1");
    ExpectJsonErrors({
        {"file stream on nothing", [&] { rapidjson::FileReadStream(nullptr, buffer, sizeof buffer); }},
        {"writing to an input", [&] { input.Put('x'); }},
        {"pool without a buffer", [&] { JsonAllocator(nullptr, 64); }},
    });
}
