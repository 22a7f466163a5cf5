#include "KernelFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>

#include "FileHandle.h"
#include "HostUtil.h"

std::optional<std::string> ReadKernelFile(const std::string& path, std::size_t limit)
{
    const FileHandle file(HostOpenRegular(path));
    return file.IsOpen() ? ReadToEnd(file.Get(), limit) : std::nullopt;
}

std::optional<std::string> ReadToEnd(int descriptor, std::size_t limit)
{
    std::string text;
    std::array<char, 65536> piece;
    while (text.size() < limit) {
        const ssize_t length = read(descriptor, piece.data(), std::min(piece.size(), limit - text.size()));
        if (length == 0) {
            break;
        }
        if (length < 0 && errno != EINTR) {
            return std::nullopt;
        }
        text.append(piece.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    }
    return text;
}

bool IsKernelFolder(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_directory(HostPath(path), error);
}

std::vector<std::string> ListKernelFolder(const std::string& path)
{
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(HostPath(path), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    return names;
}
