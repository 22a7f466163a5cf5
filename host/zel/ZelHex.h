#pragma once

#include <string>
#include <string_view>

/// Turns hexadecimal digits, two a byte, into bytes; @p separator may stand between any two of them.
inline bool ZelBytesOfHex(std::string_view text, char separator, std::string& bytes)
{
    static constexpr std::string_view DIGITS = "0123456789abcdef0123456789ABCDEF";
    while (!text.empty()) {
        if (text.front() == separator && !bytes.empty() && text.size() > 2) {
            text.remove_prefix(1);
        }
        const std::size_t high = DIGITS.find(text[0]);
        const std::size_t low = text.size() > 1 ? DIGITS.find(text[1]) : std::string_view::npos;
        if (high == std::string_view::npos || low == std::string_view::npos) {
            return false;
        }
        bytes += static_cast<char>((high % 16) << 4 | (low % 16));
        text.remove_prefix(2);
    }
    return true;
}
