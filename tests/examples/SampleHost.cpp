#include "SampleHost.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "ConfigStoreDocument.h"

namespace fs = std::filesystem;
using NimbConfigStore::JsonDocument;

namespace
{
const std::string SAMPLE = "examples/host/";
const std::string SUPERSEDED[] = {"time-sync-1.5.2_1.0.json", "log-forward-2.0.4_1.0.json"};

std::string InSources(const std::string& path)
{
    return std::string(SOURCE_DIR) + "/" + path;
}

void CopyTree(const std::string& from, const std::string& to)
{
    fs::copy(InSources(from), to, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}
}  // namespace

SampleHostTest::SampleHostTest()
{
    CopyTree(SAMPLE + "root", Host().Root());
    Host().WithStores();
}

void SampleHostTest::WithOverlay(const std::string& name)
{
    const std::string overlay = SAMPLE + "overlays/" + name;
    CopyTree(overlay, Host().Root());
    std::ifstream removes(InSources(overlay + ".removes"));
    for (std::string path; std::getline(removes, path);) {
        Host().Remove("/" + path);
    }
}

std::string SampleHostTest::WithUpgradeModule()
{
    const std::string path = "/usr/lib/talvor/configmanager/upgrade/lib/host-3.3-upgrade.so";
    fs::copy_file(UPGRADE_MODULE, Host().Real(path));
    return path;
}

std::vector<std::string> SampleHostTest::Column(const std::string& sql, DBStore::Type type)
{
    std::vector<std::string> texts;
    for (const Row& row : Host().Sql(sql, type)) {
        texts.push_back(row.at(0).value_or(""));
    }
    return texts;
}

std::vector<JsonDocument> SampleHostTest::Elements(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(Host().Real(folder))) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() == ".json" && std::ranges::find(SUPERSEDED, name) == std::end(SUPERSEDED)) {
            names.push_back(name);
        }
    }
    std::ranges::sort(names);
    std::vector<JsonDocument> elements;
    for (const std::string& name : names) {
        JsonDocument file;
        EXPECT_TRUE(ConfigStoreDocument::ParseFile(folder + "/" + name, file)) << name;
        for (const auto& element : file["data"].GetArray()) {
            elements.emplace_back().CopyFrom(element, elements.back().GetAllocator());
        }
    }
    return elements;
}

std::string ObjectName(const NimbConfigStore::JsonValue& element)
{
    std::string name;
    for (const char* part : {"component", "group", "key"}) {
        name += (name.empty() ? "" : "/") + std::string(element[part].GetString());
    }
    return name;
}

std::string SourceText(const std::string& path)
{
    std::ifstream file(InSources(path), std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

JsonDocument SourceDocument(const std::string& path)
{
    JsonDocument document;
    EXPECT_TRUE(ConfigStoreDocument::ParseText(SourceText(path), document)) << path;
    return document;
}
