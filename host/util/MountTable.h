#pragma once

#include <sys/sysmacros.h>
#include <sys/types.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

inline constexpr const char* MOUNT_TABLE_FILE = "/proc/self/mountinfo";

/// A line of the mount table, names as they are: blanks and other characters that the table escapes are plain here.
struct MountEntry
{
    std::string device;  ///< "MAJOR:MINOR"
    std::string root;    ///< the folder of the file system that is seen at the mount point
    std::string point;
    std::string options;
    std::string type;
    std::string source;
    std::string superOptions;
};

/// A mount's device as stat() gives it; 0, which no device has, for a text of another form.
inline dev_t DeviceNumber(std::string_view device)
{
    unsigned int majorNumber = 0;
    unsigned int minorNumber = 0;
    const char* end = device.data() + device.size();
    const auto [colon, error] = std::from_chars(device.data(), end, majorNumber);
    if (error != std::errc() || colon == end || *colon != ':') {
        return 0;
    }
    const auto [stop, minorError] = std::from_chars(colon + 1, end, minorNumber);
    return minorError == std::errc() && stop == end ? makedev(majorNumber, minorNumber) : 0;
}

/// Turns each "\NNN" (three octal digits) into its character.
inline std::string UnescapedMountName(std::string_view escaped)
{
    const auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
    std::string name;
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        const bool isEscape = escaped[i] == '\\' && i + 3 < escaped.size() && isOctal(escaped[i + 1]) &&
                              isOctal(escaped[i + 2]) && isOctal(escaped[i + 3]);
        if (!isEscape) {
            name += escaped[i];
            continue;
        }
        name += static_cast<char>((escaped[i + 1] - '0') * 64 + (escaped[i + 2] - '0') * 8 + (escaped[i + 3] - '0'));
        i += 3;
    }
    return name;
}

/// One line "ID PARENT MAJOR:MINOR ROOT POINT OPTIONS [TAG]... - TYPE SOURCE SUPEROPTIONS". Fields are parted by one
/// blank each; an empty source is an empty field.
inline std::optional<MountEntry> ParseMountLine(std::string_view line)
{
    std::vector<std::string_view> fields;
    for (std::size_t start = 0; start <= line.size();) {
        const std::size_t end = std::min(line.find(' ', start), line.size());
        fields.push_back(line.substr(start, end - start));
        start = end + 1;
    }
    std::size_t mark = 6;
    while (mark < fields.size() && fields[mark] != "-") {
        ++mark;
    }
    if (mark + 2 >= fields.size()) {
        return std::nullopt;
    }
    const auto name = [&](std::size_t field) {
        return field < fields.size() ? UnescapedMountName(fields[field]) : std::string();
    };
    return MountEntry{name(2), name(3), name(4), name(5), name(mark + 1), name(mark + 2), name(mark + 3)};
}

/// The entries of a mount table's text, in its order: a later mount covers earlier ones at its place.
inline std::vector<MountEntry> ParseMountTable(std::string_view text)
{
    std::vector<MountEntry> entries;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (std::optional<MountEntry> entry = ParseMountLine(line)) {
            entries.push_back(std::move(*entry));
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return entries;
}

/// The mounts of this machine that are inside the host root, under their logical paths. Nothing, and errno, when the
/// mount table or the host root cannot be read.
std::optional<std::vector<MountEntry>> HostMounts();

/// What is seen at a mount point; null when nothing is mounted there.
inline const MountEntry* FindMount(const std::vector<MountEntry>& entries, const std::string& point)
{
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        if (entry->point == point) {
            return &*entry;
        }
    }
    return nullptr;
}
