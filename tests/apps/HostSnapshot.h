#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

/// Every file of a host with its content, and every folder and link, but for the log, which is there to be added to.
inline std::map<std::string, std::string> SnapshotOf(const std::string& root)
{
    namespace fs = std::filesystem;
    std::map<std::string, std::string> snapshot;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string path = entry.path().string().substr(root.size());
        if (path.starts_with("/var/log/talvor/")) {
            continue;
        }
        std::string content = "folder or other";
        if (entry.is_symlink()) {
            content = "link to " + fs::read_symlink(entry.path()).string();
        } else if (entry.is_regular_file()) {
            std::ifstream stream(entry.path(), std::ios::binary);
            content.assign(std::istreambuf_iterator<char>(stream), {});
        }
        snapshot[path] = content;
    }
    return snapshot;
}

/// The paths that are not the same in both.
inline std::string Differences(const std::map<std::string, std::string>& before,
                               const std::map<std::string, std::string>& after)
{
    std::string paths;
    for (const auto& [path, content] : before) {
        const auto found = after.find(path);
        paths += found == after.end() || found->second != content ? path + " " : "";
    }
    for (const auto& [path, content] : after) {
        paths += before.contains(path) ? "" : path + " ";
    }
    return paths;
}
