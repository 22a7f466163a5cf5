#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <random>

#include "ConfigStoreDocument.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "SampleHost.h"

using namespace NimbConfigStore;
using NimbSchemaStore::SchemaObjectCachePtr;
using NimbSchemaStore::SchemaObjectId;

// Desired documents made of the sample host's own defaults, whole or with one thing broken: another implementation of
// JSON Schema must say the same about each of them.

namespace
{
constexpr int DOCUMENTS = 10000;

JsonValue Text(const std::string& text, JsonAllocator& allocator)
{
    return JsonValue(text.c_str(), static_cast<rapidjson::SizeType>(text.size()), allocator);
}

JsonValue& Member(JsonValue& object, const char* name, JsonAllocator& allocator)
{
    if (!object.HasMember(name)) {
        object.AddMember(Text(name, allocator), JsonValue(rapidjson::kObjectType), allocator);
    }
    return object[name];
}

class DocumentMaker
{
public:
    /// @param elements  of default configuration files.
    explicit DocumentMaker(std::vector<JsonDocument> elements) : elements_(std::move(elements)) {}

    JsonDocument Make()
    {
        JsonDocument document(rapidjson::kObjectType);
        JsonAllocator& allocator = document.GetAllocator();
        JsonValue& root = Below(2) == 0 ? Member(document, "profile", allocator) : document;
        for (int objects = Below(3); objects >= 0; --objects) {
            const JsonDocument& element =
                elements_[static_cast<std::size_t>(Below(static_cast<int>(elements_.size())))];
            JsonValue& group = Member(Member(root, element["component"].GetString(), allocator),
                                      element["group"].GetString(), allocator);
            Member(group, element["key"].GetString(), allocator).CopyFrom(element["config"], allocator);
        }
        if (Below(2) == 0) {
            Break(AnyIn(root), allocator);
        }
        return document;
    }

private:
    int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    /// The value itself, or any value inside it.
    JsonValue& AnyIn(JsonValue& value)
    {
        if (value.IsObject() && !value.ObjectEmpty() && Below(6) != 0) {
            return AnyIn((value.MemberBegin() + Below(static_cast<int>(value.MemberCount())))->value);
        }
        if (value.IsArray() && !value.Empty() && Below(6) != 0) {
            return AnyIn(value[static_cast<rapidjson::SizeType>(Below(static_cast<int>(value.Size())))]);
        }
        return value;
    }

    void Break(JsonValue& value, JsonAllocator& allocator)
    {
        if (value.IsObject() && Below(3) != 0) {
            BreakObject(value, allocator);
        } else if (value.IsArray() && Below(3) != 0) {
            BreakArray(value, allocator);
        } else {
            Replace(value, allocator);
        }
    }

    void BreakObject(JsonValue& object, JsonAllocator& allocator)
    {
        if (Below(2) == 0 || object.ObjectEmpty()) {
            object.AddMember("unheard_of", 1, allocator);
        } else {
            object.RemoveMember(object.MemberBegin() + Below(static_cast<int>(object.MemberCount())));
        }
    }

    void BreakArray(JsonValue& array, JsonAllocator& allocator)
    {
        switch (array.Empty() ? 0 : Below(3)) {
            case 0:
                array.PushBack(JsonValue(), allocator);
                break;
            case 1:
                array.PushBack(JsonValue(array[0], allocator), allocator);
                break;
            default:
                array.Clear();
        }
    }

    void Replace(JsonValue& value, JsonAllocator& allocator)
    {
        const std::string old = value.IsString() ? value.GetString() : "text";
        switch (Below(9)) {
            case 0:
                value.SetNull();
                break;
            case 1:
                value.SetBool(Below(2) == 0);
                break;
            case 2:
                value.SetInt(Below(3) - 1);
                break;
            case 3:
                value.SetInt(1'000'000 * Below(1000));
                break;
            case 4:
                value.SetDouble(2.5);
                break;
            case 5:
                value.SetString("");
                break;
            case 6:
                value.SetString("DELETE_DEFAULT");
                break;
            case 7:
                value = Text(old + std::string(static_cast<std::size_t>(Below(400)), 'a'), allocator);
                break;
            default:
                value = Text(old + " !", allocator);
        }
    }

    std::vector<JsonDocument> elements_;
    std::mt19937 random_{20240229};
};

void WriteSchemas(std::ofstream& file, const SchemaObjectCachePtr& cache)
{
    JsonDocument schemas(rapidjson::kObjectType);
    JsonAllocator& allocator = schemas.GetAllocator();
    for (const SchemaObjectId& id : cache->GetIds()) {
        const auto object = cache->Get(id);
        JsonValue entry(rapidjson::kObjectType);
        entry.AddMember("schema", JsonValue(object->GetSchema(), allocator), allocator);
        entry.AddMember("mutable", object->HasMutableDefaultConfig(), allocator);
        schemas.AddMember(Text(id.toString(), allocator), entry, allocator);
    }
    std::string text;
    ConfigStoreDocument::SerializeValue(schemas, text);
    file << text << "\n";
}

/// What the other implementation says about each document of the file; empty when it fails.
std::vector<std::string> OtherVerdicts(const std::string& file)
{
    const std::string command = std::string("'") + SOURCE_DIR + "/tests/examples/validate_documents.py' '" + file + "'";
    std::FILE* output = popen(command.c_str(), "r");
    std::vector<std::string> verdicts;
    std::array<char, 64> line;
    while (output != nullptr && std::fgets(line.data(), line.size(), output) != nullptr) {
        verdicts.emplace_back(line.data());
        verdicts.back().pop_back();
    }
    return output != nullptr && pclose(output) == 0 ? verdicts : std::vector<std::string>();
}
}  // namespace

class GeneratedDocumentsTest : public SampleHostTest
{};

TEST_F(GeneratedDocumentsTest, AnIndependentValidatorSaysTheSameOfTenThousand)
{
    ASSERT_TRUE(ProcessSchemas({}));
    const SchemaObjectCachePtr cache = NimbSchemaStore::SchemaStore::GetStore(false)->GetCache();
    const std::string path = Host().Real("/documents.jsonl");
    std::ofstream file(path);
    WriteSchemas(file, cache);
    DocumentMaker maker(Elements("/etc/talvor/default-config"));
    std::vector<std::string> documents(DOCUMENTS);
    std::vector<std::string> verdicts;
    for (std::string& text : documents) {
        JsonDocument document = maker.Make();
        ConfigStoreDocument::SerializeValue(document, text);
        file << text << "\n";
        verdicts.emplace_back(ValidateDesiredDocument(document, cache) ? "valid" : "invalid");
    }
    file.close();
    const std::vector<std::string> others = OtherVerdicts(path);
    ASSERT_EQ(others.size(), documents.size()) << "python3-jsonschema is not installed?";
    for (std::size_t i = 0; i < documents.size(); ++i) {
        EXPECT_EQ(verdicts[i], others[i]) << documents[i];
    }
    const auto valid = std::count(verdicts.begin(), verdicts.end(), "valid");
    EXPECT_GT(valid, DOCUMENTS / 3);
    EXPECT_LT(valid, DOCUMENTS * 2 / 3);
}
