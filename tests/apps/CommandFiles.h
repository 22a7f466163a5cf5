#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "CommandTable.h"

/// The files about commands: named for the command's words, and what else tells them apart.
inline std::string FileStem(const ConfigStoreCtl::Command& command)
{
    std::string stem = command.path;
    std::replace(stem.begin(), stem.end(), ' ', '-');
    return stem;
}

/// The command that a file's name begins with, the longest when there are several; null when there is none.
inline const ConfigStoreCtl::Command* CommandOfFile(const std::string& name)
{
    const ConfigStoreCtl::Command* found = nullptr;
    for (const ConfigStoreCtl::Command& command : ConfigStoreCtl::Commands()) {
        const std::string stem = FileStem(command);
        const bool matches = name == stem || name.starts_with(stem + "-");
        if (matches && (found == nullptr || FileStem(*found).size() < stem.size())) {
            found = &command;
        }
    }
    return found;
}

/// The names in @p folder of the tree that end in @p ending, without that, in order.
inline std::vector<std::string> NamesIn(const std::string& folder, const std::string& ending)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(std::string(SOURCE_DIR) + "/" + folder)) {
        const std::string name = entry.path().filename().string();
        if (name.ends_with(ending)) {
            names.push_back(name.substr(0, name.size() - ending.size()));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}
