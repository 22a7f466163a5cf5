#include "LoadFloor.h"

#include <libxml/parser.h>
#include <rapidjson/document.h>
#include <rapidjson/filereadstream.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdio>
#include <filesystem>
#include <memory>

#include "RawDatabase.h"
#include "StorePaths.h"
#include "StoreStatements.h"

namespace fs = std::filesystem;
using namespace NimbConfigStore;

namespace
{
std::string_view Text(const rapidjson::Value& object, const char* member)
{
    return object[member].GetString();
}

rapidjson::Document ParseFile(const fs::path& path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "re"), std::fclose);
    char buffer[65536];
    rapidjson::FileReadStream stream(file.get(), buffer, sizeof buffer);
    rapidjson::Document document;
    document.ParseStream(stream);
    return document;
}

void Restore(const TestHost& host, const char* name, const char* live)
{
    const std::string backup = host.Real(BACKUP_FOLDER) + name;
    RawDatabase(backup).Run("PRAGMA integrity_check");
    fs::copy_file(backup, host.Real(live), fs::copy_options::overwrite_existing);
}

void ParseImage(const TestHost& host)
{
    for (const char* folder : {"/var/db/nimbimg/profiles", "/var/db/nimbimg/brevs"}) {
        for (const auto& entry : fs::directory_iterator(host.Real(folder))) {
            xmlFreeDoc(xmlReadFile(entry.path().c_str(), nullptr, XML_PARSE_NONET));
        }
    }
}

void RegisterSchemas(const TestHost& host)
{
    RawDatabase store(host.Real(DBStore::StorePath(DBStore::Type::SchemaStore)));
    store.Run("BEGIN IMMEDIATE");
    store.Prepare(
        "INSERT OR REPLACE INTO ConfigSchema (Component, ConfigGroup, Name, DSPIntegrated, SchemaType, "
        "Singleton, Version, SchemaId, SchemaJson) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
    for (const auto& entry : fs::directory_iterator(host.Real(SCHEMA_FOLDER))) {
        const rapidjson::Document document = ParseFile(entry.path());
        for (const rapidjson::Value& element : document["data"].GetArray()) {
            rapidjson::StringBuffer json;
            rapidjson::Writer<rapidjson::StringBuffer> writer(json);
            element.Accept(writer);
            store.RunWith({Text(element, "component"),
                           Text(element, "group"),
                           Text(element, "key"),
                           "1",
                           element.HasMember("schemaType") ? "5" : "0",
                           "0",
                           Text(document["metadata"], "brevversion"),
                           Text(document["metadata"], "brevname"),
                           {json.GetString(), json.GetSize()}});
        }
    }
    store.Run("COMMIT");
}

void ReadSchemas(const TestHost& host)
{
    RawDatabase(host.Real(DBStore::StorePath(DBStore::Type::SchemaStore)))
        .Run(
            "SELECT Component, ConfigGroup, Name, SchemaType, MutableDefaultConfig, Singleton, Version, SchemaJson "
            "FROM ConfigSchema ORDER BY Component, ConfigGroup, Name");
}

void WriteDefaults(const TestHost& host, RawDatabase& store)
{
    store.Run("BEGIN IMMEDIATE");
    store.Run(Statements::EMPTY_DEFAULT_CONFIG);
    store.Prepare(Statements::UPSERT_DEFAULT_CONFIG);
    for (const auto& entry : fs::directory_iterator(host.Real(DEFAULT_CONFIG_FOLDER))) {
        const rapidjson::Document document = ParseFile(entry.path());
        for (const rapidjson::Value& element : document["data"].GetArray()) {
            rapidjson::StringBuffer json;
            rapidjson::Writer<rapidjson::StringBuffer> writer(json);
            element["config"][0].Accept(writer);
            store.RunWith({Text(element, "component"),
                           Text(element, "group"),
                           Text(element, "key"),
                           Text(element["config"][0], "id"),
                           {json.GetString(), json.GetSize()}});
        }
    }
    store.Run("COMMIT");
}

void Apply(const TestHost& host, RawDatabase& store)
{
    store.Run("ATTACH '" + host.Real(DBStore::StorePath(DBStore::Type::SchemaStore)) + "' AS ss");
    store.Run("BEGIN IMMEDIATE");
    store.Run(Statements::DELETE_ORPHANED_CONFIG);
    store.Run("COMMIT");
    store.Run("BEGIN IMMEDIATE");
    store.Prepare(std::string(Statements::MARK_USER_CONFIG) + "((?,?,?,?))");
    store.RunWith({"package0", "group", "object0", "kept"});
    store.Run(Statements::INSERT_STAGED);
    store.Run(Statements::UPDATE_FROM_STAGED);
    store.Run(Statements::EMPTY_STAGING_AFTER_APPLY);
    store.Run(Statements::DELETE_MARKED);
    store.Run(Statements::FOLD_DESIRED_VALUES);
    store.Run("COMMIT");
}

void WriteBootState(RawDatabase& store)
{
    for (const char* key : {"BOOT_INFO", "IS_BOOT", "BOOT_MODE", "BOOT_APPLY_RESULT"}) {
        store.Run(std::string("INSERT OR REPLACE INTO KeyValue (Key, Value) VALUES ('") + key + "', 'any')");
    }
}
}  // namespace

void RunLoadFloor(const TestHost& host)
{
    fs::remove(host.Real(CURRENT_STORE_FILE));
    Restore(host, CURRENT_STORE_NAME, CURRENT_STORE_FILE);
    Restore(host, DATAFILE_STORE_NAME, DATAFILE_STORE_FILE);
    ParseImage(host);
    RegisterSchemas(host);
    ReadSchemas(host);
    RawDatabase store(host.Real(CURRENT_STORE_FILE));
    WriteDefaults(host, store);
    store.Run("BEGIN IMMEDIATE");
    store.Run(Statements::CLEAR_AUTO_CONFIG);
    store.Run(Statements::DELETE_EMPTY_ROWS);
    store.Run("COMMIT");
    Apply(host, store);
    WriteBootState(store);
}
