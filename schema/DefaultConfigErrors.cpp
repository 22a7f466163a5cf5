#include "DefaultConfigErrors.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "CSLogger.h"
#include "ConfigStoreDocument.h"
#include "HostUtil.h"
#include "StorePaths.h"

namespace NimbConfigStore
{
namespace
{
std::string ErrorFile(const std::string& name)
{
    return DEFAULT_CONFIG_ERRORS + name;
}

JsonValue TextValue(const std::string& text, JsonAllocator& allocator)
{
    return JsonValue(text.c_str(), static_cast<rapidjson::SizeType>(text.size()), allocator);
}

constexpr auto REGULAR = std::filesystem::file_type::regular;

void RemoveFile(const std::string& path)
{
    if (unlink(HostPathNoFollow(path).c_str()) != 0 && errno != ENOENT) {
        CSLogger::Log(CSLogger::WARNING, "Failed to remove %s: %s", path.c_str(), std::strerror(errno));
    }
}

int ReplaceFile(const std::string& path, const std::string& content)
{
    const int failure = HostMakeFolders(std::filesystem::path(path).parent_path().string());
    return failure != 0 ? failure : HostReplaceFile(path, content);
}
}  // namespace

DefaultConfigErrors::DefaultConfigErrors() : document_(rapidjson::kObjectType)
{
    document_.AddMember("errors", JsonValue(rapidjson::kArrayType), document_.GetAllocator());
}

void DefaultConfigErrors::Add(const NimbSchemaStore::SchemaObjectId& id, const std::string& identifier,
                              const std::string& error)
{
    JsonAllocator& allocator = document_.GetAllocator();
    JsonValue entry(rapidjson::kObjectType);
    entry.AddMember("component", TextValue(id.component, allocator), allocator);
    entry.AddMember("group", TextValue(id.group, allocator), allocator);
    entry.AddMember("key", TextValue(id.name, allocator), allocator);
    entry.AddMember("identifier", TextValue(identifier, allocator), allocator);
    entry.AddMember("error", TextValue(error, allocator), allocator);
    document_["errors"].PushBack(entry, allocator);
}

bool DefaultConfigErrors::Empty() const
{
    return document_["errors"].Empty();
}

void DefaultConfigErrors::Write(const std::string& name) const
{
    const std::string path = ErrorFile(name);
    CSLogger::Log(CSLogger::ERROR, "Creating default config error file %s", path.c_str());
    std::string text;
    ConfigStoreDocument::SerializeValue(document_, text);
    const int failure = ReplaceFile(path, text);
    if (failure != 0) {
        CSLogger::Log(CSLogger::ERROR, "Failed to write %s: %s", path.c_str(), std::strerror(failure));
    }
}

void RemoveDefaultConfigErrors()
{
    const std::filesystem::path prefix(DEFAULT_CONFIG_ERRORS);
    const std::string folder = prefix.parent_path().string();
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(HostPath(folder), failure), end; !failure && entry != end;
         entry.increment(failure)) {
        const std::string name = entry->path().filename().string();
        std::error_code unknown;
        if (name.starts_with(prefix.filename().string()) && entry->symlink_status(unknown).type() == REGULAR) {
            RemoveFile(folder + "/" + name);
        }
    }
    if (failure && failure != std::errc::no_such_file_or_directory) {
        CSLogger::Log(CSLogger::WARNING, "Failed to read %s: %s", folder.c_str(), failure.message().c_str());
    }
}
}  // namespace NimbConfigStore
