#pragma once

#include <string>
#include <vector>

// Files and commands of the host. All paths are logical.
namespace NimbConfigStore
{
/// True when the path leads to a file of any type.
bool FileExists(const char* path);

/// Removes a file or an empty folder; a link itself, not what it leads to. Either outcome is logged.
bool RemoveFile(const char* path);

/// Starts argv[0] with the null-terminated vector @p argv, without a shell, and waits for it. True only when it ran
/// and exited with status 0; everything else is logged.
bool ExecCommand(const char** argv);

/// Removes whatever stands under @p path, never through a link; nothing there is no error.
/// @throws std::filesystem::filesystem_error naming @p path.
void RemoveTree(const std::string& path);

/// The names in a folder, in the order in which it yields them.
/// @throws std::filesystem::filesystem_error naming @p path.
std::vector<std::string> ListFolder(const std::string& path);
}  // namespace NimbConfigStore
