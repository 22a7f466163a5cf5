#pragma once

#include <optional>
#include <string>
#include <vector>

/// The whole text of a file of /proc or /sys, of whatever length. Nothing when it cannot be read: what it tells about
/// may be gone by the time that it is read.
std::optional<std::string> ReadKernelFile(const std::string& path);

/// The rest of an open file; nothing, and errno, when it cannot be read.
std::optional<std::string> ReadToEnd(int descriptor);

/// The names in a folder of /proc or /sys; none when it cannot be read.
std::vector<std::string> ListKernelFolder(const std::string& path);
