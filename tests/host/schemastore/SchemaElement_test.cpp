#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "ConfigStoreDocument.h"
#include "ConfigStoreException.h"
#include "JsonValidator.h"
#include "NimbSchemaStore.h"
#include "TestHost.h"

using namespace NimbSchemaStore;
using NimbConfigStore::ConfigStoreException;
using NimbConfigStore::JsonDocument;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace
{
/// An element of nimb/g/k with further members.
std::string Element(const std::string& members)
{
    return R"({"component": "nimb", "group": "g", "key": "k")" + (members.empty() ? "" : ", " + members) + "}";
}

class SchemaElementTest : public HostTest
{
protected:
    SchemaElementTest()
    {
        Host().WithStores();
        run_ = SchemaStore::GetStore(true);
    }

    /// Why the element is refused; empty when it is not.
    std::string Refusal(const std::string& json, const std::string& component = "nimb", const std::string& group = "g")
    {
        try {
            SetSchema("net-1.0.0_1.0", component, group, "k", json, run_, json.find("\"smartnic\"") != json.npos);
            return "";
        } catch (const ConfigStoreException& error) {
            EXPECT_EQ(error.code(), 2000);
            return error.what();
        }
    }

    void RegisterFile(const std::filesystem::path& path)
    {
        JsonDocument file;
        if (!ConfigStoreDocument::ParseText(Content(path), file)) {
            return;  // one of the sample's broken files
        }
        for (const auto& element : file["data"].GetArray()) {
            std::string text;
            ConfigStoreDocument::SerializeValue(element, text);
            EXPECT_NO_THROW(SetSchema("net-1.0.0_1.0", element["component"].GetString(), element["group"].GetString(),
                                      element["key"].GetString(), text, run_, element.HasMember("smartnic")))
                << path;
        }
    }

    static std::string Content(const std::filesystem::path& path)
    {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    SchemaStorePtr run_;
};
}  // namespace

TEST_F(SchemaElementTest, AnElementOfEveryFormIsTaken)
{
    EXPECT_EQ(Refusal(Element(R"("schema": {})")), "");
    EXPECT_EQ(Refusal(Element(R"("dataFile": true)")), "");
    EXPECT_EQ(Refusal(Element(R"("schema": {}, "description": "d", "version": "2", "noRestore": 1)")), "");
    EXPECT_EQ(Refusal(R"({"component": "files", "group": "g", "key": "k", "file": {}})", "files"), "");
}

TEST_F(SchemaElementTest, ARefusalNamesTheElementAndTheMember)
{
    struct Case
    {
        const char* members;
        const char* refusal;
    };
    const Case cases[] = {
        {R"("schema": [])", "member \"schema\" expected a JSON Schema (an object), found an array of 0 elements"},
        {R"("schema": {}, "singleton": 1)", "member \"singleton\" expected a boolean, found 1"},
        {R"("schema": {}, "version": "")", "member \"version\" expected"},
        {R"("schema": {}, "schemaType": "2")", "member \"schemaType\" expected an integer"},
        {R"("schema": {}, "dspIntegrated": 0)", "member \"dspIntegrated\" expected a boolean"},
        {R"("schema": {}, "mutableDefaultConfig": null)", "member \"mutableDefaultConfig\" expected"},
        {R"("schema": {}, "preserveNonUser": "x")", "member \"preserveNonUser\" expected"},
        {R"("schema": {}, "noRestore": 2)", "member \"noRestore\" expected 0 or 1, found 2"},
        {R"("schema": {}, "noRestore": true)", "member \"noRestore\" expected 0 or 1"},
        {R"("schema": {}, "excludedInstances": "root")", "member \"excludedInstances\" expected"},
        {R"("schema": {}, "solutionUserInstances": [1])", "member \"solutionUserInstances\" expected"},
        {R"("schema": {}, "smartnic": {})", "member \"smartnic\" expected"},
        {R"("schema": {}, "smartnic": {"schema": "both"})", "member \"smartnic\" expected"},
        {R"("schema": {}, "file": {})", "member \"file\" is for component"},
        {R"("schema": {}, "dataFile": "yes")", "member \"dataFile\" expected a boolean"},
        {R"("schema": {}, "singelton": false)", "member \"singelton\" is unknown"},
        {R"("schema": {}, "schema": {})", "member \"schema\" stands twice"},
        {"", "member \"schema\" is missing"},
        {R"("dataFile": false)", "member \"schema\" is missing"},
    };
    for (const Case& one : cases) {
        EXPECT_THAT(Refusal(Element(one.members)),
                    testing::AllOf(StartsWith("Schema element nimb/g/k: "), HasSubstr(one.refusal)))
            << one.members;
    }
}

TEST_F(SchemaElementTest, AFileMustSayItsClassAndPathInTheirForm)
{
    for (const char* file : {R"({"enabled": 1})", R"({"persistence": "forever"})", R"({"path": "etc/hosts"})",
                             R"({"path": ""})", R"({"mode": "vital"})", "[]"}) {
        const std::string json =
            R"({"component": "files", "group": "g", "key": "k", "file": )" + std::string(file) + "}";
        EXPECT_THAT(Refusal(json, "files"), HasSubstr("member \"file\" expected")) << file;
    }
}

TEST_F(SchemaElementTest, AnUnusableSchemaIsRefusedWithItsProblem)
{
    EXPECT_EQ(Refusal(Element(R"("schema": {"properties": {"a": {"$ref": "#/definitions/x"}}})")),
              "Schema element nimb/g/k: member \"schema\" is unusable at \"/properties/a/$ref\": the reference "
              "\"#/definitions/x\" leads to no schema of this document");
    EXPECT_THAT(Refusal(Element(R"("schema": {"$ref": "#"})")), HasSubstr("leads back to itself"));
    EXPECT_THAT(Refusal(Element(R"("schema": {"pattern": "("})")), HasSubstr("does not compile"));
    EXPECT_THAT(Refusal(Element(R"("schema": {"properties": {"a": {"vital": "yes"}}})")),
                HasSubstr("at \"/properties/a/vital\": expected a boolean"));
}

TEST_F(SchemaElementTest, AnObjectOfManyInstancesNeedsOneIdentifyingString)
{
    const std::string many = R"("singleton": false, "schema": {"properties": )";
    EXPECT_EQ(Refusal(Element(many + R"({"a": {"type": "string", "instanceId": true}, "b": {"instanceId": false}}})")),
              "");
    EXPECT_THAT(Refusal(Element(many + R"({"a": {"type": "string"}}})")), HasSubstr("marks no property"));
    EXPECT_THAT(Refusal(Element(R"("singleton": false, "schema": {"type": "string"})")),
                HasSubstr("marks no property"));
    EXPECT_THAT(Refusal(Element(many + R"({"a": {"type": "integer", "instanceId": true}}})")),
                HasSubstr("\"a\" with \"instanceId\", whose type is not \"string\""));
    EXPECT_THAT(Refusal(Element(many + R"({"a": {"type": "string", "instanceId": true},
        "b": {"type": "string", "instanceId": true}}})")),
                HasSubstr("marks more than one property"));
}

TEST_F(SchemaElementTest, AnElementIsRegisteredUnderItsOwnNameOnly)
{
    EXPECT_THAT(Refusal(Element(R"("schema": {})"), "nimb", "other"), HasSubstr("member \"group\" does not name"));
    EXPECT_THAT(Refusal(Element(R"("schema": {})"), "other"), HasSubstr("member \"component\" does not name"));
    EXPECT_THAT(Refusal(R"({"component": "nimb", "group": "g", "schema": {}})"), HasSubstr("member \"key\""));
    EXPECT_THAT(Refusal(R"({"component": "nimb", "group": "", "key": "k", "schema": {}})", "nimb", ""),
                HasSubstr("member \"group\" expected a string that is not empty"));
}

TEST_F(SchemaElementTest, ANameWithANulIsRefused)
{
    const std::string nul(1, '\0');
    EXPECT_THAT(Refusal(R"({"component": "a\u0000b", "group": "g", "key": "k", "schema": {}})", "a" + nul + "b"),
                HasSubstr("member \"component\" expected a string that is not empty and holds no NUL"));
    EXPECT_THAT(Refusal(R"({"component": "nimb", "group": "g\u0000", "key": "k", "schema": {}})", "nimb", "g" + nul),
                HasSubstr("member \"group\" expected"));
    EXPECT_THAT(Refusal(R"({"component": "nimb", "group": "g", "key": "\u0000k", "schema": {}})"),
                HasSubstr("member \"key\" expected"));
}

TEST_F(SchemaElementTest, TheDeepestSchemaThatIsTakenWorksInAWholeDocument)
{
    const auto chain = [](int length) {
        std::string definitions = R"("0": {"type": "string"})";
        for (int i = 1; i <= length; ++i) {
            const std::string next = std::to_string(i - 1);
            definitions += ", \"" + std::to_string(i) + R"(": {"$ref": "#/definitions/)" + next + "\"}";
        }
        return Element(R"("singleton": false, "mutableDefaultConfig": true, "schema": {"properties": {"id": {"type":
            "string", "instanceId": true}, "a": {"$ref": "#/definitions/)" +
                       std::to_string(length) + R"("}}, "definitions": {)" + definitions + "}}");
    };
    int longest = 100;
    while (Refusal(chain(longest + 1)).empty()) {
        ++longest;
    }
    EXPECT_THAT(Refusal(chain(longest + 1)), HasSubstr("nested too deeply"));
    RemoveUndeclaredSchemas({}, run_);
    JsonDocument desired, schema, scratch, report;
    ASSERT_TRUE(
        ConfigStoreDocument::ParseText(R"({"profile": {"nimb": {"g": {"k": [{"id": "x", "a": "y"}]}}}})", desired));
    GenerateSchemaDocument(desired, SchemaStore::GetStore(false)->GetCache(), schema, scratch);
    JsonValidator::Validate(schema, desired, report, {0, 8}, "");
    EXPECT_TRUE(report.Empty());
}

TEST_F(SchemaElementTest, ATextThatIsNoObjectOrTooDeepIsRefused)
{
    EXPECT_THAT(Refusal("{"), StartsWith("Schema element nimb/g/k is no JSON object: "));
    EXPECT_THAT(Refusal("[]"), StartsWith("Schema element nimb/g/k is no JSON object"));
    EXPECT_THAT(Refusal(std::string(1 << 20, '[')), StartsWith("Schema element nimb/g/k is no JSON object: "));
}

TEST_F(SchemaElementTest, ARefusedElementLeavesWhatWasRegisteredUnderItsName)
{
    ASSERT_EQ(Refusal(Element(R"("schema": {}, "version": "good")")), "");
    EXPECT_NE(Refusal(Element(R"("schema": {"pattern": "("}, "version": "bad")")), "");
    EXPECT_EQ(run_->GetSchema("nimb", "g", "k")->GetVersion(), "good");
}

TEST_F(SchemaElementTest, EverySoundSchemaFileOfTheSampleHostIsTaken)
{
    int files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(SOURCE_DIR "/examples/host")) {
        const bool isBroken = entry.path().string().find("/overlays/broken/") != std::string::npos;
        if (entry.path().parent_path().filename() == "schemas" && !isBroken) {
            RegisterFile(entry.path());
            ++files;
        }
    }
    EXPECT_GT(files, 10);
}
