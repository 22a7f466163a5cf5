#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the mount data of a ramdisk say: "RESERVED,SIZE,0,0,0,MODE,NAME".
struct QuenfsData
{
    std::uint64_t sizeMiB;
    std::uint32_t mode;
    std::string name;
};

template <typename Number>
bool ParseWholeNumber(std::string_view text, int base, Number& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return !text.empty() && error == std::errc() && end == text.data() + text.size();
}

/// Nothing for data of another form. A size of 0 is refused: a tmpfs takes it for no limit at all.
inline std::optional<QuenfsData> ParseQuenfsData(std::string_view text)
{
    std::vector<std::string_view> fields;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        fields.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    QuenfsData data = {};
    if (fields.size() != 7 || fields[6].empty() || !ParseWholeNumber(fields[1], 10, data.sizeMiB) ||
        !ParseWholeNumber(fields[5], 8, data.mode) || data.sizeMiB == 0 || data.mode > 07777) {
        return std::nullopt;
    }
    data.name = fields[6];
    return data;
}

/// The data with which the system's own file system is mounted.
inline std::string TmpfsOptions(const QuenfsData& data)
{
    std::string mode;
    for (std::uint32_t rest = data.mode; rest != 0; rest /= 8) {
        mode.insert(mode.begin(), static_cast<char>('0' + rest % 8));
    }
    return "size=" + std::to_string(data.sizeMiB) + "m,mode=0" + mode;
}
