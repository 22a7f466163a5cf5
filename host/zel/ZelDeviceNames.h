#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <system_error>

/// The name in @p folder, a real path, of a link to the device that has the number @p device; empty when there is none.
inline std::string NameOfDevice(const std::string& folder, dev_t device)
{
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        struct stat listed = {};
        if (stat(entry->path().c_str(), &listed) == 0 && listed.st_rdev == device && device != 0) {
            return entry->path().filename().string();
        }
    }
    return "";
}
