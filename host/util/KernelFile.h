#pragma once

#include <optional>
#include <string>
#include <vector>

/// The text of a file of /proc or /sys, cut after @p limit bytes. Nothing when it cannot be read: what it tells about
/// may be gone by the time that it is read.
std::optional<std::string> ReadKernelFile(const std::string& path, std::size_t limit = std::string::npos);

/// The rest of an open file, or its next @p limit bytes; nothing, and errno, when it cannot be read.
std::optional<std::string> ReadToEnd(int descriptor, std::size_t limit = std::string::npos);

/// True when there is a folder of that name in /proc or /sys.
bool IsKernelFolder(const std::string& path);

/// The names in a folder of /proc or /sys; none when it cannot be read.
std::vector<std::string> ListKernelFolder(const std::string& path);
