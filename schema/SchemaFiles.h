#pragma once

#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>

#include "Json.h"
#include "NimbConfigStore.h"

// Finding the files of a schema directory (schemas, default configuration) and ordering them newest first.
namespace NimbConfigStore
{
/// Version of a schema identifier NAME-a.b.c_d.e.
using SchemaVersion = std::tuple<int, int, int, int, int>;

/// Full path of a file to its schema identifier; files that gave none are absent.
using SchemaIdMap = std::map<std::string, std::string>;

/// Names of the directory's entries that end in ".json", in directory order; the others are logged.
/// Empty when the directory cannot be opened.
std::list<std::string> GetSchemaFiles(const std::string& directory);

/// The same, but nothing when the directory cannot be opened.
std::optional<std::list<std::string>> FindSchemaFiles(const std::string& directory);

/// "brevname" "-" "brevversion" of a parsed file, or the empty text after an event and a log line when the file lacks
/// "data" or a member of "metadata". @throws ConfigStoreException 1082 when one of the two is not a string.
std::string GetSchemaIDfromFile(const std::string& path, const JsonDocument& document);

/// @throws InvalidArgumentException 1081 for the first file that does not parse, as GetSchemaIDfromFile otherwise.
SchemaIdMap GenerateSchemaIdMap(const std::list<std::string>& files, const std::string& directory);

/// NAME of an identifier NAME-VERSION_BUILD, empty when @p id is not of that form.
std::string ExtractSchemaNameFromSchemaId(const std::string& id);

/// All 0 when the identifier holds no version. @throws std::out_of_range for a file that is not in the map or a
/// number beyond int, whose text then names the file's path.
SchemaVersion ExtractVersion(const SchemaIdMap& map, const std::string& file, const std::string& directory);

/// Orders file names newest version first. Throws as ExtractVersion.
class VersionCompare
{
public:
    VersionCompare(std::string directory, SchemaIdMap map);
    bool operator()(const std::string& a, const std::string& b) const;

private:
    struct Files;
    const SchemaVersion& VersionOf(const std::string& file) const;

    std::shared_ptr<Files> files_;  // shared, because a list sort copies its comparison once per merge
};

/// One file of a processing run.
struct SchemaFile
{
    std::string name;
    std::string path;
    std::string schemaId;               ///< empty when the file gave none, or was not read yet
    std::shared_ptr<JsonDoc> document;  ///< null while the file was not read, and for a superseded file
    bool superseded = false;            ///< a newer file of the same schema name stands before it
};

/// Reads a file and its identifier. Throws as GenerateSchemaIdMap; the text names the file.
SchemaFile ReadSchemaFile(const std::string& name, const std::string& directory);

/// The files in the order in which a run takes them. With @p versioning: read, newest first, the superseded ones
/// marked, those without an identifier last. Without: directory order, nothing read yet.
/// @throws as GenerateSchemaIdMap and ExtractVersion.
std::list<SchemaFile> OrderSchemaFiles(const std::list<std::string>& names, const std::string& directory,
                                       bool versioning);

/// Says that a superseded file is passed over.
void LogSuperseded(const SchemaFile& file);
}  // namespace NimbConfigStore
