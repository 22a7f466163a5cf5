#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The kernel's texts are words and numbers; what is missing or out of range is 0 or empty, so that a value that a
// device does not have never hides those that it has.

inline std::vector<std::string_view> ZelWords(std::string_view text)
{
    static constexpr std::string_view BLANKS = " \t\n";
    std::vector<std::string_view> words;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
        if (text.empty()) {
            return words;
        }
        words.push_back(text.substr(0, text.find_first_of(BLANKS)));
        text.remove_prefix(words.back().size());
    }
}

/// The word at @p index; empty when there are not as many.
inline std::string_view ZelWord(const std::vector<std::string_view>& words, std::size_t index)
{
    return index < words.size() ? words[index] : std::string_view();
}

/// The number that @p text begins with.
template <typename Number = std::uint64_t>
Number ZelNumber(std::string_view text, int base = 10)
{
    if (base == 16 && text.starts_with("0x")) {
        text.remove_prefix(2);
    }
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return error == std::errc() ? number : 0;
}

/// "12.345" in thousandths: 12345.
inline std::uint64_t ZelThousandths(std::string_view text)
{
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string digits(text.substr(std::min(point + 1, text.size())));
    digits.resize(3, '0');
    return ZelNumber(text.substr(0, point)) * 1000 + ZelNumber(digits);
}

/// The first line without blanks around it.
inline std::string ZelFirstLine(std::string_view text)
{
    text = text.substr(0, text.find('\n'));
    const std::size_t start = std::min(text.find_first_not_of(" \t"), text.size());
    const std::size_t end = text.find_last_not_of(" \t");
    return std::string(text.substr(start, end == std::string_view::npos ? 0 : end + 1 - start));
}

/// What stands behind "KEY" and a colon in the first line that begins with them; blanks around it are left out.
inline std::string ZelValueOf(std::string_view text, std::string_view key)
{
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        std::string_view rest = line;
        if (rest.starts_with(key)) {
            rest.remove_prefix(key.size());
            rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
            if (rest.starts_with(':')) {
                return ZelFirstLine(rest.substr(1));
            }
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return "";
}
