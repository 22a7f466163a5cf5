#include "FilesWithoutSchema.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "CSLogger.h"
#include "Files.h"
#include "HostUtil.h"
#include "NimbConfigStore.h"
#include "StorePaths.h"

namespace NimbConfigStore
{
namespace
{
std::vector<std::string> ReadWords(const char* path)
{
    const std::string realPath = HostPath(path);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(realPath, ignored)) {  // opening a pipe would wait for its other end
        throw std::runtime_error(std::string(path) + " is not a regular file");
    }
    std::ifstream file(realPath);
    std::vector<std::string> words;
    for (std::string word; file >> word;) {
        words.push_back(word);
    }
    if (file.bad() || !file.eof()) {
        throw std::runtime_error(std::string("cannot read ") + path);
    }
    return words;
}

std::unordered_set<std::string> FilesWithSchema()
{
    std::unordered_set<std::string> files;
    for (const auto& [persistence, paths] : GetBrevFiles()) {
        files.insert(paths.begin(), paths.end());
    }
    return files;
}

// A file that a schema declares is kept under every spelling of its path, "/etc//x.conf" and "/etc/../etc/x.conf" too.
bool HasSchema(const std::string& path, const std::unordered_set<std::string>& files)
{
    return files.contains(path) || files.contains(std::filesystem::path(path).lexically_normal());
}

std::vector<std::string> SelectFilesToRemove()
{
    const std::vector<std::string> words = ReadWords(NON_SCHEMA_FILES);
    const std::unordered_set<std::string> files = FilesWithSchema();
    std::vector<std::string> toRemove;
    for (const std::string& word : words) {
        const std::string path = "/" + word;
        if (HasSchema(path, files)) {
            CSLogger::Log(CSLogger::INFO, "[%s] file has schema.", path.c_str());
            continue;
        }
        CSLogger::Log(CSLogger::INFO, "[%s] file does not have schema.", path.c_str());
        toRemove.push_back(path);
    }
    return toRemove;
}
}  // namespace

void RemoveFilesWithoutSchema()
{
    try {
        if (!FileExists(NON_SCHEMA_FILES)) {
            CSLogger::Log(CSLogger::INFO, "Upgrade delete file not found.");
            return;
        }
        for (const std::string& path : SelectFilesToRemove()) {
            if (FileExists(path.c_str())) {
                (void)RemoveFile(path.c_str());  // logged there
            }
        }
    } catch (const std::exception& failure) {
        CSLogger::Log(CSLogger::ERROR, "Failed to get file schemas: %s", failure.what());
    }
}
}  // namespace NimbConfigStore
