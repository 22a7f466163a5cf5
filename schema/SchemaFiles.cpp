#include "SchemaFiles.h"

#include <dirent.h>

#include <array>
#include <stdexcept>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "Errors.h"
#include "HostUtil.h"
#include "JsonText.h"
#include "ZubEvents.h"

namespace NimbConfigStore
{
namespace
{
constexpr std::string_view SUFFIX = ".json";

struct CloseDirectory
{
    void operator()(DIR* directory) const { closedir(directory); }
};
using DirectoryHandle = std::unique_ptr<DIR, CloseDirectory>;

bool IsSchemaFileName(std::string_view name)
{
    return name.size() > SUFFIX.size() && name.substr(name.size() - SUFFIX.size()) == SUFFIX;
}

bool HasIdentity(const JsonDocument& document)
{
    using ConfigStoreDocument::ValueExists;
    return ValueExists(document, "data") && ValueExists(document, "metadata") &&
           ValueExists(document["metadata"], "brevname") && ValueExists(document["metadata"], "brevversion");
}

std::string PathOf(const std::string& directory, const std::string& file)
{
    return directory + "/" + file;
}

SchemaIdMap MapIdentifiers(const std::list<SchemaFile>& files)
{
    SchemaIdMap map;
    for (const SchemaFile& file : files) {
        if (!file.schemaId.empty()) {
            map[file.path] = file.schemaId;
        }
    }
    return map;
}

// Versions are read by hand: a regular expression takes a hundred times as long, for every file of a host.

bool Take(std::string_view& text, char expected)
{
    const bool stands = !text.empty() && text[0] == expected;
    text.remove_prefix(stands ? 1 : 0);
    return stands;
}

/// Empty when @p text does not begin with a digit.
std::string_view TakeDigits(std::string_view& text)
{
    const std::string_view digits = text.substr(0, text.find_first_not_of("0123456789"));
    text.remove_prefix(digits.size());
    return digits;
}

/// \d+(\.\d+)+_\d+(\.\d+)*
bool IsVersion(std::string_view text)
{
    const auto takeNumbers = [&text] {
        std::size_t count = 0;
        do {
            if (TakeDigits(text).empty()) {
                return std::size_t{0};
            }
            ++count;
        } while (Take(text, '.'));
        return count;
    };
    return takeNumbers() >= 2 && Take(text, '_') && takeNumbers() >= 1 && text.empty();
}

using VersionTexts = std::array<std::string_view, 5>;

/// The first (\d+)\.(\d+)\.(\d+)_(\d+)\.(\d+) that stands behind a hyphen.
std::optional<VersionTexts> FirstVersion(std::string_view id)
{
    constexpr std::string_view SEPARATORS = "-.._.";
    for (std::size_t hyphen = id.find('-'); hyphen != std::string_view::npos; hyphen = id.find('-', hyphen + 1)) {
        std::string_view rest = id.substr(hyphen);
        VersionTexts texts;
        std::size_t taken = 0;
        while (taken < texts.size() && Take(rest, SEPARATORS[taken]) && !(texts[taken] = TakeDigits(rest)).empty()) {
            ++taken;
        }
        if (taken == texts.size()) {
            return texts;
        }
    }
    return std::nullopt;
}

std::list<SchemaFile> ReadSchemaFiles(const std::list<std::string>& names, const std::string& directory)
{
    std::list<SchemaFile> files;
    for (const std::string& name : names) {
        files.push_back(ReadSchemaFile(name, directory));
    }
    return files;
}

std::list<SchemaFile> TakeUnidentified(std::list<SchemaFile>& files)
{
    std::list<SchemaFile> unidentified;
    for (auto file = files.begin(); file != files.end();) {
        const auto next = std::next(file);
        if (file->schemaId.empty()) {
            unidentified.splice(unidentified.end(), files, file);
        }
        file = next;
    }
    return unidentified;
}

void MarkSuperseded(std::list<SchemaFile>& newestFirst)
{
    std::unordered_set<std::string> names;
    for (SchemaFile& file : newestFirst) {
        const std::string name = ExtractSchemaNameFromSchemaId(file.schemaId);
        // Identifiers without a name are comparable with nothing: each of them stands for itself.
        file.superseded = !name.empty() && !names.insert(name).second;
        if (file.superseded) {
            file.document.reset();
        }
    }
}
}  // namespace

struct VersionCompare::Files
{
    std::string directory;
    SchemaIdMap ids;
    std::map<std::string, SchemaVersion> versions;  // filled as files are compared
};

std::optional<std::list<std::string>> FindSchemaFiles(const std::string& directory)
{
    const DirectoryHandle handle(opendir(HostPath(directory).c_str()));
    if (handle == nullptr) {
        return std::nullopt;
    }
    std::list<std::string> files;
    while (const dirent* entry = readdir(handle.get())) {
        if (IsSchemaFileName(entry->d_name)) {
            files.emplace_back(entry->d_name);
        } else {
            CSLogger::Log(CSLogger::INFO, "[SchemaProcessor] Skip processing non-json file %s", entry->d_name);
        }
    }
    return files;
}

std::list<std::string> GetSchemaFiles(const std::string& directory)
{
    return FindSchemaFiles(directory).value_or(std::list<std::string>());
}

std::string GetSchemaIDfromFile(const std::string& path, const JsonDocument& document)
{
    if (!HasIdentity(document)) {
        DumpZub(ZUB_SCHEMA_METADATA_ERROR, 1, path.c_str());
        CSLogger::Log(CSLogger::ERROR, "[SchemaProcessor] Invalid format in schema file %s", path.c_str());
        return "";
    }
    const JsonValue& metadata = document["metadata"];
    return JsonText(metadata["brevname"]) + "-" + JsonText(metadata["brevversion"]);
}

SchemaIdMap GenerateSchemaIdMap(const std::list<std::string>& files, const std::string& directory)
{
    return MapIdentifiers(ReadSchemaFiles(files, directory));
}

std::string ExtractSchemaNameFromSchemaId(const std::string& id)
{
    // A version holds no hyphen, so that only the last one can stand before it.
    const std::size_t hyphen = id.rfind('-');
    if (hyphen == std::string::npos) {
        return "";
    }
    const std::string name = id.substr(0, hyphen);
    return IsVersion(std::string_view(id).substr(hyphen + 1)) && name.find_first_of("\r\n") == std::string::npos ? name
                                                                                                                 : "";
}

SchemaVersion ExtractVersion(const SchemaIdMap& map, const std::string& file, const std::string& directory)
{
    const std::string& id = map.at(PathOf(directory, file));
    const std::optional<VersionTexts> texts = FirstVersion(id);
    if (!texts) {
        return {};
    }
    const auto number = [&texts](std::size_t index) { return std::stoi(std::string((*texts)[index])); };
    try {
        return {number(0), number(1), number(2), number(3), number(4)};
    } catch (const std::out_of_range&) {
        throw std::out_of_range("stoi: " + PathOf(directory, file));
    }
}

VersionCompare::VersionCompare(std::string directory, SchemaIdMap map)
    : files_(std::make_shared<Files>(Files{std::move(directory), std::move(map), {}}))
{}

const SchemaVersion& VersionCompare::VersionOf(const std::string& file) const
{
    const auto known = files_->versions.find(file);
    if (known != files_->versions.end()) {
        return known->second;
    }
    return files_->versions[file] = ExtractVersion(files_->ids, file, files_->directory);
}

bool VersionCompare::operator()(const std::string& a, const std::string& b) const
{
    return VersionOf(a) > VersionOf(b);
}

SchemaFile ReadSchemaFile(const std::string& name, const std::string& directory)
{
    SchemaFile file{name, PathOf(directory, name), "", nullptr};
    file.document = CreateDocumentFromFile(file.path);
    try {
        file.schemaId = GetSchemaIDfromFile(file.path, *file.document->document);
    } catch (const ConfigStoreException& error) {
        const std::string text = Format("%s in %s", error.what(), file.path.c_str());
        throw ConfigStoreException(error.code(), text.c_str());
    }
    return file;
}

std::list<SchemaFile> OrderSchemaFiles(const std::list<std::string>& names, const std::string& directory,
                                       bool versioning)
{
    if (!versioning) {
        std::list<SchemaFile> files;
        for (const std::string& name : names) {
            files.push_back({name, PathOf(directory, name), "", nullptr});
        }
        return files;
    }
    std::list<SchemaFile> files = ReadSchemaFiles(names, directory);
    std::list<SchemaFile> unidentified = TakeUnidentified(files);
    const VersionCompare newer(directory, MapIdentifiers(files));
    files.sort([&newer](const SchemaFile& a, const SchemaFile& b) { return newer(a.name, b.name); });
    MarkSuperseded(files);
    files.splice(files.end(), unidentified);
    return files;
}

void LogSuperseded(const SchemaFile& file)
{
    CSLogger::Log(CSLogger::INFO, "Skipping schema file '%s' since latest version already processed.",
                  file.name.c_str());
}
}  // namespace NimbConfigStore
