// What management pays for validating a desired document and for staging it. Beside validation, RapidJSON's own
// validator, called for each key over schemas that are compiled already; beside staging, the least that it can cost:
// one parse, one serialisation and one insert a row.
#include <rapidjson/document.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Comparison.h"
#include "ConfigStoreDocument.h"
#include "NimbConfigStore.h"
#include "NimbSchemaStore.h"
#include "RawDatabase.h"
#include "StagingHost.h"
#include "StoreStatements.h"

namespace
{
using NimbConfigStore::JsonDocument;
using NimbConfigStore::JsonValue;

void Require(bool held, const char* what)
{
    if (!held) {
        throw std::runtime_error(what);
    }
}

template <class Visit>
void ForEachKey(const JsonValue& document, Visit&& visit)
{
    for (const auto& component : document.GetObject()) {
        for (const auto& group : component.value.GetObject()) {
            for (const auto& key : group.value.GetObject()) {
                visit(component.name, group.name, key.name, key.value);
            }
        }
    }
}

// ---- Validation ---------------------------------------------------------------------------------------------------

using CompiledSchemas = std::vector<std::unique_ptr<rapidjson::SchemaDocument>>;

/// One for each key, in the document's order.
CompiledSchemas CompileSchemas()
{
    CompiledSchemas schemas;
    for (int key = 0; key < STAGING_KEYS; ++key) {
        const bool isSingleton = key % 10 == 0;
        const std::string text =
            isSingleton ? StagingSchema(key) : R"({"type": "array", "items": )" + StagingSchema(key) + "}";
        JsonDocument schema;
        Require(ConfigStoreDocument::ParseText(text, schema), "unparsable");
        schemas.push_back(std::make_unique<rapidjson::SchemaDocument>(schema));
    }
    return schemas;
}

void ValidateRaw(const JsonDocument& document, const CompiledSchemas& schemas)
{
    std::size_t key = 0;
    ForEachKey(document, [&](const auto&, const auto&, const auto&, const JsonValue& value) {
        rapidjson::SchemaValidator validator(*schemas[key++]);
        Require(value.Accept(validator), "refused");
    });
}

void Validation(benchmark::State& state)
{
    TestHost host;
    FillStagingHost(host);
    const int objects = static_cast<int>(state.range(0));
    JsonDocument document;
    Require(ConfigStoreDocument::ParseText(StagingDocument(objects), document), "unparsable");
    const CompiledSchemas schemas = CompileSchemas();
    const auto cache = NimbSchemaStore::SchemaStore::GetStore(false)->GetCache();
    const auto validate = [&] { Require(NimbConfigStore::ValidateDesiredDocument(document, cache), "refused"); };
    Compare(state, {"validation", objects, [&] { return Measured(validate); },
                    [&] { return Measured([&] { ValidateRaw(document, schemas); }); }});
}

// ---- Staging ------------------------------------------------------------------------------------------------------

std::string_view Text(const JsonValue& value)
{
    return {value.GetString(), value.GetStringLength()};
}

void StageWithTheLibrary(const std::string& text)
{
    JsonDocument document;
    Require(ConfigStoreDocument::ParseText(text, document), "unparsable");
    NimbConfigStore::SetDesiredUserConfig(document);
}

void StageRaw(const std::string& text, const std::string& file)
{
    rapidjson::Document document;
    Require(!document.Parse(text.c_str(), text.size()).HasParseError(), "unparsable");
    RawDatabase store(file);
    store.Run("BEGIN IMMEDIATE");
    store.Run(NimbConfigStore::Statements::EMPTY_STAGING);
    store.Prepare(NimbConfigStore::Statements::STAGE_INSTANCE);
    rapidjson::StringBuffer json;
    ForEachKey(document, [&](const auto& component, const auto& group, const auto& key, const JsonValue& value) {
        const auto stage = [&](const JsonValue& instance) {
            json.Clear();
            rapidjson::Writer<rapidjson::StringBuffer> writer(json);
            instance.Accept(writer);
            store.RunWith({Text(instance["id"]),
                           Text(key),
                           Text(group),
                           Text(component),
                           "1.0.0_1.0",
                           {json.GetString(), json.GetSize()},
                           "SET"});
        };
        for (rapidjson::SizeType i = 0; value.IsArray() && i < value.Size(); ++i) {
            stage(value[i]);
        }
        if (value.IsObject()) {
            stage(value);
        }
    });
    store.Run("COMMIT");
}

void Staging(benchmark::State& state)
{
    TestHost host;
    FillStagingHost(host);
    const int objects = static_cast<int>(state.range(0));
    const std::string text = StagingDocument(objects);
    const std::string file = host.Real(DBStore::StorePath(DBStore::Type::ConfigStore));
    const auto measured = [&](const std::function<void()>& stage) {
        host.Sql("DELETE FROM DesiredUserConfig");
        const Sample sample = Measured(stage);
        Require(host.SqlValue("SELECT COUNT(*) FROM DesiredUserConfig") == std::to_string(objects), "rows are missing");
        return sample;
    };
    Compare(state, {"staging", objects, [&] { return measured([&] { StageWithTheLibrary(text); }); },
                    [&] { return measured([&] { StageRaw(text, file); }); }});
}
}  // namespace

int main(int argc, char** argv)
{
    for (const auto& [name, work] : {std::pair("Validation", &Validation), std::pair("Staging", &Staging)}) {
        for (const int objects : {1000, 10000, 100000}) {
            benchmark::RegisterBenchmark(name, work)
                ->Arg(objects)
                ->ArgName("objects")
                ->Iterations(objects == 100000 ? 5 : 11)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    return RunBenchmarks(argc, argv);
}
