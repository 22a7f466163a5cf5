#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

#include "CommandFiles.h"
#include "ConfigStoreDocument.h"
#include "JsonValidator.h"

using ConfigStoreCtl::Command;
using ConfigStoreCtl::Commands;
using ::testing::Contains;

namespace
{
constexpr const char* GOLDEN = "tests/apps/golden";
constexpr const char* SCHEMAS = "docs/json";

/// The commands that have a file in @p folder.
std::vector<std::string> CommandsWith(const std::string& folder, const std::string& ending)
{
    std::vector<std::string> paths;
    for (const std::string& name : NamesIn(folder, ending)) {
        const Command* command = CommandOfFile(name);
        paths.emplace_back(command != nullptr ? command->path : "no command: " + name);
    }
    return paths;
}

void Parse(const std::string& file, NimbConfigStore::JsonDocument& document)
{
    std::ifstream stream(std::string(SOURCE_DIR) + "/" + file, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(stream)), {});
    std::string reason;
    ASSERT_TRUE(ConfigStoreDocument::ParseText(text, document, &reason)) << file << ": " << reason;
}

/// The findings about a document, one line each.
std::string Findings(const std::string& schemaFile, const std::string& file)
{
    NimbConfigStore::JsonDocument schema;
    NimbConfigStore::JsonDocument document;
    NimbConfigStore::JsonDocument report;
    Parse(schemaFile, schema);
    Parse(file, document);
    JsonValidator::Validate(schema, document, report,
                            {JsonValidator::RULE_TYPES, JsonValidator::RULE_PRESENCE, JsonValidator::RULE_VALUES,
                             JsonValidator::RULE_ARRAYS, JsonValidator::RULE_MEMBERS},
                            "");
    std::string findings;
    for (const NimbConfigStore::JsonValue& finding : report.GetArray()) {
        findings += std::string(finding["field"].GetString()) + ": " + finding["error"].GetString() + "\n";
    }
    return findings;
}

std::string SchemaFile(const Command& command)
{
    return std::string(SCHEMAS) + "/" + FileStem(command) + ".schema.json";
}
}  // namespace

TEST(GoldenFiles, ShowTextAndJsonOfEveryCommand)
{
    for (const Command& command : Commands()) {
        EXPECT_THAT(CommandsWith(GOLDEN, ".txt"), Contains(std::string(command.path)));
        EXPECT_THAT(CommandsWith(GOLDEN, ".json"), Contains(std::string(command.path)));
    }
}

TEST(GoldenFiles, BelongToACommandEach)
{
    for (const std::string& name : NamesIn(GOLDEN, "")) {
        EXPECT_NE(CommandOfFile(name.substr(0, name.rfind('.'))), nullptr) << name;
    }
}

TEST(JsonSchemas, DescribeTheDocumentOfEveryCommandAndNothingElse)
{
    std::vector<std::string> stems;
    for (const Command& command : Commands()) {
        stems.push_back(FileStem(command));
    }
    EXPECT_THAT(NamesIn(SCHEMAS, ".schema.json"), ::testing::UnorderedElementsAreArray(stems));
}

TEST(JsonSchemas, AreSound)
{
    for (const Command& command : Commands()) {
        NimbConfigStore::JsonDocument schema;
        Parse(SchemaFile(command), schema);
        EXPECT_EQ(JsonValidator::CheckSchema(schema), "") << command.path;
        EXPECT_EQ(std::string(schema["title"].GetString()), "configstorectl --json " + std::string(command.path));
    }
}

TEST(JsonSchemas, AcceptEveryGoldenDocument)
{
    for (const std::string& name : NamesIn(GOLDEN, ".json")) {
        const Command* command = CommandOfFile(name);
        ASSERT_NE(command, nullptr) << name;
        EXPECT_EQ(Findings(SchemaFile(*command), std::string(GOLDEN) + "/" + name + ".json"), "") << name;
    }
}

TEST(JsonSchemas, RefuseTheDocumentOfAnotherCommand)
{
    const std::string document = std::string(GOLDEN) + "/config-list.json";
    EXPECT_NE(Findings("docs/json/boot-facts.schema.json", document), "");
    EXPECT_NE(Findings("docs/json/default-list.schema.json", document), "");
}
